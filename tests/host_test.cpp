#include "answer/get_vals.h"
#include "catalogue/reset.h"
#include "fake_host.h"
#include "installation.h"
#include "load/configuration.h"
#include "util/host.h"

#include <gtest/gtest.h>

namespace ov {
namespace {

TEST(Host, RegistrableDomains) {
    std::string domain;
    for (const std::string top :
         {"aero", "arpa",  "biz",    "com",   "coop",  "edu",   "gov",  "info",
          "int",  "mil",   "museum", "name",  "net",   "org",   "PRO",  "to",
          "jp",   "ac.jp", "co.jp",  "ed.jp", "gr.jp", "ne.jp", "OR.jp"}) {
        EXPECT_EQ(get_domain("user@a.mail.example." + top, domain, 256), 0);
        EXPECT_EQ(domain, "example." + top);
    }
    // clang-format off
    const std::tuple<const char*, const char*, std::size_t> cases[] = {
        {"a@b@c.example.com", "example.com", 256}, {"example.com", "example.com", 256}, {"co.jp", "co.jp", 256}, {"a.co.jp", "a.co.jp", 256},
        {"x.y.jp", "y.jp", 256}, // too short to have a second level
        {"a.mx1.example.de", "mx1.example.de", 256}, {"example.de", "example.de", 256}, {"a.example.com", "example", 8},
    };
    // clang-format on
    for (const auto& [name, expected, size] : cases) {
        EXPECT_EQ(get_domain(name, domain, size), 0) << name;
        EXPECT_EQ(domain, expected) << name;
    }
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
        std::string name;
        std::string domain;  // empty: there is none
        std::string message; // of a load, behind which the file is named
    };
    const std::string none = "cannot set default internal domain\n";
    // clang-format off
    const Case cases[] = {
        {{"mx1", "mx1.example.com", nullptr}, "mx1.example.com", "example.com", ""},
        {{"mx1", "mx1", "mx1.example.net"}, "mx1.example.net", "example.net", ""},
        {{"mx1", "mx1", nullptr}, "mx1", "", none},
        {{"mx1.example.org", "mx1", "mx1.example.net"}, "mx1.example.org", "example.org", ""},
        {{nullptr, "localhost.localdomain", nullptr}, "localhost.localdomain", "localhost.localdomain", ""},
        {{"mx1.example.org", nullptr, nullptr}, "unknown", "", none},
        {{"mx1", "mx1.exa/mple.com", nullptr}, "mx1.exa/mple.com", "exa/mple.com", "invalid domain name\"exa/mple.com\"\n"},
    };
    // clang-format on
    for (const auto& [host, expected, internal, message] : cases) {
        test::host = host;
        std::string name;
        std::string domain;
        EXPECT_EQ(getmyhostname(name, 512), host.official ? 0 : -1);
        EXPECT_EQ(name, expected);
        EXPECT_EQ(get_internaldomain(domain, 512), internal.empty() ? -1 : 0) << expected;
        EXPECT_EQ(domain, internal);
        if (!message.empty()) {
            EXPECT_EXIT(read_config(gateway.file.c_str(), 0xff), testing::ExitedWithCode(1),
                        message + ".*:0: .Mail. InternalDomains: \"\" invalid");
            continue;
        }
        // What is not loaded is asked for when it is shown.
        read_config(gateway.file.c_str(), 0xff | RC_NOCHECK);
        EXPECT_EQ(get_vals("/dev/null", "Mail", "InternalDomains", 1), internal);
        test::host = {};
        EXPECT_EQ(get_vals("/dev/null", "Mail", "InternalDomains", 1), "");
        test::host = host;
        read_config(gateway.file.c_str(), 0xff);
        test::host = {};
        EXPECT_EQ(get_vals("/dev/null", "Mail", "InternalDomains", 1), internal);
        reset_settings();
    }
}

} // namespace
} // namespace ov
