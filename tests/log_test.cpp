#include "support.h"
#include "util/handle.h"
#include "util/log.h"
#include "util/services.h"

#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <regex>
#include <sys/stat.h>
#include <unistd.h>

namespace ov {
namespace {

// A log directory of its own, and logging not yet started.
class Log : public testing::Test {
  protected:
    Log() {
        services.log_directory.set(dir.path("logs")); // without the "/" at its end
        std::filesystem::create_directory(dir.path("logs"));
        services.log_owner = ::getuid();
        services.log_group = ::getgid();
        ProgName = "tool";
    }

    // The one file of the log, and its text.
    std::filesystem::path file() const {
        return *std::filesystem::directory_iterator(dir.path("logs"));
    }
    std::string text() const { return test::read_file(file()); }
    struct stat info() const {
        struct stat info = {};
        ::stat(file().c_str(), &info);
        return info;
    }

    test::TempDir dir;
};

TEST_F(Log, LinesOfTheDailyFile) {
    log_init();
    syserr("%s: %d", "broken", 5);
    ov_syslog("event");
    ProgName = "";
    syserr("nameless");
    services.log_option |= 0x10000;
    ov_syslog("to the millisecond");
    log_put("older writer");

    const std::string time = R"(\d{4}/\d\d/\d\d \d\d:\d\d:\d\d)";
    const std::regex expected(time + R"( ORVANTA V7\.1\.02 \(Linux/intel\)\n)" + time +
                              R"( tool\[)" + std::to_string(::getpid()) + R"(\]: broken: 5\n)" +
                              time + " event\n" + time + " nameless\n" + time +
                              R"(\.\d{3} to the millisecond\n)" + time + " older writer\n");
    EXPECT_TRUE(std::regex_match(text(), expected)) << text();

    EXPECT_EQ(file().filename(), "log." + test::replaced(text().substr(0, 10), "/", ""));
    EXPECT_EQ(info().st_mode & 07777U, 0666U); // by the older writer, whatever the mask
}

// One event is one line, whatever is in it, and no terminal obeys it.
TEST_F(Log, ControlCharactersAreMasked) {
    log_init();
    const std::string hostile = "a\nb\rc\x1b[2J\td\x7f\xc2\x9b\xc2\xa0\xe3\x81\x82\x07";
    ov_syslog("%s", hostile.c_str());
    ov_syslog("%s\n", hostile.c_str());
    log_put("%s", hostile.c_str());
    const std::string shown = "a?b?c?[2J\td???\xc2\xa0\xe3\x81\x82?";
    std::string expected;
    for (const std::string& line : test::lines_of(text())) {
        expected += line.substr(std::min<std::size_t>(line.size(), 20)) + "|";
    }
    EXPECT_EQ(expected,
              "ORVANTA V7.1.02 (Linux/intel)|" + shown + "|" + shown + "||" + shown + "|");
}

// Whoever may write into the directory does not make us write, or give away, another file.
TEST_F(Log, WhatStandsInThePlaceOfTheFile) {
    log_init();
    syserr("x");
    const std::filesystem::path daily = file();
    const std::string other = dir.file("other", "");
    ::chmod(other.c_str(), 0600);
    services.log_owner = 12;
    std::signal(SIGIO, SIG_IGN); // which tells the holder of a lease
    for (const std::string place : {"leased file", "link", "pipe", "other file"}) {
        std::filesystem::remove(daily);
        if (place == "link") {
            std::filesystem::create_symlink(other, daily);
        } else if (place == "pipe") {
            ASSERT_EQ(::mkfifo(daily.c_str(), 0666), 0);
        } else if (place == "leased file") {
            test::write_file(daily, "");
        } else {
            std::filesystem::create_hard_link(other, daily);
        }
        const Fd reader(::open(daily.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
        ASSERT_TRUE(place != "leased file" || ::fcntl(reader.get(), F_SETLEASE, F_RDLCK) == 0);
        syserr("x");
        ov_syslog("x");
        log_put("x");
        char byte = 0;
        EXPECT_EQ(::read(reader.get(), &byte, 1) > 0, place == "other file") << place;
        struct stat info = {};
        ::stat(other.c_str(), &info);
        EXPECT_EQ(info.st_uid, ::getuid()) << place;
        EXPECT_EQ(info.st_size == 0, place != "other file") << place;
        EXPECT_EQ(info.st_mode & 07777U, 0600U) << place;
    }
}

TEST_F(Log, ANewFileHasTheModeLessTheMaskAndTheOwner) {
    services.log_mode = 0662;
    services.log_owner = test::is_root() ? 12 : services.log_owner;
    services.log_group = test::is_root() ? 34 : services.log_group;
    log_init();
    errno = EDOM;
    syserr("x");
    EXPECT_EQ(errno, EDOM);
    EXPECT_EQ(info().st_mode & 07777U, 0640U);
    for (const char* writer : {"syserr", "log_put"}) {
        EXPECT_EQ(info().st_uid, services.log_owner) << writer;
        EXPECT_EQ(info().st_gid, services.log_group) << writer;
        std::filesystem::remove(file());
        log_put("x");
    }
}

TEST_F(Log, LongLinesAreCut) {
    log_init();
    const std::size_t fits = 65536 - std::string("2026/11/15 08:30:00 ").size() - 1;
    for (const std::size_t length : {fits, fits + 1, std::size_t{70000}}) {
        ov_syslog("%s", std::string(length, 'x').c_str());
        const std::string line = text().substr(text().size() - 65536);
        EXPECT_EQ(line.rfind('\n', line.size() - 2), line.npos) << length;
        EXPECT_TRUE(line.ends_with(length > fits ? "x...\n" : "xxxx\n")) << length;
        EXPECT_TRUE(line.starts_with("20")) << length;
    }
}

TEST_F(Log, TheHostsIdOrAnother) {
    log_init();
    EXPECT_EQ(HostID(), 4711U);
    log_initialized = 0; // another one is taken when logging starts
    services.alternate_host_id = 99;
    log_init();
    EXPECT_EQ(HostID(), 99U);
}

TEST(LogNames, DailyFiles) {
    EXPECT_TRUE(is_oldlogfile("log.20261115"));
    for (const char* name :
         {"log.2026111", "log.202611150", "log.2026111x", "LOG.20261115", "logs20261115", ""}) {
        EXPECT_FALSE(is_oldlogfile(name)) << name;
    }
}

} // namespace
} // namespace ov
