#include "conf/conf_tool.h"
#include "support.h"
#include "util/log.h"
#include "util/util_settings.h"

#include <gtest/gtest.h>

namespace ov {
namespace {

using namespace std::string_literals;
using Lookup = std::pair<int, std::string>; // the line of the entry, 0 without one, and its value

Lookup look_up(std::string_view text, const char* sec, const char* key, int mode,
               std::size_t size = 8192) {
    Source source(text);
    std::string value = "stale";
    const int result = _getprofile(source, sec, key, value, size, mode);
    EXPECT_EQ(result, scan_linenumber == 0 ? -1 : 0);
    return {scan_linenumber, value};
}

TEST(Lookup, FindsTheFirstEntryOfSectionAndKey) {
    // clang-format off
    const std::pair<std::string, Lookup> cases[] = {
        {"[MAIL]\nmaxsize=10\nMaxSize = 11\n", {2, "10"}},
        {"[ Mail ] # note\n\n \tMaxSize\t=10", {3, "10"}},
        {"[\"Mail\"]\n\"MaxSize\" = 10\n", {2, "10"}},
        {"[Mail] MaxSize = 10\n", {1, "10"}},
        {"MaxSize = 1\n[Mail]\nMaxSize = 2\n", {3, "2"}},
        {"[Other]\nMaxSize = 1\n[Mail]\n[Other]\n[Mail]\nMaxSize = 2\n", {6, "2"}},
        {"[Mail][Other]\nMaxSize = 1\n", {}},
        {"\n[Mail]\nMaxSize = 10\n", {2, "10"}}, // the first line feed is not counted
        {"[Mail]\n12 = 1\n123456789 = 1\nMaxSize = 2\n", {4, "2"}},
        {"[12]\n[Mail\nMaxSize = 1\n[x]\nMaxSize = 2\n[Mail]\nMaxSize = 3\n", {7, "3"}},
        {"[Mail]\n] MaxSize = 1\n= MaxSize = 1\nx MaxSize = 1\nMaxSize\nMaxSize = 2", {6, "2"}},
        {"[Mail]\nword\nMaxSize = 2\n", {3, "2"}}, // a bare word hides no line
        {"[Mail]\r\nMaxSize = 2\r\n", {2, "2\r"}}, // nor does the carriage return
        // a cut header renames the section, but is no header; a number as name is nothing
        {"[Mail]\n[Cut\nMaxSize = 2\n[Mail]\n", {}}, {"[x]\n[Mail\nMaxSize = 2\n", {3, "2"}},
        {"[x]\n[Mail more] MaxSize = 1\nMaxSize = 2\n", {3, "2"}},
        {"[Mail\nMaxSize = 2\n", {}}, {"[Mail]\n[12]\nMaxSize = 2\n", {3, "2"}},
        {"[Mail]\n#MaxSize = 1\nMaxSize # = 1\nMaxSize = 2\n", {4, "2"}},
        {"[Mail]\nMaxSize == 1\n", {2, "= 1"}}, {"[Mail]\nMaxSize =", {2, ""}},
        {"[Mail]\nMaxSize", {}}, {"[Mail]\nMaxSize ", {}}, {"[Mail", {}}, {"[", {}}, {"", {}},
        {"[Mail]\nOther = "s + std::string(100000, 'x') + "\nMaxSize = 2\n", {3, "2"}},
        {"[Mail]\nMaxSize\0x = 2\n"s, {2, "2"}}, // a name ends at its NUL
    };
    // clang-format on
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(look_up(text, "mail", "maxsize", LineMode), expected)
            << testing::PrintToString(text.substr(0, 200));
    }
    EXPECT_EQ(look_up("[\"\"]\n\"\" = x\n", nullptr, nullptr, LineMode), (Lookup{2, "x"}));
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
        for (const std::string end : {"", "\n", "\nKey = later\n"}) {
            const std::string text = "[s]\nKey =" + rest + end;
            EXPECT_EQ(look_up(text, "s", "Key", LineMode), (Lookup{2, line})) << rest;
            EXPECT_EQ(look_up(text, "s", "Key", TokenMode), (Lookup{2, token})) << rest;
        }
    }
    for (const std::string rest : {"[x]", "]", "= 1"}) { // as token: no entry
        const std::string text = "[s]\nKey = " + rest + "\nKey = later\n";
        EXPECT_EQ(look_up(text, "s", "Key", TokenMode), (Lookup{3, "later"})) << rest;
        EXPECT_EQ(look_up(text, "s", "Key", LineMode), (Lookup{2, rest})) << rest;
    }
    EXPECT_EQ(look_up("[s]\nk = 12345\n", "s", "k", LineMode, 4), (Lookup{2, "123"}));
    EXPECT_EQ(look_up("[s]\nk = 12345\n", "s", "k", LineMode, 1), (Lookup{2, ""}));
}

