// The editor: what it does to a file, byte for byte, and what it leaves when something fails.
#include "conf/edit.h"
#include "conf/rewrite.h"
#include "installation.h"

#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <regex>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ov {
namespace {

using namespace std::string_literals;
using test::give;
using test::interrupt;
using test::possession_of;
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
        {"[[Log]\n[1][Log]\n[Log x]\n[Log\n[Log]\n", "5", "[[Log]\n[1][Log]\n[Log x]\n[Log\n[Log]\nLogLevel = 5\n"},
        {"[a]\nx = \"[Log]\"\n# [Log]\n[Log]\n", "5", "[a]\nx = \"[Log]\"\n# [Log]\n[Log]\nLogLevel = 5\n"},
        {"[a]\nx = y [Log]\n[Log]\n", "5", "[a]\nx = y [Log]\nLogLevel = 5\n[Log]\n"},
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
        const std::optional<Edit> edit = c.value ? modified(c.before, "Log", "LogLevel", *c.value)
                                                 : deleted(c.before, "Log", "LogLevel");
        ASSERT_TRUE(edit);
        EXPECT_EQ(std::string(edit->head) + edit->insertion + std::string(edit->tail), c.after)
            << testing::PrintToString(c.before.substr(0, 200));
    }
    // And so in a file, which keeps its owner, mode and links: the last one of each kind, which is
    // the strangest.
    for (const Case& c : {cases[6], cases[11], std::end(cases)[-1]}) {
        const TempDir dir;
        give(dir.file("conf", c.before), 0604);
        const std::string before = possession_of(dir.path("conf"));
        std::filesystem::create_hard_link(dir.path("conf"), dir.path("hard"));
        std::filesystem::create_symlink("conf", dir.path("soft"));
        const std::string path = dir.path("soft");
        EXPECT_EQ(c.value ? conf_modify(path.c_str(), "Log", "LogLevel", c.value->c_str())
                          : conf_delete(path.c_str(), "Log", "LogLevel"),
                  0);
        EXPECT_EQ(read_file(dir.path("hard")), c.after);
        EXPECT_EQ(possession_of(dir.path("hard")), before);
        EXPECT_EQ(dir.names(), (std::vector<std::string>{"conf", "hard", "soft"}));
    }
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
        testing::internal::CaptureStderr();
        EXPECT_EQ(conf_modify(file.c_str(), "s", "k", "v"), result) << length;
        EXPECT_EQ(read_file(file), result == 0 ? "[s]\nk = v\n" : "");
        const std::string name = (file + ".tmp.XXXXXX").substr(0, 4095);
        EXPECT_EQ(testing::internal::GetCapturedStderr(),
                  result == 0 ? "" : "cannot create tmp file: " + name + "\n");
    }
}

// A file to edit, and the commands that do.
struct Gateway {
    explicit Gateway(const std::string& entries = "[s]\nk = 1\n")
        : old("[Directories]\nRootDirectory = " + dir.path() + "\n" + entries) {
        std::filesystem::create_directory(dir.path("logs"));
        test::write_file(file, old);
    }

    std::vector<std::string> replace(const std::string& key = "k") const {
        return {"ov_conf", "-f", file, "-s", "s", "-k", key, "-r", "222"};
    }
    std::vector<std::string> remove() const {
        return {"ov_conf", "-f", file, "-s", "s", "-k", "k", "-d"};
    }
    // The temporary file's path; empty when there is none.
    std::string temporary() const {
        const std::vector<std::string> names = dir.names();
        const auto found = std::find_if(names.begin(), names.end(), [](const std::string& name) {
            return name.starts_with("conf.tmp.");
        });
        return found == names.end() ? "" : dir.path(*found);
    }
    // The file's text when its entry is changed, which is at the end.
    std::string changed(std::string_view entry = "k = 222\n") const {
        return old.substr(0, old.size() - 6) + std::string(entry);
    }
    // A message with "CONF" and "TEMP" for the two files.
    std::string masked(const std::string& text) const {
        const std::regex temporary_name("CONF[.]tmp[.].{6}");
        return std::regex_replace(test::replaced(text, file, "CONF"), temporary_name, "TEMP");
    }

