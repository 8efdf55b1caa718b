// ov_conf -l, -a and -p: a key's value as written and as loaded, and the submission program.
#include "fake_host.h"
#include "installation.h"
#include "settings/get_vals.h"
#include "settings/isvalid_msp.h"
#include "settings/settings.h"

#include <gtest/gtest.h>

namespace ov {
namespace {

using test::Installation;
using test::Result;

const Result NotShown{1, "", "501 ??? default value get failed\n"};

class Show : public testing::Test {
  protected:
    Result show(const char* mode, const char* section, const std::string& key) const {
        return test::run({"ov_conf", "-f", gateway.file, mode, "-s", section, "-k", key});
    }

    Installation gateway;
};

TEST_F(Show, PrintedForms) {
    struct Case {
        const char* key;
        std::string written;
        std::string printed; // of what is written
        std::string initial; // while the file is silent
    };
    const std::string root = gateway.path();
    // clang-format off
    const std::pair<const char*, std::vector<Case>> sections[] = {
        {"smtp", {
            {"smtpport", "00026", "26", "25"}, {"TransmissionMode", "-3", "-3", "0"}, {"MailSubmissionProgram", "Postfix", "postfix", "sendmail"},
            {"CheckSendmailMqueue", "0", "false", "true"}, {"SendmailOption", "\"a b\"", "a b", ""}, {"DenyIP", "10.1:*.2.", "10.1:*.2.", ""},
            {"MaxMessageSize", "2048", "2M", "0"}, {"MaxMessageSize", "1025B", "1K1B", "0"}, {"MaxMessageSize", "3G1M512K7B", "3G1M512K7B", "0"},
            {"PostfixProgram", "/bin/sh", "/usr/lib/sendmail", "/usr/lib/sendmail"}}}, // not chosen
        {"Mail", {{"GroupMaxAddresses", "7", "7", "1024"}}},
        {"Queue", {{"DirectoryLimitSize", "2", "2048", "0"}}},
        {"Admin", {{"AdminMailAddress", "Taro <taro@dom>, hanako@dom", "taro@dom;hanako@dom", ""}, {"AdminMailAddress", "a@x, b@y;(none)", "a@x;b@y", ""}, {"AdminMailAddress", "a\x01\xe9z\tb", "a??zb", ""}}},
        {"Screening", {
            {"MIMELogLevel", "weak", "1", "none"}, {"DPINFOngLevel", "none", "none", "50"}, {"DPINFOthreshold", "none", "9999", "1"},
            {"DPInfo_Option", "255", "0x000000ff", "0x00000000"}, {"DPInfo_Type", "-1", "0xffffffff", "0xffffffff"},
            {"DPInfo_Size", "1572864", "1M512K", "0"}, {"MIMEDefaultSet", "strict", "strict", "main"}, {"MaxExtractNesting", "8", "8", "9"}}},
        {"Directories", {
            {"LogDirectory", "etc", root + "etc/", root + "logs/"}, {"MessageQueue", "/tmp", "/tmp/", root + "mqueue/"},
            {"QuarantineQueue", "/tmp", "/tmp/", root + "pqueue/"}}},
        {"Archive", {{"ArchiveMode", "RULE", "rule", "none"}, {"TSAProxy_auth", "on", "true", "false"}}},
        {"Expire", {{"MaxDeliverLogSize", "3K", "3", "0"}}},
        {"Appender", {{"AppendOption", "255", "ff", "42"}}},
        {"Cooperation", {
            {"CoopQueue", "cqueue", root + "cqueue/", root + "cqueue/"}, {"TransPidFile", "/x", "/x", root + "etc/trans.pid"},
            {"MaxMessageSize", "1K", "1024", "52428800"}, {"FTPInterval", "4294967295", "4294967295", "60"}, {"RefuseLoadAverage", "9", "9", "10"}}},
        {"Search", {{"MaxFullScanMessages", "200000", "200000", "100000"}, {"UseArchiveDirectories", "no", "false", "true"}}},
        {"Cypher", {{"UserGroup", ":a::b:", "a:b", ""}, {"encode", "0", "0", "2"}}},
    };
    // clang-format on
    for (const auto& [section, cases] : sections) {
        for (const auto& [key, written, printed, initial] : cases) {
            gateway.configure(std::string("[") + section + "]\n" + key + " = " + written + "\n");
            const std::string raw = written == "\"a b\"" ? "a b" : written;
            EXPECT_EQ(show("-l", section, key), (Result{0, "0: " + raw + "\n", ""})) << key;
            EXPECT_EQ(show("-a", section, key), (Result{0, "1: " + printed + "\n", ""})) << key;
            gateway.configure("");
            EXPECT_EQ(show("-l", section, key), (Result{0, "0: " + initial + "\n", ""})) << key;
            EXPECT_EQ(show("-a", section, key), (Result{0, "1: " + initial + "\n", ""})) << key;
        }
    }
}

TEST_F(Show, KeysThatAreNotShown) {
    gateway.configure("[Log]\nLogLevel = 1\n[Extra]\nNote = any\n");
    EXPECT_EQ(show("-l", "Log", "LogLevel"), (Result{0, "0: 1\n", ""}));
    EXPECT_EQ(show("-a", "Log", "LogLevel"), NotShown);
    EXPECT_EQ(show("-l", "extra", "note"), (Result{0, "0: any\n", ""}));
    EXPECT_EQ(show("-a", "extra", "note"), NotShown);
    EXPECT_EQ(show("-l", "SMTP", "None"), NotShown);
    MailSubmissionProgram = 4; // no word stands for it
    EXPECT_FALSE(get_vals(gateway.file.c_str(), "SMTP", "MailSubmissionProgram", 1));
}

TEST_F(Show, AnotherFileAndTheLaterMode) {
    const std::string other = gateway.dir.file("other", "[SMTP]\nSmtpPort = text\n");
    const auto with = [&](std::vector<std::string> words) {
        words.insert(words.begin(), {"ov_conf", "-f", gateway.file, "-sSMTP", "-k", "SmtpPort"});
        return test::run(words, {.unprivileged = true}); // any user may look
    };
    EXPECT_EQ(with({"-a", "-l", other, "ignored"}), (Result{0, "0: text\n", ""}));
    EXPECT_EQ(with({"-l", "-a", other}), (Result{0, "1: 25\n", ""}));
    EXPECT_EQ(with({"-l", "/no/such"}),
              (Result{1, "", "cannot open: /no/such\n501 ??? default value get failed\n"}));
}

TEST_F(Show, LongTexts) {
    // As many addresses as fit 4095 characters.
    const std::string address(1000, 'a');
    const std::string joined = address + ";" + address + ";" + address + ";" + address + "x;b";
    const std::string more(4095 - joined.size() - 1, 'c');
    for (const auto& [written, printed] : {std::pair{joined, joined},
                                           {joined + ";" + more, joined + ";" + more},
                                           {joined + ";" + more + "c;d", joined}}) {
        gateway.configure("[Admin]\nAdminMailAddress = " + written + "\n");
        EXPECT_EQ(show("-a", "Admin", "AdminMailAddress").out, "1: " + printed + "\n");
    }
    const std::string longest(8191, 't');
    gateway.configure("[Archive]\nTSAProxy_user =" + longest + "x\n");
    EXPECT_EQ(show("-l", "Archive", "TSAProxy_user").out, "0: " + longest + "\n");
    EXPECT_EQ(show("-a", "Archive", "TSAProxy_user").out, "1: " + longest + "\n");
}

TEST_F(Show, InternalDomains) {
    test::write_file(gateway.file, "");
    const auto shown = [&] { return get_vals(gateway.file.c_str(), "Mail", "InternalDomains", 1); };
    EXPECT_EQ(shown(), "");
    test::host = {"mx1", "mx1.example.com", nullptr};
    EXPECT_EQ(shown(), "example.com");
    InternalDomains = {"a", "b"};
    EXPECT_EQ(shown(), "a:b");
}

TEST_F(Show, SubmissionProgram) {
    const std::string sendmail = "SendmailProgram = /bin/sh\nSendmailQueueDirectory = /tmp\n";
    // clang-format off
    const std::pair<std::string, int> cases[] = {
        {sendmail + "SendmailQueueListProgram = /bin/sh -Ac\n", 1},
        {sendmail + "SendmailQueueListProgram = sh\n", 0},
        {sendmail + "SendmailQueueListProgram =\n", 0},
        {sendmail + "SendmailQueueListProgram = /bin\n", 0},
        {"SendmailProgram = sh\nSendmailQueueDirectory = /tmp\n", 0},
        {"SendmailProgram = /tmp\nSendmailQueueDirectory = /tmp\n", 0},
        {"SendmailProgram = /bin/sh\nSendmailQueueDirectory = /bin/sh\n", 0},
        {"SendmailProgram = /bin/sh\nSendmailQueueDirectory = .\n", 0},
        {"MailSubmissionProgram = exim\n" + sendmail, 0},
        {"MailSubmissionProgram = POSTFIX\nPostfixProgram = /no/such\n" + sendmail, 0},
        {"MailSubmissionProgram = qmail\nQmailProgram = /bin/sh\nQmailQueueDirectory = /tmp\n" "QmailQueueListProgram = /bin/sh\n", 1},
        {"MailSubmissionProgram = postfix\nPostfixProgram = /bin/sh\n" "PostfixQueueDirectory = /tmp\nPostfixQueueListProgram = /bin/sh\n", 1},
    };
    // clang-format on
    for (const auto& [text, usable] : cases) {
        gateway.configure("[SMTP]\n" + text);
        EXPECT_EQ(test::run({"ov_conf", "-p", "-f", gateway.file}), (Result{1 - usable, "", ""}))
            << text;
    }
    // What the file lacks is taken from the settings, which may lack it, too.
    gateway.configure("[SMTP]\nSendmailProgram = /bin/sh\n");
    SendmailQueueDirectory.set("/no/such");
    EXPECT_EQ(isvalid_msp(gateway.file.c_str()), 0);
    SendmailQueueDirectory.set("/tmp");
    SendmailQueueListProgram.set("/no/such");
    EXPECT_EQ(isvalid_msp(gateway.file.c_str()), 0);
    SendmailQueueListProgram.unset();
    EXPECT_EQ(isvalid_msp(gateway.file.c_str()), 1);
    EXPECT_EQ(test::run({"ov_conf", "-p", "-f", "/no/such"}),
              (Result{1, "", "cannot open configfile \"/no/such\" (2)\n"}));
}

} // namespace
} // namespace ov