TEST(Lookup, FirstHeaderOfASection) {
    // clang-format off
    const std::pair<std::string, int> cases[] = {
        {"[a]\n[b]\n[B]\n", 2}, {"[a]\nKey = \"[b]\"\n# [b]\n[b]\n", 4},
        {"[a]\nKey = x [b]\n[b]\n", 2}, // a bracket in a value starts a header
        {"[[b]\n[1][b]\n[b x]\n[b\n[b]\n", 5}, {"\n[b]\n", 1}, {"[b]x", 1}, {"[b", -1},
    };
    // clang-format on
    for (const auto& [text, line] : cases) {
        Source source(text);
        const int result = get_sec(source, "b");
        EXPECT_EQ(result == 0 ? scan_linenumber : result, line) << text;
    }
}

TEST(Lookup, FilesLargerThanAWindow) {
    const test::TempDir dir;
    // Blank lines, headers and long lines wherever a window may end.
    std::string text = "\n";
    for (int i = 0; text.size() < 300000; ++i) {
        text += i % 7 == 0 ? "\n"
                           : "[s" + std::to_string(i % 5) + "]\nk" + std::to_string(i) + " = v\n";
    }
    for (const std::size_t size : {0UL, 65530UL, 65536UL, 1000000UL}) {
        const std::string whole = text + "x = " + std::string(size, 'y') + "\n\n[last]\nk = v";
        std::optional<Source> file = Source::open(dir.file("c", whole).c_str());
        Source memory(whole);
        for (const char* section : {"s0", "s4", "last"}) {
            for (const char* key : {"k1", "k20004", "k7999", "k"}) {
                std::string value;
                conf_getprofile(*file, section, key, value, 8192);
                EXPECT_EQ((Lookup{scan_linenumber, value}), look_up(whole, section, key, LineMode));
            }
            EXPECT_EQ(get_sec(memory, section), 0);
            const int line = scan_linenumber;
            EXPECT_EQ(get_sec(*file, section), 0);
            EXPECT_EQ(scan_linenumber, line);
        }
    }
}

TEST(Lookup, FetchReadsAFileAndNamesOneItCannotOpen) {
    const test::TempDir dir;
    std::string value;
    EXPECT_EQ(conf_fetch(dir.file("c", "[s]\nk = v\n").c_str(), "s", "k", value, 8192), 0);
    EXPECT_EQ(value, "v");
    EXPECT_EQ(conf_fetch(dir.path().c_str(), "s", "k", value, 8192), -1); // a directory is empty
    EXPECT_EQ(value, "");
    test::CapturedErrors errors;
    EXPECT_EQ(conf_fetch("/no/such", "s", "k", value, 8192), -1);
    EXPECT_EQ(errors.text(), "cannot open \"/no/such\"\n");
}

TEST(Lookup, FoundEntriesAreLoggedForDebugging) {
    const test::TempDir dir;
    services.log_directory.set(dir.path());
    log_init();
    const auto look_up_with = [](unsigned facility, int level) {
        services.facility = facility;
        services.level = level;
        look_up("[s]\nk = value\n", "S", "K", LineMode, 3); // the log has all of it
        look_up("[s]\nk = v\n", "S", "none", LineMode);
    };
    look_up_with(0x2000, 89);
    look_up_with(0x1fff, 90);
    EXPECT_TRUE(dir.names().empty());
    look_up_with(0x2000, 90);
    const std::string log = test::read_file(dir.path(dir.names().at(0)));
    EXPECT_NE(log.find(" CONF SCAN: DEBUG sec=S key=K  val=value\n"), log.npos) << log;
}

} // namespace
} // namespace ov
