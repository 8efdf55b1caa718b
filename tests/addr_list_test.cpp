#include "addr/addr_list.h"

#include <gtest/gtest.h>
#include <tuple>
#include <vector>

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
    free_ADDRS(std::move(list)); // the next line takes its cells from here
    return addresses;
}

TEST(AddrList, Lines) {
    const std::string longest(1022, 'x');
    // clang-format off
    const std::pair<std::string, Addresses> cases[] = {
        {"Taro <taro@dom>, hanako@dom", {"taro@dom", "hanako@dom"}}, {"a@b (note) , c@d", {"a@b", "c@d"}},
        {"", {}}, {",, \v\f\r_,", {}}, {"a@b,", {"a@b"}}, {"a@b, ,c@d", {"a@b", "c@d"}},
        {"a @ b\t\n", {"a@b"}}, {"_ a@b _,c", {"a@b", "c"}}, {"a\rb", {"a\rb"}},
        // quoted strings
        {"\"a , b\t\"@c,d", {"\"a , b\t\"@c", "d"}}, {"\"a\nb\"@c", {"\"ab\"@c"}}, {"\"a\\\"b\"@c", {"\"a\\\"b\"@c"}},
        // escapes
        {"a\\_b@c", {"a\\ b@c"}}, {"a\\,b@c,d", {"a\\,b@c", "d"}}, {"x\\<a@b", {"x\\<a@b"}},
        // "<" and ">"
        {"<a@b> hidden, c", {"a@b", "c"}}, {"x <y <a@b>>, c", {"a@b", "c"}}, {"<a>b<c>, d", {"c", "d"}}, {"<_>,a", {"a"}},
        // comments
        {"a(x(y)z)b", {"ab"}}, {"a(\\x\\_)b", {"ax b"}}, {"ab(\n)c", {"ac"}}, {"(\n\n)c", {"c"}}, {"a)b,c", {"a)b", "c"}},
        // what is malformed ends the list
        {"a,b@c>, d", {"a"}}, {"a,<b@c, d", {"a"}}, {"a,(b, d", {"a"}}, {"a,\"b, d", {"a"}}, {"a,b\\", {"a"}},
        {"a,b\\\nc,d", {"a"}}, {"a,<>,b", {"a"}}, {"a,<>x,b", {"a"}}, {"a\0b,c"s, {"a"}},
        // an address has at most 1022 characters; the next begins behind the one too many
        {longest + ",b", {longest, "b"}}, {longest + "xyz,b", {longest, "yz", "b"}},
        {longest + "\\yz", {longest, "yz"}}, {longest.substr(1) + "\\yz", {longest.substr(1) + "\\", "z"}},
    };
    // clang-format on
    for (const auto& [line, addresses] : cases) {
        EXPECT_EQ(list_of(line), addresses) << testing::PrintToString(line.substr(0, 100));
    }
    std::string many;
    for (int i = 0; i < 10001; ++i) {
        many += "a,";
    }
    EXPECT_EQ(list_of(many).size(), 9999U);
}

TEST(AddrList, AcceptableAddresses) {
    // Whether the texts are addresses with wild cards, plain ones, and strict ones.
    // clang-format off
    const std::tuple<int, int, int, Addresses> cases[] = {
        {1, 1, 1, {"user@dom", "@dom", "user@", "user", "<user@dom>", "<user@dom", "<user@dom>x", "a_b-c.d@e_f-g.h"}},
        {1, 1, 0, {"us!er@dom", "ex ample", "user@dom>", "u\xe9@dom"}},
        {1, 0, 0, {"*@dom", "user@*.dom", "us$er", "a@b@c"}},
        {0, 0, 0, {"user@do!m", "us#er@dom", "us:er", "", "<>", "<"}},
        // 1023 characters are looked at
        {1, 1, 1, {std::string(1023, 'a') + "*:#"}}, {1, 1, 0, {std::string(1023, 'a') + "\xe9"}},
        {0, 0, 0, {std::string(1022, 'a') + ":#"}},
    };
    // clang-format on
    for (const auto& [pattern, plain, strict, texts] : cases) {
        for (const std::string& text : texts) {
            EXPECT_EQ(isvalid_address(text.c_str(), AddressPattern), pattern) << text;
            EXPECT_EQ(isvalid_address(text.c_str(), AddressPlain), plain) << text;
            EXPECT_EQ(isvalid_address(text.c_str(), AddressStrict), strict) << text;
        }
    }
}

} // namespace
} // namespace ov
