// A file that is replaced as a whole, and what is left of a run that was killed. The command that
// puts an interrupted text back replaces as all others do.
#include "ctl/replace.h"
#include "installation.h"

#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <thread>
#include <unistd.h>

namespace ov {
namespace {

using namespace std::string_literals;
using test::read_file;
using test::Result;
using Words = std::vector<std::string>;

constexpr int NotOpened = 4;

// Everything that a file has beside its text.
std::string belongings_of(const std::string& path) {
    std::string all = test::possession_of(path);
    for (const char* name : {"system.posix_acl_access", "user.of"}) {
        char value[100];
        const ssize_t size = ::getxattr(path.c_str(), name, value, sizeof value);
        all += ' ' + std::string(value, size > 0 ? static_cast<std::size_t>(size) : 0);
    }
    return all;
}

ino_t inode_of(const std::string& path) {
    struct stat info = {};
    ::stat(path.c_str(), &info);
    return info.st_ino;
}

void age(const std::string& path) {
    const timespec times[] = {{1000, 0}, {1000, 0}};
    ::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW);
}

// A file that lacks its end, and beside it the whole text.
struct Interrupted {
    Interrupted() {
        test::give(dir.file("a.conf", old), 0640);
        age(dir.file("a.conf.tmp.aaaaaa", whole));
        // Another user may read it.
        ::setxattr(
            file.c_str(), "system.posix_acl_access",
            "\2\0\0\0\1\0\6\0\377\377\377\377\2\0\4\0M\0\0\0\4\0\4\0\377\377\377\377\20\0\4\0"
            "\377\377\377\377 \0\0\0\377\377\377\377",
            44, 0);
        ::setxattr(file.c_str(), "user.of", "gateway", 7, 0);
        before = belongings_of(file);
    }
    static Words recover(const std::string& path,
                         Words more = {"--put-back", "a.conf.tmp.aaaaaa"}) {
        more.insert(more.begin(), {"ov_confctl", "-f", path, "recover", "--wait", "0"});
        return more;
    }
    // What it answers then.
    static Result is_back(const std::string& path, const std::string& name = "a.conf.tmp.aaaaaa",
                          const std::string& err = "") {
        return {0, path + ": the text of " + name + " is put back\n", err};
    }
    // What stands in the copy that has been made for writing in place.
    std::string safe_copy() const {
        for (const std::string& name : dir.names()) {
            if (name.starts_with(".a.conf.whole.")) {
                return read_file(dir.path(name));
            }
        }
        return "";
    }

