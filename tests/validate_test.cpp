#include "conf/settings.h"
#include "conf/validate.h"
#include "support.h"
#include "util/log.h"
#include "util/util_settings.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>

namespace ov {
namespace {

TEST(Validate, IpAddresses) {
    struct Case {
        const char* text;
        int network; // valid as a network
        int host;    // and as a host
    };
    const Case cases[] = {
        {"10.1.2.3", 1, 1},
        {"0.0.0.1", 1, 1},
        {"255.255.255.254", 1, 1},
        {"255.255.255.255", 0, 0},
        {"0.0.0.0", 0, 0},
        {"000.0.00.0", 0, 0},
        {"0.0.0.0/0", 0, 0},
        {"10.", 1, 0},
        {"10.1.", 1, 0},
        {"10.1.2.3.", 0, 0},
        {"10.1.2.3.4", 0, 0},
        {"1.2.3.4/33", 0, 0},
        {"1.2.3.4/32", 1, 0},
        {"1.2.3.4/8", 1, 0},
        {"1.2.3.4/032", 1, 0},
        {"1.2.3.4/0008", 0, 0},
        {"1.2.3.4/", 0, 0},
        {"1.2.3.4/8x", 0, 0},
        {"10/8", 1, 0},
        {"10./8", 0, 0},
        {"/8", 0, 0},
        {"192.*", 1, 0},
        {"1*.*2*", 1, 0},
        {"****", 0, 0},
        {"*.*.*.*", 1, 0},
        {"192.168", 1, 0},
        {"256.1", 0, 0},
        {"1..2", 0, 0},
        {".1", 0, 0},
        {"1.2.3.0004", 0, 0},
        {"1.2.3.-4", 0, 0},
        {"", 0, 0},
        {"a", 0, 0},
        {"1.2.3.4.5.6.7.8.", 0, 0},
        {"111.111.111.111/32", 1, 0},
        {"111.111.111.111/032", 0, 0},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(isvalid_ipaddr(c.text, 0), c.network) << c.text;
        EXPECT_EQ(isvalid_ipaddr(c.text, 1), c.host) << c.text;
    }
    EXPECT_EQ(isvalid_ipaddr(nullptr, 0), 0);
}

TEST(Validate, HostNames) {
    const std::string longest(255, 'a');
    const std::pair<std::string, int> cases[] = {
        {"mail.example_1.", 1},
        {"a", 1},
        {"-a-", 1},
        {"1.2.3.4", 1},
        {"1.2.3", 0},
        {"1.2.3.a", 1},
        {"a..b", 0},
        {".a", 0},
        {"a..", 0},
        {"a b", 0},
        {"", 0},
        {"a:1", 0},
        {longest, 1},
        {longest + "a", 0},
        {".", 0},
    };
    for (const auto& [name, result] : cases) {
        EXPECT_EQ(isvalid_hostname(name.c_str()), result) << name;
    }
    EXPECT_EQ(isvalid_hostname(nullptr), 0);
}

TEST(Validate, AddressAndMaskOfACondition) {
    struct Case {
        const char* text;
        const char* ip; // null: not valid
        const char* mask;
    };
    const Case cases[] = {
        {"10.1.2.3/8", "10.0.0.0", "255.0.0.0"},
        {"10.1.2.3/0", "0.0.0.0", "0.0.0.0"},
        {"10.1.2.3/32", "10.1.2.3", "255.255.255.255"},
        {"172.16.", "172.16.0.0", "255.255.0.0"},
        {"172.16", "172.16.0.0", "255.255.0.0"},
        {"1.2.3.4.", "1.2.3.4", "255.255.255.255"},
        {"10.1/16", "10.0.0.0", "255.255.0.0"}, // as the system reads a short address
        {"1.2.3.4.5", nullptr, nullptr},
        {"255.255.255.255/8", nullptr, nullptr},
        {"1.2.3.4/33", nullptr, nullptr},
        {"1.2.3.4/", nullptr, nullptr},
        {"1.2.3.4/0008", nullptr, nullptr},
        {"1.256", nullptr, nullptr},
        {"1..2", nullptr, nullptr},
        {"1.2.3.00004", nullptr, nullptr},
        {"001.002.003.0044", nullptr, nullptr},
        {"", nullptr, nullptr},
        {nullptr, nullptr, nullptr},
    };
    for (const Case& c : cases) {
        std::uint32_t ip = 0;
        std::uint32_t mask = 0;
        EXPECT_EQ(_makeaddr(c.text, &ip, &mask), c.ip ? 0 : -1) << c.text;
        if (c.ip) {
            EXPECT_EQ(ip, ::inet_addr(c.ip)) << c.text;
            EXPECT_EQ(mask, ::inet_addr(c.mask)) << c.text;
        }
    }
}

TEST(Validate, ConditionsOfAList) {
    int err = 7;
    const std::optional<IpConditions> list = ipaddr_makeaddr("10.1.2.3/8::*.2.:1.", &err);
    ASSERT_TRUE(list);
    EXPECT_EQ(err, 0);
    ASSERT_EQ(list->size(), 3U);
    EXPECT_EQ((*list)[0].ip, ::inet_addr("10.0.0.0"));
    EXPECT_STREQ((*list)[0].str.data(), "10.1.2.3/8");
    EXPECT_EQ((*list)[1].cmp, 0);
    EXPECT_STREQ((*list)[1].str.data(), "*.2.");
    EXPECT_EQ((*list)[2].mask, ::inet_addr("255.0.0.0"));
    EXPECT_TRUE(ipaddr_makeaddr("", nullptr)->empty());
    EXPECT_EQ(ipaddr_makeaddr("*23456789012345678", &err)->size(), 1U);

    const test::TempDir dir;
    LogDirectory.set(dir.path());
    log_initialized = 0;
    log_init();
    EXPECT_FALSE(ipaddr_makeaddr("1.2:*234567890123456789:3", &err));
    EXPECT_EQ(err, 0);
    EXPECT_FALSE(ipaddr_makeaddr("1.2:256", nullptr));
    const std::string log = test::read_file(dir.path(dir.names().at(0)));
    EXPECT_NE(log.find(" ipaddr_makeaddr: wrong ip address: *234567890123456789\n"), log.npos);
    EXPECT_NE(log.find(" ipaddr_makeaddr: wrong ip address: 256\n"), log.npos);
}

TEST(Validate, Sizes) {
    constexpr std::int64_t G = 1 << 30;
    struct Case {
        const char* text;
        char unit;
        std::int64_t bytes;
        std::int64_t kilobytes;
    };
    const Case cases[] = {
        {"", 'K', 0, 0},
        {"10", 'K', 10240, 10},
        {"10", 'X', 10240, 10},
        {"10", 'm', 10240, 10},
        {"10", 'B', 10, 0},
        {"10", 'M', 10 << 20, 10240},
        {"1", 'G', G, 1048576},
        {"1G512M", 'K', G + G / 2, 1572864},
        {"1g1m1k1b", 'K', G + 1048576 + 1025, 1048576 + 1024 + 1},
        {"1023B", 'K', 1023, 0},
        {"1023B1025b", 'K', 2048, 1}, // each is rounded
        {"K", 'K', 0, 0},
        {"KM5", 'B', 5, 0},
        {"1234567890", 'K', -1, -1},
        {"0000000001", 'K', -1, -1},
        {"123456789", 'B', 123456789, 120563},
        {"5x", 'K', -1, -1},
        {"-5", 'K', -1, -1},
        {"5 K", 'K', -1, -1},
        {"999999999G", 'K', 999999999 * G, 999999999 * G / 1024},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(conv_byte(c.text, c.unit), c.bytes) << c.text << c.unit;
        EXPECT_EQ(conv_Kbyte(c.text, c.unit), c.kilobytes) << c.text << c.unit;
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

TEST(Validate, BooleansAndTexts) {
    int value = 5;
    EXPECT_EQ(truefalse("YES", &value), 0);
    EXPECT_EQ(value, 1);
    EXPECT_EQ(truefalse("2", &value), -1);
    EXPECT_EQ(truefalse("", &value), -1);
    EXPECT_EQ(value, 1);
    EXPECT_EQ(truefalse("oFF", &value), 0);
    EXPECT_EQ(value, 0);
    EXPECT_EQ(valid_str(" az~"), 1);
    EXPECT_EQ(valid_str("a\x7f"), 0);
    EXPECT_EQ(valid_str("a\tb"), 0);
    EXPECT_EQ(valid_str("\xe9"), 0);
}

TEST(Validate, FilesAndSets) {
    const test::TempDir dir;
    const std::string file = dir.file("f", "");
    EXPECT_EQ(isvalid_file(nullptr, file.c_str()), 1);
    EXPECT_EQ(isvalid_file(dir.path().c_str(), "f"), 1);
    EXPECT_EQ(isvalid_file("/no/such", file.c_str()), 1);
    EXPECT_EQ(isvalid_file(nullptr, "f"), 0);
    EXPECT_EQ(isvalid_file(dir.path().c_str(), "g"), 0);
    EXPECT_EQ(isvalid_file(nullptr, dir.path().c_str()), 0);
    EXPECT_EQ(isvalid_file("/", nullptr), 0);
    EXPECT_EQ(isvalid_file("/", std::string(4095, 'x').c_str()), 0);
    EXPECT_EQ(isvalid_dir(dir.path().c_str()), 1);
    EXPECT_EQ(isvalid_dir("."), 1);
    EXPECT_EQ(isvalid_dir(file.c_str()), 0);
    EXPECT_EQ(isvalid_dir(""), 0);
    EXPECT_EQ(isvalid_dir(nullptr), 0);
    EXPECT_EQ(isvalid_dir(("/" + std::string(4095, '/')).c_str()), 0);

    RootDirectory.set(dir.path());
    std::filesystem::create_directory(dir.path("mss.keywd.d"));
    for (const char* name : {"main_1", "a-b", "\xe9"}) {
        dir.file(std::string("mss.keywd.d/") + name + ".keywd", "");
        dir.file(std::string(name) + ".mtype", "");
    }
    MTYPE_Dir.set(dir.path());
    EXPECT_EQ(isvalid_keywd("main_1"), 1); // under the root while nothing is loaded
    EXPECT_EQ(isvalid_mtype("main_1"), 1);
    EXPECT_EQ(isvalid_keywd("a-b"), 0);
    EXPECT_EQ(isvalid_keywd("\xe9"), 0);
    EXPECT_EQ(isvalid_keywd("none"), 0);
    EXPECT_EQ(isvalid_keywd(""), 0);
    EXPECT_EQ(isvalid_mtype(std::string(4095, 'x')), 0);
}

} // namespace
} // namespace ov
