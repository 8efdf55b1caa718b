// The commands, run as a user runs them.
#include "support.h"

#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace ov {
namespace {

using test::read_file;
using test::Result;
using test::run;

const std::string Unknown = "510 Syntax error: unknown command: ";
const std::string VersionText = "ORVANTA\nVERSION: 7.1.02 (1214)\nCMD: configuration tool\n";

// Runs the executable under another name.
Result run_as(const test::TempDir& dir, const std::string& name,
              std::vector<std::string> arguments = {}) {
    const std::string link = dir.path(name);
    std::filesystem::create_symlink(OV_BIN_DIR "/ov_conf", link);
    arguments.insert(arguments.begin(), link);
    return run(arguments);
}

TEST(Command, TheNameChoosesTheCommand) {
    const test::TempDir dir;
    EXPECT_EQ(run_as(dir, "OV_Conf", {"-v"}), (Result{0, VersionText, ""}));
    EXPECT_EQ(run_as(dir, "ov_conf.sh", {"-v"}), (Result{1, "", Unknown + "ov_conf.sh\n"}));
    EXPECT_EQ(run_as(dir, "v_conf", {"-v"}), (Result{1, "", Unknown + "v_conf\n"}));
    EXPECT_EQ(run({"ov_conf"}, {.name = "dir/"}), (Result{1, "", Unknown + "\n"}));
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
    using Words = std::vector<std::string>;
    const std::pair<Words, Result> cases[] = {
        {{"-s", "SMTP", "-k", "SmtpPort"}, {0, "1: 25\n", ""}},
        {{"-s", "mail", "-k", "MAXSIZE", "more", "words"}, {0, "1: 10 # k\n", ""}},
        {{"more", "-smail", "-kmaxsize"}, {0, "1: 10 # k\n", ""}},
        {{"-s", "x", "-s", "mail", "-k", "MaxSize"}, {0, "1: 10 # k\n", ""}},
        {{"-s", "Mail", "-k", "None"}, {0, "0: not found\n", ""}},
        {{"-s", "", "-k", ""}, {0, "0: not found\n", ""}},
        {{"-k", "x"}, {1, "", "510 section name required: -s <Section> \n"}},
        {{}, {1, "", "510 section name required: -s <Section> \n"}},
        {{"-s", "x"}, {1, "", "510 key name required:  -k <Key> \n"}},
        {{"-s", "x", "--", "-k", "y"}, {1, "", "510 key name required:  -k <Key> \n"}},
        {{"-v", "-r", "-d", "-x"}, {0, VersionText, ""}},
        {{"-r", "-d", "-v"}, {1, "", "510 Illegal combined options: -d ...\n"}},
        {{"-d", "-r"}, {1, "", "510 Illegal combined options: -r ...\n"}},
        {{"-x"}, {1, "", "ov_conf: invalid option -- 'x'\n510 Unknown option: ?\n"}},
        {{"-s"}, {1, "", "ov_conf: option requires an argument -- 's'\n510 Unknown option: ?\n"}},
    };
    for (const auto& [words, expected] : cases) {
        EXPECT_EQ(conf(words), expected) << testing::PrintToString(words);
    }
    EXPECT_EQ(run({"ov_conf", "-f", "/no/such", "-s", "a", "-k", "b"}),
              (Result{1, "", "cannot open configfile \"/no/such\" (2)\n"}));
    EXPECT_EQ(read_file(file), text);
}

// For each pair of mode options, the option that the refusal names; a blank for an accepted pair.
TEST_F(OvConf, CombinedModes) {
    const std::string modes = "lacdrmp";
    const std::pair<char, std::string> refused[] = {
        // the first option, and the reply to each second one
        {'l', "  cdrcc"}, {'a', "  cdrcc"}, {'c', "ll dr  "}, {'d', "llc rcc"},
        {'r', "llcd cc"}, {'m', "       "}, {'p', "       "},
    };
    for (const auto& [first, replies] : refused) {
        for (std::size_t i = 0; i < modes.size(); ++i) {
            const std::string second = {'-', modes[i]};
            const Result result = conf({std::string("-") + first, second, "-v"});
            const Result refusal{
                1, "", std::string("510 Illegal combined options: -") + replies[i] + " ...\n"};
            EXPECT_EQ(result, replies[i] == ' ' ? (Result{0, VersionText, ""}) : refusal)
                << first << second;
        }
    }
}

TEST_F(OvConf, EditingTakesTheSuperUser) {
    ::chmod(file.c_str(), 0666);
    for (const char* mode : {"-r", "-d"}) {
        EXPECT_EQ(run({"ov_conf", "-f", "/no/such", "-s", "Mail", "-k", "MaxSize", mode},
                      {.unprivileged = true}),
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

    const Result missing{1, "", "513 value required\n"};
    EXPECT_EQ(conf({"-s", "Mail", "-k", "MaxSize", "-r"}), missing);
    EXPECT_EQ(conf({"-s", "Mail", "-k", "MaxSize", "-r", "1", "2"}), missing);
    EXPECT_EQ(conf({"-s", "Mail", "-k", "MaxSize", "-d", "1", "2"}),
              (Result{1, "", "512 invalid arguments: 1\n"}));
    EXPECT_EQ(conf({"-s", "Mail", "-k", "Gone", "-d"}),
              (Result{1, "", "No such entry [Mail] Gone\n552 entry delete failed\n"}));
    EXPECT_EQ(conf({"-s", "Mail", "-k", "MaxSize", "-r", std::string(1001, 'v')}),
              (Result{1, "", "ERROR: too long value\n"}));
    EXPECT_EQ(read_file(file), edited);
    EXPECT_EQ(conf({"-s", "Mail", "-k", "MaxSize", "-r", std::string(1000, 'v')}), done);

    {
        const test::ForeignLock lock(file, F_WRLCK);
        EXPECT_EQ(conf({"-s", "Mail", "-k", "MaxSize", "-r", "1"}),
                  (Result{1, "", "cannot lock: " + file + "\n553 entry replace failed\n"}));
    }
    // The file is loaded before anything is said of the arguments.
    test::write_file(file, "[SMTP]\nSmtpPort = x\n");
    EXPECT_EQ(conf({"-s", "Mail", "-k", "MaxSize", "-r"}),
              (Result{1, "", file + ":2: [SMTP] SmtpPort: \"x\" invalid value \n"}));
}

TEST_F(OvConf, MessagesNeverEndUpInTheFile) {
    if (!test::is_root()) {
        GTEST_SKIP() << "editing takes the super-user";
    }
    EXPECT_EQ(conf({"-s", "Mail", "-k", "None", "-d"}, {.errors_closed = true}).status, 1);
    EXPECT_EQ(read_file(file), text);
}

TEST_F(OvConf, AFileWithoutAnEnd) {
    for (const char* endless : {"/dev/zero", "/dev/full"}) {
        EXPECT_EQ(run({"ov_conf", "-f", endless, "-s", "a", "-k", "b"}),
                  (Result{0, "0: not found\n", ""}));
        if (test::is_root()) {
            EXPECT_EQ(
                run({"ov_conf", "-f", endless, "-s", "a", "-k", "b", "-r", "1"}),
                (Result{1, "",
                        "read error: " + std::string(endless) + "\n553 entry replace failed\n"}));
        }
    }
}

TEST_F(OvConf, AReplyThatCannotBeDeliveredIsAFailure) {
    EXPECT_EQ(conf({"-s", "SMTP", "-k", "SmtpPort"}, {.out = "/dev/full"}),
              (Result{1, "", "write error: standard output\n"}));
}

} // namespace
} // namespace ov
