// Exhausted memory: whichever allocation of a command fails, it goes on with the result it would
// have had, or ends with status 1 and a message, and the file it edits is whole.
#include "installation.h"

#include <gtest/gtest.h>
#include <regex>
#include <set>

namespace ov {
namespace {

using test::Result;

struct Command {
    const char* name;
    std::vector<std::string> words;
    std::set<std::string> tellers; // who tells of it, as teller_of says
};

const std::string Step = ": [<null>] <null>: "; // a step of the load, which has no value
const std::string Text = "a text that is too long to be held without an allocation";

// A setting of every form that is held in memory of its own.
const std::string Settings =
    "[SMTP]\nMailSubmissionProgram = qmail\nQmailProgram = /bin/sh\nQmailQueueDirectory = /\n"
    "QmailNullFrom = " +
    Text +
    "\nCheckSendmailMqueue = yes\nDenyIP = 10.0.0.1:192.168.0.0/16\nServerHost = "
    "mx1.a-rather-long-domain.example.com:25 _MSP_\n"
    "[Admin]\nAdminMailAddress = first.administrator@example.com,second@example.com\n"
    "[check_mail]\nDenyFromAddress = first.one.of.these@example.com;second@example.com\n"
    "[NoticeMessage]\nSignature = The gateway of a house\n[Archive]\nMailAddress = "
    "operator.of.the.archive@example.com\n[Cypher]\nUserGroup = " +
    Text + ":b\n[Manager]\nSetMTYPE = " + Text + ":b\n[Screening]\nNote = 1\n";
const std::string Rights =
    "[Manager]\nRealName = " + Text + "\nGroup = sales:marketing\nHoldList = yes\n";

class Memory : public testing::TestWithParam<Command> {
  protected:
    Memory() {
        std::filesystem::create_directory(gateway.path("manager"));
        gateway.dir.file("etc/group/sales.addr",
                         "*@a.rather.long.domain.example.com\nfirst.one.of.these@example.com\nx\n");
        gateway.dir.file("etc/group/marketing.addr", "y\n");
        restore();
    }

    void restore() const {
        gateway.configure(Settings);
        gateway.dir.file("manager/taro.conf", Rights);
    }
    std::string files() const {
        return test::read_file(gateway.file) + test::read_file(gateway.path("manager/taro.conf"));
    }

    // Takes away what an edit left beside the file. Returns whether each of it was empty.
    bool leftovers_are_empty() const {
        bool empty = true;
        for (const auto& file : std::filesystem::recursive_directory_iterator(gateway.path())) {
            if (file.path().string().find(".tmp.") != std::string::npos) {
                empty = empty && file.file_size() == 0;
                std::filesystem::remove(file.path());
            }
        }
        return empty;
    }

    std::string take_log() const {
        std::string log = test::logged_errors(gateway.path("logs"));
        std::filesystem::remove_all(gateway.path("logs"));
        std::filesystem::create_directory(gateway.path("logs"));
        return log;
    }

    // Runs the command, which makes the file `mark` when an allocation fails.
    Result run(const test::Setting& setting = {}) const {
        std::vector<std::string> words = GetParam().words;
        words.insert(words.begin() + 1, {"-f", gateway.file});
        Result result = test::run(words, setting);
        // The address of a text in memory is shown with it.
        result.out = std::regex_replace(result.out, std::regex("STR=0x[0-9a-f]{8}"), "STR");
        return result;
    }

