#include "util/disk.h"
#include "util/process.h"
#include "util/services.h"
#include "util/text.h"
#include "value/convert.h"
#include "value/ip.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <utility>
#include <vector>

#ifndef OV_SANITIZE // the sanitizers ask for limits of their own before anything else
namespace {

std::vector<std::pair<int, rlim_t>> limits_set;

} // namespace

// The limits that are asked for are kept in mind: what comes of them depends on the host.
extern "C" int setrlimit(__rlimit_resource_t resource, const rlimit* limit) noexcept {
    limits_set.emplace_back(resource, limit->rlim_cur);
    return ::prlimit(0, static_cast<__rlimit_resource>(resource), limit, nullptr);
}
#endif

namespace ov {
namespace {

#ifndef OV_SANITIZE
TEST(Util, LimitsAreLifted) {
    using Limits = std::vector<std::pair<int, rlim_t>>;
    Limits expected = {
        {RLIMIT_CPU, RLIM_INFINITY}, {RLIMIT_FSIZE, RLIM_INFINITY}, {RLIMIT_NOFILE, RLIM_INFINITY}};
    limits_set.clear();
    services.no_core = false;
    errno = EDOM;
    resetlimits();
    EXPECT_EQ(errno, 0);
    EXPECT_EQ(std::exchange(limits_set, {}), expected);
    services.no_core = true;
    resetlimits();
    expected.insert(expected.begin() + 2, {RLIMIT_CORE, 0});
    EXPECT_EQ(limits_set, expected);
}
#endif

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
    EXPECT_EQ(is_alldigit("0189"), 1);
    for (const char* text : {"", "1/", ":", static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(is_alldigit(text), 0) << (text ? text : "null");
    }
    int flag = 7;
    EXPECT_EQ(truefalse("On", &flag), 0);
    EXPECT_EQ(flag, 1);
    EXPECT_EQ(truefalse("OFF", &flag) + flag, 0);
    int month = 7; // a part that is not asked for may be anything
    EXPECT_EQ(date_str("2008/13/40", nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(date_str("2008/13/40", nullptr, &month, nullptr), -1);
    EXPECT_EQ(date_str("2008/12/40", nullptr, &month, nullptr), 0);
    EXPECT_EQ(month, 12);
}

} // namespace
} // namespace ov
