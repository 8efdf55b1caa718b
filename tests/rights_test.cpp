// The role commands: listing, queries, changes, and the rights files behind them.
#include "installation.h"
#include "settings/conf.h"
#include "settings/rights.h"
#include "util/log.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace ov {
namespace {

using test::Result;
using Words = std::vector<std::string>;

const char* const Commands[] = {"ov_admconf",   "ov_mgrconf",   "ov_sysadmconf",
                                "srch_admconf", "srch_mgrconf", "srch_sysadmconf"};
const char* const Folders[] = {"admin",      "manager",      "sysadm",
                               "srch_admin", "srch_manager", "srch_sysadm"};

// The listing of a role without a rights file.
std::string default_listing(std::size_t rank, const std::string& user = "not specified") {
    // In braces: the characters of the six roles.
    std::string text =
        "#user: [" + user + "](" + std::to_string(rank) +
        ")\n#conf: [0]\n--\n"
        "HoldList: {100100}\nHoldMessage: {010010}\nHoldAttach: {110110}\nHoldReason: {110110}\n"
        "HoldForward: {110110}\nHoldApprove: {110110}\nHoldCancel: {110110}\nHoldFreeze: {110110}\n"
        "HoldConfirm: {110110}\nArchiveList: {100110}\nArchiveMessage: {000110}\n"
        "ArchiveAttach: {110110}\nArchiveBackup: {101101}\nArchiveRetrieve: {101101}\n"
        "ViewStatistics: {110110}\nViewScreeningLog: {110110}\nViewManagerLog: {100100}\n"
        "ViewViewerLog: {100100}\nCheckPcode: 1\nCSVDownload: {110110}\n"
        "StatOptionMask: 0x0000ffff\nRealName: \nPolicyACLRule: {100100}\t{100100}\n"
        "PolicyAttachment: {100100}\t{100100}\t{100100}\n"
        "PolicyKeyword: {100100}\t{100100}\t{100100}\nConfNotice: {100100}\t{100100}\n"
        "ConfGroup: {100100}\t{100100}\nConfSystem: {101101}\t{101101}\nSystemBoot: {101101}\n"
        "LogLowerBound: ***unspecified***\nLogUpperBound: *** unspecified ***\n"
        "LogLimit: 0\nExcludeGroup: \nGroup: \nGroup_complement: 0\nFromFilter: 1\n"
        "FromFilterSelect_Log: header\nFromFilterSelect_Queue: header\nRcptFilter: 0\n"
        "RcptFilterSelect_Log: both\nRcptFilterSelect_Queue: envelope\nLogGrouping: 1\n"
        "QueueGrouping: 1\nStatGrouping: 0\nLoggingManager: 1\nLoggingViewer: 1\n"
        "SelectGroupList: 0\nSelectGroup: \nFromFilterSelect_Search: header\n"
        "RcptFilterSelect_Search: header\n";
    for (std::size_t at = 0; (at = text.find('{')) != text.npos;) {
        text.replace(at, 8, 1, text[at + 1 + rank]);
    }
    return text;
}

class RightsTest : public testing::Test {
  protected:
    RightsTest() {
        for (const char* folder : Folders) {
            std::filesystem::create_directory(gateway.path(folder));
        }
    }

    Result role(std::size_t rank, Words words, const test::Setting& setting = {}) const {
        words.insert(words.begin(), {Commands[rank], "-f", gateway.file});
        return test::run(words, setting);
    }
    std::string rights_file(std::size_t rank, std::string_view text) const {
        const std::string path = gateway.path(Folders[rank]) + "//taro.conf"; // as it is reported
        test::write_file(path, text);
        return path;
    }
    // Asks for a right of a user of the first role whose file has these entries.
    Result ask(const std::string& entries, const std::string& key) const {
        rights_file(0, "[Admin]\n" + entries);
        return role(0, {"-u", "taro", key});
    }
    std::string logged() const { return test::logged_errors(gateway.path("logs")); }