    test::TempDir dir;
    std::string file = dir.path("a.conf");
    std::string whole = "[SMTP]\nSmtpPort = 25\n# " + std::string(20000, 'x') + "\n";
    std::string old = whole.substr(0, 12000);
    std::string before;
};

TEST(Replace, FailingSystemCalls) {
    enum { Old, Renamed, InPlace };
    struct Case {
        const char* file;
        const char* call;
        int error;
        int outcome;
        bool hard_link = false;
        int number = 1;
    };
    const Case cases[] = {
        {"a.conf", "open+", EACCES, Old},
        {"a.conf", "fcntl", EAGAIN, Old},
        {"a.conf", "fcntl", EINVAL, Renamed}, // there are no locks
        {"a.conf", "read", EIO, Old},
        {".a.conf.apply.*", "open+", ENOSPC, Old},
        {".a.conf.apply.*", "open+", EACCES, InPlace},
        {".a.conf.apply.*", "pwrite", ENOSPC, Old},
        {".a.conf.apply.*", "pwrite", EINTR, Renamed},
        {".a.conf.apply.*", "fsync", EIO, Old},
        {".a.conf.apply.*", "fsync", EINVAL, Renamed},
        {".a.conf.apply.*", "close", EIO, Renamed},
        {"a.conf", "rename", ENOSPC, Old},
        {"a.conf", "rename", EBUSY, InPlace},
        {".a.conf.whole.*", "rename", ENOSPC, Old, true},
        {"a.conf", "ftruncate", EIO, Old, true},
        {"a.conf", "pwrite", ENOSPC, Old, true},
        {"a.conf", "fsync", EIO, Old, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.file + " "s + c.call + " " + std::to_string(c.error));
        const Interrupted was;
        if (c.hard_link) {
            std::filesystem::create_hard_link(was.file, was.dir.path("hard"));
        }
        const ino_t inode = inode_of(was.file);
        const Result result = test::run(
            was.recover(was.file), test::failing(was.dir.path(c.file), c.call, c.number, c.error));
        EXPECT_EQ(result.status, c.outcome == Old ? NotOpened : 0) << result.err;
        EXPECT_EQ(result.err.find("written in place") != std::string::npos, c.outcome == InPlace);
        EXPECT_EQ(read_file(was.file), c.outcome == Old ? was.old : was.whole);
        EXPECT_EQ(belongings_of(was.file), was.before);
        EXPECT_EQ(inode_of(was.file) == inode, c.outcome != Renamed);
        Words left = {"a.conf", "a.lock"};
        if (c.outcome == Old) {
            left.emplace_back("a.conf.tmp.aaaaaa");
        }
        if (c.hard_link) {
            left.emplace_back("hard");
        }
        std::sort(left.begin(), left.end());
        EXPECT_EQ(was.dir.names(), left);
    }
}

// Whenever it is killed, the file has its old text or its new one, and so has it for a reader who
// comes at that moment. In place it has one of them, or the new one is safe beside it.
TEST(Replace, KilledAtEverySystemCall) {
    if (!test::interrupt(Interrupted::recover(Interrupted().file), 1, SIGKILL)) {
        GTEST_SKIP() << "processes may not be traced here";
    }
    for (const auto& [hard_link, signal] :
         {std::pair{false, SIGKILL}, {true, SIGKILL}, {true, SIGTERM}}) {
        int calls = 0;
        for (std::optional<int> status = 0; status; ++calls) {
            const Interrupted was;
            if (hard_link) {
                std::filesystem::create_hard_link(was.file, was.dir.path("hard"));
            }
            status = test::interrupt(was.recover(was.file), calls + 1, signal);
            const std::string text = read_file(was.file);
            if (text != was.old && text != was.whole) {
                EXPECT_TRUE(hard_link && signal == SIGKILL) << calls;
                EXPECT_TRUE(was.safe_copy() == was.whole && was.whole.starts_with(text)) << calls;
            }
            EXPECT_EQ(belongings_of(was.file), was.before) << calls;
            // The next ones leave nothing of it: a text in pieces is needed by the first one.
            for (int i = 0; i < 2; ++i) {
                ctl::Opened next = ctl::open_target({.path = was.file, .interrupted = true});
                ASSERT_TRUE(next.target) << calls << next.error;
                EXPECT_TRUE(signal == SIGTERM ||
                            ctl::replace(*next.target, was.whole).error.empty());
            }
            for (const std::string& name : was.dir.names()) {
                EXPECT_FALSE(name.starts_with(".")) << calls << name;
            }
        }
        EXPECT_GT(calls, 50);
    }
}

// What cannot be had by renaming is had in place; a link stays one.
TEST(Replace, WhatTheFileIs) {
    Interrupted was;
    const auto put_back = [&was](const std::string& path, const test::Setting& setting = {}) {
        test::write_file(was.file, was.old);
        age(was.dir.file("a.conf.tmp.aaaaaa", was.whole));
        const Result result = test::run(was.recover(path), setting);
        EXPECT_EQ(read_file(was.file), was.whole);
        EXPECT_EQ(belongings_of(was.file), was.before);
        return result;
    };
    std::filesystem::create_symlink("a.conf", was.dir.path("link.conf"));
    std::filesystem::create_symlink(was.dir.path("link.conf"), was.dir.path("b.conf"));
    const ino_t inode = inode_of(was.file);
    EXPECT_EQ(put_back(was.dir.path("b.conf")), was.is_back(was.dir.path("b.conf")));
    EXPECT_NE(inode_of(was.file), inode);
    EXPECT_TRUE(std::filesystem::is_symlink(was.dir.path("link.conf")));
    // What has taken its name by the time that it is locked is what is read.
    test::write_file(was.file, was.old);
    age(was.dir.file("a.conf.tmp.aaaaaa", was.whole));
    test::Running late(was.recover(was.file), test::failing(was.file, "fcntl", 1, test::Stop));
    ASSERT_TRUE(late.stops());
    std::filesystem::rename(was.dir.file("new", was.whole.substr(0, 9)), was.file);
    late.go_on();
    EXPECT_EQ(late.result(), was.is_back(was.file));
    test::give(was.file, 0640);
    if (!test::is_root()) {
        GTEST_SKIP() << "only the super-user mounts, and changes owners";
    }
    was.before = belongings_of(was.file);
    if (::mount(was.file.c_str(), was.file.c_str(), nullptr, MS_BIND, nullptr) == 0) {
        EXPECT_NE(put_back(was.file).err.find("in place"), std::string::npos);
        ::umount(was.file.c_str());
    }
    // A user who may write the file, but not into the folder.
    test::write_file(was.file, was.old);
    age(was.dir.file("a.conf.tmp.aaaaaa", was.whole));
    ASSERT_EQ(::chown(was.file.c_str(), test::Nobody, 34), 0);
    Words words = was.recover(was.file);
    EXPECT_EQ(test::run(words, {.unprivileged = true}).status, NotOpened); // there is no lock
    words.emplace_back("--locked");
    const Result refused = test::run(words, {.unprivileged = true});
    EXPECT_NE(refused.err.find("in place"), std::string::npos) << refused.err;
    EXPECT_EQ(read_file(was.file), was.whole);
}

// Beside an editor that is in the middle of its work nothing is done; whoever comes second sees the
// change of the first one, or is told that his is not made.
TEST(Replace, MeetsAnEditor) {
    const test::TempDir dir;
    const std::string file = dir.file("a.conf", "[s]\nk = 1\n");
    const Words edit = {"ov_conf", "-f", file, "-s", "s", "-k", "k", "-r", "2"};
    const ctl::Wish wish{.path = file, .wait = 0};
    const auto at = [&](const char* call) { return test::failing(file, call, 1, test::Stop); };
    for (const char* call : {"read+", "open>", "fcntl>", "write>", "fdatasync"}) {
        test::write_file(file, "[s]\nk = 1\n");
        test::Running editor(edit, at(call));
        ASSERT_TRUE(editor.stops());
        EXPECT_TRUE(ctl::open_target(wish).is_locked);
        editor.go_on();
        EXPECT_EQ(editor.result(), (Result{0, "", ""})) << call;
        EXPECT_EQ(ctl::open_target(wish).target->text, "[s]\nk = 2\n");
    }
    // The lock keeps the editor out, and survives another descriptor of the file.
    std::optional<ctl::Target> target = std::move(ctl::open_target(wish).target);
    read_file(file);
    const std::string refused = "\n553 entry replace failed\n";
    EXPECT_EQ(test::run(edit, test::as_root()), (Result{1, "", "cannot lock: " + file + refused}));
    test::Running editor(edit, at("fcntl+"));
    ASSERT_TRUE(editor.stops());
    EXPECT_EQ(ctl::replace(*target, "new").error, "");
    target.reset();
    editor.go_on();
    EXPECT_EQ(editor.result(), (Result{1, "", "cannot open: " + file + refused}));
    EXPECT_EQ(read_file(file), "new");
    // Nor is anything lost that is written without a lock.
    target = std::move(ctl::open_target(wish).target);
    test::write_file(file, "his");
    EXPECT_NE(ctl::replace(*target, "mine").error.find("in the meantime"), std::string::npos);
    target.reset();
    EXPECT_EQ(read_file(file), "his");
    // An editor that is killed leaves an empty file.
    test::Running killed(edit, at("fcntl>"));
    ASSERT_TRUE(killed.stops());
    ::kill(killed.process(), SIGKILL);
    killed.result();
    EXPECT_NE(ctl::open_target(wish).error.find("ov_confctl recover"), std::string::npos);
}

TEST(Replace, LockFiles) {
    const Interrupted was;
    const std::string lock = was.dir.file("a.lock", "");
    const Fd held(::open(lock.c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_EQ(::flock(held.get(), LOCK_SH), 0);
    EXPECT_EQ(test::run(was.recover(was.file)).status, NotOpened);
    EXPECT_EQ(test::run({"ov_confctl", "-f", was.file, "check"}).status, 1); // shared by readers
    // One who waits does not take a lock that is no longer there.
    Words waiting = was.recover(was.file);
    waiting[5] = "60";
    test::Running second(waiting);
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    std::filesystem::rename(was.dir.file("new.lock", ""), lock);
    const Fd renewed(::open(lock.c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_EQ(::flock(renewed.get(), LOCK_EX), 0);
    ::flock(held.get(), LOCK_UN);
    std::this_thread::sleep_for(std::chrono::milliseconds(1200));
    EXPECT_EQ(read_file(was.file), was.old);
    ::flock(renewed.get(), LOCK_UN);
    EXPECT_EQ(second.result(),
              was.is_back(was.file, "a.conf.tmp.aaaaaa", "ov_confctl: waiting for " + lock + "\n"));
    EXPECT_EQ(read_file(was.file), was.whole);

    ASSERT_EQ(::flock(renewed.get(), LOCK_EX), 0);
    for (const Words& more : {Words{"--locked"}, {"--lock", was.dir.path("other")}}) {
        EXPECT_EQ(test::run(was.recover(was.file, more)).status, 0);
    }
    EXPECT_FALSE(std::filesystem::exists(was.dir.path("other"))); // nothing was to be written
    std::filesystem::create_symlink("a.conf", was.dir.path("link"));
    ASSERT_EQ(::mkfifo(was.dir.path("pipe").c_str(), 0666), 0);
    for (const char* name : {"link", "pipe"}) {
        const Words more = {"--lock", was.dir.path(name), "--remove", "none"};
        EXPECT_EQ(test::run(was.recover(was.file, more)).status, NotOpened);
    }
}

TEST(Replace, Leftovers) {
    struct Case {
        const char* name;
        std::string text;
        const char* content;
        bool may_be_put_back;
        bool may_be_removed;
        int links = 1;
        unsigned owner = 0;
        bool is_old = true;
    };
    const std::string text = "[s]\nk = 1\n";
    const Case cases[] = {
        {"a.conf.tmp.aaaaaa", text + "l = 2\n", "whole", true, true},
        {".a.conf.whole.aaaaaa", text + "l = 2\n", "whole", true, true},
        {".a.conf.apply.aaaaaa", text + "l = 2\n", "whole", false, true},
        {"a.conf.tmp.bbbbbb", text, "equal", false, true},
        {"a.conf.tmp.cccccc", text.substr(0, 5), "part", false, true},
        {"a.conf.tmp.dddddd", "[t]\n", "other", false, true},
        {"a.conf.tmp.eeeeee", text + "l = 2\n", "whole", false, false, 1, 0, false},
        {"a.conf.tmp.ffffff", text + "l = 2\n", "foreign", false, false, 2},
        {"a.conf.tmp.gggggg", text + "l = 2\n", "foreign", false, false, 1, 12},
        {"a.conf.tmp.hhhhhhh", text, nullptr, false, false},
        {"b.conf.tmp.iiiiii", text, nullptr, false, false},
    };
    for (const Case& c : cases) {
        if (c.owner != 0 && !test::is_root()) {
            continue;
        }
        SCOPED_TRACE(c.name);
        const test::TempDir dir;
        const std::string file = dir.file("a.conf", text);
        const std::string left = dir.file(c.name, c.text);
        if (c.is_old) {
            age(left);
        }
        if (c.links > 1) {
            std::filesystem::create_hard_link(left, dir.path("other"));
        }
        ASSERT_TRUE(c.owner == 0 || ::chown(left.c_str(), c.owner, 0) == 0);
        const auto run = [&](const Words& more) {
            return test::run(Interrupted::recover(file, more));
        };
        const Result listed = run({"--json"});
        EXPECT_EQ(listed.status, c.content ? 1 : 0);
        const std::string wanted = c.content ? "\"content\":\""s + c.content + '"' : "[]\n";
        EXPECT_NE(listed.out.find(wanted), std::string::npos) << listed.out;
        EXPECT_EQ(run({"--put-back", c.name}).status, c.may_be_put_back ? 0 : c.content ? 1 : 3);
        EXPECT_EQ(read_file(file), c.may_be_put_back ? c.text : text);
        test::write_file(left, c.text);
        age(left);
        if (c.is_old) {
            EXPECT_EQ(run({"--remove", c.name}).status, c.may_be_removed ? 0 : c.content ? 1 : 3);
            EXPECT_EQ(std::filesystem::exists(left), !c.may_be_removed);
        }
    }
}

// In a folder of the gateway's user the super-user changes nothing that this user could not.
TEST(Replace, ARightsFile) {
    const test::Installation gateway;
    const std::string path = gateway.path("admin/taro.conf");
    test::give(gateway.path("admin"), 0755);
    const std::string secret = gateway.dir.file("secret", "[Admin]\n");
    const ctl::Wish wish{.path = path, .kind = FileKind::Installed, .create = true};
    for (const bool hard : {true, false}) {
        if (hard) {
            std::filesystem::create_hard_link(secret, path);
        } else {
            std::filesystem::create_symlink(secret, path);
            ASSERT_EQ(::lchown(path.c_str(), test::is_root() ? 12U : ::getuid(), ::getgid()), 0);
        }
        EXPECT_EQ(ctl::open_target(wish).error.empty(), !test::is_root());
        std::filesystem::remove(path);
    }
    ctl::Opened opened = ctl::open_target(wish);
    ASSERT_TRUE(opened.target) << opened.error;
    EXPECT_FALSE(std::filesystem::exists(path));
    test::write_file(path, "his");
    EXPECT_NE(ctl::replace(*opened.target, "mine").error, "");
    EXPECT_EQ(read_file(path), "his");
    std::filesystem::remove(path);
    opened = ctl::open_target(wish);
    const ctl::Replaced made = ctl::replace(*opened.target, "mine");
    EXPECT_EQ(made.how, ctl::How::Created);
    const std::string like = gateway.dir.file("like", "");
    test::give(like, 0644);
    EXPECT_EQ(test::possession_of(path), test::possession_of(like));
    // The old text is kept, for those who could read it, and no older one is lost.
    test::give(path, 0640);
    const std::string before = test::possession_of(path);
    for (const char* text : {"second", "third"}) {
        opened = ctl::open_target(wish);
        const std::string old = opened.target->text;
        const ctl::Replaced kept = ctl::replace(*opened.target, text, true);
        EXPECT_EQ(read_file(kept.backup), old) << kept.error;
        EXPECT_EQ(test::possession_of(kept.backup), before);
    }
    EXPECT_EQ(read_file(path), "third");
    age(gateway.dir.file("admin/taro.conf.tmp.aaaaaa", "third and last"));
    const Words back = {"--rights", "admin:taro", "--put-back", "taro.conf.tmp.aaaaaa"};
    EXPECT_EQ(test::run(Interrupted::recover(gateway.file, back)),
              Interrupted::is_back(path, "taro.conf.tmp.aaaaaa"));
    EXPECT_EQ(read_file(path), "third and last");
    EXPECT_EQ(test::possession_of(path), before);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(gateway.path("admin")), {}), 3);
}

} // namespace
} // namespace ov