    TempDir dir;
    std::string file = dir.path("conf");
    std::string any_temporary = file + ".tmp.*";
    std::string old;
};

// One system call after the other fails while the command edits. What the command says and logs,
// and what it leaves. A disk that fills up before the copy is not told of.
TEST(Edit, FailingSystemCalls) {
    enum File { Conf, Temp };
    enum Left { Untouched, Emptied, Changed, WithTemporary = 4 };
    struct Told {
        std::string message;
        const char* log; // behind the name of the function; empty: nothing is logged
    };
    struct Case {
        File file;
        int error;
        const char* call;
        int left;
        std::optional<Told> told = {};     // none: the edit is done
        std::optional<Told> deleting = {}; // when that is told otherwise
        int number = 1;                    // which call of it fails
    };
    // clang-format off
    const Case cases[] = {
        {Conf, 13, "open+", Untouched, Told{"cannot open: CONF (13)", ""}, Told{"cannot open: CONF", ""}},
        {Conf, 13, "fcntl+", Untouched, Told{"cannot lock: CONF", ""}},
        {Conf, 5, "read+", Untouched, Told{"read error: CONF", "read error: CONF (5)"}},
        {Temp, 13, "open+", Untouched, Told{"cannot create tmp file: TEMP", ""}, Told{"cannot create tmp file: TEMP", "cannot create tmp file: TEMP (13)"}},
        {Temp, 12, "fdopen", Untouched | WithTemporary, Told{"cannot open tmp file: TEMP", ""}, Told{"cannot open tmp file: TEMP", "cannot open tmp file: TEMP (12)\n"}},
        {Temp, 28, "fwrite", Untouched, Told{"", ""}},
        {Temp, 28, "fflush", Untouched, Told{"", ""}},
        {Temp, 5, "fdatasync", Untouched, Told{"", ""}},
        {Temp, 28, "fclose", Untouched, Told{"", ""}},
        {Conf, 13, "open>", Untouched | WithTemporary, Told{"cannot open: CONF", "cannot open: CONF (13)"}},
        {Conf, 2, "open>", Untouched | WithTemporary, Told{"cannot open: CONF", "cannot open: CONF (17)"}}, // it is there again
        {Conf, 5, "ftruncate", Untouched | WithTemporary, Told{"cannot open: CONF", "cannot open: CONF (5)"}},
        {Conf, 5, "fstat>", Untouched | WithTemporary, Told{"cannot open: CONF", "cannot open: CONF (5)"}},
        {Conf, 5, "fstat>", Untouched | WithTemporary, Told{"cannot open: CONF", "cannot open: CONF (5)"}, {}, 2},
        {Conf, 11, "fcntl>", Emptied, Told{"cannot lock: CONF", "cannot lock: CONF (11)"}},
        {Temp, 24, "open<", Untouched, Told{"cannot open: TEMP", "cannot open: TEMP (24)"}},
        {Temp, 5, "read<", Untouched, Told{"read error: CONF", "read error CONF (5)"}, Told{"read error: TEMP", "read error: TEMP (5)"}},
        {Conf, 28, "write>", Untouched, Told{"write error: TEMP", "write error: TEMP (28)"}},
        {Conf, 5, "fdatasync", Changed | WithTemporary, Told{"write error: TEMP", "write error: TEMP (5)"}},
        {Conf, 0, "write>", Untouched, Told{"write error: TEMP", "write error: TEMP (0)"}},
        {Conf, EROFS, "fdatasync", Changed | WithTemporary, Told{"write error: TEMP", "write error: TEMP (30)"}},
        {Conf, 28, "close>", Changed | WithTemporary, Told{"write error: TEMP", "write error: TEMP (28)"}},
        // What is only interrupted, or cannot be done by nature, is overlooked.
        {Conf, EINTR, "fcntl+", Changed}, {Conf, EINVAL, "fcntl>", Changed}, {Conf, EINTR, "read+", Changed},
        {Temp, EINTR, "fwrite", Changed}, {Temp, EINTR, "fdatasync", Changed}, {Temp, EINVAL, "fdatasync", Changed},
        {Temp, EINTR, "read<", Changed}, {Conf, EINTR, "write>", Changed}, {Conf, EINVAL, "fdatasync", Changed},
        {Conf, 5, "close+", Changed}, {Temp, 5, "unlink", Changed | WithTemporary},
    };
    // clang-format on
    for (const Case& c : cases) {
        for (const bool removing : {false, true}) {
            const Gateway gateway;
            SCOPED_TRACE(std::string(c.call) + "} " + std::to_string(c.error));
            const std::string changed = gateway.changed(removing ? "" : "k = 222\n");
            const test::Result result =
                test::run(removing ? gateway.remove() : gateway.replace(),
                          test::failing(c.file == Conf ? gateway.file : gateway.any_temporary,
                                        c.call, c.number, c.error));

            const Told* told = removing && c.deleting ? &*c.deleting : c.told ? &*c.told : nullptr;
            const auto line = [](const std::string& text) {
                return text + (text.empty() ? "" : "\n");
            };
            const std::string reply =
                removing ? "552 entry delete failed" : "553 entry replace failed";
            const std::string log = gateway.masked(test::logged_errors(gateway.dir.path("logs")));
            const std::string name = removing ? "conf_delete: " : "conf_modify: ";
            EXPECT_EQ(gateway.masked(result.err), told ? line(told->message) + line(reply) : "");
            EXPECT_EQ(log, told && *told->log ? line(name + told->log) : "");
            EXPECT_EQ(result.status, told ? 1 : 0);
            const std::string left[] = {gateway.old, "", changed};
            EXPECT_EQ(read_file(gateway.file), left[c.left & 3]);
            EXPECT_EQ(!gateway.temporary().empty(), (c.left & WithTemporary) != 0);
            if ((c.left & WithTemporary) && std::string_view(c.call) != "fdopen") {
                EXPECT_EQ(read_file(gateway.temporary()), changed);
            }
        }
    }
}

