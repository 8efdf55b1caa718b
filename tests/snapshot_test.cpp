// What a scan for loading answers is what the lookup answers, key by key.
#include "conf/snapshot.h"
#include "settings/catalogue.h"

#include <gtest/gtest.h>
#include <random>

namespace ov {
namespace {

using namespace std::string_literals;

void expect_equal_answers(const std::string& text) {
    const Snapshot snapshot(Source(text), key_index());
    Source source(text);
    for (const int mode : {TokenMode, LineMode}) {
        const auto compare = [&](const char* section, const char* key, std::size_t number) {
            std::string expected;
            std::string value = "stale";
            const int result = _getprofile(source, section, key, expected, 8192, mode);
            const int line = scan_linenumber;
            EXPECT_EQ(snapshot.lookup(number, section, key, value, mode), result) << key << '\n'
                                                                                  << text;
            EXPECT_EQ(scan_linenumber, line) << key << '\n' << text;
            EXPECT_EQ(value, expected) << key << '\n' << text;
        };
        for (const Row& row : catalogue()) {
            if (!is_step(row)) {
                compare(section_of(row), key_of(row), number_of(row));
            }
        }
        for (const char* section : {"Admin", "Manager"}) { // of the rights some keys will do
            for (const Right right : {Right::HoldList, Right::Group}) {
                compare(section, key_of(row_of(right)), number_of(right, section));
            }
        }
    }
}

TEST(Snapshot, AnswersAsTheLookup) {
    const std::string texts[] = {
        "",
        "\n[SMTP]\nSmtpPort = 1\nsmtpport = 2\n[smtp]\nLimit2GB = ] x\nLIMIT2GB = no\n",
        "[\"SMTP\"]\r\n\"SmtpPort\"=25\r\n[Log\nLogLevel = 1\n[x]\n[Log\nLogLevel = 2\n",
        "SmtpPort = 1\n[SMTP] SmtpPort = 2 # x\n[1]\nLimit2GB == yes\nLimit2GB = \"a b\" c",
        "[Archive]\nMinFree\n= 5\nMinFree = " + std::string(9000, ' ') + "7\nMinFree = 8\n",
        "[SMTP]\nSmtpPort\0x = 5\nMaxRecipients = 1\0 2\nLimit2GB = \"yes\0\"\n[LOG\0]\nLogLevel=3"s,
    };
    for (const std::string& text : texts) {
        expect_equal_answers(text);
    }
    const std::string pieces[] = {
        "[SMTP]",   "[ADMIN]", "[Manager]", "HoldList", "group", "[log]", "[Nowhere]",
        "[",        "]",       "=",         "SmtpPort", "\n",    "\n",    "\n",
        "\"",       "#",       "LogLevel",  " ",        "12",    " = ",   "x",
        "Limit2GB", "\r\n",    "NoCore",    "[debug]",  "false", "\t",    "\0"s};
    std::mt19937 random(20261121);
    for (int file = 0; file < 60; ++file) {
        std::string text;
        for (int i = 0; i < 60; ++i) {
            text += pieces[random() % std::size(pieces)];
        }
        expect_equal_answers(text);
    }
}

} // namespace
} // namespace ov
