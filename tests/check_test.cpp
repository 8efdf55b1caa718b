// ov_conf -c: which values are acceptable for which key.
#include "conf/check_config.h"
#include "installation.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace ov {
namespace {

using test::Installation;
using test::Result;
using Values = std::vector<std::string>;

struct Rule {
    const char* section;
    Values keys;
    Values accepted;
    Values refused;
};

Values operator+(Values values, const Values& more) {
    values.insert(values.end(), more.begin(), more.end());
    return values;
}

TEST(Check, EveryRule) {
    const Installation gateway;
    for (const char* name : {"mss.keywd.d", "mss.mtype.d", "logs/sub"}) {
        std::filesystem::create_directory(gateway.path(name));
    }
    gateway.dir.file("mss.keywd.d/main.keywd", "");
    gateway.dir.file("mss.mtype.d/strict.mtype", "");
    gateway.dir.file("template/note", "");
    const std::string file = gateway.dir.file("file", "");
    const std::string root = gateway.path();
    const std::string device = "/dev/null";

    const Values yes = {"TRUE", "off", "1"};
    const Values no = {"", "2", "maybe"};
    const Values size = {"", "0", "1g512M", "K", "10"};
    // Nine of these are more bytes than a size can be, and not too many kilobytes.
    std::string huge;
    for (int i = 0; i < 9; ++i) {
        huge += "999999999G";
    }
    const Values no_size = {"x", "1234567890", "-1", "1 K"};
    const Values directory = {root, root + "logs"};
    const Values no_directory = {"/no/such", file};
    const Values level = {"NONE", "0", "9999", "00009999"};
    const Values no_level = {"", "10000", "-1", "some", "1x"};
    const Values server = {"mx1", "mx1:1", "mx1:60000", "mx1:25x", "1.2.3.4:25", "mx_1."};
    const Values no_server = {"mx1:0", "mx1:60001", "mx1:", "mx1:-1", "m/x", "1.2.3", "a..b"};
    const Values decimal4 = {"", "0", "9999", "0000"};
    const std::string eight = "a b:1 c _msp_ _CMD_ f g h";

    // clang-format off
    const Rule rules[] = {
        {"smtp", {"smtpport"}, {"1", "65535", "00025"}, {"0", "65536", "080000", "", "25x"}},
        {"SMTP", {"DenyIP", "AllowIP"}, {"", ":", "10.*:192.168.:1.2.3.4/32"}, {"1.2.3.4/33", "256.1", "10.1:x"}},
        {"SMTP", {"MailSubmissionProgram"}, {"Sendmail", "postfix", "qmail"}, {"exim", ""}},
        {"SMTP", {"SendmailOption"}, {"", "-oi"}, {"-o i", " "}},
        {"SMTP", {"MaxMessageSize"}, size, no_size + Values{huge}},
        {"SMTP", {"MaxConnections"}, {"0", "999", "0000999"}, {"1000", "", "-1", "99999999999999999999"}},
        {"SMTP", {"AddReceivedField"}, yes, no},
        {"SMTP", {"TransmissionMode"}, {"abc", "0x7fffffff", "-2147483648", "017", " 1"}, {"", "0x80000000", "2147483648", "99999999999999999999", "010000000000"}},
        {"SMTP", {"ServerCommand"}, {"/bin/sh -c x", " /bin/sh"}, {"", " ", "sh", "/no/such", "/tmp"}},
        {"SMTP", {"ServerHost"}, server + Values{eight, " "}, no_server + Values{"", eight + " i"}},
        {"SMTP", {"SendmailProgram", "QmailProgram", "PostfixProgram"}, {"/bin/sh"}, {"", "sh", "/bin/sh -x", "/tmp"}},
        {"SMTP", {"SendmailQueueDirectory", "QmailQueueDirectory", "PostfixQueueDirectory"}, directory, no_directory + Values{"", "."}},
        {"SMTP",
         {"SendmailQueueListProgram", "QmailQueueListProgram", "PostfixQueueListProgram"},
         {"", "mailq", "mailq -v", "/bin/sh"},
         {"/bin/sh -v", "/no/such", "/tmp"}},
        {"Mail", {"InternalDomains"}, {"a.b&c-d:e_f", "&"}, {"", "a b", "a/b", "d\xe9"}},
        {"Mail", {"IgnoreExternalMail"}, yes, no},
        {"Queue", {"DirectoryLimitSize"}, size + Values{huge}, no_size},
        {"Queue", {"ErrorAction"}, {"0", "99999999999999999999"}, {"", "-1", "1x"}},
        {"Admin", {"AdminMailAddress"}, {"", "a@b;c@d,@e", "user", ";", "<a@b>"}, {"ex ample", "*@b", "a@b; c@d"}},
        {"Directories", {"LogDirectory"}, {"logs", "/tmp"}, no_directory + Values{"", "none"}},
        {"Directories",
         {"DeliverLogDirectory", "ManagerLogDirectory", "ViewerLogDirectory",
          "ScreeningLogDirectory", "ArchiveLogDirectory"},
         {"", "sub", "/tmp"},
         {"logs", "/no/such"}},
        {"Archive", {"ArchiveMode"}, {"none", "Rule"}, {"", "some"}},
        {"Archive", {"ArchiveDirectories", "RestoreDirectories"}, {"", ":", "/tmp:.", root}, {"/no/such", "/tmp:" + file}},
        {"Archive", {"BackupDevice"}, {"", device, root + ":" + device, file}, {root, ":", device + ":/no/such"}},
        {"Archive", {"NotifyDiskSwitch", "TSAProxy_auth"}, yes, no},
        {"Archive", {"DirectoryLimitSize"}, size, no_size},
        {"Archive", {"TSmode"}, {"0", "9"}, {"", "10", "00", "-"}},
        {"Archive", {"TSAProxy"}, server + Values{std::string(255, 'a') + ":25"}, no_server + Values{"", std::string(256, 'a')}},
        {"Archive", {"TSAProxy_user", "TSAProxy_pass"}, {"", "any thing"}, {}},
        {"Archive", {"TSRequestCommand", "TSVerificationCommand"}, {"/bin/sh x"}, {"", "sh"}},
        {"Screening", {"MIMELogLevel", "KEYWORDLogLevel"}, level + Values{"weak", "Strong"}, no_level},
        {"screening", {"DPINFOLogLevel", "MIMEngLevel", "KEYWORDngLevel", "DPINFOngLevel", "DPINFOthreshold"}, level, no_level + Values{"weak", "strong"}},
        {"screening", {"IgnorePasswordLock", "ExtractArchive", "IgnoreExtractMax", "IgnoreExtractPasswordLock"}, yes, no},
        {"screening", {"MaxCategories"}, {"0", "99999999999999999999"}, {"", "-1"}},
        {"screening", {"MaxWeight"}, {"0", "9", "0009"}, {"", "10", "x"}},
        {"screening", {"MIMEDefaultSet"}, {"strict"}, {"", "main", "a-b"}},
        {"screening", {"KEYWORDDefaultSet"}, {"main"}, {"", "strict"}},
        {"screening", {"DPInfo_Option", "DPInfo_Type"}, {"x", "0xffffffff", "-1", "-2147483648"}, {"", "0x100000000", "-2147483649"}},
        {"screening", {"DPInfo_Size"}, size, no_size},
        {"Expire", {"HoldMessages", "SystemLog", "DeliverLog", "ManagerLog", "ViewerLog", "ScreeningLog", "ArchiveLog"}, decimal4, {"10000", "00000", "-1", "x"}},
        {"Expire", {"DirectoryLimitSize", "MaxDeliverLogSize", "MaxScreeningLogSize", "MaxArchiveLogSize", "MaxManagerLogSize", "MaxViewerLogSize"}, size, no_size},
        {"Appender", {"AppendMode"}, {"RULE"}, {"", "some"}},
        {"Appender", {"AppendOption"}, {"", "x", "0", "0xFFFFFFFF"}, {"-1", "0x100000000"}},
        {"Appender", {"AppendMessage", "AppendMessageLocal"}, {"", "note", "/bin/sh"}, {"none", "/tmp"}},
        {"Appender", {"AppendCharset", "AppendEncoding"}, {"", "any thing"}, {}},
        {"Cooperation", {"CoopMode"}, {"none", "IN"}, {"rule", ""}},
        {"cooperation", {"AuditHostName", "FTPUserName", "FTPUserPassword"}, {"", "a b"}, {}},
        {"cooperation", {"AuditMessageQueue"}, directory + Values{"."}, no_directory + Values{""}},
        {"cooperation", {"FTPOnBoot"}, yes, no},
        {"cooperation", {"CoopQueue"}, directory, no_directory + Values{"", "none"}},
        {"cooperation", {"QueueLimitSize", "MinFree"}, size, no_size},
        {"cooperation", {"MaxMessageSize"}, size, no_size + Values{huge}},
        {"cooperation", {"FTPPort"}, {"1", "65535"}, {"0", "65536", "000025", ""}},
        {"cooperation", {"FTPInterval"}, {"0", "9939"}, {"9940", "09939", ""}},
        {"Search", {"HistoryDirectory"}, {"history", "/tmp"}, no_directory + Values{""}},
        {"Search", {"MaxSearchProcs"}, {"1", "5", "05"}, {"0", "6", "", "x"}},
        {"Search", {"MaxPreserveHistories"}, {"1", "100"}, {"0", "101"}},
        {"Search", {"MaxPreScanMessages"}, {"1", "20000000"}, {"0", "20000001"}},
        {"Search", {"MaxFullScanMessages"}, {"1", "200000"}, {"0", "200001"}},
        {"Search", {"MaxHitMessages", "MaxSearchMessages"}, {"1", "2000"}, {"0", "2001"}},
        {"Search", {"MaxIndexProcs"}, {"1", "99"}, {"0", "100", "-1"}},
        {"Search", {"SearchIndexDirectories"}, {"", "/tmp:/"}, {"/no/such"}},
        {"Search", {"MakeIndexWorkDirectory"}, {"/tmp", "."}, no_directory + Values{""}},
        {"Search", {"UseArchiveDirectories"}, yes, no},
        {"Search", {"DirectoryLimitSize"}, size, no_size},
        {"Cypher", {"Server_out", "Server_in"}, server + Values{""}, no_server},
        {"Cypher", {"UserGroup"}, {"", "any:thing"}, {}},
        {"Cypher", {"encode", "decode"}, {"0", "2147483647"}, {"", "-1", "2147483648", "x"}},
        // keys that cannot be checked
        {"SMTP", {"CheckSendmailMqueue", "None", ""}, {}, {"", "1"}},
        {"Mail", {"GroupMaxAddresses"}, {}, {"1"}},
        {"Files", {"ACL_File"}, {}, {"/bin/sh"}},
        {"None", {"SmtpPort"}, {}, {"25"}},
        {"", {"SmtpPort"}, {}, {"25"}},
    };
    // clang-format on
    const auto check = [&](const Rule& rule, const std::string& key, const std::string& value) {
        return test::run(
            {"ov_conf", "-f", gateway.file, "-c", "-s", rule.section, "-k", key, "--", value});
    };
    for (const Rule& rule : rules) {
        for (const std::string& key : rule.keys) {
            for (const std::string& value : rule.accepted) {
                EXPECT_EQ(check(rule, key, value), (Result{0, "", ""})) << key << " = " << value;
            }
            for (const std::string& value : rule.refused) {
                EXPECT_EQ(check(rule, key, value), (Result{1, "", "ERROR: invalid value\n"}))
                    << key << " = " << value;
            }
        }
    }
    EXPECT_EQ(check_config("SMTP", "SmtpPort", nullptr), -1);
    EXPECT_EQ(check_config(nullptr, "SmtpPort", "25"), -1);
    EXPECT_EQ(check_config("SMTP", nullptr, "25"), -1);
}

TEST(Check, LongValues) {
    const Installation gateway;
    const auto check = [&](const char* key, const std::string& value) {
        return test::run({"ov_conf", "-f", gateway.file, "-c", "-s", "Cypher", "-k", key, value});
    };
    EXPECT_EQ(check("UserGroup", std::string(8191, 'g')), (Result{0, "", ""}));
    EXPECT_EQ(check("UserGroup", std::string(8192, 'g')),
              (Result{1, "", "ERROR: too long value\n"}));
    // Of a proxy only the first 1023 characters count, of a server the first 4095: the port is cut
    // off behind its zeros.
    const auto proxy = [&](std::size_t zeros) {
        return test::run({"ov_conf", "-f", gateway.file, "-c", "-s", "Archive", "-k", "TSAProxy",
                          "host:" + std::string(zeros, '0') + "1"});
    };
    EXPECT_EQ(proxy(1017).status, 0);
    EXPECT_EQ(proxy(1018).status, 1);
    const std::string zeros = "host:" + std::string(4089, '0');
    EXPECT_EQ(check("Server_in", zeros + "1"), (Result{0, "", ""}));
    EXPECT_EQ(check("Server_in", zeros + "01"), (Result{1, "", "ERROR: invalid value\n"}));
}

TEST(Check, BackupDevicesHaveToBeWritable) {
    const Installation gateway;
    const std::string device = gateway.dir.file("device", "");
    ::chmod(device.c_str(), 0444);
    EXPECT_EQ(test::run({"ov_conf", "-f", gateway.file, "-c", "-s", "Archive", "-k", "BackupDevice",
                         device},
                        {.unprivileged = true}),
              (Result{1, "", "ERROR: invalid value\n"}));
}

TEST(Check, RefusalsInTheirOrder) {
    const auto check = [](std::vector<std::string> words) {
        words.insert(words.begin(),
                     {"ov_conf", "-f", "/no/such", "-s", "Cypher", "-k", "encode", "-c"});
        return test::run(words);
    };
    EXPECT_EQ(check({}), (Result{1, "", "510 value required\n"}));
    EXPECT_EQ(check({"1", "2"}), (Result{1, "", "510 value required\n"}));
    EXPECT_EQ(check({std::string(8192, '1')}), (Result{1, "", "ERROR: too long value\n"}));
    EXPECT_EQ(check({"x"}),
              (Result{1, "", "cannot open configfile \"/no/such\" (2)\nERROR: fatal\n"}));
    const std::string cannot = "cannot open configfile \"/no/such\" (2)\n";
    EXPECT_EQ(check({"-p"}), (Result{1, "", cannot})); // -p wins over -c, and -m over both
    EXPECT_EQ(check({"-m"}), (Result{1, "", cannot}));
    const Installation gateway;
    EXPECT_EQ(test::run({"ov_conf", "-f", gateway.file, "-m", "-p", "-c"}), (Result{0, "", ""}));
}

TEST(Check, NothingIsLoaded) {
    const Installation gateway;
    // An invalid file, and another number of processes: a check looks at neither.
    gateway.configure("[SMTP]\nSmtpPort = bad\n[Search]\nMaxSearchProcs_MAX = 9\n");
    const auto check = [&](const std::string& file, const char* value) {
        return test::run(
            {"ov_conf", "-f", file, "-c", "-s", "Search", "-k", "MaxSearchProcs", value});
    };
    EXPECT_EQ(check(gateway.file, "5"), (Result{0, "", ""}));
    EXPECT_EQ(check(gateway.file, "6"), (Result{1, "", "ERROR: invalid value\n"}));
    EXPECT_EQ(check("/no/such", "5"),
              (Result{1, "", "cannot open configfile \"/no/such\" (2)\nERROR: fatal\n"}));
    std::filesystem::remove(gateway.path("template"));
    EXPECT_EQ(check(gateway.file, "5"), (Result{1, "", "ERROR: fatal\n"}));
}

} // namespace
} // namespace ov