    test::Installation gateway;
    const std::string mark = gateway.path("mark");
};

bool is_message(const std::string& line) {
    static const std::regex messages("550 Out of memory: malloc error|Out of memory!|malloc error|"
                                     "mk_(dir|file)path: malloc failed|"
                                     "(split_str|ipaddr_makeaddr): calloc error: sz = [1-9][0-9]*|"
                                     "cannot open tmp file: .*[.]tmp[.]......");
    return std::regex_match(line, messages);
}

// Who tells of a lack of memory: what stands in front of the first colon. A message of the nearest
// place is better than that of main.
std::string teller_of(const std::string& line) {
    return line.substr(0, line.find(':'));
}

TEST_P(Memory, EveryAllocationMayFail) {
#ifdef OV_SANITIZE
    GTEST_SKIP() << "the sanitizers have an allocator of their own";
#endif
    const std::string before = files();
    const Result whole = run(test::as_root());
    const std::string after = files();
    ASSERT_EQ(whole.status, 0) << whole.err;

    std::set<std::string> tellers;
    for (const char* kind : {"malloc", "memory"}) {
        bool failed = true;
        int number = 0;
        while (failed && !HasFailure()) {
            SCOPED_TRACE(kind + std::to_string(++number));
            restore();
            const Result result = run(test::failing(mark, kind, number, ENOMEM));
            failed = std::filesystem::remove(mark);

            std::string told;
            for (const std::string& line : test::lines_of(result.err)) {
                if (is_message(line)) {
                    told += (told.empty() ? "" : " > ") + teller_of(line);
                    tellers.insert(told);
                } else if (line.find(Step) != line.npos) {
                    EXPECT_TRUE(line.ends_with(R"(: "" invalid value )")) << line;
                    tellers.insert(Step);
                }
            }
            // Of a path that cannot be joined the loader has the last word; a check loads none.
            EXPECT_TRUE((told != "mk_dirpath" && told != "mk_filepath") ||
                        GetParam().tellers.contains(told))
                << told;
            const std::vector<std::string> log = test::lines_of(take_log());
            std::transform(log.begin(), log.end(), std::inserter(tellers, tellers.end()),
                           teller_of);
            const std::string text = files();
            // The addresses of groups come last; they may be left out, and the log tells why.
            EXPECT_TRUE(whole.out.starts_with(result.out)) << result.out;
            if (result.status == 0) {
                EXPECT_TRUE(result.out == whole.out || !log.empty()) << result.out;
                EXPECT_EQ(text, after);
            } else {
                EXPECT_EQ(result.status, 1);
                EXPECT_NE(told, "") << result.err;
                EXPECT_TRUE(text == before || text == after) << text;
            }
            EXPECT_TRUE(leftovers_are_empty());
        }
        EXPECT_GT(number, 10); // or nothing has been tried
    }
    for (const std::string& teller : GetParam().tellers) {
        EXPECT_TRUE(tellers.contains(teller)) << teller;
    }
}

// clang-format off
const std::string Main = "550 Out of memory";
const std::string Temporary = "cannot open tmp file";
const std::set<std::string> RoleLoad = {Main, "Out of memory!", "mk_dirpath > Out of memory!", "mk_filepath > Out of memory!", "split_str > Out of memory!", "split_str > malloc error"};

std::set<std::string> with(std::set<std::string> tellers, const std::set<std::string>& more) {
    tellers.insert(more.begin(), more.end());
    return tellers;
}
const std::set<std::string> Loading = with(RoleLoad, {"ipaddr_makeaddr > Out of memory!", Step});

const Command Commands[] = {
    {"ShowLoaded", {"ov_conf", "-s", "Cypher", "-k", "UserGroup", "-a"}, Loading},
    {"Check", {"ov_conf", "-s", "SMTP", "-k", "ServerHost", "-c", "mx1.a-rather-long-domain.example.com:25 mx2"}, {Main, "mk_dirpath", "split_str"}},
    {"Replace", {"ov_conf", "-s", "Screening", "-k", "Note", "-r", Text}, with(Loading, {Temporary})},
    {"Delete", {"ov_conf", "-s", "Screening", "-k", "Note", "-d"}, with(Loading, {Temporary, "conf_delete"})},
    {"Listing", {"ov_mgrconf", "-u", "taro", "-g"}, with(RoleLoad, {"malloc error", "read_addrsgrp3", "add_addrtree", "add_addrlist", "ERROR"})},
    {"Change", {"ov_mgrconf", "-u", "taro", "-m", "HoldList=no"}, with(RoleLoad, {"malloc error", Temporary})},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Commands, Memory, testing::ValuesIn(Commands),
                         [](const auto& tested) { return std::string(tested.param.name); });

} // namespace
} // namespace ov