// Somebody who may write into the directory puts another file in the place of one, while the
// command is on its way. Nothing of his is emptied, or gets into the file.
TEST(Edit, FilesThatAreSwapped) {
    for (const std::string swap : {"other file", "link", "pipe", "nothing"}) {
        for (const bool temporary : {false, true}) {
            SCOPED_TRACE(swap + (temporary ? " TEMP" : " CONF"));
            const Gateway gateway;
            give(gateway.file, 0640);
            const std::string before = possession_of(gateway.file);
            test::Running editor(gateway.replace(),
                                 test::failing(temporary ? gateway.any_temporary : gateway.file,
                                               temporary ? "open<" : "open>", 1, test::Stop));
            ASSERT_TRUE(editor.stops());
            EXPECT_TRUE(
                possession_of(gateway.temporary()).ends_with(std::to_string(S_IFREG | 0600)));
            const std::string name = temporary ? gateway.temporary() : gateway.file;
            const std::string secret = gateway.dir.file("secret", "secret\n");
            std::filesystem::remove(name);
            if (swap == "other file") {
                test::write_file(name, "other\n");
            } else if (swap == "link") {
                std::filesystem::create_symlink(secret, name);
            } else if (swap == "pipe") {
                ASSERT_EQ(::mkfifo(name.c_str(), 0666), 0);
            }
            editor.go_on();
            const std::string told = gateway.masked(editor.result().err);
            EXPECT_EQ(read_file(secret), "secret\n");
            const bool anew = swap == "nothing" && !temporary; // the file is made again
            if (temporary || anew) {
                EXPECT_EQ(told, anew ? "" : "cannot open: TEMP\n553 entry replace failed\n");
                EXPECT_EQ(read_file(gateway.file), anew ? gateway.changed() : gateway.old);
                EXPECT_EQ(possession_of(gateway.file), before);
                EXPECT_EQ(gateway.temporary(), "");
            } else {
                EXPECT_EQ(told, "cannot open: CONF\n553 entry replace failed\n");
                EXPECT_EQ(read_file(gateway.temporary()), gateway.changed());
                EXPECT_TRUE(swap != "other file" || read_file(name) == "other\n");
            }
        }
    }
}