    test::Installation gateway;
};

TEST_F(RightsTest, DefaultsOfEveryRole) {
    for (std::size_t rank = 0; rank < 6; ++rank) {
        EXPECT_EQ(role(rank, {}), (Result{0, default_listing(rank), ""}));
        EXPECT_EQ(role(rank, {"-u", "nobody.x", "-g"}),
                  (Result{0, default_listing(rank, "nobody.x"), ""}));
    }
}

TEST_F(RightsTest, AFileOverridesTheDefaults) {
    const std::string text =
        "RealName = Taro Yamada\nHoldList = Off # why\nStatOptionMask = 0x0F\nPolicyACLRule = 02\n"
        "PolicyAttachment = 1\nPolicyAttachmentSet = no\nPolicyKeyword = 2\nPolicyKeywordSet = 0\n"
        "LogLowerBound = 2008/02/31\nLogUpperBound =\nLogLimit = 9999\nRejectGroup = a:b\n"
        "Group = g:\nSelectGroup =\nFromFilterSelect_Log = Envelope\n"
        "RcptFilterSelect_Search = none\nSetMTYPE = x\n";
    // clang-format off
    const std::pair<std::string, std::string> changes[] = {
        {"#conf", "[1]"}, {"RealName", "Taro Yamada"}, {"HoldList", "0"}, {"StatOptionMask", "0x0000000f"},
        {"PolicyACLRule", "0\t1"}, {"PolicyAttachment", "1\t0\t0"}, {"PolicyKeyword", "0\t1\t0"},
        {"LogLowerBound", "2008/02/31"}, {"LogLimit", "9999"}, {"ExcludeGroup", "a:b"}, {"Group", "g"},
        {"FromFilterSelect_Log", "envelope"}, {"RcptFilterSelect_Search", "none"},
    };
    // clang-format on
    for (std::size_t rank = 0; rank < 6; ++rank) {
        const bool manager = rank % 3 == 1;
        std::string expected = default_listing(rank, "taro");
        for (const auto& [key, value] : changes) {
            const std::size_t at = expected.find("\n" + key + ": ") + key.size() + 3;
            expected.replace(at, expected.find('\n', at) - at, value);
        }
        rights_file(rank, (manager ? "[Manager]\n" : "[Admin]\n") + text);
        EXPECT_EQ(role(rank, {"-u", "taro"}), (Result{0, expected, ""})) << rank;
        // The other section is not looked at.
        rights_file(rank, (manager ? "[Admin]\n" : "[Manager]\n") + text);
        EXPECT_EQ(role(rank, {"-u", "taro", "RealName"}).out, "RealName: \n") << rank;
    }
    EXPECT_EQ(ask("ExcludeGroup =\nRejectGroup = a\n", "ExcludeGroup"), (Result{0, "", ""}));
}

TEST_F(RightsTest, TheMainFileHasRightsOfTheFirstTwoRoles) {
    gateway.configure("[Admin]\nRealName = A\n[Manager]\nRealName = M\n");
    for (const auto& [rank, name] : {std::pair{0U, "A"}, {1U, "M"}, {2U, ""}}) {
        EXPECT_EQ(role(rank, {"RealName"}).out, "RealName: " + std::string(name) + "\n");
    }
    gateway.configure("[Manager]\nLogLimit = 10000\n");
    EXPECT_EQ(role(3, {}),
              (Result{1, "", gateway.file + ":7: invalid value, [Manager] LogLimit: 10000\n"}));
    // Empty values clear what was set, but for a limit.
    gateway.configure("[Admin]\nLogLowerBound = 2001/01/01\nLogUpperBound = 2002/01/01\n"
                      "SetMTYPE = a\nSetKEYWD = b\nLogLimit = 5\n");
    const std::string cleared =
        "LogLowerBound =\nLogUpperBound =\nSetMTYPE =\nSetKEYWD =\nLogLimit =\n";
    for (const char* policy : {"PolicyAttachment", "PolicyKeyword"}) {
        EXPECT_EQ(role(0, {policy}).out, "1\t1\t0\n");
        EXPECT_EQ(ask(cleared, policy).out, "1\t1\t1\n");
    }
    std::string expected = default_listing(0, "taro");
    expected.replace(expected.find("[0]"), 3, "[1]");
    expected.replace(expected.find("LogLimit: 0"), 11, "LogLimit: 5");
    EXPECT_EQ(role(0, {"-u", "taro"}), (Result{0, expected, ""}));
}

TEST_F(RightsTest, ValuesOfEveryRule) {
    // clang-format off
    const std::tuple<std::string, Words, Words> cases[] = {
        {"HoldList", {"On", "0"}, {"enabled", ""}},
        {"StatOptionMask", {"0x3", "017", "abc", "", "-1", "4294967295"}, {"4294967296", "-2147483649", "99999999999999999999"}},
        {"RealName", {"", "any thing"}, {}},
        {"Group", {"", "a:b", ":"}, {}},
        {"LogLowerBound", {"", "2008/02/31", "0000/12/01"},
            {"2008/13/01", "2008/00/01", "2008/01/32", "2008/01/00", "2008/1/01", "2008-01-01", "2008/01/011", "x008/01/01"}},
        {"RcptFilterSelect_Queue", {"BOTH", "none"}, {"all", ""}},
        {"LogLimit", {"", "0", "9999", "00001"}, {"10000", "-1", "x"}},
        // the options are read only for those without the right
        {"Freeze_Option", {"99999999999"}, {}},
        {"Confirm_Option", {"99999999999"}, {}},
    };
    // clang-format on
    for (const auto& [key, taken, refused] : cases) {
        for (const std::string& value : taken) {
            EXPECT_EQ(ask(key + " = " + value + "\n", "Group").status, 0) << key << " = " << value;
        }
        for (const std::string& value : refused) {
            const std::string refusal = gateway.path("admin//taro.conf:2: invalid value, [Admin] ");
            EXPECT_EQ(ask(key + " = " + value + "\n", "Group"),
                      (Result{1, "", refusal + key + ": " + value + "\n"}));
        }
    }
    EXPECT_EQ(ask("HoldConfirm = no\nConfirm_Option = 99999999999\n", "Group").status, 1);
}

// The rights that a query for several asks for, in its order: each in turn is the only one granted.
TEST_F(RightsTest, QueriesForSeveralRights) {
    // clang-format off
    const std::pair<const char*, Words> queries[] = {
        {"Hold", {"HoldList", "HoldReason", "HoldMessage", "HoldApprove", "HoldCancel", "HoldForward", "HoldAttach", "HoldFreeze"}},
        {"HOLD+", {"HoldList", "HoldReason", "HoldMessage", "HoldApprove", "HoldCancel", "HoldForward", "HoldAttach", "CheckPcode", "HoldFreeze"}},
        {"Archive", {"ArchiveList", "ArchiveMessage", "ArchiveBackup", "ArchiveRetrieve", "ArchiveAttach", "CSVDownload"}},
        {"ViewStatistics+", {"ViewStatistics", "CSVDownload"}},
        {"ViewScreeningLog+", {"ViewScreeningLog", "ArchiveMessage", "CSVDownload"}},
        {"ViewManagerLog+", {"ViewManagerLog", "ArchiveMessage", "CSVDownload"}},
        {"viewviewerlog+", {"ViewViewerLog", "ArchiveMessage", "CSVDownload"}},
    };
    // clang-format on
    for (const auto& [query, keys] : queries) {
        for (const std::string& granted : keys) {
            std::string text;
            std::string expected;
            for (const std::string& key : keys) {
                text += key + (key == granted ? " = yes\n" : " = no\n");
                expected += key == granted ? "1\n" : "0\n";
            }
            EXPECT_EQ(ask(text, query), (Result{0, expected, ""})) << query << granted;
        }
    }
}

TEST_F(RightsTest, AddressesOfTheGroups) {
    gateway.dir.file("etc/group/sales.addr", "a@b\n");
    gateway.dir.file("etc/group/none.addr", "");
    rights_file(0, "[Admin]\nGroup = sales\nExcludeGroup =\nSelectGroup = none\n");
    const std::string listing = role(0, {"-u", "taro"}).out;
    std::string all = role(0, {"-u", "taro", "-g"}).out;
    ASSERT_EQ(all.substr(0, listing.size()), listing);
    all.erase(0, listing.size());
    const std::size_t identity = all.find("STR=0x") + 6;
    EXPECT_EQ(all.replace(identity, 8, "?"),
              "--\nGroup addresses:  'a@b' h=3 dep=1 STR=0x?\n"
              "##Option: comp=0, idtab=0, hash size=64\n"
              "--\nExcludeGroup addresses: --\nSelectGroup addresses: "
              "##Option: comp=0, idtab=0, hash size=64\n");
}

TEST_F(RightsTest, Queries) {
    rights_file(0, "[Admin]\nHoldReason = no\nHoldFreeze = no\nFreeze_Option = 0x100\n"
                   "ArchiveMessage = yes\nViewManagerLog = no\nRealName = T\nGroup = a:b\n"
                   "PolicyAttachment = 1\nPolicyKeyword = 2\nSetKEYWD = s\nSetMTYPE =\n"
                   "FromFilterSelect_Log = both\n");
    // clang-format off
    const std::pair<const char*, const char*> cases[] = {
        {"holdlist+", "1\n0\n"}, {"HoldReason", "0\n"}, {"CheckPcode", "1\n"}, {"SystemBoot", "1\n"}, {"RcptFilter", "0\n"},
        {"StatOptionMask", "StatOptionMask: 0x0000ffff\n"}, {"realname", "RealName: T\n"},
        {"PolicyACLRule", "1\t1\n"}, {"ConfSystem", "1\t1\n"}, {"PolicyAttachment", "1\t0\t1\n"},
        {"PolicyKeyword", "0\t1\t0\n"}, // a configured set is not to be chosen
        {"Group", "a\nb\n"}, {"ExcludeGroup", ""}, {"SelectGroup", ""},
        {"FromFilterSelect_Log", "both\n"}, {"RcptFilterSelect_Log", "both\n"},
    };
    // clang-format on
    for (const auto& [key, answer] : cases) {
        EXPECT_EQ(role(0, {"-u", "taro", key, "more"}), (Result{0, answer, ""})) << key;
    }
    for (const char* key : {"HoldFreeze", "FromFilterSelect_Queue", "None", ""}) {
        EXPECT_EQ(role(0, {"-u", "taro", key}), (Result{1, "0\n", ""})) << key;
    }
    // Those who may freeze follow the system's option, of which only the lowest byte counts.
    for (const auto& [option, answer] : {std::pair{"256", "1\n0\n"}, {"3", "1\n1\n"}}) {
        gateway.configure(std::string("[Queue]\nFreeze_Option = ") + option + "\n");
        EXPECT_EQ(role(0, {"HoldList+"}).out, answer);
    }
    EXPECT_EQ(ask("HoldFreeze = no\nFreeze_Option = 1\n", "HoldList+").out, "1\n1\n");
}

TEST_F(RightsTest, GroupsToSelectFrom) {
    for (const char* name : {"sales.addr", ".hidden.addr", "x.addr", "notes.txt", ".addr"}) {
        gateway.dir.file(std::string("etc/group/") + name, "");
    }
    const auto selectable = [&](const std::string& entry) {
        return ask("SelectGroupList = yes\n" + entry, "SelectGroup").out;
    };
    const std::string all = selectable("");
    EXPECT_TRUE(all == "sales\nx\n" || all == "x\nsales\n") << all;
    EXPECT_EQ(selectable("SelectGroup = a:b\n"), "a\nb\n");
    EXPECT_EQ(selectable("SelectGroup =\n"), "");
    std::filesystem::remove_all(gateway.path("etc/group"));
    EXPECT_EQ(selectable(""), "");
    EXPECT_EQ(logged(),
              "print_group_list: opendir failed: \"" + gateway.path("etc/group//") + "\" (2)\n");
}

TEST_F(RightsTest, Refusals) {
    for (const char* name : {"-x", "x.", ".x", "x-", "a b", "", "a/b", "ta\xe9"}) {
        EXPECT_EQ(role(0, {"-u", name}),
                  (Result{1, "", std::string("500 invalid user name: \"") + name + "\"\n"}));
    }
    EXPECT_EQ(role(0, {"-u", "_a-b.C9"}).status, 0);
    EXPECT_EQ(role(0, {"-x"}),
              (Result{1, "", "ov_admconf: invalid option -- 'x'\n510 Unknown option: ?\n"}));
    const std::string command = "CMD: configuration tool\n";
    EXPECT_EQ(role(1, {"-v"}), (Result{0, "ORVANTA\nVERSION: 7.1.02 (1214)\n" + command, ""}));
    EXPECT_EQ(role(4, {"-v"}),
              (Result{0, "ORVANTA/S\nVERSION: 7.1.02/S2.0.04 (1214/150)\n" + command, ""}));
    EXPECT_EQ(test::run({"ov_admconf", "-f", "/no/such"}),
              (Result{1, "", "cannot open configfile \"/no/such\" (2)\n"}));
}

TEST_F(RightsTest, AFileThatCannotBeReadLeavesTheDefaults) {
    const std::string path = rights_file(2, "[Admin]\nRealName = T\n");
    ::chmod(path.c_str(), 0);
    EXPECT_EQ(role(2, {"-u", "taro"}, {.unprivileged = true}),
              (Result{0, default_listing(2, "taro"), ""}));
}

TEST_F(RightsTest, WhatIsLogged) {
    setconfig(gateway.file.c_str(), 0x50, NoRole, nullptr);
    ProgName = "tool";
    const std::string loop = gateway.path("loop");
    std::filesystem::create_symlink("loop", loop);
    read_config_user(gateway.path("missing").c_str(), "Admin", 0);
    read_config_user(loop.c_str(), "Admin", 0);
    std::string path;
    EXPECT_EQ(access_cffile(0, nullptr, path, nullptr), -1);
    EXPECT_EQ(access_cffile(-1, "u", path, nullptr), -1);
    EXPECT_EQ(access_cffile(6, "u", path, nullptr), -1);
    // The existence test of a change fails for another reason than a missing file.
    std::filesystem::remove(gateway.path("manager"));
    std::filesystem::create_symlink("manager", gateway.path("manager"));
    EXPECT_EQ(role(1, {"-u", "taro", "-m", "HoldList=1"}), (Result{1, "", ""}));
    EXPECT_EQ(logged(),
              "cannot open configfile \"" + loop + "\" (40)\n" +
                  "CONF: invalid user: rank=-1 user=u\nCONF: invalid user: rank=6 user=u\n" +
                  "access error \"" + gateway.path("manager//taro.conf") + "\" (40)\n");
}

TEST_F(RightsTest, Changes) {
    ::umask(022);
    const auto change = [&](Words assignments) {
        assignments.insert(assignments.begin(), {"-u", "taro", "-m"});
        return role(1, assignments);
    };
    const std::string path = gateway.path("manager/taro.conf");
    EXPECT_EQ(change({}), (Result{0, "", ""})); // makes the file all the same
    EXPECT_EQ(test::read_file(path), "");
    struct stat info {};
    ::stat(path.c_str(), &info);
    EXPECT_EQ(info.st_mode & 07777U, 0644U);

    EXPECT_EQ(change({"HoldList=yes", "PolicyACLRule=9", "realname=Taro = Yamada", "Group="}),
              (Result{0, "", ""}));
    const std::string text =
        "[Manager]\nGroup = \nrealname = Taro = Yamada\nPolicyACLRule = 9\nHoldList = yes\n";
    EXPECT_EQ(test::read_file(path), text);
    // What is refused is named; the rest is done.
    EXPECT_EQ(change({"CheckPcode=1", "HoldList=maybe", "PolicyACLRule=-1", "=x", "None=1",
                      "Freeze_Option=1", "HoldList=0"}),
              (Result{1, "", "CheckPcode\nHoldList\nPolicyACLRule\n\nNone\nFreeze_Option\n"}));
    EXPECT_EQ(test::read_file(path), text.substr(0, text.size() - 4) + "0\n");
    EXPECT_EQ(change({"HoldList=1", "HoldList", "HoldList=0"}), (Result{1, "", ""}));
    EXPECT_EQ(logged(), "invalid format \"HoldList\"\n");
    EXPECT_EQ(test::read_file(path), text.substr(0, text.size() - 4) + "1\n");
    // Of a long assignment 8191 characters count.
    EXPECT_EQ(change({"RealName=" + std::string(9000, 'n')}).status, 0);
    EXPECT_NE(test::read_file(path).find("= " + std::string(8182, 'n') + "\n"), std::string::npos);

    {
        const test::ForeignLock lock(path, F_WRLCK);
        EXPECT_EQ(
            change({"HoldList=0"}),
            (Result{1, "", "cannot lock: " + gateway.path("manager//taro.conf") + "\nHoldList\n"}));
    }
    EXPECT_EQ(role(1, {"-m", "HoldList=0"}).status, 1); // a query without a user
    std::filesystem::remove_all(gateway.path("manager"));
    EXPECT_EQ(change({"HoldList=1"}), (Result{1, "", ""}));
    EXPECT_NE(logged().find("open error \"" + gateway.path("manager//taro.conf") + "\" (2)\n"),
              std::string::npos);
}

// Every key that can be asked for or changed, and every other one.
TEST_F(RightsTest, AskableAndChangeableKeys) {
    const std::string changeable_flags =
        " HoldList HoldMessage HoldReason HoldApprove HoldCancel HoldForward ArchiveList "
        "ArchiveMessage ArchiveBackup ArchiveRetrieve ViewStatistics ViewScreeningLog "
        "ViewManagerLog ViewViewerLog FromFilter RcptFilter SystemBoot ";
    const std::string changeable_unasked = " SelectGroupList PolicyAttachmentSet PolicyKeywordSet ";
    const std::string levels =
        " PolicyACLRule PolicyAttachment PolicyKeyword ConfNotice ConfGroup ConfSystem ";
    const std::string free = " ExcludeGroup Group SelectGroup RealName ";
    const std::string only_asked = " HoldAttach ArchiveAttach CheckPcode CSVDownload "
                                   "StatOptionMask FromFilterSelect_Log RcptFilterSelect_Log ";
    for (const RightRow& right : rights()) {
        const auto is_in = [&right](const std::string& keys) {
            return keys.find(" " + std::string(key_of(right)) + " ") != keys.npos;
        };
        const auto accepts = [&](const std::string& value) {
            return role(0, {"-u", "taro", "-m", key_of(right) + ("=" + value)}).status == 0;
        };
        const bool flag = is_in(changeable_flags + changeable_unasked);
        EXPECT_EQ(accepts("1"), flag || is_in(levels + free)) << key_of(right);
        EXPECT_EQ(accepts("7"), is_in(levels + free)) << key_of(right);
        EXPECT_EQ(accepts("on"), flag || is_in(free)) << key_of(right);
        EXPECT_EQ(accepts("2008/01/01"), is_in(free)) << key_of(right);
        EXPECT_EQ(role(0, {key_of(right)}).status == 0,
                  is_in(changeable_flags + levels + free + only_asked))
            << key_of(right);
    }
}

TEST_F(RightsTest, DatesAndHiddenDefaults) {
    int month = 7;
    EXPECT_EQ(date_str("2008/13/40", nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(date_str("2008/13/40", nullptr, &month, nullptr), -1);
    EXPECT_EQ(date_str("2008/12/40", nullptr, &month, nullptr), 0);
    EXPECT_EQ(month, 12);
    EXPECT_EQ(date_str(nullptr, nullptr, nullptr, nullptr), -1);
    const PerRole<unsigned> ones{1, 1, 1, 1, 1, 1};
    EXPECT_TRUE(CF_ArcDirMap == ones && CF_LogDirMap == ones);
    EXPECT_TRUE(CF_FreezeOption == PerRole<unsigned>{} && CF_ConfirmOption == PerRole<unsigned>{});
}

} // namespace
} // namespace ov
