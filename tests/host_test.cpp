#include "fake_host.h"
#include "util/host.h"

#include <gtest/gtest.h>

namespace ov {
namespace {

TEST(Host, RegistrableDomains) {
    // clang-format off
    const std::pair<const char*, const char*> cases[] = {
        {"user@mail.example.com", "example.com"}, {"a@b@c.example.com", "example.com"}, {"mail.example.COM", "example.COM"},
        {"example.com", "example.com"}, {"a.example.museum", "example.museum"}, {"a.example.aero", "example.aero"},
        {"a.b.example.co.jp", "example.co.jp"}, {"co.jp", "co.jp"}, {"a.example.jp", "example.jp"}, {"a.co.jp", "a.co.jp"},
        {"example.jp", "example.jp"}, {"x.y.jp", "y.jp"}, // too short to have a second level
        {"a.mx1.example.de", "mx1.example.de"}, {"example.de", "example.de"}, {"host.example.to", "example.to"},
    };
    // clang-format on
    std::string domain;
    for (const auto& [name, expected] : cases) {
        EXPECT_EQ(get_domain(name, domain, 256), 0) << name;
        EXPECT_EQ(domain, expected) << name;
    }
    EXPECT_EQ(get_domain("a.example.com", domain, 8), 0);
    EXPECT_EQ(get_domain("localhost", domain, 256), -1);
    EXPECT_EQ(get_domain("a.b@localhost", domain, 256), -1);
    EXPECT_EQ(domain, "example");
}

TEST(Host, NameAndInternalDomain) {
    struct Case {
        test::FakeHost host;
        const char* name;
        const char* domain; // empty: there is none
    };
    // clang-format off
    const Case cases[] = {
        {{"mx1", "mx1.example.com", nullptr}, "mx1.example.com", "example.com"},
        {{"mx1", "mx1", "mx1.example.net"}, "mx1.example.net", "example.net"},
        {{"mx1", "mx1", nullptr}, "mx1", ""},
        {{"mx1.example.org", "mx1", "mx1.example.net"}, "mx1.example.org", "example.org"},
        {{nullptr, "localhost.localdomain", nullptr}, "localhost.localdomain", "localhost.localdomain"},
        {{"mx1.example.org", nullptr, nullptr}, "unknown", ""},
    };
    // clang-format on
    for (const auto& [host, expected, internal] : cases) {
        test::host = host;
        std::string name;
        std::string domain;
        EXPECT_EQ(getmyhostname(name, 512), host.official ? 0 : -1);
        EXPECT_EQ(name, expected);
        EXPECT_EQ(get_internaldomain(domain, 512), *internal ? 0 : -1) << expected;
        EXPECT_EQ(domain, internal);
    }
    std::string name;
    EXPECT_EQ(getmyhostname(name, 4), -1);
    EXPECT_EQ(name, "unk");
}

} // namespace
} // namespace ov
