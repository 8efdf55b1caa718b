#include "addr/addr_list.h"
#include "support.h"

#include <gtest/gtest.h>

namespace ov {
namespace {

using namespace std::string_literals;
using Addresses = std::vector<std::string>;

Addresses list_of(std::string_view line) {
    Addresses addresses;
    AddressList list = addr_list(line);
    for (const ADDRS* cell = list.get(); cell; cell = cell->next.get()) {
        addresses.push_back(cell->str.value_or("(none)"));
    }
    free_ADDRS(std::move(list));
    return addresses;
}

TEST(AddrList, Lines) {
    const std::pair<std::string, Addresses> cases[] = {
        {"Taro <taro@dom>, hanako@dom", {"taro@dom", "hanako@dom"}},
        {"a@b (note) , c@d", {"a@b", "c@d"}},
        {"a @ b\t\n", {"a@b"}},
        {"", {}},
        {",, \v\f\r_,", {}},
        {"a@b,", {"a@b"}},
        {"a@b, ,c@d", {"a@b", "c@d"}},
        {"_ a@b _,c", {"a@b", "c"}},
        {"\"a , b\t\"@c,d", {"\"a , b\t\"@c", "d"}},
        {"\"a\nb\"@c", {"\"ab\"@c"}},
        {"\"a\\\"b\"@c", {"\"a\\\"b\"@c"}},
        {"a\\_b@c", {"a\\ b@c"}},
        {"a\\,b@c,d", {"a\\,b@c", "d"}},
        {"x\\<a@b", {"x\\<a@b"}},
        {"<a@b> hidden, c", {"a@b", "c"}},
        {"x <y <a@b>>, c", {"a@b", "c"}},
        {"<a>b<c>, d", {"c", "d"}},
        {"a(x(y)z)b", {"ab"}},
        {"a(\\x\\_)b", {"ax b"}},
        {"ab(\n)c", {"ac"}},
        {"(\n\n)c", {"c"}},
        {"a\rb", {"a\rb"}},
        {"<_>,a", {"a"}},
        // what is malformed ends the list
        {"a,b@c>, d", {"a"}},
        {"a,<b@c, d", {"a"}},
        {"a,(b, d", {"a"}},
        {"a,\"b, d", {"a"}},
        {"a,b\\", {"a"}},
        {"a,b\\\nc,d", {"a"}},
        {"a,<>,b", {"a"}},
        {"a,<>x,b", {"a"}},
        {"a)b,c", {"a)b", "c"}},
        {"a\0b,c"s, {"a"}},
        // an address has at most 1022 characters; the next begins behind the one too many
        {std::string(1022, 'x') + ",b", {std::string(1022, 'x'), "b"}},
        {std::string(1023, 'x') + "yz,b", {std::string(1022, 'x'), "yz", "b"}},
        {std::string(1022, 'x') + "\\yz", {std::string(1022, 'x'), "yz"}},
        {std::string(1021, 'x') + "\\yz", {std::string(1021, 'x') + "\\", "z"}},
    };
    for (const auto& [line, addresses] : cases) {
        EXPECT_EQ(list_of(line), addresses) << testing::PrintToString(line.substr(0, 100));
    }
    EXPECT_FALSE(addr_list(std::nullopt));
}

TEST(AddrList, OneSpecificationAtATime) {
    std::string out = "kept";
    EXPECT_FALSE(ag_get_addrspec(std::nullopt, out, 1024));
    EXPECT_EQ(out, "kept");
    EXPECT_EQ(ag_get_addrspec("abcdef, g", out, 4), " g");
    EXPECT_EQ(out, "abc");
    EXPECT_FALSE(ag_get_addrspec("a>", out, 1024));
    EXPECT_EQ(out, "");
    EXPECT_FALSE(ag_get_addrspec("last", out, 1024));
    EXPECT_EQ(out, "last");
}

TEST(AddrList, AtMost9999Specifications) {
    std::string line;
    for (int i = 0; i < 10001; ++i) {
        line += "a,";
    }
    EXPECT_EQ(list_of(line).size(), 9999U);
}

TEST(AddrList, CellsAreUsedAgain) {
    AddressList list = addr_list("a,b");
    const ADDRS* first = list.get();
    const ADDRS* second = list->next.get();
    free_ADDRS(std::move(list));
    EXPECT_EQ(addrs_freelist.get(), second);
    EXPECT_FALSE(addrs_freelist->str);
    AddressList cell = alloc_ADDRS(std::nullopt);
    EXPECT_EQ(cell.get(), second);
    EXPECT_FALSE(cell->str);
    EXPECT_FALSE(cell->next);
    cell->next = alloc_ADDRS("x");
    EXPECT_EQ(cell->next.get(), first);
    EXPECT_EQ(cell->next->str, "x");
}

TEST(AddrList, AcceptableAddresses) {
    struct Case {
        std::string text;
        int pattern;
        int plain;
        int strict;
    };
    const Case cases[] = {
        {"user@dom", 1, 1, 1},
        {"*@dom", 1, 0, 0},
        {"user@*.dom", 1, 0, 0},
        {"user@do!m", 0, 0, 0},
        {"us!er@dom", 1, 1, 0},
        {"us#er@dom", 0, 0, 0},
        {"us:er", 0, 0, 0},
        {"us$er", 1, 0, 0},
        {"@dom", 1, 1, 1},
        {"user@", 1, 1, 1},
        {"user", 1, 1, 1},
        {"ex ample", 1, 1, 0},
        {"a@b@c", 1, 0, 0},
        {"", 0, 0, 0},
        {"<user@dom>", 1, 1, 1},
        {"<user@dom", 1, 1, 1},
        {"<user@dom>x", 1, 1, 1},
        {"<>", 0, 0, 0},
        {"<", 0, 0, 0},
        {"user@dom>", 1, 1, 0},
        {"u\xe9@dom", 1, 1, 0},
        {"a_b-c.d@e_f-g.h", 1, 1, 1},
        {std::string(1023, 'a') + "*:#", 1, 1, 1},
        {std::string(1022, 'a') + ":#", 0, 0, 0},
        {std::string(1023, 'a') + "\xe9", 1, 1, 0},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(isvalid_address(c.text.c_str(), 0), c.pattern) << c.text;
        EXPECT_EQ(isvalid_address(c.text.c_str(), 1), c.plain) << c.text;
        EXPECT_EQ(isvalid_address(c.text.c_str(), 2), c.strict) << c.text;
        EXPECT_EQ(isvalid_address(c.text.c_str(), 3), c.strict) << c.text;
    }
    EXPECT_EQ(isvalid_address(nullptr, 0), 0);
}

} // namespace
} // namespace ov