// The old text comes back when the disk is full by the time that the new one is written back.
TEST(Edit, ADiskThatFills) {
    const Gateway gateway("# " + std::string(200000, 'x') + "\n[s]\nk = 1\n");
    const std::string disk = gateway.dir.path("disk");
    const std::string file = disk + "/conf";
    std::filesystem::create_directory(disk);
    if (::mount("none", disk.c_str(), "tmpfs", 0, "size=512k") != 0) {
        GTEST_SKIP() << "no file system can be mounted here";
    }
    std::filesystem::copy_file(gateway.file, file);
    std::vector<std::string> words = gateway.replace();
    words[2] = file;
    test::Running editor(words, test::failing(file, "write>", 3, test::Stop));
    EXPECT_TRUE(editor.stops());
    test::write_file(disk + "/other", std::string(1 << 20, 'x')); // as much as there is room for
    editor.go_on();
    EXPECT_EQ(editor.result().status, 1);
    EXPECT_EQ(read_file(file), gateway.old);
    std::filesystem::remove(disk + "/other");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(disk), {}), 1);
    ::umount(disk.c_str());
}

// Whenever an edit is killed, the old or the new text is there as a whole, if only in the temporary
// file. A signal that it can hold back leaves one of them in the file itself, and nothing else.
TEST(Edit, KilledAtEverySystemCall) {
    const Gateway probe;
    if (!interrupt(probe.replace(), 1, SIGKILL)) {
        GTEST_SKIP() << "processes may not be traced here";
    }
    std::string lines;
    while (lines.size() < 9000) { // written back in two pieces
        lines += "# a line of the middle\n";
    }
    const std::string head = "[s]\nk = 1\n";
    for (const int signal : {SIGKILL, SIGTERM}) {
        for (const auto& [key, entry] :
             {std::pair{"k", "[s]\nk = 222\n"}, {"n", "[s]\nn = 222\nk = 1\n"}, {"", "[s]\n"}}) {
            int calls = 0;
            int late = 0;
            for (std::optional<int> status = 0; status; ++calls) {
                const Gateway gateway(head + lines);
                const std::string changed = test::replaced(gateway.old, head, entry);
                status =
                    interrupt(*key ? gateway.replace(key) : gateway.remove(), calls + 1, signal);
                const std::string text = read_file(gateway.file);
                const std::string temporary = gateway.temporary();
                if (signal == SIGKILL && text != gateway.old && text != changed) {
                    ASSERT_FALSE(temporary.empty()) << calls;
                    EXPECT_EQ(read_file(temporary), changed) << calls;
                } else {
                    EXPECT_TRUE(text == gateway.old || text == changed) << calls << text;
                    EXPECT_TRUE(signal == SIGKILL || temporary.empty()) << calls;
                }
                // One that comes with the end of the process is too late.
                EXPECT_TRUE(status.value_or(0) == 0 ? text == changed : *status == 256 + signal);
                late += status.value_or(0) == 0;
            }
            EXPECT_GT(calls, 20);
            EXPECT_LT(late, 5);
        }
    }
}

TEST(Edit, ASmallStack) {
#ifdef OV_SANITIZE
    GTEST_SKIP() << "the sanitizers take more";
#endif
    // The log, too, is written on it. A line whose writing is interrupted is written again.
    const Gateway gateway("[Log]\nLogFacility = 8192\nLogLevel = 90\n[s]\nk = 1\n");
    std::vector<std::string> words = gateway.replace();
    words[0] = OV_BIN_DIR "/ov_conf";
    words.insert(words.begin(), {"/bin/sh", "-c", "ulimit -s 64; exec \"$@\"", "sh"});
    const std::string logs = gateway.dir.path("logs");
    EXPECT_EQ(test::run(words, test::failing(logs + "/*", "write>", 2, EINTR)),
              (test::Result{0, "", ""}));
    const std::string log = read_file(std::filesystem::directory_iterator(logs)->path());
    EXPECT_NE(log.find("CONF SCAN: DEBUG sec=s key=k  val=1\n"), log.npos) << log;
}

