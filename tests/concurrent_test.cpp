// Several editors of one file at once: what the lock protects, and what is lost in the moment
// between writing the new text beside the file and copying it back, when the file is unlocked.
#include "support.h"

#include <gtest/gtest.h>
#include <set>

namespace ov {
namespace {

using test::Result;
using test::Running;
using Words = std::vector<std::string>;

const Result Done{0, "", ""};

class Concurrent : public testing::Test {
  protected:
    void SetUp() override {
        if (!test::is_root()) {
            GTEST_SKIP() << "editing takes the super-user";
        }
    }

    Words replace(const std::string& section, const std::string& key,
                  const std::string& value) const {
        return {"ov_conf", "-f", file, "-s", section, "-k", key, "-r", value};
    }
    Words remove(const std::string& section, const std::string& key) const {
        return {"ov_conf", "-f", file, "-s", section, "-k", key, "-d"};
    }
    Result locked(const char* reply) const {
        return {1, "", "cannot lock: " + file + "\n" + reply + "\n"};
    }

    test::TempDir dir;
    std::string file = dir.path("Tessary.conf");
};

// One editor stops in front of a call, another one starts and stops in turn, or ends; then the
// first one goes on, and after it the second one. Before it edits, a command opens the file once,
// and reads it twice, to load it.
TEST_F(Concurrent, TwoEditorsMeet) {
    struct Place {
        const char* call;
        int number;
    };
    constexpr Place Loaded{"open", 2};
    constexpr Place Locked{"read", 3};
    constexpr Place HasRead{"mkstemp", 1};
    constexpr Place Unlocked{"open", 3}; // the new text is in the temporary file
    constexpr Place Emptied{"fcntl", 2};
    constexpr Place LockedAgain{"open", 4};
    constexpr Place HalfWritten{"write", 2};
    constexpr Place Written{"read", 7}; // still locked
    constexpr Place Copied{"unlink", 1};
    constexpr Place End{"", 0};

    // Written back in two pieces.
    std::string head;
    while (head.size() <= 8192) {
        head += "# a line of the head of the file\n";
    }
    const std::string none;
    const std::string by_first = head + "[s]\nk = a longer value\n";
    const std::string by_second = head + "[s]\nn = 2\nk = 0\n";
    const std::string both = head + "[s]\nn = 2\nk = a longer value\n";
    const std::string second_alone = "[s]\nn = 2\n";
    const std::string hole = std::string(8192, '\0') + by_second.substr(8192);
    const std::string second_over_first = by_second + by_first.substr(by_second.size());
    const Result busy = locked("553 entry replace failed");
    struct Case {
        Place first_stop;
        Place second_stop;
        Result first;
        Result second;
        const std::string& left;
    };
    const Case cases[] = {
        // The lock is held: the second editor is refused.
        {Locked, End, Done, busy, by_first},
        {HasRead, End, Done, busy, by_first},
        {LockedAgain, End, Done, busy, by_first},
        {HalfWritten, End, Done, busy, by_first},
        {Written, End, Done, busy, by_first},
        // The second editor comes late enough to see the change of the first.
        {Copied, End, Done, Done, both},
        {Unlocked, Loaded, Done, Done, both},
        // Both report success, and one change is lost: the first one to be made, not to be begun.
        {Unlocked, End, Done, Done, by_first},
        {Unlocked, Unlocked, Done, Done, by_second},
        {Unlocked, Emptied, Done, Done, second_over_first},
        {Emptied, End, Done, Done, by_first},
        // The first one is refused, having emptied the file under the second one.
        {Unlocked, HasRead, busy, Done, by_second},
        {Unlocked, LockedAgain, busy, Done, by_second},
        {Unlocked, Locked, busy, Done, second_alone},
        {Unlocked, HalfWritten, busy, Done, hole},
        {Unlocked, Written, busy, Done, none},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.first_stop.call) + std::to_string(c.first_stop.number) + " " +
                     c.second_stop.call + std::to_string(c.second_stop.number));
        const auto at = [this](const Place& place) {
            return test::failing(file, place.call, place.number, test::Stop);
        };
        test::write_file(file, head + "[s]\nk = 0\n");
        Running first(replace("s", "k", "a longer value"), at(c.first_stop));
        ASSERT_TRUE(first.stops());
        Running second(replace("s", "n", "2"), at(c.second_stop));
        ASSERT_EQ(second.stops(), c.second_stop.number != End.number);
        first.go_on();
        EXPECT_EQ(first.result(), c.first);
        second.go_on();
        EXPECT_EQ(second.result(), c.second);
        EXPECT_EQ(test::read_file(file), c.left);
        EXPECT_EQ(dir.names(), Words{"Tessary.conf"});
    }
}

