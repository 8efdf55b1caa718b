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
#include <utility>

#ifndef OV_SANITIZE // the sanitizers ask for limits of their own before anything else
namespace {
std::string limits_set;
} // namespace

// The limits that are asked for are kept in mind: what comes of them depends on the host.
extern "C" int setrlimit(__rlimit_resource_t resource, const rlimit* limit) noexcept {
    const auto asked = static_cast<long>(limit->rlim_cur); // -1: none
    limits_set += std::to_string(resource) + ":" + std::to_string(asked) + " ";
    return -1;
}
#endif

namespace ov {
namespace {

#ifndef OV_SANITIZE
TEST(Util, LimitsAreLifted) {
    services.no_core = false;
    errno = EDOM;
    resetlimits();
    EXPECT_EQ(errno, 0);
    EXPECT_EQ(std::exchange(limits_set, ""), "0:-1 1:-1 7:-1 "); // time, size, open files
    services.no_core = true;
    resetlimits();
    EXPECT_EQ(std::exchange(limits_set, ""), "0:-1 1:-1 4:0 7:-1 ");
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