// Runs a role command for a user.
test::Result admin(const test::Installation& gateway, std::vector<std::string> words,
                   const test::Setting& setting = {}) {
    words.insert(words.begin(), {"ov_admconf", "-f", gateway.file, "-u"});
    return test::run(words, setting);
}

// A pipe in the place of a rights file, a group or a supplement is not waited for.
TEST(Edit, PipesInThePlaceOfFiles) {
    const test::Installation gateway;
    gateway.configure("[Files]\nLocalConfFile = " + gateway.path("etc/local.conf\n"));
    for (const char* name : {"admin/taro.conf", "etc/local.conf", "etc/group/g.addr"}) {
        ASSERT_EQ(::mkfifo(gateway.path(name).c_str(), 0666), 0);
    }
    gateway.dir.file("admin/jiro.conf", "[Admin]\nGroup = g\n");
    const std::string rights = gateway.path("admin//taro.conf");
    EXPECT_EQ(admin(gateway, {"taro", "HoldList"}), (test::Result{0, "1\n", ""}));
    EXPECT_EQ(admin(gateway, {"taro", "-m", "HoldList=no"}),
              (test::Result{1, "", "cannot open: " + rights + " (22)\nHoldList\n"}));
    EXPECT_EQ(admin(gateway, {"jiro", "-g"}).status, 0);
    const std::string unreadable = "cannot open configfile \"" + rights + "\" (22)\n";
    EXPECT_EQ(test::logged_errors(gateway.path("logs")),
              unreadable + unreadable + "WARNING: GROUP \"g\" cannot open: \"" +
                  gateway.path("etc/group//g.addr") + "\" (22) - ignored\n");
    // A lease is waited for: it is given up when the command comes.
    static int leased = ::open(gateway.path("admin/jiro.conf").c_str(), O_RDONLY | O_CLOEXEC);
    std::signal(SIGIO, [](int) { ::close(leased); });
    if (::fcntl(leased, F_SETLEASE, F_WRLCK) == 0) {
        EXPECT_EQ(admin(gateway, {"jiro", "Group"}).out, "g\n");
    }
}

// A link is followed when it is the super-user's, or that of the owner of what it leads to.
TEST(Edit, LinksBelowTheInstallation) {
    if (!test::is_root()) {
        GTEST_SKIP() << "only the super-user makes links of others";
    }
    constexpr uid_t Owner = 12;
    constexpr uid_t Other = 34;
    for (const std::string at :
         {"admin", "admin/taro.conf", "etc/group", "etc/group/g.addr", "logs"}) {
        for (const auto& [link, target] :
             {std::pair{0U, Owner}, {Owner, Owner}, {Owner, 0U}, {Other, Owner}}) {
            SCOPED_TRACE(at + " of " + std::to_string(link) + " to " + std::to_string(target));
            const test::Installation gateway;
            const bool followed = link == 0 || link == target;
            gateway.dir.file("admin/taro.conf",
                             "[Admin]\nHoldList = no\nGroup = g:none\nSelectGroupList = yes\n");
            gateway.dir.file("etc/group/g.addr", "a@x\n");
            const std::string moved = gateway.path("moved");
            const std::string place = gateway.path(at);
            std::filesystem::rename(place, moved);
            ASSERT_EQ(::chown(moved.c_str(), target, 0), 0);
            // On the way, and at its end.
            std::filesystem::create_symlink(gateway.path("way/../moved"), place);
            std::filesystem::create_symlink("etc", gateway.path("way"));
            ASSERT_EQ(::lchown(place.c_str(), link, 0), 0);

            const bool no_rights = !followed && at.starts_with("admin");
            const std::string message =
                "cannot open: " + gateway.path("admin//taro.conf") + " (40)\nHoldList\n";
            EXPECT_EQ(admin(gateway, {"taro", "HoldList"}).out, no_rights ? "1\n" : "0\n");
            EXPECT_EQ(admin(gateway, {"taro", "-m", "HoldList=yes"}).err, no_rights ? message : "");
            const std::string groups = admin(gateway, {"taro", "-g"}).out;
            EXPECT_EQ(groups.find("'a@x'") != groups.npos, followed || at == "logs");
            const bool listed = followed || at == "etc/group/g.addr" || at == "logs";
            EXPECT_EQ(admin(gateway, {"taro", "SelectGroup"}).out, listed ? "g\n" : "");
            const bool logged = followed || at != "logs";
            const std::string log =
                test::logged_errors(at == "logs" ? moved : gateway.path("logs"));
            EXPECT_EQ(log.find("(40)") != log.npos, !followed && logged) << log;
            EXPECT_EQ(log.empty(), !logged) << log;
            EXPECT_EQ(admin(gateway, {"jiro", "-m"}).status, at == "admin" && !followed);
            // Whoever has made a link follows it himself.
            ASSERT_EQ(::lchown(place.c_str(), test::Nobody, 0), 0);
            const test::Setting as_nobody{.unprivileged = true};
            EXPECT_EQ(admin(gateway, {"taro", "SelectGroup"}, as_nobody).out, "g\n");
        }
    }
}

