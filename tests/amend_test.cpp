// Many changes of a text at once, byte for byte.
#include "changes.h"
#include "util/text.h"

#include <gtest/gtest.h>

namespace ov {
namespace {

using namespace std::string_literals;
using test::changes_of;

TEST(Amend, EveryOtherByteStays) {
    struct Case {
        std::string before;
        std::vector<std::string> changes;
        std::string after;
    };
    const std::string longest(8191, 'v');
    // clang-format off
    const Case cases[] = {
        // replaced in its place, the first of its name, spelled as it is
        {"\n[L]\n# c\nx = 1\nLevel = 2\n", {"L.level=5"}, "\n[L]\n# c\nx = 1\nLevel = 5\n"},
        {"[l]\n\t LEVEL=3 # old\nlevel = 4\n[L]\nx\n", {"L.Level=5"}, "[l]\n\t LEVEL = 5\nlevel = 4\n[L]\nx\n"},
        {"[L] \"x\"\t= 1", {"L.X=5"}, "[L] \"x\" = 5"},
        {"[L]\nx=\"a b\"\ny = [\ny = 1\nz = 1 # c\nu=1 \n", {"L.x:=a b", "L.y:=1", "L.z:=1", "L.u=1"},
         "[L]\nx=\"a b\"\ny = 1\ny = 1\nz = 1\nu=1 \n"},
        {"[L]\r\nx = 1\r\nb\0c\r\n\xff"s, {"L.x=5"}, "[L]\r\nx = 5\nb\0c\r\n\xff"s},
        {"[\"L\0z\"]\n"s + longest + "v\nx\0y = 1\n"s, {"L.x=5"}, "[\"L\0z\"]\n"s + longest + "v\nx\0y = 5\n"s},
        // new behind the last entry of the first block, or behind its header
        {"[a]\n[L] # x\ny = 2\n\n# b\n[L]\nz = 3\n", {"l.u=1", "L.v="}, "[a]\n[L] # x\ny = 2\nu = 1\nv =\n\n# b\n[L]\nz = 3\n"},
        {"[a]\nx = see [L] here\n[L]\n", {"L.u=1"}, "[a]\nx = see [L] here\n[L]\nu = 1\n"},
        {"[L] y = none\nz\n", {"L.u=1"}, "[L] y = none\nu = 1\nz\n"},
        {"[L] [B] y = 2\n[L\nz = 1\n[l] #", {"L.u=1"}, "[L] [B] y = 2\n[L\nz = 1\n[l] #\nu = 1\n"},
        {"[L]\nx = 1\n[Other\ny = 1\n[1]\n", {"L.u=1", "Other.v=2", "other.y=3"},
         "[L]\nx = 1\nu = 1\n[Other\ny = 3\n[1]\n\n[Other]\nv = 2\n"},
        {"[L]", {"L.u=1"}, "[L]\nu = 1\n"},
        {"[L]\nx = 1", {"L.x=2", "L.u=1"}, "[L]\nx = 2\nu = 1\n"},
        // in a section at the end
        {"", {"L.u=1", "B C.v=1", "l.x y=2"}, "[L]\nu = 1\n\"x y\" = 2\n\n[\"B C\"]\nv = 1\n"},
        {"[a]\nx = 25", {"L.u=1"}, "[a]\nx = 25\n\n[L]\nu = 1\n"},
        {"x = 1\n \n", {"L.x=1"}, "x = 1\n \n[L]\nx = 1\n"},
        {"\xef\xbb\xbf[L]\nx = 1\n", {"L.x=2"}, "\xef\xbb\xbf[L]\nx = 1\n\n[L]\nx = 2\n"},
        // entries deleted
        {"[L]\n# c\nx = 1\ny = 2\n[B]\nx = 1\n[L] X = 3 # c\n[L]\n x", {"L.x"}, "[L]\n# c\ny = 2\n[B]\nx = 1\n[L]\n[L]\n x"},
        {"[L]\ny = 1\n  x = 1", {"L.x", "L.z", "M", "L.u=1"}, "[L]\ny = 1\nu = 1\n"},
        // sections deleted
        {"# h\n [L] # c\n\n# d\nx = 1\nz\ny = 2\n\n# B is this\n[B]\nx = 1\n[L]\n# e\n", {"L"}, "# h\n\n# B is this\n[B]\nx = 1\n# e\n"},
        {" [L] [B] [l] [l] # c\n# d\nx = 1\ny", {"L"}, "[B]\ny"},
        {"[B]\n[L] [l] x = 1\n[L\ny = 1\n[1]\nz = 1\n[C]\n", {"L"}, "[B]\n[C]\n"},
        {"[B] [L] [C] x = 1", {"L"}, "[B] [C] x = 1"},
        {"[B] [L]\n# c\nx = 1", {"L", "B.u=1"}, "[B]\nu = 1\n"},
        {"[L\nx = 1\n[L]\ny = 1\n", {"L"}, "[L\nx = 1\n"}, // nothing is read before the first header
        // what is read, to the longest
        {"", {"L.a=" + longest, "L.b:=" + longest.substr(3) + "#", "L.c:=a#", "L.d=\"a\"", "L.e= a", "L.12345678=\"", "L.g:=[", "L.h="},
         "[L]\na =" + longest + "\nb =\"" + longest.substr(3) + "#\"\nc = \"a#\"\nd = \"\"a\"\"\ne = \" a\"\n\"12345678\" = \"\ng = \"[\"\nh =\n"},
    };
    // clang-format on
    for (const Case& c : cases) {
        const std::vector<Change> changes = changes_of(c.changes);
        const Amended once = amended(c.before, changes);
        EXPECT_EQ(once.text, c.after);
        EXPECT_EQ(once.refusal, "");
        EXPECT_EQ(amended(once.text, changes).text, c.after) << "twice";
    }
}

TEST(Amend, AllOrNothing) {
    const std::string longest(8191, 'v');
    const std::string before = "[L]\nx = 1\n[B\ny = 1\n";
    const std::string bare = "the value does not read back, neither bare nor in quotes";
    const std::string twice = "is named twice, or with all of its section";
    const std::string key = "no entry gives a key this name";
    const std::string section = "no header gives a section this name";
    // clang-format off
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{"L.y=1", "L.x=" + longest + "v"}, "the value is longer than 8191 bytes"},
        {{"L.y=1", "L.x:=" + longest.substr(2) + "#"}, bare}, {{"L", "L.x=a\nb"}, bare}, {{"L", "L.x=a\0b"s}, bare},
        {{"L.y=1", "L.x:=a \"b"}, bare}, {{"L.y=1", "L.x:=\"\""}, bare},
        {{"L.y", "L.a\" b=1"}, key}, {{"L.y", "L.a\0b"s}, key},
        {{"L.y", "a\"]"}, section}, {{"L", "a\0b"s}, section}, {{"L.y", "a\n[b.x=1"}, section},
        {{"L.y=1", "L=1"}, "a section has no value"}, {{"L.y=1", "l.Y"}, twice}, {{"L", "l.y=1"}, twice}, {{"L.y", "L"}, twice}, {{"M", "m"}, twice},
        {{"C", "L"}, "has the only header in front of entries that stay"}, // those of B
    };
    // clang-format on
    for (const auto& [texts, refusal] : cases) {
        const Amended result = amended(before, changes_of(texts));
        EXPECT_EQ(result.refusal, refusal);
        EXPECT_EQ(result.refused, 1U);
        EXPECT_EQ(result.text, before);
    }
    EXPECT_EQ(amended(before, changes_of({"L", "B"})).text, "");
}

} // namespace
} // namespace ov
