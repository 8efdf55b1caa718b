#include "conf/scan.h"

#include <gtest/gtest.h>

namespace ov {
namespace {

struct Seen {
    int token;
    std::string text;
    int line;

    bool operator==(const Seen&) const = default;
};

void PrintTo(const Seen& seen, std::ostream* stream) {
    *stream << seen.token << " \"" << seen.text << "\" line " << seen.line;
}

std::vector<Seen> tokens_of(std::string_view text) {
    Source source(text);
    init_scan(source);
    std::vector<Seen> seen;
    do {
        const Token token = ini_scan(source);
        EXPECT_EQ(scan_len, static_cast<int>(scan_str.size()));
        seen.push_back({token, std::string(scan_str), scan_linenumber});
    } while (seen.back().token != TokenEof);
    return seen;
}

TEST(Scan, Tokens) {
    // A token's line is that of the character behind it.
    const std::pair<std::string, std::vector<Seen>> cases[] = {
        {"", {{1, "EOF", 1}}},
        {"Key=Value", {{17, "Key", 1}, {4, "=", 1}, {17, "Value", 1}, {1, "EOF", 1}}},
        {"Key = a b", {{17, "Key", 1}, {4, "=", 1}, {17, "a", 1}, {17, "b", 1}, {1, "EOF", 1}}},
        {"[a]\n", {{2, "[", 1}, {17, "a", 1}, {3, "]", 1 + 1}, {5, "LF", 2}, {1, "EOF", 2}}},
        {"\t 12345678 123456789 0x10 7",
         {{16, "12345678", 1}, {17, "123456789", 1}, {17, "0x10", 1}, {16, "7", 1}, {1, "EOF", 1}}},
        {"abc#def ] =\nx", {{17, "abc", 1}, {5, "LF", 2}, {17, "x", 2}, {1, "EOF", 2}}},
        {"\"a#b\"c", {{17, "a#b", 1}, {17, "c", 1}, {1, "EOF", 1}}},
        {"\"abc\nx", {{17, "abc", 2}, {5, "LF", 2}, {17, "x", 2}, {1, "EOF", 2}}},
        {"\"abc", {{17, "abc", 1}, {1, "EOF", 1}}},
        {"\"\" \"a\\\"", {{17, "", 1}, {17, "a\\", 1}, {1, "EOF", 1}}},
        {"  \t\n# only\n", {{5, "LF", 2}, {5, "LF", 3}, {1, "EOF", 3}}},
        {"a\r\n\v", {{17, "a\r", 2}, {5, "LF", 2}, {17, "\v", 2}, {1, "EOF", 2}}},
        {"\n\nx", {{5, "LF", 2}, {5, "LF", 2}, {17, "x", 2}, {1, "EOF", 2}}},
        {{"a\0b \377", 5}, {{17, {"a\0b", 3}, 1}, {17, "\377", 1}, {1, "EOF", 1}}},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(tokens_of(text), expected) << testing::PrintToString(text);
    }
}

TEST(Scan, NumbersHaveAValueAndTheEndStays) {
    Source source("00012345");
    init_scan(source);
    EXPECT_EQ(ini_scan(source), TokenNumber);
    EXPECT_EQ(scan_num, 12345);
    EXPECT_EQ(ini_scan(source), TokenEof);
    EXPECT_EQ(ini_scan(source), TokenEof);
    EXPECT_EQ(scan_str, "EOF");
}

TEST(Scan, LongTokensAreCutAt8191AndConsumedWhole) {
    for (const std::size_t length : {8190U, 8191U, 8192U, 100000U}) {
        const std::string word(length, 'w');
        const std::string kept = word.substr(0, 8191);
        const std::vector<Seen> expected = {{17, kept, 1}, {4, "=", 1}, {1, "EOF", 1}};
        EXPECT_EQ(tokens_of(word + "="), expected) << length;
        EXPECT_EQ(tokens_of('"' + word + "\"="), expected) << length;

        const std::string line = word + "\nx";
        Source source(line);
        init_scan(source);
        skip_eol(source);
        EXPECT_EQ(scan_str, kept);
        EXPECT_EQ(scan_len, static_cast<int>(kept.size()));
        EXPECT_EQ(ini_scan(source), TokenEol);
        EXPECT_EQ(scan_linenumber, 2);
    }
}

TEST(Scan, SkippingAtTheEndOfTheFileTakesNothing) {
    Source source("a b");
    init_scan(source);
    ini_scan(source);
    skip_eol(source);
    EXPECT_EQ(scan_str, " b");
    skip_eol(source);
    EXPECT_EQ(scan_str, "");
    EXPECT_EQ(ini_scan(source), TokenEof);
}

} // namespace
} // namespace ov
