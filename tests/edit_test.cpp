// The editor: what it does to a file, byte for byte, and what it leaves when something fails.
#include "conf/conf_tool.h"
#include "installation.h"

#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ov {
namespace {

using namespace std::string_literals;
using test::read_file;
using test::TempDir;

constexpr std::nullopt_t Deleted = std::nullopt;

TEST(Edit, EveryOtherByteStays) {
    struct Case {
        std::string before;
        std::optional<std::string> value; // none: the entry is deleted
        std::string after;
    };
    const std::string long_line(8191, 'x');
    // clang-format off
    const Case cases[] = {
        // replaced
        {"# head\n[Log]\nloglevel=3 # old\n\nx = 1", "5", "# head\n[Log]\nLogLevel = 5\n\nx = 1"},
        {"[log]\nLogLevel = 1\nLogLevel = 2\n", "5", "[log]\nLogLevel = 5\nLogLevel = 2\n"},
        {"[Log]\nLogLevel = 1", "a # \"b\" ", "[Log]\nLogLevel = a # \"b\" \n"},
        {"[Log]\nLogLevel = 1\n", "5\n[New]", "[Log]\nLogLevel = 5\n[New]\n"},
        {"[Log] LogLevel = 1\ny = 2\n", "", "LogLevel = \ny = 2\n"},
        {"[Log]\r\nLogLevel = 1\r\nb\0c\r\n\xff"s, "5", "[Log]\r\nLogLevel = 5\nb\0c\r\n\xff"s},
        {"[Log]\nLogLevel = 1\n", std::string(9000, 'v'), "[Log]\nLogLevel = " + std::string(8191, 'v') + "\n"},
        // inserted behind the first header of the section
        {"[a]\n[Log] # x\ny = 2\n[LOG]\nz = 3\n", "5", "[a]\n[Log] # x\nLogLevel = 5\ny = 2\n[LOG]\nz = 3\n"},
        {"[a]\n[Log]", "5", "[a]\n[Log]LogLevel = 5\n"},
        // appended with a new section
        {"", "5", "[Log]\nLogLevel = 5\n"},
        {"[a]\nx = 1", "5", "[a]\nx = 1[Log]\nLogLevel = 5\n"},
        {"LogLevel = 1\n[1]\n", "5", "LogLevel = 1\n[1]\n[Log]\nLogLevel = 5\n"},
        // deleted
        {"[Log]\n# c\nLogLevel = 1\nLogLevel = 2\n", Deleted, "[Log]\n# c\nLogLevel = 2\n"},
        {"[Log]\nLogLevel = 1", Deleted, "[Log]\n"},
        // a line feed at the very start is not counted by the scanner: the line before goes
        {"\n[Log]\n# c\nLogLevel = 1\n", Deleted, "\n[Log]\nLogLevel = 1\n"},
        {"\n[Log]\n# c\nLogLevel = 1\n", "5", "\n[Log]\nLogLevel = 5\nLogLevel = 1\n"},
        {"\n[Log]\n", "5", "\nLogLevel = 5\n[Log]\n"},
        // a line longer than 8191 bytes counts as several: a piece of it goes
        {"[Log]\n" + long_line + "\nLogLevel = 1\n", "5", "[Log]\n" + long_line + "LogLevel = 5\nLogLevel = 1\n"},
        {"[Log]\n" + long_line.substr(1) + "\nLogLevel = 1\n", Deleted, "[Log]\n" + long_line.substr(1) + "\n"},
    };
    // clang-format on
    for (const Case& c : cases) {
        const TempDir dir;
        const std::string path = dir.file("conf", c.before);
        const int result = c.value ? conf_modify(path.c_str(), "Log", "LogLevel", c.value->c_str())
                                   : conf_delete(path.c_str(), "Log", "LogLevel");
        EXPECT_EQ(result, 0);
        EXPECT_EQ(read_file(path), c.after) << testing::PrintToString(c.before.substr(0, 200));
        EXPECT_EQ(dir.names(), std::vector<std::string>{"conf"});
    }
}

TEST(Edit, TheFileItselfIsRewritten) {
    const TempDir dir;
    const std::string path = dir.file("conf", "[s]\nk = 1\n");
    ASSERT_EQ(::chmod(path.c_str(), 0604), 0);
    if (test::is_root()) {
        ASSERT_EQ(::chown(path.c_str(), 12, 34), 0);
    }
    ASSERT_EQ(::link(path.c_str(), dir.path("hard").c_str()), 0);
    ASSERT_EQ(::symlink("conf", dir.path("soft").c_str()), 0);
    struct stat before {};
    ::stat(path.c_str(), &before);

    EXPECT_EQ(conf_modify(dir.path("soft").c_str(), "s", "k", "2"), 0);
    EXPECT_EQ(read_file(dir.path("hard")), "[s]\nk = 2\n");
    EXPECT_EQ(conf_delete(dir.path("soft").c_str(), "s", "k"), 0);
    EXPECT_EQ(read_file(dir.path("hard")), "[s]\n");

    struct stat after {};
    ::stat(path.c_str(), &after);
    EXPECT_EQ(after.st_ino, before.st_ino);
    EXPECT_EQ(after.st_mode, before.st_mode);
    EXPECT_EQ(after.st_uid, before.st_uid);
    EXPECT_EQ(after.st_gid, before.st_gid);
}

TEST(Edit, RefusalsLeaveTheFileAlone) {
    const TempDir dir;
    const std::string path = dir.file("conf", "[s]\nk = 1\n");
    const std::string missing = dir.path("missing");
    {
        test::CapturedErrors errors;
        EXPECT_EQ(conf_modify(missing.c_str(), "s", "k", "2"), -1);
        EXPECT_EQ(conf_delete(missing.c_str(), "s", "k"), -1);
        EXPECT_EQ(conf_delete(path.c_str(), "S", "none"), -1);
        EXPECT_EQ(errors.text(), "cannot open: " + missing + " (2)\ncannot open: " + missing +
                                     "\nNo such entry [S] none\n");
    }
    for (const int type : {F_RDLCK, F_WRLCK}) {
        const test::ForeignLock lock(path, type);
        test::CapturedErrors errors;
        EXPECT_EQ(conf_modify(path.c_str(), "s", "k", "2"), -1);
        EXPECT_EQ(conf_delete(path.c_str(), "s", "k"), -1);
        EXPECT_EQ(errors.text(), "cannot lock: " + path + "\ncannot lock: " + path + "\n");
    }
    EXPECT_EQ(read_file(path), "[s]\nk = 1\n");
    EXPECT_EQ(dir.names(), std::vector<std::string>{"conf"});
}

TEST(Edit, ATemporaryNameLongerThanAPathIsRefused) {
    const TempDir dir;
    std::string path = dir.path();
    while (path.size() < 4095 - 250) {
        path += "/" + std::string(200, 'd');
        // The last folders can only be reached from within.
        ASSERT_EQ(::mkdir(path.c_str(), 0755), 0);
    }
    for (const auto& [length, result] : {std::pair{4084U, 0}, {4085U, -1}, {4095U, -1}}) {
        const std::string file = path + "/" + std::string(length - path.size() - 1, 'f');
        test::write_file(file, "");
        test::CapturedErrors errors;
        EXPECT_EQ(conf_modify(file.c_str(), "s", "k", "v"), result) << length;
        EXPECT_EQ(read_file(file), result == 0 ? "[s]\nk = v\n" : "");
        const std::string name = (file + ".tmp.XXXXXX").substr(0, 4095);
        EXPECT_EQ(errors.text(), result == 0 ? "" : "cannot create tmp file: " + name + "\n");
    }
}

TEST(Edit, AFullTemporaryFileLosesNothing) {
    const TempDir dir;
    const std::string text = "[s]\nk = 1\n" + std::string(100000, '#') + "\n";
    const std::string path = dir.file("conf", text);
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small{50000, before.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    ::setrlimit(RLIMIT_FSIZE, &small);
    const int modified = conf_modify(path.c_str(), "s", "k", "2");
    const int deleted = conf_delete(path.c_str(), "s", "k");
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(modified, -1);
    EXPECT_EQ(deleted, -1);
    EXPECT_EQ(read_file(path), text);
    EXPECT_EQ(dir.names(), std::vector<std::string>{"conf"});
}

// One system call after the other fails while the command edits; before that it opens the file
// once, and reads it twice, to load the settings. What the command says and logs, and what it
// leaves: "CONF" in a message stands for the file, "TEMP" for the temporary one. A disk that fills
// up before the copy is not told of.
TEST(Edit, FailingSystemCalls) {
    if (!test::is_root()) {
        GTEST_SKIP() << "editing takes the super-user";
    }
    enum Left { Untouched, Emptied, WithTemporary };
    struct Outcome {
        std::string message;
        const char* log; // behind the name of the function; empty: nothing is logged
    };
    struct Case {
        const char* call;
        int number;
        int error;
        Outcome modified;
        Outcome deleted;
        Left left;
    };
    // clang-format off
    const Case cases[] = {
        {"open", 2, 13, {"cannot open: CONF (13)", ""}, {"cannot open: CONF", ""}, Untouched},
        {"fcntl", 1, 13, {"cannot lock: CONF", ""}, {"cannot lock: CONF", ""}, Untouched},
        {"read", 3, 5, {"read error: CONF", "read error: CONF (5)"}, {"read error: CONF", "read error: CONF (5)"}, Untouched},
        {"mkstemp", 1, 13, {"cannot create tmp file: TEMP", ""}, {"cannot create tmp file: TEMP", "cannot create tmp file: TEMP (13)"}, Untouched},
        {"fdopen", 1, 12, {"cannot open tmp file: TEMP", ""}, {"cannot open tmp file: TEMP", "cannot open tmp file: TEMP (12)\n"}, WithTemporary},
        {"fflush", 1, 28, {"", ""}, {"", ""}, Untouched},
        {"fclose", 1, 28, {"", ""}, {"", ""}, Untouched},
        {"open", 3, 13, {"cannot open: CONF", "cannot open: CONF (13)"}, {"cannot open: CONF", "cannot open: CONF (13)"}, WithTemporary},
        {"fcntl", 2, 11, {"cannot lock: CONF", "cannot lock: CONF (11)"}, {"cannot lock: CONF", "cannot lock: CONF (11)"}, Emptied},
        {"open", 4, 24, {"cannot open: TEMP", "cannot open: TEMP (24)"}, {"cannot open: TEMP", "cannot open: TEMP (24)"}, Emptied},
        {"write", 1, 28, {"write error: TEMP", "write error: TEMP (28)"}, {"write error: TEMP", "write error: TEMP (28)"}, Emptied},
        {"read", 5, 5, {"read error: CONF", "read error CONF (5)"}, {"read error: TEMP", "read error: TEMP (5)"}, Emptied},
    };
    // clang-format on
    for (const Case& c : cases) {
        for (const bool removing : {false, true}) {
            const TempDir dir;
            const std::string old =
                "[Directories]\nRootDirectory = " + dir.path() + "\n[s]\nk = 1\n";
            const std::string path = dir.file("conf", old);
            std::filesystem::create_directory(dir.path("logs"));
            std::vector<std::string> words = {"ov_conf", "-f", path, "-s", "s", "-k", "k", "-d"};
            if (!removing) {
                words.back() = "-r";
                words.emplace_back("2");
            }
            const test::Result result =
                test::run(words, test::failing(path, c.call, c.number, c.error));

            const auto masked = [&path](std::string text) {
                if (const std::size_t temporary = text.find(path + ".tmp.");
                    temporary != text.npos) {
                    return text.replace(temporary, path.size() + 11, "TEMP");
                }
                const std::size_t named = text.find(path);
                return named == text.npos ? text : text.replace(named, path.size(), "CONF");
            };
            const Outcome& outcome = removing ? c.deleted : c.modified;
            const std::string reply =
                removing ? "552 entry delete failed\n" : "553 entry replace failed\n";
            const std::string message = outcome.message + (outcome.message.empty() ? "" : "\n");
            EXPECT_EQ(masked(result.err), message + reply) << c.call << c.number;
            EXPECT_EQ(result.status, 1);
            EXPECT_EQ(read_file(path), c.left == Emptied ? "" : old) << c.call << c.number;
            ASSERT_EQ(dir.names().size(), c.left == WithTemporary ? 3U : 2U) << c.call << c.number;
            if (c.left == WithTemporary &&
                std::string_view(c.call) == "open") { // with the new text
                const std::string text = read_file(dir.path(dir.names()[1]));
                EXPECT_EQ(text, old.substr(0, old.size() - 6) + (removing ? "" : "k = 2\n"));
            }

            const std::string log = masked(test::logged_errors(dir.path("logs")));
            const std::string name = removing ? "conf_delete: " : "conf_modify: ";
            EXPECT_EQ(log, *outcome.log ? name + outcome.log + "\n" : "") << c.call << c.number;
        }
    }
}

// The change is made; at most the temporary file stays.
TEST(Edit, FailuresThatAreOverlooked) {
    if (!test::is_root()) {
        GTEST_SKIP() << "editing takes the super-user";
    }
    struct Case {
        const char* call;
        int calls; // each of so many
        int error;
    };
    const Case cases[] = {
        {"close", 6, EIO},   {"unlink", 1, EIO},   {"read", 4, EINTR},
        {"fcntl", 2, EINTR}, {"fcntl", 2, EINVAL}, // a file system without locks
    };
    for (const auto& [call, calls, error] : cases) {
        for (int number = 1; number <= calls; ++number) {
            const TempDir dir;
            const std::string path = dir.file("conf", "[s]\nk = 1\n");
            EXPECT_EQ(test::run({"ov_conf", "-f", path, "-s", "s", "-k", "k", "-r", "2"},
                                test::failing(path, call, number, error)),
                      (test::Result{0, "", ""}))
                << call << number;
            const bool stays = std::string_view(call) == "unlink";
            ASSERT_EQ(dir.names().size(), stays ? 2U : 1U) << call << number;
            for (const std::string& name : dir.names()) {
                EXPECT_EQ(read_file(dir.path(name)), "[s]\nk = 2\n") << name;
            }
        }
    }
}

TEST(Edit, ANewRightsFileThatCannotBeClosed) {
    const test::Installation gateway;
    const std::string path = gateway.path("admin//taro.conf"); // as it is reported
    const test::Result result =
        test::run({"ov_admconf", "-f", gateway.file, "-u", "taro", "-m", "HoldList=no"},
                  test::failing(gateway.path("admin/taro.conf"), "close", 1, EIO));
    EXPECT_EQ(result, (test::Result{1, "", ""}));
    EXPECT_EQ(test::logged_errors(gateway.path("logs")), "close error \"" + path + "\" (5)\n");
    EXPECT_EQ(read_file(path), "");
}

TEST(Edit, AShortWriteIsAnError) {
    if (!test::is_root()) {
        GTEST_SKIP() << "editing takes the super-user";
    }
    const TempDir dir;
    const std::string path = dir.file("conf", "[s]\nk = 1\n");
    const test::Result result = test::run({"ov_conf", "-f", path, "-s", "s", "-k", "k", "-r", "2"},
                                          test::failing(path, "write", 1, 0));
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("write error: "), std::string::npos);
    EXPECT_EQ(read_file(path), "[s]\nk = 2");
    EXPECT_EQ(dir.names(), std::vector<std::string>{"conf"});
}

} // namespace
} // namespace ov
