// The file itself: tokens, entries, and the lookup of one key, wherever the text comes from.
#include "catalogue/catalogue.h"
#include "conf/lookup.h"
#include "conf/snapshot.h"
#include "support.h"

#include <gtest/gtest.h>

namespace ov {
namespace {

using namespace std::string_literals;
using Lookup = std::pair<int, std::string>; // the line of the entry, 0 without one, and its value

// The tokens of a text, each as "token:text@line " with the line of the character behind it.
std::string tokens_of(std::string_view text) {
    Source source(text);
    init_scan(source);
    std::string seen;
    Token token = TokenEol;
    while (token != TokenEof) {
        token = ini_scan(source);
        EXPECT_EQ(scan_len, static_cast<int>(scan_str.size()));
        EXPECT_TRUE(token != TokenNumber || scan_num == std::stoi(std::string(scan_str)));
        seen += std::to_string(token) + ":" + std::string(scan_str) + "@" +
                std::to_string(scan_linenumber) + " ";
    }
    EXPECT_EQ(ini_scan(source), TokenEof);
    return seen;
}

TEST(Lookup, Tokens) {
    const std::string word(8191, 'w');
    // clang-format off
    const std::pair<std::string, std::string> cases[] = {
        {"", "1:EOF@1 "}, {"Key = a b", "17:Key@1 4:=@1 17:a@1 17:b@1 1:EOF@1 "},
        {"[a]\n", "2:[@1 17:a@1 3:]@2 5:LF@2 1:EOF@2 "}, {"abc#def ] =\nx", "17:abc@1 5:LF@2 17:x@2 1:EOF@2 "},
        {"\t 00012345 123456789 0x1 7", "16:00012345@1 17:123456789@1 17:0x1@1 16:7@1 1:EOF@1 "},
        {"\"a#b\"c=", "17:a#b@1 17:c@1 4:=@1 1:EOF@1 "}, {"\"abc\nx", "17:abc@2 5:LF@2 17:x@2 1:EOF@2 "},
        {"\"\" \"a\\\" \"abc", "17:@1 17:a\\@1 17:abc@1 1:EOF@1 "}, {"  \t\n# only\n", "5:LF@2 5:LF@3 1:EOF@3 "},
        {"a\r\n\v", "17:a\r@2 5:LF@2 17:\v@2 1:EOF@2 "}, {"\n\nx", "5:LF@2 5:LF@2 17:x@2 1:EOF@2 "},
        {word + "w=", "17:" + word + "@1 4:=@1 1:EOF@1 "}, {"\"" + word + "w\"=", "17:" + word + "@1 4:=@1 1:EOF@1 "},
        {"a\0b \377"s, "17:a\0b@1 17:\377@1 1:EOF@1 "s},
    };
    // clang-format on
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(tokens_of(text), expected) << testing::PrintToString(text);
    }
}

Lookup look_up(Source& source, const char* section, const char* key, int mode,
               std::size_t size = 8192) {
    std::string value = "stale";
    const int result = _getprofile(source, section, key, value, size, mode);
    EXPECT_EQ(result, scan_linenumber == 0 ? -1 : 0);
    return {scan_linenumber, value};
}

// The same lookup in memory, in a file, and in the scan of a whole file for loading.
void expect_found(const std::string& text, int mode, const Lookup& expected) {
    const test::TempDir dir;
    const std::string path = dir.file("conf", text);
    const auto message = testing::PrintToString(text.substr(0, 200));
    Source memory(text);
    EXPECT_EQ(look_up(memory, "smtp", "smtpport", mode), expected) << message;
    std::optional<Source> file = Source::open(path.c_str());
    EXPECT_EQ(look_up(*file, "smtp", "smtpport", mode), expected) << "file " << message;
    EXPECT_EQ(look_up(*file, "SMTP", "SMTPPORT", mode), expected) << "again " << message;
    // Of a scan for loading: as a key of the index, and as one that is wanted beside them.
    Source whole(text);
    const Snapshot snapshot(whole, key_index(), {"SMTP", "SMTPport"});
    const auto indexed = static_cast<std::size_t>(key_index().find("smtp", "smtpport"));
    for (const std::size_t number : {indexed, snapshot.wanted()}) {
        std::string value = "stale";
        int line = -1;
        const int result = snapshot.lookup(number, "SMTP", "SmtpPort", value, mode, line);
        EXPECT_EQ(result, expected.first == 0 ? -1 : 0) << message;
        EXPECT_EQ(Lookup(line, value), expected) << "snapshot " << message;
    }
}

TEST(Lookup, FindsTheFirstEntryOfSectionAndKey) {
    // clang-format off
    const std::pair<std::string, Lookup> cases[] = {
        {"[SMTP]\nsmtpport=10\nSmtpPort = 11\n", {2, "10"}}, {"[smtp]\nSmtpPort = 1\n", {2, "1"}},
        {"[ SMTP ] # note\n\n \tSmtpPort\t=10", {3, "10"}},
        {"[\"SMTP\"]\n\"SmtpPort\" = 10\n", {2, "10"}},
        {"[SMTP] SmtpPort = 10\n", {1, "10"}},
        {"SmtpPort = 1\n[SMTP]\nSmtpPort = 2\n", {3, "2"}},
        {"[Other]\nSmtpPort = 1\n[SMTP]\n[Other]\n[SMTP]\nSmtpPort = 2\n", {6, "2"}},
        {"[SMTP][Other]\nSmtpPort = 1\n", {}}, {"[Other]\nk = [SMTP]\n [SMTP]\nSmtpPort = 2\n", {4, "2"}},
        {"\n[SMTP]\nSmtpPort = 10\n", {2, "10"}}, // the first line feed is not counted
        {"[SMTP]\n12 = 1\n123456789 = 1\nSmtpPort = 2\n", {4, "2"}},
        {"[12]\n[SMTP\nSmtpPort = 1\n[x]\nSmtpPort = 2\n[SMTP]\nSmtpPort = 3\n", {7, "3"}},
        {"[SMTP]\n] SmtpPort = 1\n= SmtpPort = 1\nx SmtpPort = 1\nSmtpPort\nSmtpPort = 2", {6, "2"}},
        {"[SMTP]\nword\nSmtpPort = 2\n", {3, "2"}}, // a bare word hides no line
        {"[SMTP]\r\nSmtpPort = 2\r\n", {2, "2\r"}}, // nor does the carriage return
        // a cut header renames the section, but is no header; a number as name is nothing
        {"[SMTP]\n[Cut\nSmtpPort = 2\n[SMTP]\n", {}}, {"[x]\n[SMTP\nSmtpPort = 2\n", {3, "2"}},
        {"[x]\n[SMTP more] SmtpPort = 1\nSmtpPort = 2\n", {3, "2"}},
        {"[SMTP\nSmtpPort = 2\n", {}}, {"[SMTP]\n[12]\nSmtpPort = 2\n", {3, "2"}},
        {"[SMTP]\n#SmtpPort = 1\nSmtpPort # = 1\nSmtpPort = 2\n", {4, "2"}},
        {"[SMTP]\nSmtpPort == 1\n", {2, "= 1"}}, {"[SMTP]\nSmtpPort =", {2, ""}},
        {"[SMTP]\nSmtpPort", {}}, {"[SMTP]\nSmtpPort ", {}}, {"[SMTP", {}}, {"[", {}}, {"", {}},
        {"[SMTP]\nSmtpPort\0x = 2\n"s, {2, "2"}}, {"[SMTP\0x]\nSmtpPort = 2\n"s, {2, "2"}}, // a name ends at its NUL
        // lines longer than a window, in front of the entry and in it
        {"[SMTP]\nOther = "s + std::string(100000, 'x') + "\nSmtpPort = 2\n", {3, "2"}},
        {"[SMTP]\nSmtpPort = "s + std::string(1 << 20, 'x') + "\n", {2, std::string(8190, 'x')}},
        {"[x]\n" + std::string(65530, '\n') + "[SMTP]\n\nSmtpPort = 2\n", {65534, "2"}},
    };
    // clang-format on
    for (const auto& [text, expected] : cases) {
        expect_found(text, LineMode, expected);
    }
    Source empty("[\"\"]\n\"\" = x\n");
    EXPECT_EQ(look_up(empty, nullptr, nullptr, LineMode), (Lookup{2, "x"}));
}

TEST(Lookup, ValueModes) {
    const std::string wide(8190, 'x');
    // clang-format off
    // What stands behind the "=", its value in line mode and in token mode.
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {" \"a b\"", "a b", "a b"}, {"\"x\"", "x", "x"}, {"\"a\" b", "\"a\" b", "a"}, {"\"open", "\"open", "open"},
        {"\"\"", "\"\"", ""}, {"\"", "\"", ""}, {"\"\"\"", "\"", ""},
        {"  abc # note \t", "abc # note", "abc"}, {"# note", "# note", ""}, {"", "", ""}, {" \t ", "", ""},
        {"12 34", "12 34", "12"}, {"a]b", "a]b", "a"}, {"v\r", "v\r", "v\r"}, {" a\0b "s, "a", "a"}, {"\"a\0b\""s, "\"a", "a"},
        {wide + "yz", wide + "y", wide + "y"}, {std::string(8000, ' ') + std::string(300, 'x'), wide.substr(0, 191), wide.substr(0, 300)},
    };
    // clang-format on
    for (const auto& [rest, line, token] : cases) {
        for (const std::string end : {"", "\nSmtpPort = later\n"}) {
            const std::string text = "[SMTP]\nSmtpPort =" + rest + end;
            expect_found(text, LineMode, {2, line});
            expect_found(text, TokenMode, {2, token});
        }
    }
    for (const std::string rest : {"[x]", "]", "= 1"}) { // as token: no entry
        const std::string text = "[SMTP]\nSmtpPort = " + rest + "\nSmtpPort = later\n";
        expect_found(text, TokenMode, {3, "later"});
        expect_found(text, LineMode, {2, rest});
    }
    const std::string thrice = "[SMTP]\nSmtpPort = ]\nSmtpPort = ]\nSmtpPort = 3\nSmtpPort = 4\n";
    expect_found(thrice, TokenMode, {4, "3"});
    expect_found(thrice + "MailHost = 1\nSmtpDate = 2\n", LineMode, {2, "]"});
    Source source("[s]\nk = 12345\n");
    EXPECT_EQ(look_up(source, "s", "k", LineMode, 4), (Lookup{2, "123"}));
    EXPECT_EQ(look_up(source, "s", "k", LineMode, 1), (Lookup{2, ""}));
}

} // namespace
} // namespace ov
