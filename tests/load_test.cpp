// Loading: what every rule takes and refuses, and what becomes of the values that it takes.
#include "conf/aux_sections.h"
#include "conf/conf.h"
#include "conf/settings.h"
#include "fake_host.h"
#include "installation.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <variant>

namespace ov {
namespace {

using test::Installation;
using test::Result;
using Values = std::vector<std::string>;

constexpr unsigned All = 0x00ff;
constexpr unsigned NoCheck = 0x10ff;

std::string repeated(std::string_view text, int times) {
    std::string result;
    while (times-- > 0) {
        result += text;
    }
    return result;
}

// Loads the whole file with the command, and the search section with it: a fetch loads that, too.
Result load(const Installation& gateway) {
    Result all = test::run({"ov_conf", "-f", gateway.file, "-m"});
    if (all != Result{0, "", ""}) {
        return all;
    }
    const Result fetch = test::run({"ov_conf", "-f", gateway.file, "-s", "none", "-k", "none"});
    return fetch == Result{0, "0: not found\n", ""} ? all : fetch;
}

// How the readers word a refusal, in front of and behind the value.
struct Wording {
    const char* front; // %s:%d: precedes it
    const char* back;
};
constexpr Wording Main{"[SEC] KEY: \"", "\" invalid value \n"};
constexpr Wording Aux{"invalid value, [SEC] KEY: ", "\n"};
constexpr Wording Search{"[SEC] KEY: \"", "\" invalid value\n"};
constexpr Wording NotFull{"[SEC] KEY: \"", "\" must be specified full pathname.\n"};

std::string replaced(std::string text, std::string_view what, std::string_view with) {
    const std::size_t at = text.find(what);
    return at == text.npos ? text : text.replace(at, what.size(), with);
}

struct Rule {
    const char* section;
    const char* key;
    Values taken;
    Values refused;
    Wording wording = Main;
    std::string message = {}; // in front of the refusal; VALUE stands for the value
};

TEST(Load, EveryRuleTakesAndRefuses) {
    const Installation gateway;
    const std::string root = gateway.path();
    const std::string file = gateway.dir.file("file", "");
    const std::string eight = repeated("m1:25 ", 8);
    // clang-format off
    const Rule rules[] = {
        {"SMTP", "Limit2GB", {"Yes", "ON", "1", "TRUE", "no", "Off", "0", "false"}, {"2", "enable"}},
        {"SMTP", "NeedMailHelo", {"yes # said so"}, {""}},
        {"SMTP", "ListenQueue", {"abc", "", "12abc", "-2147483648", "2147483647"}, {"2147483648", "-2147483649", "99999999999999999999"}},
        {"SMTP", "SOCKEToption", {"4294967295", "-1", "-2147483648"}, {"4294967296", "-2147483649"}},
        {"Archive", "ArchiveVersion", {"9223372036854775807", "-1"}, {"9223372036854775808"}},
        {"Archive", "AlternateHostID", {"18446744073709551615", "-1"}, {"18446744073709551616", "-2147483649"}},
        {"Screening", "OOXML_End", {"-9223372036854775808"}, {"9223372036854775808"}},
        {"Archive", "DirectoryLimitRate", {"0", "100", "abc"}, {"-1", "101"}},
        {"SMTP", "SmtpPort", {"1", "65535", "00025"}, {"0", "65536", "080000", "", "-5", "+5"}},
        {"SMTP", "MaxRecipientsSend", {"1", "1000"}, {"0", "1001", "01000", "-5"}},
        {"SMTP", "MaxConnections", {"0", "999", "0000999"}, {"1000"}},
        {"SMTP", "MaxRecipients", {"99999"}, {"100000"}},
        {"SMTP", "MaxHeadersLength", {"9223372036854775807"}, {"-1", "9223372036854775808"}},
        {"SMTP", "Timeout_data", {"0", "9999"}, {"10000", "00000", "1m"}},
        {"SMTP", "SendmailMinFreeBlocks", {"9999"}, {"10000"}},
        {"SMTP", "RefuseLoadAverage", {"99"}, {"100", "000"}},
        {"SMTP", "ConnectionTimeout", {"4294967295"}, {"4294967296"}},
        {"Archive", "RefuseLoadAverage", {"99"}, {"100"}},
        {"Archive", "IndexSize", {"10000", "000001"}, {"10001", "0000001"}},
        {"Archive", "TssIndexSize", {"999"}, {"1000"}},
        {"Archive", "TSmode", {"0", "2"}, {"3", "02"}},
        {"Queue", "ConfirmBeforeSend", {"99999"}, {"100000"}},
        {"Screening", "MaxExtractNesting", {"999"}, {"1000"}},
        {"Screening", "ExtractNice", {"99"}, {"100"}},
        {"Screening", "CodeDetectReadSize", {"999999"}, {"1000000", "0000001"}},
        {"Screening", "MIMEngLevel", {"none", "Weak", "9999", "0", "abc"}, {"10000", "-1"}},
        {"Screening", "DPINFOthreshold", {"strong", "9999"}, {"10000"}},
        {"Expire", "HoldMessages", {"9999", "00009999"}, {"10000", ""}},
        {"check_mail", "DenyInvalidFormat", {"2147483647"}, {"2147483648", "-1"}},
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
        {"Files", "MssPidFile", {"x.pid", "/x/y"}, {"", std::string(4095, 'x')}},
        {"Files", "ACL_File", {"/x/acl"}, {"mss.acl", ""}, NotFull},
        {"Directories", "TmpDirectory", {"/tmp"}, {"", "/no/such", file}},
        {"Directories", "AdmDirectory", {"/tmp/"}, {"tmp"}, NotFull},
        {"Directories", "EtcDirectory", {"etc", "/tmp"}, {"", "none"}},
        {"Directories", "Group_Dir", {"group"}, {"admin"}},
        {"Directories", "DeliverLogDirectory", {"logs/deliver", root + "new"}, {"no/deep", "file"}},
        {"Directories", "SRCH_Admin_Dir", {"admin"}, {"none"}, Aux},
        {"Directories", "TemplateDirectory", {"", "template"}, {"none"}, Aux},
        {"SMTP", "AllowIP", {"", "192.168.:10.*:1.2.3.4/32", "0/0"}, {"1.2.3.4/33", "300.1", "1.2.3.4.5", "1234567890123456789"}},
        {"check_mail", "DenyFromAddress", {"", "a@b,*@c;d"}, {}},
        {"Mail", "ExcludeGroup", {"a&b:c"}, {}},
        {"Admin", "AdminMailAddress", {"", repeated("a@b,", 8), "user"}, {"*@b"}, Main, "Invalid mail address \"VALUE\"\n"},
        {"Admin", "AdminMailAddress", {}, {repeated("a@b;", 9)}, Main, "Too much mail addresses. \"VALUE\"\n"},
        {"Archive", "MailAddress", {"a@b"}, {"a:b"}, Main, "Invalid mail address. \"VALUE\"\n"},
        {"SMTP", "ServerHost", {eight, " ", "_msp_ _CMD_ a:1 b:60000", "a:25x", "_MSP_:25"}, {eight + "m9", "_MSP_:0", "a:0", "a:60001", "a:", "a:99999999999999999999"}},
        {"SMTP", "NTF_ServerHost", {eight}, {"a:-1"}},
        {"Cooperation", "CoopMode", {"out"}, {"rule"}, Aux},
        {"Cooperation", "FTPPort", {"0"}, {"x", ""}, Aux},
        {"Cooperation", "CoopQueue", {"cqueue"}, {"none"}, Aux},
        {"Cypher", "UserGroup", {repeated("g:", 8), ""}, {repeated("g:", 9)}, Aux},
        {"Cypher", "encode", {"2"}, {"2147483648"}, Aux},
        {"Search", "MaxIndexProcs", {"1", "99"}, {"0", "100", "-1", "x"}, Search},
        {"Search", "MaxIndexProcs_MIN", {"1"}, {"0"}, Search},
        {"Search", "MaxIndexProcs_MAX", {"1", "99"}, {"100"}, Search},
        {"Search", "MaxFullScanMessages", {"200000"}, {"200001"}, Search},
        {"Search", "HistoryDirectory", {"history", root + "history"}, {"", "none"}, Search},
        {"Search", "HistoryDirectory", {}, {std::string(4094, 'x')}, {"[SEC] KEY: \"", "\" cannnot configuration \n"}},
        {"Search", "TarProgram", {"/no/such"}, {"tar"}, NotFull},
        {"Search", "UseArchiveDirectories", {"no"}, {"maybe"}, Search},
    };
    // clang-format on
    for (const Rule& rule : rules) {
        const std::string header = std::string("[") + rule.section + "]\n" + rule.key + " = ";
        for (const std::string& value : rule.taken) {
            gateway.configure(header + value + "\n");
            EXPECT_EQ(load(gateway), (Result{0, "", ""})) << rule.key << " = " << value;
        }
        for (const std::string& value : rule.refused) {
            gateway.configure(header + value + "\n");
            std::string front = replaced(rule.wording.front, "SEC", rule.section);
            front = replaced(front, "KEY", rule.key);
            const std::string expected = replaced(rule.message, "VALUE", value) + gateway.file +
                                         ":" + std::to_string(Installation::FirstLine + 1) + ": " +
                                         front + value + rule.wording.back;
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
    EXPECT_EQ(test::run({"ov_conf", "-f", "/no/such", "-m"}),
              (Result{1, "", "cannot open configfile \"/no/such\" (2)\n"}));
}

TEST(Load, AWiderRangeIsReadBeforeTheValue) {
    const Installation gateway;
    const auto fetch = [&](const std::string& text) {
        gateway.configure("[Search]\n" + text);
        return load(gateway).status;
    };
    EXPECT_EQ(fetch("MaxIndexProcs = 5\nMaxIndexProcs_MAX = 4\n"), 1);
    EXPECT_EQ(fetch("MaxIndexProcs = 5\nMaxIndexProcs_MAX = 5\nMaxIndexProcs_MIN = 5\n"), 0);
    EXPECT_EQ(fetch("MaxSearchProcs = 6\nMaxSearchProcs_MAX = 6\n"), 0);
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
    gateway.configure("[SMTP]\nMailSubmissionProgram = qmail\nQmailProgram = /bin/sh\n"
                      "QmailNullFrom = \"\"\nPostfixProgram = relative\nSendmailProgram = bad\n"
                      "CheckSendmailMqueue = off\n");
    read_config(gateway.file.c_str(), All);
    EXPECT_EQ(SendmailProgram.view(), "/bin/sh");
    EXPECT_EQ(SendmailQueueDirectory.view(), "/var/qmail/queue");
    EXPECT_EQ(SendmailQueueListProgram.view(), "/var/qmail/bin/qmail-qstat");
    EXPECT_EQ(SendmailNullFrom.view(), "\"\"");
    EXPECT_EQ(CheckSendmailMqueue, 0);
    gateway.configure("[SMTP]\nMailSubmissionProgram = postfix\nPostfixProgram = /bin/cat\n");
    read_config(gateway.file.c_str(), All);
    EXPECT_EQ(SendmailProgram.view(), "/bin/cat");
    EXPECT_EQ(SendmailQueueDirectory.view(), "/var/spool/postfix");
    EXPECT_EQ(SendmailNullFrom.view(), "<>");
}

TEST(Load, EveryDirectoryIsAbsoluteAfterwards) {
    ::umask(022);
    const Installation gateway;
    const std::string root = gateway.path();
    read_config(gateway.file.c_str(), All);
    read_config_search(gateway.file.c_str(), NoCheck);
    const std::pair<const Text*, std::string> paths[] = {
        {&RootDirectory, root},
        {&EtcDirectory, root + "etc/"},
        {&Group_Dir, root + "etc/group/"},
        {&ScreeningLogDirectory, root + "screening/"},
        {&MessageQueue, root + "mqueue/"},
        {&TemplateDirectory, root + "template/"},
        {&SRCH_Sysadm_Dir, root + "srch_sysadm/"},
        {&SrchHistoryDirectory, root + "history/"},
        {&CoopQueue, root + "cqueue/"},
        {&TransPidFile, root + "etc/trans.pid"},
        {&MssPidFile, root + "etc/mss.pid"},
        {&ACL_File, root + "etc/mss.acl"},
        {&PIchkDicFile, "/opt/Orvanta/Admin/lib/dic/pichk.dic"},
        {&TmpDirectory, "/tmp/"},
    };
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

TEST(Load, StoredValues) {
    const Installation gateway;
    gateway.configure("[SMTP]\nMaxMessageSize = 2\nSOCKEToption = -1\nAllowIP = 10.1:*.2\n"
                      "ServerHost = a b:10 _Msp_:5\nGreetingMessage =\n"
                      "[Queue]\nDirectoryLimitSize = 3\n[Expire]\nMaxDeliverLogSize = 3K\n"
                      "[Admin]\nAdminMailAddress = a@b, c@d\n[NoticeMessage]\nSignature =\n"
                      "[check_rcpt]\nLocalDomain = x;y,z\n[Screening]\nMIMELogLevel = none\n"
                      "[Archive]\nAlternateHostID = 18446744073709551615\nMinFree = 1G\n"
                      "[Cypher]\nUserGroup = a:b\n[Cooperation]\nMinFree = 2G\n");
    read_config(gateway.file.c_str(), All);
    EXPECT_EQ(MaxMessageSize, 2048);
    EXPECT_EQ(SOCKEToption, 4294967295U);
    ASSERT_EQ(SMTP_AllowIP->size(), 2U);
    EXPECT_EQ((*SMTP_AllowIP)[0].cmp, 1);
    EXPECT_STREQ((*SMTP_AllowIP)[1].str.data(), "*.2");
    EXPECT_EQ(ServerHost.view(), "a b:10 _Msp_:5");
    EXPECT_EQ(SvrList[0].host.view(), "a");
    EXPECT_EQ(SvrList[0].port, 25);
    EXPECT_EQ(SvrList[1].port, 10);
    EXPECT_EQ(SvrList[2].host.view(), "_MSP_");
    EXPECT_EQ(SvrList[2].flg, 1);
    EXPECT_EQ(SvrList[2].port, 0);
    EXPECT_FALSE(SvrList[3].host);
    EXPECT_TRUE(GreetingMessage);
    EXPECT_EQ(GreetingMessage.view(), "");
    EXPECT_EQ(QueueDirectoryLimitSize, 3072);
    EXPECT_EQ(MaxDeliverLogSize, 3);
    EXPECT_EQ(AdminMailAddress->str, "a@b");
    EXPECT_EQ(AdminMailAddress->next->str, " c@d");
    EXPECT_FALSE(NoticeSignature);
    EXPECT_EQ(CR_LocalDomain, (WordList{{"x", "y", "z"}}));
    EXPECT_EQ(ScrLogLevelMIME, 9999);
    EXPECT_EQ(AlternateHostID, 18446744073709551615UL);
    EXPECT_EQ(IBESvrList[1].host.view(), "b");
    EXPECT_EQ(ArchiveMinFree, 1048576);
    struct statfs info {};
    ::statfs(gateway.path().c_str(), &info);
    EXPECT_EQ(ArchiveMinFreeBlocks, 1048576 / info.f_bsize + 1);
    EXPECT_EQ(CoopMinFreeBlocks, 2097152 / info.f_bsize + 1);
    EXPECT_EQ(CoopMinFree, 2097152);
    EXPECT_EQ(conf_free(), 0);
    EXPECT_FALSE(SMTP_AllowIP);
    EXPECT_FALSE(InternalDomains);
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
        {"InternalDomains = a.b&c/d\n", "invalid domain name\"c/d\"\n.*: \"a.b&c/d\" invalid"},
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
    test::write_file(gateway.file, rest + "InternalDomains = a/b&c:d\n");
    read_config(gateway.file.c_str(), NoCheck);
    EXPECT_EQ(InternalDomains, (WordList{{"a/b", "c", "d"}}));
}

TEST(Load, QueuesThatCannotBeLinked) {
    const Installation gateway;
    gateway.dir.file("aqueue/.qxtest", "left behind");
    gateway.dir.file("pqueue/.qxtest", "left behind");
    read_config(gateway.file.c_str(), All);
    EXPECT_EQ(ArchiveHardLink, 1);
    EXPECT_EQ(QuarantineHardLink, 1);
    EXPECT_TRUE(std::filesystem::is_empty(gateway.path("mqueue")));
    EXPECT_TRUE(std::filesystem::is_empty(gateway.path("aqueue")));
    EXPECT_TRUE(std::filesystem::is_empty(gateway.path("pqueue")));

    std::filesystem::remove(gateway.path("aqueue"));
    std::filesystem::remove(gateway.path("pqueue"));
    read_config(gateway.file.c_str(), 0x0010); // not asked for
    EXPECT_EQ(ArchiveHardLink, 1);
    read_config(gateway.file.c_str(), All);
    EXPECT_EQ(ArchiveHardLink, 0);
    EXPECT_EQ(QuarantineHardLink, 0);
    EXPECT_TRUE(std::filesystem::is_empty(gateway.path("mqueue")));
}

TEST(Load, Gates) {
    const Installation gateway;
    struct Key {
        const char* section;
        const char* key;
        std::variant<int*, unsigned*, long*> setting;
        unsigned gate; // 0: always
    };
    const Key keys[] = {
        {"SMTP", "SmtpPort", &SmtpPort, 0x1},
        {"SMTP", "TransmissionMode", &TransmissionMode, 0x13},
        {"SMTP", "Timeout_quit", &Timeout_quit, 0x13},
        {"SMTP", "MaxRecipientsSend", &MaxRecipientsSend, 0},
        {"Mail", "DeliverErrorMode", &DeliverErrorMode, 0x11},
        {"Mail", "ACL_Option", &ACL_Option, 0},
        {"Queue", "DelayInterval", &DelayInterval, 0x1},
        {"Queue", "Freeze_Option", &QueueFreeze_Option, 0x10},
        {"Log", "LogPerm", &LogPerm, 0},
        {"check_mail", "DenyInvalidFormat", &CM_DenyInvalidFormat, 0x1},
        {"check_rcpt", "DenyInvalidFormat", &CR_DenyInvalidFormat, 0x1},
        {"NoticeMessage", "Notify_option", &Notify_option, 0x13},
        {"NoticeMessage", "Forward_option", &Forward_option, 0x11},
        {"NoticeMessage", "NotifyHoldMask", &NotifyHoldMask, 0x10},
        {"Archive", "ArchiveWipeRate", &ArchiveWipeRate, 0},
        {"Archive", "TarNice", &TarNice, 0x52},
        {"Archive", "TSDigestProc", &TSDigestProc, 0x52},
        {"Archive", "QueueLimitSize", &ArchiveQueueLimitSize, 0x3},
        {"Archive", "RefuseLoadAverage", &ArchiveRefuseLoadAverage, 0x2},
        {"Archive", "ArchiveInterval", &ArchiveInterval, 0x2},
        {"Screening", "ConvOption", &ConvOption, 0},
        {"BrowseMail", "BrowseOption", &BrowseOption, 0x70},
        {"Appender", "AppendOption", &AppendOption, 0x11},
        {"Screening", "ExtractNice", &ScrExtractNice, 0x21},
        {"Screening", "ScreeningOption", &ScreeningOption, 0x31},
        {"Screening", "DPInfo_Option", &DPInfo_Option, 0x11},
        {"Screening", "LogSearchOption", &LogSearchOption, 0x50},
        {"Screening", "MaxMimeNesting", &MaxMimeNesting, 0x21},
        {"Screening", "SkipBlank", &ScrSkipBlank, 0x71},
        {"Screening", "ResultFormat", &ScrResultFormat, 0x11},
        {"Screening", "MaxCategories", &MaxCategories, 0x1},
        {"Expire", "SystemLog", &ExpireSystemLog, 0},
        {"Expire", "SweepInterval", &SweepInterval, 0x1},
        {"SystemControl", "MaxOpenTries", &MaxOpenTries, 0},
        {"Debug", "SmtpForkDelay", &DBG_SmtpForkDelay, 0},
        {"Cypher", "encode", &IBE_encode, 0x11},
        {"Cooperation", "FTPInterval", &FTPInterval, 0x5},
    };
    std::string text;
    for (const Key& key : keys) {
        text += std::string("[") + key.section + "]\n" + key.key + " = 77\n";
    }
    text = replaced(text, "QueueLimitSize = 77", "QueueLimitSize = 77K");
    gateway.configure(text);
    for (const unsigned bit : {0x1U, 0x2U, 0x4U, 0x8U, 0x10U, 0x20U, 0x40U, 0x80U}) {
        for (const Key& key : keys) {
            std::visit([](auto* setting) { *setting = 1; }, key.setting);
        }
        read_config(gateway.file.c_str(), bit | RC_NOCHECK);
        for (const Key& key : keys) {
            const bool read = std::visit([](auto* setting) { return *setting == 77; }, key.setting);
            EXPECT_EQ(read, key.gate == 0 || (key.gate & bit) != 0) << key.key << " " << bit;
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

TEST(Load, ValueTables) {
    EXPECT_EQ(val_vtab(0, "NONE"), 9999);
    EXPECT_EQ(val_vtab(7, "qmail"), 3);
    EXPECT_EQ(val_vtab(7, "exim"), -1);
    EXPECT_EQ(val_vtab(8, "none"), -1);
    EXPECT_EQ(val_vtab(-1, "none"), -1);
    EXPECT_STREQ(str_vtab(6, 0), "none");
    EXPECT_STREQ(str_vtab(1, 4), "rule");
    EXPECT_EQ(str_vtab(2, 4), nullptr);
    EXPECT_EQ(str_vtab(8, 0), nullptr);
    EXPECT_STREQ(str_addrselect(3), "both");
}

} // namespace
} // namespace ov
