#include "kinds/tables.h"
#include "support.h"
#include "util/disk.h"
#include "util/log.h"
#include "util/services.h"
#include "value/convert.h"
#include "value/ip.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>

namespace ov {
namespace {

TEST(Validate, IpAddresses) {
    // Whether the texts are valid as a network, and as a host.
    const std::tuple<int, int, std::vector<const char*>> cases[] = {
        {1, 1, {"10.1.2.3", "0.0.0.1", "255.255.255.254"}},
        {1, 0, {"10.", "10.1.", "192.168", "10/8", "1.2.3.4/32", "1.2.3.4/8", "1.2.3.4/032"}},
        {1, 0, {"192.*", "1*.*2*", "*.*.*.*", "111.111.111.111/32"}},
        {0, 0, {"255.255.255.255", "0.0.0.0", "000.0.00.0", "0.0.0.0/0", "", "a", "****", ".1"}},
        {0, 0, {"10.1.2.3.", "10.1.2.3.4", "256.1", "1..2", "1.2.3.0004", "1.2.3.-4"}},
        {0, 0, {"1.2.3.4/33", "1.2.3.4/0008", "1.2.3.4/", "1.2.3.4/8x", "10./8", "/8"}},
        {0, 0, {"1.2.3.4.5.6.7.8.", "111.111.111.111/032", nullptr}},
    };
    for (const auto& [network, host, texts] : cases) {
        for (const char* text : texts) {
            EXPECT_EQ(isvalid_ipaddr(text, 0), network) << (text ? text : "null");
            EXPECT_EQ(isvalid_ipaddr(text, 1), host) << (text ? text : "null");
        }
    }
    EXPECT_EQ(isvalid_hostname(nullptr), 0);
}

TEST(Validate, ConditionsOfAList) {
    const test::TempDir dir;
    services.log_directory.set(dir.path());
    log_init();
    ProgName = "tool";
    const std::tuple<const char*, const char*, const char*> conditions[] = {
        {"10.1.2.3/8", "10.0.0.0", "255.0.0.0"},        {"10.1.2.3/0", "0.0.0.0", "0.0.0.0"},
        {"10.1.2.3/32", "10.1.2.3", "255.255.255.255"}, {"172.16.", "172.16.0.0", "255.255.0.0"},
        {"172.16", "172.16.0.0", "255.255.0.0"},        {"1.2.3.4.", "1.2.3.4", "255.255.255.255"},
        {"10.1/16", "10.0.0.0", "255.255.0.0"}, // as the system reads a short address
    };
    int err = 7;
    for (const auto& [text, ip, mask] : conditions) {
        const auto list = ipaddr_makeaddr(std::string(":*.2::") + text, &err);
        ASSERT_TRUE(list && list->size() == 2) << text;
        EXPECT_EQ(err, 0);
        EXPECT_STREQ((*list)[0].str.data(), "*.2");
        EXPECT_EQ((*list)[0].cmp * 2 + (*list)[1].cmp, 1);
        EXPECT_STREQ((*list)[1].str.data(), text);
        EXPECT_EQ((*list)[1].ip, ::inet_addr(ip)) << text;
        EXPECT_EQ((*list)[1].mask, ::inet_addr(mask)) << text;
    }
    EXPECT_TRUE(ipaddr_makeaddr("", nullptr)->empty());
    EXPECT_EQ(ipaddr_makeaddr("*23456789012345678", nullptr)->size(), 1U);
    EXPECT_TRUE(dir.names().empty());
    std::string expected;
    for (const char* text : {"*234567890123456789", "1.2.3.4.5", "255.255.255.255/8", "1.2.3.4/33",
                             "1.2.3.4/", "1.2.3.4/0008", "1.256", "1..2", ".", "1.2.3.00004",
                             "001.002.003.0044", "111.111.111.111/032"}) {
        EXPECT_FALSE(ipaddr_makeaddr(std::string("1.2:") + text, &err)) << text;
        EXPECT_EQ(err, 0);
        expected += std::string("ipaddr_makeaddr: wrong ip address: ") + text + "\n";
    }
    EXPECT_EQ(test::logged_errors(dir.path()), expected);
}

TEST(Validate, WordsOfTheTables) {
    std::string listing;
    for (int table = -1; table <= Tables; ++table) {
        for (int number = -1; number < 5; ++number) {
            const char* word = str_vtab(table, number);
            listing += word ? " " + std::string(word) : "";
            EXPECT_EQ(val_vtab(table, word ? word : "?"), word ? number : -1);
        }
        listing += ";";
    }
    EXPECT_EQ(listing, "; strong weak; none all out in rule; none all out in; none all out in;"
                       " none all out in rule; cont nega no yes; none header envelope both;"
                       " sendmail postfix qmail;;");
}

TEST(Validate, Sizes) {
    constexpr std::int64_t G = 1 << 30;
    // clang-format off
    // A text, the unit of a number without one, and the size in bytes and in kilobytes.
    const std::tuple<const char*, char, std::int64_t, std::int64_t> cases[] = {
        {"", 'K', 0, 0}, {"K", 'K', 0, 0}, {"KM5", 'B', 5, 0},
        {"10", 'K', 10240, 10}, {"10", 'X', 10240, 10}, {"10", 'm', 10240, 10},
        {"10", 'B', 10, 0}, {"10", 'M', 10 << 20, 10240}, {"1", 'G', G, 1048576},
        {"1g1m1k1b", 'K', G + 1048576 + 1025, 1048576 + 1024 + 1},
        {"1023B", 'K', 1023, 0}, {"1023B1025b", 'K', 2048, 1}, // each is rounded
        {"123456789", 'B', 123456789, 120563}, {"999999999G", 'K', 999999999 * G, 999999999 * G / 1024},
        {"0000000001", 'K', -1, -1}, {"-5", 'K', -1, -1}, {"5 K", 'K', -1, -1},
    };
    // clang-format on
    for (const auto& [text, unit, bytes, kilobytes] : cases) {
        EXPECT_EQ(conv_byte(text, unit), bytes) << text << unit;
        EXPECT_EQ(conv_Kbyte(text, unit), kilobytes) << text << unit;
    }
    // 2^63 - 2 bytes are taken, one more is not.
    std::string most;
    for (int i = 0; i < 8; ++i) {
        most += "999999999G";
    }
    constexpr std::int64_t rest = 0x7FFFFFFFFFFFFFFE - 8 * (999999999 * G);
    most += std::to_string(rest / G) + "G" + std::to_string(rest % G / 1024) + "K";
    EXPECT_EQ(conv_byte(most + "1022B", 'K'), 0x7FFFFFFFFFFFFFFE);
    EXPECT_EQ(conv_byte(most + "1023B", 'K'), -1);
}

} // namespace
} // namespace ov
