#include "util/paths.h"
#include "util/process.h"
#include "util/services.h"
#include "util/text.h"
#include "value/convert.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <tuple>

namespace ov {
namespace {

TEST(Util, LimitsAreLifted) {
    // A limit, and what it is then; what stays is what it was.
    const auto lifted = [](auto resource, bool no_core, std::optional<rlim_t> expected) {
        rlimit limit{};
        ::getrlimit(resource, &limit);
        limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, 1 << 20);
        ::setrlimit(resource, &limit);
        services.no_core = no_core;
        errno = EDOM;
        resetlimits();
        EXPECT_EQ(errno, 0);
        const rlim_t before = limit.rlim_cur;
        ::getrlimit(resource, &limit);
        EXPECT_EQ(limit.rlim_cur, expected.value_or(before)) << resource;
    };
    lifted(RLIMIT_CPU, false, RLIM_INFINITY);
    lifted(RLIMIT_FSIZE, false, RLIM_INFINITY);
    lifted(RLIMIT_CORE, false, std::nullopt);
    lifted(RLIMIT_CORE, true, 0);
}

TEST(Util, OneSignalIsBlockedAndReleased) {
    EXPECT_EQ(releasesignal(SIGUSR1), 0);
    EXPECT_EQ(blocksignal(SIGUSR1), 0);
    EXPECT_EQ(blocksignal(SIGUSR1), 1);
    EXPECT_EQ(releasesignal(SIGUSR1), 1);
    EXPECT_EQ(blocksignal(100000), -1);
}

TEST(Util, Texts) {
    std::array<char, 4> buffer{'x', 'x', 'x', 'x'};
    EXPECT_EQ(strlcpy(buffer.data(), "abc", 0), 3U);
    EXPECT_EQ(buffer[0], 'x');
    EXPECT_EQ(strlcpy(buffer.data(), "abcdef", buffer.size()), 6U);
    EXPECT_STREQ(buffer.data(), "abc");
    EXPECT_EQ(shortenstring("abcde", 5) + shortenstring("abcdef", 5), "abcdeab...");
    int month = 7; // a part that is not asked for may be anything
    EXPECT_EQ(date_str("2008/13/40", nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(date_str("2008/13/40", nullptr, &month, nullptr), -1);
    EXPECT_EQ(date_str("2008/12/40", nullptr, &month, nullptr), 0);
    EXPECT_EQ(month, 12);
}

TEST(Util, PathsEndAt4095Characters) {
    const std::string bare = "/" + std::string(2000, 'r'); // 2001 characters
    const std::string root = bare + "/";
    const auto name = [](std::size_t size) { return std::string(size, 'n'); };
    // A base, a name, and the directory made of them, and the file; empty: refused.
    const std::tuple<std::string, std::string, std::string, std::string> cases[] = {
        {root, name(2092), root + name(2092) + "/", root + name(2092)},
        {root, name(2093), "", root + name(2093)},
        {root, name(2094), "", ""},
        {root, name(2092) + "/", root + name(2092) + "/", root + name(2092) + "/"},
        {root, name(2093) + "/", "", ""},
        // The "/" between the two does not count.
        {bare, name(2094), "", root + name(2094)},
        {bare, name(2095), "", ""},
        // An absolute path is taken as it is, while no "/" has to be added.
        {"/x", "/" + name(4999), "", "/" + name(4999)},
        {"/x", "/" + name(4999) + "/", "/" + name(4999) + "/", "/" + name(4999) + "/"},
        {"/x/", "", "/x/", "/x/"},
        {"/opt/x", "etc/", "/opt/xetc/", "/opt/x/etc/"},
    };
    for (const auto& [base, end, dir, file] : cases) {
        EXPECT_EQ(mk_dirpath(base.c_str(), end.c_str()).value_or(""), dir) << end.size();
        EXPECT_EQ(mk_filepath(base.c_str(), end.c_str()).value_or(""), file) << end.size();
    }
    EXPECT_EQ(mk_dirpath(nullptr, "/y").value(), "/y/");
    EXPECT_EQ(mk_filepath(nullptr, "/c/f").value(), "/c/f");
    EXPECT_FALSE(mk_dirpath(nullptr, "y") || mk_filepath(nullptr, "y"));
    EXPECT_FALSE(mk_dirpath("/x/", nullptr) || mk_filepath("/x/", nullptr));
}

} // namespace
} // namespace ov
