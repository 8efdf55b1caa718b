#include "conf/scan.h"

#include <gtest/gtest.h>

namespace ov {
namespace {

using namespace std::string_literals;

// The tokens of a text, each as "token:text@line " with the line of the character behind it.
std::string tokens_of(std::string_view text) {
    Source source(text);
    init_scan(source);
    std::string seen;
    Token token = TokenEol;
    while (token != TokenEof) {
        token = ini_scan(source);
        EXPECT_EQ(scan_len, static_cast<int>(scan_str.size()));
        seen += std::to_string(token) + ":" + std::string(scan_str) + "@" +
                std::to_string(scan_linenumber) + " ";
    }
    return seen;
}

TEST(Scan, Tokens) {
    const std::string word(8191, 'w');
    // clang-format off
    const std::pair<std::string, std::string> cases[] = {
        {"", "1:EOF@1 "}, {"Key = a b", "17:Key@1 4:=@1 17:a@1 17:b@1 1:EOF@1 "},
        {"[a]\n", "2:[@1 17:a@1 3:]@2 5:LF@2 1:EOF@2 "}, {"abc#def ] =\nx", "17:abc@1 5:LF@2 17:x@2 1:EOF@2 "},
        {"\t 12345678 123456789 0x1 7", "16:12345678@1 17:123456789@1 17:0x1@1 16:7@1 1:EOF@1 "},
        {"\"a#b\"c=", "17:a#b@1 17:c@1 4:=@1 1:EOF@1 "}, {"\"abc\nx", "17:abc@2 5:LF@2 17:x@2 1:EOF@2 "},
        {"\"\" \"a\\\" \"abc", "17:@1 17:a\\@1 17:abc@1 1:EOF@1 "}, {"  \t\n# only\n", "5:LF@2 5:LF@3 1:EOF@3 "},
        {"a\r\n\v", "17:a\r@2 5:LF@2 17:\v@2 1:EOF@2 "}, {"\n\nx", "5:LF@2 5:LF@2 17:x@2 1:EOF@2 "},
        // a long token is cut and consumed whole
        {word, "17:" + word + "@1 1:EOF@1 "}, {word + "w=", "17:" + word + "@1 4:=@1 1:EOF@1 "},
        {"\"" + word + word + "\"=", "17:" + word + "@1 4:=@1 1:EOF@1 "},
        {"a\0b \377"s, "17:a\0b@1 17:\377@1 1:EOF@1 "s},
    };
    // clang-format on
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(tokens_of(text), expected) << testing::PrintToString(text);
    }
}

TEST(Scan, NumbersHaveAValueAndTheEndStays) {
    const std::string rest(8192, ' ');
    const std::string text = "00012345" + rest + "\n";
    Source source(text);
    init_scan(source);
    EXPECT_EQ(ini_scan(source), TokenNumber);
    EXPECT_EQ(scan_num, 12345);
    skip_eol(source);
    EXPECT_EQ(scan_str, rest.substr(1));
    EXPECT_EQ(scan_len, 8191);
    for (const Token token : {TokenEol, TokenEof, TokenEof}) {
        EXPECT_EQ(ini_scan(source), token);
        EXPECT_EQ(scan_linenumber, 2);
    }
    skip_eol(source);
    EXPECT_EQ(scan_str, "");
}

} // namespace
} // namespace ov
