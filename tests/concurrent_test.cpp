// Several editors of one file at once: what the lock protects, and what is lost in the moment
// between writing the new text beside the file and copying it back, when the file is unlocked.
#include "installation.h"

#include <gtest/gtest.h>

namespace ov {
namespace {

using test::Result;
using test::Running;
using Words = std::vector<std::string>;

const Result Done{0, "", ""};

class Concurrent : public testing::Test {
  protected:
    Words replace(const std::string& key, const std::string& value) const {
        return {"ov_conf", "-f", file, "-s", "s", "-k", key, "-r", value};
    }

    test::TempDir dir;
    std::string file = dir.path("Tessary.conf");
};

// One editor stops in front of a call, another one starts and stops in turn, or ends; then the
// first one goes on, and after it the second one.
TEST_F(Concurrent, TwoEditorsMeet) {
    struct Place {
        const char* file;
        const char* call;
        int number = 1;
    };
    constexpr Place Loaded{"", "open+"};
    constexpr Place Locked{"", "read+"};
    constexpr Place HasRead{".tmp.*", "open+"};
    constexpr Place Unlocked{"", "open>"}; // the new text is in the temporary file
    constexpr Place Emptied{"", "fcntl>"};
    constexpr Place LockedAgain{".tmp.*", "open<"};
    constexpr Place HalfWritten{"", "write>", 2};
    constexpr Place Written{"", "close>"}; // still locked
    constexpr Place Copied{".tmp.*", "unlink"};
    constexpr Place End{"", "", 0};

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
    const Result busy = {1, "", "cannot lock: " + file + "\n553 entry replace failed\n"};
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
            return test::failing(file + place.file, place.call, place.number, test::Stop);
        };
        test::write_file(file, head + "[s]\nk = 0\n");
        Running first(replace("k", "a longer value"), at(c.first_stop));
        ASSERT_TRUE(first.stops());
        Running second(replace("n", "2"), at(c.second_stop));
        ASSERT_EQ(second.stops(), c.second_stop.number != End.number);
        first.go_on();
        EXPECT_EQ(first.result(), c.first);
        second.go_on();
        EXPECT_EQ(second.result(), c.second);
        EXPECT_EQ(test::read_file(file), c.left);
        EXPECT_EQ(dir.names(), Words{"Tessary.conf"});
    }
}

// Two loads find a log directory missing; whoever comes second goes on. And what has been looked at
// for a file is not looked at again for its supplement. A file that cannot be looked at is told.
TEST(Loads, DirectoriesThatComeAndGo) {
    const test::Installation gateway;
    const std::string supplement = gateway.dir.file("etc/local.conf", "");
    gateway.configure("[Directories]\nViewerLogDirectory = viewer\n[Files]\nLocalConfFile = " +
                      supplement + "\n");
    const std::string made = gateway.path("viewer");
    const Words load = {"ov_conf", "-f", gateway.file, "-s", "Log", "-k", "LogLevel"};
    const Result loaded = {0, "0: not found\n", ""};
    Running first(load, test::failing(made, "mkdir", 1, test::Stop));
    ASSERT_TRUE(first.stops());
    EXPECT_EQ(test::run(load), loaded);
    first.go_on();
    EXPECT_EQ(first.result(), loaded);
    EXPECT_TRUE(std::filesystem::is_directory(made));
    EXPECT_EQ(test::run(load, test::failing(gateway.path(), "stat", 2, ENOENT)), loaded);
    EXPECT_EQ(test::run(load, test::failing(gateway.path(), "stat", 1, ENOENT)).status, 1);
    const std::string unread = "cannot open configfile \"" + gateway.file + "\" (5)\n";
    EXPECT_EQ(test::run(load, test::failing(gateway.file, "fstat<", 1, EIO)),
              (Result{1, "", unread}));
}

} // namespace
} // namespace ov