constexpr int Editors = 8;
constexpr int Rounds = 25;

std::string key_of(int editor) {
    return "k" + std::to_string(editor);
}

bool removes(int round) {
    return round % 5 == 3;
}

// The editors of one round run at the same time, as many as there are.
template <class WordsOf>
std::vector<Result> run_together(WordsOf words_of) {
    std::vector<std::unique_ptr<Running>> running;
    for (int editor = 0; editor < Editors; ++editor) {
        running.push_back(std::make_unique<Running>(words_of(editor)));
    }
    std::vector<Result> results;
    for (const auto& editor : running) {
        results.push_back(editor->result());
    }
    return results;
}

TEST_F(Concurrent, AnOuterLockLosesNothing) {
    test::write_file(file, "# head\n");
    const std::string lock = dir.path("lock");
    for (int round = 0; round < Rounds; ++round) {
        const std::string value = std::to_string(round);
        const std::vector<Result> results = run_together([&](int editor) {
            Words words = removes(round) ? remove("edits", key_of(editor))
                                         : replace("edits", key_of(editor), value);
            words[0] = OV_BIN_DIR "/ov_conf";
            words.insert(words.begin(), {"/usr/bin/flock", lock});
            return words;
        });
        EXPECT_EQ(results, std::vector<Result>(Editors, Done));
        Words expected = {"# head", "[edits]"};
        for (int editor = 0; editor < Editors && !removes(round); ++editor) {
            expected.push_back(key_of(editor) + " = " + value);
        }
        Words lines = test::lines_of(test::read_file(file));
        std::sort(lines.begin(), lines.end()); // each new key came first in its section
        EXPECT_EQ(lines, expected);
        EXPECT_EQ(dir.names(), (Words{"Tessary.conf", "lock"}));
    }
}

// Editors that run freely lose each other's changes, and the file, but that is all. One that is
// overtaken between emptying and locking leaves the end of a longer text behind its own: with lines
// of one length the file consists of whole lines all the same, and each is one that was written.
TEST_F(Concurrent, FreeEditorsWriteWholeLinesAndLeaveNothing) {
    test::write_file(file, "# head \n[edits]\n");
    std::set<std::string> written = {"# head ", "[edits]"};
    int done = 0;
    for (int round = 0; round < Rounds; ++round) {
        const std::string value = std::to_string(10 + round);
        const std::vector<Result> results = run_together([&](int editor) {
            return removes(round) ? remove("edits", key_of(editor))
                                  : replace("edits", key_of(editor), value);
        });
        for (int editor = 0; editor < Editors; ++editor) {
            const Result& result = results[static_cast<std::size_t>(editor)];
            const Result missing{
                1, "", "No such entry [edits] " + key_of(editor) + "\n552 entry delete failed\n"};
            if (result == Done) {
                ++done;
                written.insert(key_of(editor) + " = " + value);
            } else if (removes(round)) {
                EXPECT_TRUE(result == locked("552 entry delete failed") || result == missing)
                    << testing::PrintToString(result);
            } else {
                EXPECT_EQ(result, locked("553 entry replace failed"));
            }
        }
        const std::string text = test::read_file(file);
        EXPECT_TRUE(text.empty() || text.ends_with('\n')) << text;
        for (const std::string& line : test::lines_of(text)) {
            EXPECT_TRUE(written.contains(line)) << line;
        }
        EXPECT_EQ(dir.names(), Words{"Tessary.conf"});
    }
    EXPECT_GT(done, 0);
}

} // namespace
} // namespace ov
