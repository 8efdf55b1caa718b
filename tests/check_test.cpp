// ov_conf -c: which values are acceptable for which key.
#include "installation.h"
#include "settings/check_config.h"

#include <gtest/gtest.h>
#include <sstream>
#include <sys/stat.h>

namespace ov {
namespace {

using test::Installation;
using test::Result;
using Values = std::vector<std::string>;

struct Rule {
    const char* keys; // "Section.Key", separated by blanks
    Values accepted;
    Values refused;
};

Values operator+(Values values, const Values& more) {
    values.insert(values.end(), more.begin(), more.end());
    return values;
}

Result check(const std::string& file, const std::string& section, const std::string& key,
             const std::string& value) {
    return test::run({"ov_conf", "-f", file, "-c", "-s", section, "-k", key, "--", value});
}

TEST(Check, EveryRule) {
    const Installation gateway;
    for (const char* name : {"mss.keywd.d", "mss.mtype.d", "logs/sub"}) {
        std::filesystem::create_directory(gateway.path(name));
    }
    for (const char* name : {"keywd.d/main_1.keywd", "keywd.d/a-b.keywd", "keywd.d/\xe9.keywd",
                             "mtype.d/strict.mtype", "mtype.d/a-b.mtype"}) {
        gateway.dir.file(std::string("mss.") + name, "");
    }
    gateway.dir.file("template/note", "");
    const std::string file = gateway.dir.file("file", "");
    const std::string root = gateway.path();
    // Nine of these are more bytes than a size can be, and not too many kilobytes.
    std::string huge;
    for (int i = 0; i < 9; ++i) {
        huge += "999999999G";
    }
    const Values yes = {"TRUE", "off", "1"};
    const Values no = {"", "2", "maybe"};
    const Values size = {"", "0", "1g512M", "K", "10"};
    const Values no_size = {"x", "1234567890", "-1", "1 K"};
    const Values directory = {root, root + "logs", std::string(4095, '/')};
    const Values no_directory = {"", "/no/such", file, std::string(4096, '/')};
    const Values level = {"NONE", "0", "9999", "00009999"};
    const Values no_level = {"", "10000", "-1", "some", "1x"};
    const Values server = {"mx1",        "mx1:1", "mx1:60000", "mx1:25x",
                           "1.2.3.4:25", "mx_1.", "-a-",       "1.2.3.a"};
    const Values no_server = {"mx1:0", "mx1:60001", "mx1:", "mx1:-1", "m/x",
                              "1.2.3", "a..b",      "a..",  ".a",     "."};
    const std::string eight = "a b:1 c _msp_ _CMD_ f g h";

    // clang-format off
    const Rule rules[] = {
        {"SMTP.AddReceivedField Mail.IgnoreExternalMail Archive.NotifyDiskSwitch Archive.TSAProxy_auth screening.IgnorePasswordLock "
         "screening.ExtractArchive screening.IgnoreExtractMax screening.IgnoreExtractPasswordLock cooperation.FTPOnBoot Search.UseArchiveDirectories", yes, no},
        // words
        {"SMTP.MailSubmissionProgram", {"Sendmail", "postfix", "qmail"}, {"exim", ""}},
        {"Archive.ArchiveMode", {"none", "Rule"}, {"", "some"}},
        {"Appender.AppendMode", {"RULE"}, {"", "some"}},
        {"Cooperation.CoopMode", {"none", "IN"}, {"rule", ""}},
        {"Screening.MIMELogLevel Screening.KEYWORDLogLevel", level + Values{"weak", "Strong"}, no_level},
        {"screening.DPINFOLogLevel screening.MIMEngLevel screening.KEYWORDngLevel screening.DPINFOngLevel screening.DPINFOthreshold", level, no_level + Values{"weak", "strong"}},
        // numbers
        {"smtp.smtpport", {"1", "65535", "00025"}, {"0", "65536", "080000", "", "25x"}},
        {"SMTP.MaxConnections", {"0", "999", "0000999"}, {"1000", "", "-1", "99999999999999999999"}},
        {"SMTP.TransmissionMode", {"abc", "0x7fffffff", "-2147483648", "017777777777", " 1"}, {"", "0x80000000", "2147483648", "99999999999999999999", "020000000000"}},
        {"Queue.ErrorAction screening.MaxCategories", {"0", "99999999999999999999"}, {"", "-1", "1x"}},
        {"Archive.TSmode", {"0", "9"}, {"", "10", "00", "-"}},
        {"screening.MaxWeight", {"0", "9", "0009"}, {"", "10", "x"}},
        {"screening.DPInfo_Option screening.DPInfo_Type", {"x", "0xffffffff", "-1", "-2147483648"}, {"", "0x100000000", "-2147483649"}},
        {"Expire.HoldMessages Expire.SystemLog Expire.DeliverLog Expire.ManagerLog Expire.ViewerLog Expire.ScreeningLog Expire.ArchiveLog", {"", "0", "9999", "0000"}, {"10000", "00000", "-1", "x"}},
        {"Appender.AppendOption", {"", "x", "0", "0xFFFFFFFF"}, {"-1", "0x100000000"}},
        {"cooperation.FTPPort", {"1", "65535"}, {"0", "65536", "000025", ""}},
        {"cooperation.FTPInterval", {"0", "9939"}, {"9940", "09939", ""}},
        {"Search.MaxSearchProcs", {"1", "5", "05"}, {"0", "6", "", "x"}},
        {"Search.MaxPreserveHistories", {"1", "100"}, {"0", "101"}},
        {"Search.MaxPreScanMessages", {"1", "20000000"}, {"0", "20000001"}},
        {"Search.MaxFullScanMessages", {"1", "200000"}, {"0", "200001"}},
        {"Search.MaxHitMessages Search.MaxSearchMessages", {"1", "2000"}, {"0", "2001"}},
        {"Search.MaxIndexProcs", {"1", "99"}, {"0", "100", "-1"}},
        {"Cypher.encode Cypher.decode", {"0", "2147483647"}, {"", "-1", "2147483648", "x"}},
        // sizes
        {"SMTP.MaxMessageSize cooperation.MaxMessageSize", size, no_size + Values{huge}},
        {"Queue.DirectoryLimitSize Archive.DirectoryLimitSize screening.DPInfo_Size Expire.DirectoryLimitSize Expire.MaxDeliverLogSize "
         "Expire.MaxScreeningLogSize Expire.MaxArchiveLogSize Expire.MaxManagerLogSize Expire.MaxViewerLogSize cooperation.QueueLimitSize "
         "cooperation.MinFree Search.DirectoryLimitSize", size, no_size},
        {"Queue.DirectoryLimitSize", {huge}, {}},
        // hosts and addresses
        {"SMTP.DenyIP SMTP.AllowIP", {"", ":", "10.*:192.168.:1.2.3.4/32"}, {"1.2.3.4/33", "256.1", "10.1:x"}},
        {"SMTP.ServerHost", server + Values{eight, " "}, no_server + Values{"", eight + " i"}},
        {"Archive.TSAProxy", server + Values{std::string(255, 'a') + ":25"}, no_server + Values{"", "a b", std::string(256, 'a')}},
        {"Cypher.Server_out Cypher.Server_in", server + Values{""}, no_server},
        {"Mail.InternalDomains", {"a.b&c-d:e_f", "&"}, {"", "a b", "a/b", "d\xe9"}},
        {"Admin.AdminMailAddress", {"", "a@b;c@d,@e", "user", ";", "<a@b>"}, {"ex ample", "*@b", "a@b; c@d"}},
        // programs, files and directories
        {"SMTP.ServerCommand Archive.TSRequestCommand Archive.TSVerificationCommand", {"/bin/sh -c x", " /bin/sh"}, {"", " ", "sh", "/no/such", "/tmp"}},
        {"SMTP.SendmailProgram SMTP.QmailProgram SMTP.PostfixProgram", {"/bin/sh"}, {"", "sh", "/bin/sh -x", "/tmp"}},
        {"SMTP.SendmailQueueDirectory SMTP.QmailQueueDirectory SMTP.PostfixQueueDirectory", directory, no_directory + Values{"."}},
        {"SMTP.SendmailQueueListProgram SMTP.QmailQueueListProgram SMTP.PostfixQueueListProgram", {"", "mailq", "mailq -v", "/bin/sh"}, {"/bin/sh -v", "/no/such", "/tmp"}},
        {"Directories.LogDirectory", {"logs", "/tmp"}, no_directory + Values{"none"}},
        {"Directories.DeliverLogDirectory Directories.ManagerLogDirectory Directories.ViewerLogDirectory Directories.ScreeningLogDirectory "
         "Directories.ArchiveLogDirectory", {"", "sub", "/tmp"}, {"logs", "/no/such"}},
        {"Archive.ArchiveDirectories Archive.RestoreDirectories", {"", ":", "/tmp:.", root}, {"/no/such", "/tmp:" + file}},
        {"Archive.BackupDevice", {"", "/dev/null", root + ":/dev/null", file}, {root, ":", "/dev/null:/no/such"}},
        {"screening.MIMEDefaultSet", {"strict"}, {"", "main_1", "a-b"}},
        {"screening.KEYWORDDefaultSet", {"main_1"}, {"", "strict", "a-b", "\xe9", std::string(4095, 'x')}},
        {"Appender.AppendMessage Appender.AppendMessageLocal", {"", "note", "/bin/sh"}, {"none", "/tmp"}},
        {"cooperation.AuditMessageQueue", directory + Values{"."}, no_directory},
        {"cooperation.CoopQueue", directory, no_directory + Values{"none"}},
        {"Search.HistoryDirectory", {"history", "/tmp"}, no_directory},
        {"Search.SearchIndexDirectories", {"", "/tmp:/"}, {"/no/such"}},
        {"Search.MakeIndexWorkDirectory", {"/tmp", "."}, no_directory},
        // texts
        {"SMTP.SendmailOption", {"", "-oi"}, {"-o i", " "}},
        {"Archive.TSAProxy_user Archive.TSAProxy_pass Appender.AppendCharset Appender.AppendEncoding cooperation.AuditHostName "
         "cooperation.FTPUserName cooperation.FTPUserPassword Cypher.UserGroup", {"", "any:thing at all"}, {}},
        // keys that cannot be checked
        {"SMTP.CheckSendmailMqueue SMTP.None SMTP. Mail.GroupMaxAddresses Files.ACL_File Screening.MaxExtractNesting Directories.QuarantineQueue "
         "Directories.MessageQueue Cooperation.TransPidFile Cooperation.RefuseLoadAverage None.SmtpPort .SmtpPort", {}, {"", "1", "25", "/bin/sh", "/tmp"}},
    };
    // clang-format on
    for (const Rule& rule : rules) {
        std::istringstream names(rule.keys);
        for (std::string section, key;
             std::getline(names, section, '.') && std::getline(names, key, ' ');) {
            for (const std::string& value : rule.accepted) {
                EXPECT_EQ(check(gateway.file, section, key, value), (Result{0, "", ""}))
                    << key << " = " << value;
            }
            for (const std::string& value : rule.refused) {
                EXPECT_EQ(check(gateway.file, section, key, value),
                          (Result{1, "", "ERROR: invalid value\n"}))
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
    const Result good{0, "", ""};
    const Result invalid{1, "", "ERROR: invalid value\n"};
    EXPECT_EQ(check(gateway.file, "Cypher", "UserGroup", std::string(8191, 'g')), good);
    EXPECT_EQ(check(gateway.file, "Cypher", "UserGroup", std::string(8192, 'g')),
              (Result{1, "", "ERROR: too long value\n"}));
    // Of a proxy only the first 1023 characters count, of a server the first 4095: the port is cut
    // off behind its zeros.
    const auto port_behind = [](std::size_t zeros) {
        return "host:" + std::string(zeros, '0') + "1";
    };
    EXPECT_EQ(check(gateway.file, "Archive", "TSAProxy", port_behind(1017)), good);
    EXPECT_EQ(check(gateway.file, "Archive", "TSAProxy", port_behind(1018)), invalid);
    EXPECT_EQ(check(gateway.file, "Cypher", "Server_in", port_behind(4089)), good);
    EXPECT_EQ(check(gateway.file, "Cypher", "Server_in", port_behind(4090)), invalid);
    // A backup device has to be writable.
    const std::string device = gateway.dir.file("device", "");
    ::chmod(device.c_str(), 0444);
    EXPECT_EQ(test::run({"ov_conf", "-f", gateway.file, "-c", "-s", "Archive", "-k", "BackupDevice",
                         device},
                        {.unprivileged = true}),
              invalid);
}

TEST(Check, RefusalsInTheirOrder) {
    const Installation gateway;
    const std::string cannot = "cannot open configfile \"/no/such\" (2)\n";
    const std::pair<Values, std::string> cases[] = {
        {{}, "510 value required\n"},
        {{"1", "2"}, "510 value required\n"},
        {{std::string(8192, '1')}, "ERROR: too long value\n"},
        {{"x"}, cannot + "ERROR: fatal\n"},
        {{"-p"}, cannot}, // -p wins over -c, and -m over both
        {{"-m"}, cannot},
    };
    for (const auto& [words, reply] : cases) {
        const Values command = {"ov_conf", "-f", "/no/such", "-s", "Cypher", "-k", "encode", "-c"};
        EXPECT_EQ(test::run(command + words), (Result{1, "", reply})) << reply;
    }
    EXPECT_EQ(test::run({"ov_conf", "-f", gateway.file, "-m", "-p", "-c"}), (Result{0, "", ""}));
    std::filesystem::remove(gateway.path("template"));
    EXPECT_EQ(check(gateway.file, "Cypher", "encode", "5"), (Result{1, "", "ERROR: fatal\n"}));
}

TEST(Check, NothingIsLoaded) {
    const Installation gateway;
    // An invalid file, and another number of processes: a check looks at neither.
    gateway.configure("[SMTP]\nSmtpPort = bad\n[Search]\nMaxSearchProcs_MAX = 9\n");
    EXPECT_EQ(check(gateway.file, "Search", "MaxSearchProcs", "5"), (Result{0, "", ""}));
    EXPECT_EQ(check(gateway.file, "Search", "MaxSearchProcs", "6"),
              (Result{1, "", "ERROR: invalid value\n"}));
}

} // namespace
} // namespace ov
