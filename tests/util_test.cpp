#include "support.h"
#include "util/log.h"
#include "util/util.h"
#include "util/util_settings.h"

#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ov {
namespace {

TEST(Util, LocksExcludeOtherProcesses) {
    const test::TempDir dir;
    const std::string path = dir.file("f", "text");
    const int fd = ::open(path.c_str(), O_RDWR);
    {
        const test::ForeignLock lock(path, F_WRLCK);
        EXPECT_EQ(lockfile(fd, 6), -1);
        EXPECT_EQ(errno, EAGAIN);
        EXPECT_EQ(lockfile(fd, 4), -1);
    }
    {
        const test::ForeignLock lock(path, F_RDLCK);
        EXPECT_EQ(lockfile(fd, 4), 0); // readers share
        EXPECT_EQ(lockfile(fd, 6), -1);
        EXPECT_EQ(lockfile(fd, 8), 0);
    }
    EXPECT_EQ(lockfile(fd, 6), 0);
    EXPECT_EQ(lockfile(fd, 8 | 2), 0);
    const test::ForeignLock lock(path, F_WRLCK); // released: another process can lock it
    const pid_t killer = ::fork();
    if (killer == 0) {
        ::usleep(50000);
        lock.release();
        ::_exit(0);
    }
    EXPECT_EQ(lockfile(fd, 2), 0); // is waited for
    ::waitpid(killer, nullptr, 0);
}

TEST(Util, AFailedLockIsLogged) {
    const test::TempDir dir;
    services.log_directory.set(dir.path());
    log_init();
    services.level = 1;
    EXPECT_EQ(lockfile(-1, 6), -1);
    EXPECT_TRUE(dir.names().empty());
    services.level = 2;
    EXPECT_EQ(lockfile(-1, 6), -1);
    EXPECT_EQ(errno, EBADF);
    const std::string log = test::read_file(dir.path(dir.names().at(0)));
    EXPECT_NE(log.find(" lockfile: fcntl failed: l_type = 6, (9)\n"), log.npos) << log;
}

TEST(Util, LimitsAreLifted) {
    const auto limit_of = [](auto resource) {
        rlimit limit{};
        ::getrlimit(resource, &limit);
        return limit;
    };
    const rlim_t core = limit_of(RLIMIT_CORE).rlim_max;
    for (const unsigned no_core : {0U, 1U}) {
        for (const auto resource : {RLIMIT_CPU, RLIMIT_FSIZE}) {
            rlimit limit = limit_of(resource);
            if (limit.rlim_max == RLIM_INFINITY) { // or only the super-user could lift it
                limit.rlim_cur = 100000;
                ::setrlimit(resource, &limit);
            }
        }
        services.no_core = no_core;
        errno = EDOM;
        resetlimits();
        EXPECT_EQ(errno, 0);
        for (const auto resource : {RLIMIT_CPU, RLIMIT_FSIZE}) {
            EXPECT_EQ(limit_of(resource).rlim_cur, limit_of(resource).rlim_max);
        }
        EXPECT_EQ(limit_of(RLIMIT_CORE).rlim_max, no_core ? 0 : core);
    }
}

TEST(Util, OneSignalIsBlockedAndReleased) {
    EXPECT_EQ(releasesignal(SIGUSR1), 0);
    EXPECT_EQ(blocksignal(SIGUSR1), 0);
    EXPECT_EQ(blocksignal(SIGUSR1), 1);
    EXPECT_EQ(releasesignal(SIGUSR1), 1);
    EXPECT_EQ(blocksignal(100000), -1);
}

TEST(Util, FreeBlocksOfAFileSystem) {
    struct statvfs info {};
    ASSERT_EQ(::statvfs("/proc", &info), 0);
    long size = 0;
    EXPECT_EQ(freeblocks("/proc", &size), static_cast<std::int64_t>(info.f_bavail));
    EXPECT_EQ(size, static_cast<long>(info.f_bsize));
    EXPECT_GT(freeblocks("/", nullptr), 0);
    EXPECT_EQ(freeblocks("/no/such", &size), -1);
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
}

} // namespace
} // namespace ov
