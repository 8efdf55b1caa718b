#include "fake_host.h"
#include "support.h"
#include "util/log.h"
#include "util/util_settings.h"

#include <csignal>
#include <ctime>
#include <gtest/gtest.h>
#include <regex>
#include <sys/stat.h>
#include <unistd.h>

namespace ov {
namespace {

// A log directory of its own, and logging not yet started.
class Log : public testing::Test {
  protected:
    void SetUp() override {
        ::umask(022);
        log_initialized = 0;
        test::host_id_questions = 0;
        SystemLogOption = 255;
        AlternateHostID = 0;
        LogDirectory.set(dir.path("logs")); // without the "/" at its end
        std::filesystem::create_directory(dir.path("logs"));
        Log_uid = ::getuid();
        Log_gid = ::getgid();
        ProgName = "tool";
    }

    // The one file of the log, and its text.
    std::filesystem::path file() const {
        return *std::filesystem::directory_iterator(dir.path("logs"));
    }
    std::string text() const { return test::read_file(file()); }

    test::TempDir dir;
};

const std::string Time = R"(\d{4}/\d\d/\d\d \d\d:\d\d:\d\d)";
const std::string Header = Time + R"( ORVANTA V7\.1\.02 \(Linux/intel\)\n)";

TEST_F(Log, SilentUntilItIsStarted) {
    syserr("lost");
    ov_syslog("lost");
    log_put("lost");
    EXPECT_TRUE(std::filesystem::is_empty(dir.path("logs")));
}

TEST_F(Log, LinesOfTheDailyFile) {
    log_init();
    syserr("%s: %d", "broken", 5);
    ov_syslog("event");
    ProgName = "";
    syserr("nameless");
    SystemLogOption |= 0x10000;
    ov_syslog("to the millisecond");
    log_put("older writer");

    const std::string pid = std::to_string(::getpid());
    const std::regex expected(Header + Time + R"( tool\[)" + pid + R"(\]: broken: 5\n)" + Time +
                              " event\n" + Time + " nameless\n" + Time +
                              R"(\.\d{3} to the millisecond\n)" + Time + " older writer\n");
    EXPECT_TRUE(std::regex_match(text(), expected)) << text();

    std::array<char, 16> name{};
    const std::time_t now = std::time(nullptr);
    std::strftime(name.data(), name.size(), "log.%Y%m%d", std::localtime(&now));
    EXPECT_EQ(file().filename(), name.data());
    struct stat info {};
    ::stat(file().c_str(), &info);
    EXPECT_EQ(info.st_mode & 07777U, 0666U); // by the older writer, whatever the mask
}

TEST_F(Log, ANewFileHasTheModeLessTheMaskAndTheOwner) {
    LogPerm = 0662;
    if (test::is_root()) {
        Log_uid = 12;
        Log_gid = 34;
    }
    log_init();
    errno = EDOM;
    syserr("x");
    EXPECT_EQ(errno, EDOM);
    struct stat info {};
    ::stat(file().c_str(), &info);
    EXPECT_EQ(info.st_mode & 07777U, 0640U);
    EXPECT_EQ(info.st_uid, Log_uid);
    EXPECT_EQ(info.st_gid, Log_gid);
}

TEST_F(Log, NothingIsCreatedButTheDailyFile) {
    LogDirectory.set(dir.path("none/"));
    log_init();
    syserr("lost");
    log_put("lost");
    EXPECT_EQ(dir.names(), std::vector<std::string>{"logs"});
}

TEST_F(Log, LongLinesAreCut) {
    log_init();
    const std::size_t prefix = std::string("2026/11/15 08:30:00 ").size();
    const std::size_t fits = 65536 - prefix - 1;
    ov_syslog("x");
    std::size_t size = text().size();
    for (const auto& [length, cut] : {std::pair{fits, false}, {fits + 1, true}, {70000UL, true}}) {
        ov_syslog("%s", std::string(length, 'x').c_str());
        const std::string line = text().substr(size);
        size += line.size();
        EXPECT_EQ(line.size(), 65536U) << length;
        EXPECT_EQ(line.substr(line.size() - 5), cut ? "x...\n" : "xxxx\n") << length;
    }
}

TEST_F(Log, TheAlarmSignalIsLeftAsItWas) {
    log_init();
    sigset_t alarm;
    sigemptyset(&alarm);
    sigaddset(&alarm, SIGALRM);
    for (const bool blocked : {false, true}) {
        ::sigprocmask(blocked ? SIG_BLOCK : SIG_UNBLOCK, &alarm, nullptr);
        syserr("x");
        sigset_t now;
        ::sigprocmask(SIG_BLOCK, nullptr, &now);
        EXPECT_EQ(sigismember(&now, SIGALRM), blocked);
    }
}

TEST_F(Log, HostIdIsAskedForWhenItIsWanted) {
    log_init();
    EXPECT_EQ(test::host_id_questions, 0);
    EXPECT_EQ(HostID(), 4711U);
}

TEST_F(Log, AlternateHostIdIsTakenWhenLoggingStarts) {
    AlternateHostID = 99;
    log_init();
    AlternateHostID = 0;
    log_init();
    EXPECT_EQ(HostID(), 99U);
    EXPECT_EQ(test::host_id_questions, 0);
}

TEST(LogNames, DailyFiles) {
    for (const auto& [name, result] : {std::pair{"log.20261115", 1},
                                       {"log.2026111", 0},
                                       {"log.202611150", 0},
                                       {"log.2026111x", 0},
                                       {"LOG.20261115", 0},
                                       {"logs20261115", 0},
                                       {"", 0}}) {
        EXPECT_EQ(is_oldlogfile(name), result) << name;
    }
}

} // namespace
} // namespace ov
