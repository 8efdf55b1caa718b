#include "ctl/lock_file.h"

#include "reference/text.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>

namespace ov::ctl {

namespace {

constexpr mode_t OwnersOnly = 0600;
constexpr mode_t WithGroup = 0640;

Fd open_lock(const std::string& path) {
    constexpr int Flags = O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;
    return if_regular(Fd(::open(path.c_str(), Flags)));
}

// Makes the lock file. The group of the configuration file may open it once it is the group's.
Fd make_lock(const std::string& path, const std::string& file) {
    Fd lock(::open(path.c_str(), O_RDONLY | O_CREAT | O_EXCL | O_CLOEXEC, OwnersOnly));
    struct stat info = {};
    if (lock) { // whatever the umask is
        const bool has_group = ::stat(file.c_str(), &info) != 0 ||
                               ::fchown(lock.get(), static_cast<uid_t>(-1), info.st_gid) == 0;
        ::fchmod(lock.get(), has_group ? WithGroup : OwnersOnly);
    }
    return lock;
}

// Whether the lock file has not been removed, or removed and made again, since it was opened.
bool still_stands(const std::string& path, const Fd& lock) {
    struct stat there = {};
    struct stat held = {};
    return ::lstat(path.c_str(), &there) == 0 && ::fstat(lock.get(), &held) == 0 &&
           there.st_dev == held.st_dev && there.st_ino == held.st_ino;
}

Held failed(const std::string& path) {
    const char* reason = errno == ELOOP    ? "a lock file may not be a symbolic link"
                         : errno == EINVAL ? "a lock file must be a regular file"
                                           : std::strerror(errno);
    return {.error = path + ": " + reason};
}

// Locks the file that `open` opens. Whoever comes second, after the first one has removed the file,
// would else hold a lock that nobody meets.
template <class Open>
Held take(const std::string& path, int operation, Patience& patience, Open open) {
    for (;;) {
        Held held{.lock = open()};
        if (!held.lock) {
            return failed(path);
        }
        while (retried([&] { return ::flock(held.lock.get(), operation | LOCK_NB); }) != 0) {
            if (errno != EWOULDBLOCK) {
                return failed(path);
            }
            if (!patience.lasts(path)) {
                return {.is_busy = true, .error = path + ": somebody else holds this lock"};
            }
        }
        if (still_stands(path, held.lock)) {
            return held;
        }
        held.lock.reset();
        if (!patience.lasts(path)) {
            return {.is_busy = true, .error = path + ": this lock is removed by others"};
        }
    }
}

} // namespace

Patience::Patience(int seconds) : end_(start_ + std::chrono::seconds(seconds)) {}

bool Patience::lasts(const std::string& what) {
    constexpr std::chrono::milliseconds Moment(20);
    constexpr std::chrono::seconds Some(1); // and who has asked wonders
    const Clock::time_point now = Clock::now();
    if (now >= end_) {
        return false;
    }
    if (!told_ && now - start_ >= Some) {
        told_ = true;
        std::fprintf(stderr, "ov_confctl: waiting for %s\n", printable(what).c_str());
    }
    std::this_thread::sleep_for(Moment);
    return true;
}

std::string lock_file_of(std::string file) {
    constexpr std::string_view Ending = ".conf";
    if (file.ends_with(Ending)) {
        file.resize(file.size() - Ending.size());
    }
    return file + ".lock";
}

Held lock_for_reading(const std::string& path, Patience& patience) {
    Held held = take(path, LOCK_SH, patience, [&path] { return open_lock(path); });
    if (!held.is_busy) {
        held.error.clear();
    }
    return held;
}

Held lock_for_writing(const std::string& path, const std::string& file, Patience& patience) {
    return take(path, LOCK_EX, patience, [&] {
        for (;;) {
            Fd lock = open_lock(path);
            if (lock || errno != ENOENT) {
                return lock;
            }
            lock = make_lock(path, file);
            if (lock || errno != EEXIST) {
                return lock;
            }
        }
    });
}

} // namespace ov::ctl
