// The commands, run as a user runs them.
#include "support.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace ov {
namespace {

using test::read_file;
using test::Result;
using test::run;

const std::string VersionText = "ORVANTA\nVERSION: 7.1.02 (1214)\nCMD: configuration tool\n";

TEST(Command, TheNameChoosesTheCommand) {
    EXPECT_EQ(run({"ov_conf", "-v"}, {.name = "/dir/OV_Conf"}), (Result{0, VersionText, ""}));
    for (const char* name : {"ov_conf.sh", "v_conf", ""}) {
        EXPECT_EQ(
            run({"ov_conf"}, {.name = (std::string("dir/") + name).c_str()}),
            (Result{1, "", std::string("510 Syntax error: unknown command: ") + name + "\n"}));
    }
}

class OvConf : public testing::Test {
  protected:
    // Runs ov_conf on the test's file; words that stand for it follow -f.
    Result conf(std::vector<std::string> arguments, const test::Setting& setting = {}) {
        arguments.insert(arguments.begin(), {"ov_conf", "-f", file});
        return run(arguments, setting);
    }

    test::TempDir dir;
    std::string text = "# gateway\n[SMTP]\nSmtpPort = 25\n\n[Mail]\nMaxSize=10 # k\n";
    std::string file = dir.file("Tessary.conf", text);
};

TEST_F(OvConf, Replies) {
    // clang-format off
    const std::pair<std::vector<std::string>, Result> cases[] = {
        {{"-s", "SMTP", "-k", "SmtpPort"}, {0, "1: 25\n", ""}},
        {{"-s", "x", "-s", "mail", "-k", "MAXSIZE", "more", "words"}, {0, "1: 10 # k\n", ""}},
        {{"more", "-smail", "-kmaxsize"}, {0, "1: 10 # k\n", ""}},
        {{"-s", "Mail", "-k", "None"}, {0, "0: not found\n", ""}},
        {{"-s", "", "-k", ""}, {0, "0: not found\n", ""}},
        {{}, {1, "", "510 section name required: -s <Section> \n"}},
        {{"-k", "x"}, {1, "", "510 section name required: -s <Section> \n"}},
        {{"-s", "x", "--", "-k", "y"}, {1, "", "510 key name required:  -k <Key> \n"}},
        {{"-v", "-r", "-d", "-x"}, {0, VersionText, ""}},
        {{"-x"}, {1, "", "ov_conf: invalid option -- 'x'\n510 Unknown option: ?\n"}},
        {{"-s"}, {1, "", "ov_conf: option requires an argument -- 's'\n510 Unknown option: ?\n"}},
        {{"-f", "/no/such", "-s", "a", "-k", "b"}, {1, "", "cannot open configfile \"/no/such\" (2)\n"}},
    };
    // clang-format on
    for (const auto& [words, expected] : cases) {
        EXPECT_EQ(conf(words), expected) << testing::PrintToString(words);
    }
    EXPECT_EQ(conf({"-s", "SMTP", "-k", "SmtpPort"}, {.out = "/dev/full"}),
              (Result{1, "", "write error: standard output\n"}));
}

TEST_F(OvConf, CombinedModes) {
    const std::string modes = "lacdrmp";
    // For the first option and each second one: the option that the refusal names, or a blank.
    const std::pair<std::string, std::string> replies[] = {
        {"la", "  cdrcc"}, {"c", "ll dr  "}, {"d", "llc rcc"}, {"r", "llcd cc"}, {"mp", "       "}};
    for (const auto& [firsts, named] : replies) {
        for (const char first : firsts) {
            for (std::size_t i = 0; i < modes.size(); ++i) {
                const std::string refusal =
                    std::string("510 Illegal combined options: -") + named[i] + " ...\n";
                EXPECT_EQ(conf({{'-', first}, {'-', modes[i]}, "-v"}),
                          named[i] == ' ' ? (Result{0, VersionText, ""}) : (Result{1, "", refusal}))
                    << first << modes[i];
            }
        }
    }
}

TEST_F(OvConf, EditingTakesTheSuperUser) {
    ::chmod(file.c_str(), 0666);
    for (const char* mode : {"-r", "-d"}) {
        EXPECT_EQ(
            conf({"-f", "/no/such", "-s", "Mail", "-k", "MaxSize", mode}, {.unprivileged = true}),
            (Result{1, "", "530 Permission denied\n"}));
    }
    EXPECT_EQ(conf({"-s", "Mail", "-k", "MaxSize"}, {.unprivileged = true}),
              (Result{0, "1: 10 # k\n", ""}));
    EXPECT_EQ(read_file(file), text);
}

TEST_F(OvConf, ReplacesAndDeletes) {
    if (!test::is_root()) {
        GTEST_SKIP() << "editing takes the super-user";
    }
    const Result done{0, "", ""};
    EXPECT_EQ(conf({"-r", "-s", "mail", "-k", "MAXSIZE", "20"}), done);
    EXPECT_EQ(conf({"-s", "SMTP", "-k", "New", "-r", "--", "-1"}), done);
    EXPECT_EQ(conf({"-s", "Extra", "-k", "Note", "-r", ""}), done);
    EXPECT_EQ(conf({"-d", "-s", "smtp", "-k", "smtpport"}), done);
    const std::string edited =
        "# gateway\n[SMTP]\nNew = -1\n\n[Mail]\nMAXSIZE = 20\n[Extra]\nNote = \n";
    EXPECT_EQ(read_file(file), edited);

    const std::pair<std::vector<std::string>, std::string> refused[] = {
        {{"MaxSize", "-r"}, "513 value required\n"},
        {{"MaxSize", "-r", "1", "2"}, "513 value required\n"},
        {{"MaxSize", "-r", std::string(1001, 'v')}, "ERROR: too long value\n"},
        {{"MaxSize", "-d", "1", "2"}, "512 invalid arguments: 1\n"},
        {{"Gone", "-d"}, "No such entry [Mail] Gone\n552 entry delete failed\n"},
    };
    const auto mail = [&](std::vector<std::string> words, const test::Setting& setting = {}) {
        words.insert(words.begin(), {"-s", "Mail", "-k"});
        return conf(words, setting);
    };
    for (const auto& [words, reply] : refused) {
        EXPECT_EQ(mail(words), (Result{1, "", reply}));
    }
    // Messages never end up in the file.
    EXPECT_EQ(mail({"Gone", "-d"}, {.errors_closed = true}), (Result{1, "", ""}));
    EXPECT_EQ(read_file(file), edited);
    EXPECT_EQ(mail({"MaxSize", "-r", std::string(1000, 'v')}), done);
    {
        const test::ForeignLock lock(file, F_WRLCK);
        EXPECT_EQ(mail({"MaxSize", "-r", "1"}),
                  (Result{1, "", "cannot lock: " + file + "\n553 entry replace failed\n"}));
    }
    // The file is loaded before anything is said of the arguments.
    test::write_file(file, "[SMTP]\nSmtpPort = x\n");
    EXPECT_EQ(mail({"MaxSize", "-r"}),
              (Result{1, "", file + ":2: [SMTP] SmtpPort: \"x\" invalid value \n"}));
}

// What can be read only once has been read by the load.
TEST_F(OvConf, APipe) {
    EXPECT_EQ(
        run({"/bin/sh", "-c",
             "cat '" + file + "' | " OV_BIN_DIR "/ov_conf -f /dev/stdin -s SMTP -k SmtpPort"}),
        (Result{0, "0: not found\n", ""}));
}

TEST_F(OvConf, AFileWithoutAnEnd) {
    EXPECT_EQ(run({"ov_conf", "-f", "/dev/zero", "-s", "a", "-k", "b"}),
              (Result{0, "0: not found\n", ""}));
    // Edited is one of our own: others may have locked the host's.
    const std::string device = dir.path("zero");
    if (::mknod(device.c_str(), S_IFCHR | 0644, makedev(1, 5)) != 0 ||
        ::access(device.c_str(), R_OK) != 0) {
        GTEST_SKIP() << "making a device takes the super-user";
    }
    EXPECT_EQ(run({"ov_conf", "-f", device, "-s", "a", "-k", "b", "-r", "1"}),
              (Result{1, "", "read error: " + device + "\n553 entry replace failed\n"}));
}

// What those read who look for a fault in a configuration.
TEST_F(OvConf, AFetchIsLoggedWithTheNamesThatWereAskedFor) {
    std::filesystem::create_directory(dir.path("logs"));
    test::write_file(file, "[Directories]\nRootDirectory = " + dir.path() +
                               "\n[Log]\nLogFacility = 8192\nLogLevel = 90\n"
                               "[SMTP]\nSmtpPort = 25\n[Other]\nKey = v\n");
    EXPECT_EQ(conf({"-s", "smtp", "-k", "SMTPport"}).out, "1: 25\n");
    EXPECT_EQ(conf({"-s", "other", "-k", "KEY"}).out, "1: v\n");
    std::string log;
    for (const auto& entry : std::filesystem::directory_iterator(dir.path("logs"))) {
        log += read_file(entry.path());
    }
    EXPECT_NE(log.find(" CONF SCAN: DEBUG sec=smtp key=SMTPport  val=25\n"), log.npos) << log;
    EXPECT_NE(log.find(" CONF SCAN: DEBUG sec=other key=KEY  val=v\n"), log.npos) << log;
}

} // namespace
} // namespace ov
