// The editor: what it does to a file, byte for byte, and what it leaves when something fails.
#include "conf/conf_tool.h"
#include "support.h"

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
    const Case cases[] = {
        // replaced
        {"# head\n[Log]\nloglevel=3 # old\n\nx = 1", "5", "# head\n[Log]\nLogLevel = 5\n\nx = 1"},
        {"[log]\nLogLevel = 1\nLogLevel = 2\n", "5", "[log]\nLogLevel = 5\nLogLevel = 2\n"},
        {"[Log]\nLogLevel = 1", "a # \"b\" ", "[Log]\nLogLevel = a # \"b\" \n"},
        {"[Log]\nLogLevel = 1\n", "5\n[New]", "[Log]\nLogLevel = 5\n[New]\n"},
        {"[Log] LogLevel = 1\ny = 2\n", "", "LogLevel = \ny = 2\n"},
        {"[Log]\r\nLogLevel = 1\r\nb\0c\r\n\xff"s, "5", "[Log]\r\nLogLevel = 5\nb\0c\r\n\xff"s},
        {"[Log]\nLogLevel = 1\n", std::string(9000, 'v'),
         "[Log]\nLogLevel = " + std::string(8191, 'v') + "\n"},
        // inserted behind the first header of the section
        {"[a]\n[Log] # x\ny = 2\n[LOG]\nz = 3\n", "5",
         "[a]\n[Log] # x\nLogLevel = 5\ny = 2\n[LOG]\nz = 3\n"},
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
        {"[Log]\n" + long_line + "\nLogLevel = 1\n", "5",
         "[Log]\n" + long_line + "LogLevel = 5\nLogLevel = 1\n"},
        {"[Log]\n" + long_line.substr(1) + "\nLogLevel = 1\n", Deleted,
         "[Log]\n" + long_line.substr(1) + "\n"},
    };
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

// One system call after the other fails while the command edits. What the command says, and what
// it leaves: "CONF" in a message stands for the file, "TEMP" for the temporary one.
TEST(Edit, FailingSystemCalls) {
    if (!test::is_root()) {
        GTEST_SKIP() << "editing takes the super-user";
    }
    const std::string old = "[s]\nk = 1\n";
    struct Case {
        const char* call;
        int number;
        int error;
        std::string modify; // the message
        std::string remove;
        std::string left; // the file's text
        bool leftover;    // the temporary file is still there
    };
    const Case cases[] = {
        {"open", 1, EACCES, "cannot open: CONF (13)\n", "cannot open: CONF\n", old, false},
        {"fcntl", 1, EACCES, "cannot lock: CONF\n", "cannot lock: CONF\n", old, false},
        {"read", 1, EIO, "read error: CONF\n", "read error: CONF\n", old, false},
        {"mkstemp", 1, EACCES, "cannot create tmp file: TEMP\n", "cannot create tmp file: TEMP\n",
         old, false},
        {"fdopen", 1, ENOMEM, "cannot open tmp file: TEMP\n", "cannot open tmp file: TEMP\n", old,
         true},
        {"open", 2, EACCES, "cannot open: CONF\n", "cannot open: CONF\n", old, true},
        {"fcntl", 2, EAGAIN, "cannot lock: CONF\n", "cannot lock: CONF\n", "", false},
        {"open", 3, EMFILE, "cannot open: TEMP\n", "cannot open: TEMP\n", "", false},
        {"write", 1, ENOSPC, "write error: TEMP\n", "write error: TEMP\n", "", false},
        {"read", 3, EIO, "read error: CONF\n", "read error: TEMP\n", "", false},
    };
    for (const Case& c : cases) {
        for (const bool removing : {false, true}) {
            const TempDir dir;
            const std::string path = dir.file("conf", old);
            std::vector<std::string> words = {"ov_conf", "-f", path, "-s", "s", "-k", "k"};
            words.insert(words.end(), removing ? 1 : 2, removing ? "-d" : "-r");
            if (!removing) {
                words.back() = "2";
            }
            const test::Result result =
                test::run(words, test::failing(path, c.call, c.number, c.error));

            std::string said = result.err;
            if (const std::size_t temporary = said.find(path + ".tmp."); temporary != said.npos) {
                said.replace(temporary, path.size() + 11, "TEMP");
            } else if (const std::size_t named = said.find(path); named != said.npos) {
                said.replace(named, path.size(), "CONF");
            }
            const std::string reply =
                removing ? "552 entry delete failed\n" : "553 entry replace failed\n";
            EXPECT_EQ(said, (removing ? c.remove : c.modify) + reply) << c.call << c.number;
            EXPECT_EQ(result.status, 1);
            EXPECT_EQ(read_file(path), c.left) << c.call << c.number;
            EXPECT_EQ(dir.names().size(), c.leftover ? 2U : 1U) << c.call << c.number;
        }
    }
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