// Forty links are followed. What is made lies where the path is written, and a new rights file is
// for the gateway whatever the mask of the super-user is.
TEST(Edit, ANewRightsFileBehindLinks) {
    const test::Installation gateway;
    std::filesystem::rename(gateway.path("admin"), gateway.path("link0"));
    give(gateway.path("link0"), 0755);
    for (int i = 1; i <= 40; ++i) {
        std::filesystem::create_symlink("link" + std::to_string(i - 1),
                                        gateway.path("link" + std::to_string(i)));
    }
    const std::string command = OV_BIN_DIR "/ov_admconf -f " + gateway.file;
    const std::vector<std::string> words = {
        "/bin/sh", "-c", "umask 077; exec " + command + " -u taro -m HoldList=no"};
    const auto go_by = [&](const char* link) {
        std::filesystem::remove(gateway.path("admin"));
        std::filesystem::create_symlink(link, gateway.path("admin"));
        return test::run(words).status;
    };
    EXPECT_EQ(go_by("link40"), 1);
    EXPECT_EQ(go_by("link39"), 0);
    const std::string made = gateway.path("link0/taro.conf");
    const std::string like_made = gateway.dir.file("like", "");
    give(like_made, 0644);
    EXPECT_EQ(possession_of(made), possession_of(like_made));

    std::filesystem::rename(made, gateway.path("real.conf"));
    std::filesystem::create_symlink("../real.conf", made);
    EXPECT_EQ(go_by("link39"), 1);
    EXPECT_EQ(go_by("link38"), 0);
    EXPECT_EQ(read_file(gateway.path("real.conf")), "[Admin]\nHoldList = no\n");
    const std::string refused =
        test::run(words, test::failing(made + ".tmp.*", "open+", 1, EACCES)).err;
    const std::string message = "cannot create tmp file: " + gateway.path("admin//taro.conf.tmp.");
    EXPECT_TRUE(refused.starts_with(message)) << refused;
    EXPECT_EQ(refused.find("XXXXXX"), refused.npos);

    // What takes the place of the file that a link leads to, on the way there, is not opened.
    const std::string real = gateway.path("real.conf");
    for (const auto& [swap, error] : {std::pair{"other", "(116)"}, {"link", "(40)"}}) {
        test::Running editor(words, test::failing(real, "open+", 1, test::Stop));
        ASSERT_TRUE(editor.stops());
        std::filesystem::rename(real, gateway.path(swap));
        if (swap == std::string("other")) {
            test::write_file(real, "");
        } else {
            std::filesystem::create_symlink(swap, real);
        }
        editor.go_on();
        EXPECT_NE(editor.result().err.find(error), std::string::npos);
        EXPECT_EQ(read_file(real), "");
    }
}

} // namespace
} // namespace ov
