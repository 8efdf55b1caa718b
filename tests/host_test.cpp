#include "catalogue/catalogue.h"
#include "fake_host.h"
#include "installation.h"
#include "load/configuration.h"
#include "util/host.h"

#include <gtest/gtest.h>

namespace ov {
namespace {

TEST(Host, RegistrableDomains) {
    std::string domain;
    for (const char* top : {"aero", "arpa", "biz", "com", "coop", "edu", "gov", "info", "int",
                            "mil", "museum", "name", "net", "org", "PRO", "to", "jp"}) {
        const std::string name = std::string("example.") + top;
        EXPECT_EQ(get_domain("user@a.mail." + name, domain, 256), 0);
        EXPECT_EQ(domain, name);
    }
    for (const char* second : {"ac", "co", "ed", "gr", "ne", "OR"}) {
        const std::string name = std::string("example.") + second + ".jp";
        EXPECT_EQ(get_domain("a.b." + name, domain, 256), 0);
        EXPECT_EQ(domain, name);
    }
    // clang-format off
    const std::pair<const char*, const char*> cases[] = {
        {"a@b@c.example.com", "example.com"}, {"example.com", "example.com"}, {"co.jp", "co.jp"}, {"a.co.jp", "a.co.jp"},
        {"x.y.jp", "y.jp"}, // too short to have a second level
        {"a.mx1.example.de", "mx1.example.de"}, {"example.de", "example.de"},
    };
    // clang-format on
    for (const auto& [name, expected] : cases) {
        EXPECT_EQ(get_domain(name, domain, 256), 0) << name;
        EXPECT_EQ(domain, expected) << name;
    }
    EXPECT_EQ(get_domain("a.example.com", domain, 8), 0);
    EXPECT_EQ(get_domain("localhost", domain, 256), -1);
    EXPECT_EQ(get_domain("a.b@localhost", domain, 256), -1);
    EXPECT_EQ(domain, "example");
}

// The host's own domain, in the place of the one that the file lacks.
TEST(Host, NameAndInternalDomain) {
    const test::Installation gateway;
    test::write_file(gateway.file, "[Directories]\nRootDirectory = " + gateway.path() + "\n");
    struct Case {
        test::FakeHost host;
        const char* name;
        const char* domain;  // empty: there is none
        const char* message; // of a load, behind which the file is named
    };
    WordList& domains = *std::get<WordList*>(variable_of(*find_row("Mail", "InternalDomains")));
    const std::string none = "cannot set default internal domain\n";
    const std::string bad = "invalid domain name\"exa/mple.com\"\n";
    // clang-format off
    const Case cases[] = {
        {{"mx1", "mx1.example.com", nullptr}, "mx1.example.com", "example.com", ""},
        {{"mx1", "mx1", "mx1.example.net"}, "mx1.example.net", "example.net", ""},
        {{"mx1", "mx1", nullptr}, "mx1", "", none.c_str()},
        {{"mx1.example.org", "mx1", "mx1.example.net"}, "mx1.example.org", "example.org", ""},
        {{nullptr, "localhost.localdomain", nullptr}, "localhost.localdomain", "localhost.localdomain", ""},
        {{"mx1.example.org", nullptr, nullptr}, "unknown", "", none.c_str()},
        {{"mx1", "mx1.exa/mple.com", nullptr}, "mx1.exa/mple.com", "exa/mple.com", bad.c_str()},
    };
    // clang-format on
    for (const auto& [host, expected, internal, message] : cases) {
        test::host = host;
        std::string name;
        std::string domain;
        EXPECT_EQ(getmyhostname(name, 512), host.official ? 0 : -1);
        EXPECT_EQ(name, expected);
        EXPECT_EQ(get_internaldomain(domain, 512), *internal ? 0 : -1) << expected;
        EXPECT_EQ(domain, internal);
        if (*message) {
            EXPECT_EXIT(read_config(gateway.file.c_str(), 0xff), testing::ExitedWithCode(1),
                        message + std::string(".*:0: .Mail. InternalDomains: \"\" invalid"));
            continue;
        }
        domains.reset();
        read_config(gateway.file.c_str(), 0xff | RC_NOCHECK);
        EXPECT_FALSE(domains);
        read_config(gateway.file.c_str(), 0xff);
        EXPECT_EQ(domains, (WordList{{internal}}));
    }
}

} // namespace
} // namespace ov
