// Loading: what every rule takes and refuses, and what becomes of the values that it takes.
#include "fake_host.h"
#include "installation.h"
#include "settings/aux_sections.h"
#include "settings/catalogue.h"
#include "settings/conf.h"
#include "settings/kinds.h"
#include "settings/settings.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/statfs.h>

namespace ov {
namespace {

using test::Installation;
using test::Result;
using Values = std::vector<std::string>;

constexpr unsigned All = 0x00ff;
constexpr unsigned NoCheck = 0x10ff;

// Loads the whole file with the command, and the search section with it: a fetch loads that, too.
Result load(const Installation& gateway) {
    Result all = test::run({"ov_conf", "-f", gateway.file, "-m"});
    if (all != Result{0, "", ""}) {
        return all;
    }
    const Result fetch = test::run({"ov_conf", "-f", gateway.file, "-s", "none", "-k", "none"});
    return fetch == Result{0, "0: not found\n", ""} ? all : fetch;
}

// How the readers word a refusal, SEC, KEY and VALUE standing for these.
const std::string Main = "[SEC] KEY: \"VALUE\" invalid value \n";
const std::string Aux = "invalid value, [SEC] KEY: VALUE\n";
const std::string Search = "[SEC] KEY: \"VALUE\" invalid value\n";
const std::string NotFull = "[SEC] KEY: \"VALUE\" must be specified full pathname.\n";

std::string replaced(std::string text, std::string_view what, std::string_view with) {
    const std::size_t at = text.find(what);
    return at == text.npos ? text : text.replace(at, what.size(), with);
}

struct Rule {
    std::string section;
    std::string key;
    Values taken;
    Values refused;
    std::string wording = Main;
    std::string message = {}; // in front of the refusal; VALUE stands for the value
};

TEST(Load, EveryRuleTakesAndRefuses) {
    const Installation gateway;
    const std::string root = gateway.path();
    const std::string file = gateway.dir.file("file", "");
    const auto times = [](std::string_view text, int number) {
        std::string result;
        while (number-- > 0) {
            result += text;
        }
        return result;
    };
    const std::string eight = times("m1:25 ", 8);
    // clang-format off
    std::vector<Rule> rules = {
        {"SMTP", "Limit2GB", {"Yes", "ON", "1", "TRUE", "no", "Off", "0", "false"}, {"2", "enable"}},
        {"SMTP", "NeedMailHelo", {"yes # said so"}, {""}},
        {"SMTP", "ListenQueue", {"abc", "", "12abc", "-2147483648", "2147483647"}, {"2147483648", "-2147483649", "99999999999999999999"}},
        {"SMTP", "SOCKEToption", {"4294967295", "-1", "-2147483648"}, {"4294967296", "-2147483649"}},
        {"Archive", "ArchiveVersion", {"9223372036854775807", "-1"}, {"9223372036854775808"}},
        {"Archive", "AlternateHostID", {"18446744073709551615", "-1"}, {"18446744073709551616", "-2147483649"}},
        {"Screening", "OOXML_End", {"-9223372036854775808"}, {"9223372036854775808"}},
        {"Archive", "DirectoryLimitRate", {"0", "100", "abc"}, {"-1", "101"}},
        {"SMTP", "SmtpPort", {"1", "65535", "00025"}, {"0", "65536", "080000", "", "-5", "+5"}},
        {"Screening", "MIMEngLevel", {"none", "Weak", "9999", "0", "abc"}, {"10000", "-1"}},
        {"Screening", "DPINFOthreshold", {"strong", "9999"}, {"10000"}},
        {"SMTP", "MailSubmissionProgram", {"Sendmail"}, {"exim", ""}},
        {"Archive", "ArchiveMode", {"RULE", "none"}, {"some"}},
        {"Mail", "CheckInternal", {"both", "envelope"}, {"all", ""}},
        {"NoticeMessage", "NotifyAdmin_Cancel", {"nega", "cont"}, {"2"}},
        {"Appender", "AppendMode", {"rule"}, {"everything"}},
        {"SMTP", "MaxMessageSize", {"0", "1G512M", "999999999g", "K"}, {"", "5x", "1234567890", "-1", "1 M"}},
        {"Queue", "DirectoryLimitSize", {"2G", "10"}, {"", "5x"}},
        {"NoticeMessage", "Signature", {std::string(24, 's'), ""}, {std::string(25, 's')}, Main, "Signature too long: VALUE\n"},
        {"SMTP", "SendmailProgram", {"/bin/sh", "/tmp"}, {"/no/such"}},
        {"SMTP", "SendmailQueueDirectory", {"/tmp"}, {"sh", ""}, NotFull},
        {"Screening", "UnzipProgram", {"/bin/sh"}, {"/" + std::string(4095, 'x')}},
        {"Files", "MssPidFile", {"", "x.pid", "/x/y"}, {std::string(4095, 'x')}},
        {"Files", "ACL_File", {"/x/acl"}, {"mss.acl", ""}, NotFull},
        {"Directories", "TmpDirectory", {"/tmp"}, {"", "/no/such", file}},
        {"Directories", "AdmDirectory", {"/tmp/"}, {"tmp"}, NotFull},
        {"Directories", "EtcDirectory", {"etc", "/tmp"}, {"", "none"}},
        {"Directories", "Group_Dir", {"group"}, {"admin"}},
        {"Directories", "DeliverLogDirectory", {"logs/deliver", root + "new"}, {"no/deep", "file"}},
        {"Directories", "SRCH_Admin_Dir", {"admin"}, {"none"}, Aux},
        {"Directories", "TemplateDirectory", {"", "template"}, {"none"}, Aux},
        {"SMTP", "AllowIP", {"", "192.168.:10.*:1.2.3.4/32", "0/0"}, {"1.2.3.4/33", "1234567890123456789"}},
        {"check_mail", "DenyFromAddress", {"", "a@b,*@c;d"}, {}},
        {"Mail", "ExcludeGroup", {"a&b:c"}, {}},
        {"Admin", "AdminMailAddress", {"", times("a@b,", 8), "user"}, {"*@b"}, Main, "Invalid mail address \"VALUE\"\n"},
        {"Admin", "AdminMailAddress", {}, {times("a@b;", 9)}, Main, "Too much mail addresses. \"VALUE\"\n"},
        {"Archive", "MailAddress", {"a@b"}, {"a:b"}, Main, "Invalid mail address. \"VALUE\"\n"},
        {"SMTP", "ServerHost", {eight, " ", "_msp_ _CMD_ a:1 b:60000", "a:25x", "_MSP_:25"}, {eight + "m9", "_MSP_:0", "a:0", "a:60001", "a:", "a:99999999999999999999"}},
        {"SMTP", "NTF_ServerHost", {eight}, {"a:-1"}},
        {"Cooperation", "CoopMode", {"out"}, {"rule"}, Aux},
        {"Cooperation", "FTPPort", {"0"}, {"x", ""}, Aux},
        {"Cooperation", "CoopQueue", {"cqueue"}, {"none"}, Aux},
        {"Cypher", "UserGroup", {times("g:", 8), ""}, {times("g:", 9)}, Aux},
        {"Cypher", "encode", {"2"}, {"2147483648"}, Aux},
        {"Search", "MaxIndexProcs", {"1", "99", "5\nMaxIndexProcs_MAX = 5\nMaxIndexProcs_MIN = 5"}, {"0", "100", "-1", "x"}, Search},
        {"Search", "MaxSearchProcs", {"6\nMaxSearchProcs_MAX = 6"}, {"6"}, Search},
        {"Search", "MaxIndexProcs_MIN", {"1"}, {"0"}, Search},
        {"Search", "MaxIndexProcs_MAX", {"1", "99"}, {"100"}, Search},
        {"Search", "MaxFullScanMessages", {"200000"}, {"200001"}, Search},
        {"Search", "HistoryDirectory", {"history", root + "history"}, {"", "none"}, Search},
        {"Search", "HistoryDirectory", {}, {std::string(4094, 'x')}, "[SEC] KEY: \"VALUE\" cannnot configuration \n"},
        {"Search", "TarProgram", {"/no/such"}, {"tar"}, NotFull},
        {"Search", "UseArchiveDirectories", {"no"}, {"maybe"}, Search},
    };
    // Keys of a section, their largest number, and how many digits they may have (0: any number).
    const std::tuple<const char*, Values, unsigned long, std::size_t> numbers[] = {
        {"SMTP", {"MaxConnections"}, 999, 0}, {"SMTP", {"MaxRecipients"}, 99999, 0}, {"SMTP", {"MaxRecipientsSend"}, 1000, 4},
        {"SMTP", {"MaxHeadersLength"}, 9223372036854775807, 0}, {"SMTP", {"ConnectionTimeout"}, 4294967295, 0},
        {"SMTP", {"RefuseLoadAverage"}, 99, 2}, {"SMTP", {"Timeout_data", "SendmailMinFreeBlocks"}, 9999, 4},
        {"Archive", {"RefuseLoadAverage"}, 99, 2}, {"Archive", {"IndexSize"}, 10000, 6}, {"Archive", {"TssIndexSize"}, 999, 3}, {"Archive", {"TSmode"}, 2, 1},
        {"Screening", {"MaxExtractNesting"}, 999, 0}, {"Screening", {"ExtractNice"}, 99, 2}, {"Screening", {"CodeDetectReadSize"}, 999999, 6},
        {"Queue", {"ConfirmBeforeSend"}, 99999, 5}, {"Expire", {"HoldMessages"}, 9999, 0}, {"check_mail", {"DenyInvalidFormat"}, 2147483647, 0},
    };
    // clang-format on
    for (const auto& [section, keys, number, digits] : numbers) {
        const std::string highest = std::to_string(number);
        const std::string zeros((digits == 0 ? 20 : digits) - highest.size(), '0');
        Values refused = {"", "-1", std::to_string(number + 1)};
        if (digits != 0) {
            refused.push_back("0" + zeros + highest);
        }
        for (const std::string& key : keys) {
            rules.push_back({section, key, {highest, zeros + highest}, refused});
        }
    }
    for (const Rule& rule : rules) {
        const std::string header = "[" + rule.section + "]\n" + rule.key + " = ";
        for (const std::string& value : rule.taken) {
            gateway.configure(header + value + "\n");
            EXPECT_EQ(load(gateway), (Result{0, "", ""})) << rule.key << " = " << value;
        }
        for (const std::string& value : rule.refused) {
            gateway.configure(header + value + "\n");
            std::string wording = replaced(rule.wording, "SEC", rule.section);
            wording = replaced(replaced(wording, "KEY", rule.key), "VALUE", value);
            const std::string expected = replaced(rule.message, "VALUE", value) + gateway.file +
                                         ":" + std::to_string(Installation::FirstLine + 1) + ": " +
                                         wording;
            EXPECT_EQ(load(gateway), (Result{1, "", expected})) << rule.key << " = " << value;
        }
    }
}

TEST(Load, TheFirstInvalidValueInReadingOrderStops) {
    const Installation gateway;
    // [Debug] is read last, wherever it stands.
    gateway.configure("[Debug]\nNoCore = x\n[Log]\nLogLevel = y\n[Cypher]\nencode = 9999999999\n");
    const std::string at = gateway.file + ":";
    EXPECT_EQ(load(gateway), (Result{1, "", at + "9: [Log] LogLevel: \"y\" invalid value \n"}));
    // A range is read before the value.
    gateway.configure("[Search]\nMaxIndexProcs = 5\nMaxIndexProcs_MAX = 4\n");
    EXPECT_EQ(load(gateway),
              (Result{1, "", at + "7: [Search] MaxIndexProcs: \"5\" invalid value\n"}));
    EXPECT_EQ(test::run({"ov_conf", "-f", "/no/such", "-m"}),
              (Result{1, "", "cannot open configfile \"/no/such\" (2)\n"}));
}

TEST(Load, ProgramsNeedNotExistForAFetch) {
    const Installation gateway;
    gateway.configure("[SMTP]\nSendmailProgram = /no/such\n[Admin]\nAdminMailAddress = *@b\n");
    EXPECT_EQ(test::run({"ov_conf", "-f", gateway.file, "-s", "SMTP", "-k", "SendmailProgram"}),
              (Result{0, "1: /no/such\n", ""}));
    EXPECT_EQ(load(gateway).status, 1);
}

TEST(Load, TheChosenProgramsKeysAreReadAndTaken) {
    const Installation gateway;
    const auto chosen = [&](const std::string& text) {
        gateway.configure("[SMTP]\nMailSubmissionProgram = " + text);
        read_config(gateway.file.c_str(), All);
        return Values{SendmailProgram.c_str(), SendmailQueueDirectory.c_str(),
                      SendmailQueueListProgram.c_str(), SendmailNullFrom.c_str()};
    };
    EXPECT_EQ(chosen("qmail\nQmailProgram = /bin/sh\nQmailNullFrom = \"\"\nPostfixProgram = bad\n"
                     "SendmailProgram = bad\nCheckSendmailMqueue = off\n"),
              (Values{"/bin/sh", "/var/qmail/queue", "/var/qmail/bin/qmail-qstat", "\"\""}));
    EXPECT_EQ(CheckSendmailMqueue, 0);
    EXPECT_EQ(chosen("postfix\nPostfixProgram = /bin/cat\n"),
              (Values{"/bin/cat", "/var/spool/postfix", "/usr/sbin/postqueue -p", "<>"}));
}

TEST(Load, EveryDirectoryIsAbsoluteAfterwards) {
    ::umask(022);
    const Installation gateway;
    const std::string root = gateway.path();
    read_config(gateway.file.c_str(), All);
    read_config_search(gateway.file.c_str(), NoCheck);
    // clang-format off
    const std::pair<const Text*, std::string> paths[] = {
        {&RootDirectory, root}, {&EtcDirectory, root + "etc/"}, {&Group_Dir, root + "etc/group/"},
        {&ScreeningLogDirectory, root + "screening/"}, {&MessageQueue, root + "mqueue/"}, {&CoopQueue, root + "cqueue/"},
        {&TemplateDirectory, root + "template/"}, {&SRCH_Sysadm_Dir, root + "srch_sysadm/"}, {&SrchHistoryDirectory, root + "history/"},
        {&TransPidFile, root + "etc/trans.pid"}, {&MssPidFile, root + "etc/mss.pid"}, {&ACL_File, root + "etc/mss.acl"},
        {&PIchkDicFile, "/opt/Orvanta/Admin/lib/dic/pichk.dic"}, {&TmpDirectory, "/tmp/"},
    };
    // clang-format on
    for (const auto& [setting, path] : paths) {
        EXPECT_EQ(setting->view(), path);
    }
    EXPECT_FALSE(std::filesystem::exists(gateway.path("screening")));
    gateway.configure("[Directories]\nScreeningLogDirectory = made\nTemplateDirectory =\n");
    read_config(gateway.file.c_str(), All);
    struct stat made {};
    ::stat(gateway.path("made").c_str(), &made);
    EXPECT_EQ(made.st_mode & 07777U, 0755U);
    EXPECT_FALSE(TemplateDirectory);
}

// Of what is not shown.
TEST(Load, StoredValues) {
    const Installation gateway;
    gateway.configure(
        "[SMTP]\nSOCKEToption = -1\nServerHost = a b:10 _Msp_:5 _cmd_\nGreetingMessage =\n"
        "AllowIP = 10.1\n[NoticeMessage]\nSignature =\n"
        "[check_rcpt]\nLocalDomain = x;y,z\n"
        "[Archive]\nAlternateHostID = 18446744073709551615\nMinFree = 1G\n"
        "[Cooperation]\nMinFree = 2G\n");
    read_config(gateway.file.c_str(), All);
    EXPECT_EQ(SOCKEToption, 4294967295U);
    EXPECT_EQ(ServerHost.view(), "a b:10 _Msp_:5 _cmd_");
    const std::tuple<std::string, int, int> servers[] = {
        {"a", 25, 0}, {"b", 10, 0}, {"_MSP_", 0, 1}, {"_CMD_", 0, 2}, {"", 0, 0}};
    for (std::size_t i = 0; i < std::size(servers); ++i) {
        const SVRLIST& server = SvrList[i];
        EXPECT_EQ(std::tuple(std::string(server.host.view()), server.port, server.flg), servers[i]);
    }
    EXPECT_TRUE(GreetingMessage && GreetingMessage.view().empty());
    EXPECT_FALSE(NoticeSignature);
    EXPECT_EQ(CR_LocalDomain, (WordList{{"x", "y", "z"}}));
    EXPECT_EQ(AlternateHostID, 18446744073709551615UL);
    struct statfs info {};
    ::statfs(gateway.path().c_str(), &info);
    EXPECT_EQ(ArchiveMinFree, 1048576);
    EXPECT_EQ(ArchiveMinFreeBlocks, 1048576 / info.f_bsize + 1);
    EXPECT_EQ(CoopMinFree, 2097152);
    EXPECT_EQ(CoopMinFreeBlocks, 2097152 / info.f_bsize + 1);
    EXPECT_TRUE(SMTP_AllowIP && InternalDomains);
    EXPECT_EQ(conf_free(), 0);
    EXPECT_FALSE(SMTP_AllowIP || InternalDomains);
}

TEST(Load, WarningsDoNotStop) {
    const Installation gateway;
    std::filesystem::remove(gateway.path("aqueue"));
    std::filesystem::remove(gateway.path("cqueue"));
    gateway.configure("[Forward]\nForwardMode = all\n[Archive]\nMinFree = 1\n"
                      "[Cooperation]\nMinFree = 1\n");
    EXPECT_EQ(load(gateway),
              (Result{0, "",
                      "WARNING cannot get block size " + gateway.path("aqueue/") +
                          "; [Archive] MinFree set 0\n"
                          "WARNING No address specified, ForwardMode = none\n" +
                          gateway.file + ":11: cannot get block size " + gateway.path("cqueue/") +
                          "; [Cooperation] MinFree set 0\n"}));
}

TEST(Load, InternalDomains) {
    const Installation gateway;
    const std::string rest = "[Directories]\nRootDirectory = " + gateway.path() + "\n[Mail]\n";
    const std::pair<std::string, std::string> refused[] = {
        {"", "cannot set default internal domain\n.*:0: .Mail. InternalDomains: \"\" invalid"},
        {"InternalDomains =\n", "cannot set default internal domain\n.*:4: .Mail. InternalD"},
    };
    for (const auto& [entry, message] : refused) {
        test::write_file(gateway.file, rest + entry);
        EXPECT_EXIT(read_config(gateway.file.c_str(), All), testing::ExitedWithCode(1), message);
    }

    test::host = {"mx1", "mx1.example.com", nullptr};
    test::write_file(gateway.file, rest);
    read_config(gateway.file.c_str(), NoCheck);
    EXPECT_FALSE(InternalDomains);
    read_config(gateway.file.c_str(), All);
    EXPECT_EQ(InternalDomains, (WordList{{"example.com"}}));
    test::host = {"mx1", "mx1.exa/mple.com", nullptr};
    EXPECT_EXIT(read_config(gateway.file.c_str(), All), testing::ExitedWithCode(1),
                "invalid domain name\"exa/mple.com\"\n.*:0: .Mail. InternalDomains: \"\" invalid");
    // Domains that are given are taken as they stand.
    test::write_file(gateway.file, rest + "InternalDomains = a.b&c@d:e\n");
    read_config(gateway.file.c_str(), All);
    EXPECT_EQ(InternalDomains, (WordList{{"a.b", "c@d", "e"}}));
}

TEST(Load, QueuesThatCannotBeLinked) {
    const Installation gateway;
    gateway.dir.file("aqueue/.qxtest", "left behind");
    gateway.dir.file("pqueue/.qxtest", "left behind");
    read_config(gateway.file.c_str(), All);
    EXPECT_EQ(std::pair(ArchiveHardLink, QuarantineHardLink), std::pair(1, 1));
    for (const char* queue : {"mqueue", "aqueue", "pqueue"}) {
        EXPECT_TRUE(std::filesystem::is_empty(gateway.path(queue))) << queue;
    }
    // A queue that is the message queue itself: nothing can be linked, but it can be moved.
    std::filesystem::remove(gateway.path("aqueue"));
    std::filesystem::create_symlink("mqueue", gateway.path("aqueue"));
    gateway.dir.file("mqueue/.qxtest", "left behind");
    read_config(gateway.file.c_str(), All);
    EXPECT_EQ(std::pair(ArchiveHardLink, QuarantineHardLink), std::pair(0, 1));
    EXPECT_TRUE(std::filesystem::is_empty(gateway.path("mqueue")));

    ArchiveHardLink = 1;
    std::filesystem::remove(gateway.path("aqueue"));
    std::filesystem::remove(gateway.path("pqueue"));
    read_config(gateway.file.c_str(), 0x0010); // not asked for
    EXPECT_EQ(ArchiveHardLink, 1);
    read_config(gateway.file.c_str(), All);
    EXPECT_EQ(std::pair(ArchiveHardLink, QuarantineHardLink), std::pair(0, 0));
    EXPECT_TRUE(std::filesystem::is_empty(gateway.path("mqueue")));
}

// Which bits of the mask, none when there is no gate, let keys in.
TEST(Load, Gates) {
    const Installation gateway;
    using Keys = std::vector<std::pair<const char*, const char*>>;
    // clang-format off
    const std::pair<unsigned, Keys> gates[] = {
        {0, {{"SMTP", "MaxRecipientsSend"}, {"Mail", "ACL_Option"}, {"Log", "LogPerm"}, {"Archive", "ArchiveWipeRate"}, {"Screening", "ConvOption"},
             {"Expire", "SystemLog"}, {"SystemControl", "MaxOpenTries"}, {"Debug", "SmtpForkDelay"}}},
        {0x01, {{"SMTP", "SmtpPort"}, {"Queue", "DelayInterval"}, {"check_mail", "DenyInvalidFormat"}, {"check_rcpt", "DenyInvalidFormat"},
                {"Screening", "MaxCategories"}, {"Expire", "SweepInterval"}}},
        {0x02, {{"Archive", "RefuseLoadAverage"}, {"Archive", "ArchiveInterval"}}},
        {0x03, {{"Archive", "QueueLimitSize"}}},
        {0x05, {{"Cooperation", "FTPInterval"}}},
        {0x10, {{"Queue", "Freeze_Option"}, {"NoticeMessage", "NotifyHoldMask"}}},
        {0x11, {{"Mail", "DeliverErrorMode"}, {"NoticeMessage", "Forward_option"}, {"Appender", "AppendOption"}, {"Screening", "DPInfo_Option"},
                {"Screening", "ResultFormat"}, {"Cypher", "encode"}}},
        {0x13, {{"SMTP", "TransmissionMode"}, {"SMTP", "Timeout_quit"}, {"NoticeMessage", "Notify_option"}}},
        {0x21, {{"Screening", "ExtractNice"}, {"Screening", "MaxMimeNesting"}}},
        {0x31, {{"Screening", "ScreeningOption"}}},
        {0x50, {{"Screening", "LogSearchOption"}}},
        {0x52, {{"Archive", "TarNice"}, {"Archive", "TSDigestProc"}}},
        {0x70, {{"BrowseMail", "BrowseOption"}}},
        {0x71, {{"Screening", "SkipBlank"}}},
    };
    // clang-format on
    for (int bit = 0; bit < 8; ++bit) {
        const std::string value = std::to_string(81 + bit); // one that has not been read before
        std::string text;
        for (const auto& [gate, keys] : gates) {
            for (const auto& [section, key] : keys) {
                text += std::string("[") + section + "]\n" + key + " = " + value + "\n";
            }
        }
        gateway.configure(
            replaced(text, "QueueLimitSize = " + value, "QueueLimitSize = " + value + "K"));
        read_config(gateway.file.c_str(), (1U << bit) | RC_NOCHECK);
        for (const auto& [gate, keys] : gates) {
            for (const auto& [section, key] : keys) {
                const Row& row = *find_row(section, key);
                const std::int64_t now = kinds::number_in(variable_of(row));
                EXPECT_EQ(now == 81 + bit, gate == 0 || (gate >> bit & 1U) != 0)
                    << key << " " << bit;
            }
        }
    }
}

TEST(Load, ClosedGates) {
    const Installation gateway;
    gateway.configure("[SMTP]\nSmtpPort = bad\n[Archive]\nMaxMessageSize = bad\nIndexSize = 7\n"
                      "[Expire]\nSweepInterval = bad\n[Cooperation]\nCoopMode = bad\n"
                      "[Files]\nACL_File = bad\n[Directories]\nTmpDirectory = /no/such\n");
    read_config(gateway.file.c_str(), 0x0050 | RC_NODIRCHECK);
    EXPECT_EQ(ArchiveIndexSize, 7);
    EXPECT_EQ(TmpDirectory.view(), "/no/such/");
    gateway.configure("[Archive]\nIndexSize = bad\n[Cypher]\nencode = 5\n");
    read_config(gateway.file.c_str(), All | RC_AUXONLY);
    EXPECT_EQ(IBE_encode, 5);
}

TEST(Load, TheLocalSupplementOverridesTheAuxiliarySections) {
    const Installation gateway;
    const std::string local =
        gateway.dir.file("etc/local.conf", "[Cypher]\nencode = 7\n[Log]\nLogLevel = bad\n"
                                           "[Files]\nLocalConfFile = /none\n");
    gateway.configure("[Cypher]\nencode = 5\ndecode = 1\n");
    read_config(gateway.file.c_str(), All);
    EXPECT_EQ(IBE_encode, 7);
    EXPECT_EQ(IBE_decode, 1);
    test::write_file(local, "[Cypher]\nencode = 9999999999\n");
    EXPECT_EQ(load(gateway),
              (Result{1, "", local + ":2: invalid value, [Cypher] encode: 9999999999\n"}));
}

TEST(Load, ThereAreEightValueTables) {
    for (const int table : {-1, 8}) {
        EXPECT_EQ(val_vtab(table, "none"), -1);
        EXPECT_EQ(str_vtab(table, 0), nullptr);
    }
}

} // namespace
} // namespace ov
