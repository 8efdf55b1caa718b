#include "util/place.h"

#include "util/text.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace ov {

namespace {

constexpr int MostLinks = 40;           // the system itself follows no more
constexpr long LeasePause = 10'000'000; // in nanoseconds: a hundredth of a second
constexpr int LeaseTries = 6000;
constexpr int OnlyPath = O_PATH | O_NOFOLLOW | O_CLOEXEC;

// A way along paths, from directory to directory. What it has come to is pinned by descriptors: it
// stays the same whatever is renamed meanwhile.
struct Walk {
    Fd directory = Fd();
    std::array<char, NAME_MAX + 1> name = {}; // in it
    Fd found = Fd();                          // what has that name, once it has been looked at
    int links = 0;                            // that have been followed

    // Goes to the last name of `path`.
    bool begin(std::string_view path);
    // The same from the directory `from` on, when the path is relative.
    bool go(int from, std::string_view path);
    // Looks at what has the name, and goes on to where the links there lead.
    bool look();

  private:
    bool take_name(std::string_view text);
    bool leap(std::string_view path); // in one step, where the system can and there is no link
    bool follow();
};

bool Walk::take_name(std::string_view text) {
    if (text.size() >= name.size()) {
        errno = ENAMETOOLONG;
        return false;
    }
    name[text.copy(name.data(), text.size())] = '\0';
    return true;
}

bool Walk::begin(std::string_view path) {
    return leap(path) || go(AT_FDCWD, path);
}

bool Walk::leap(std::string_view path) {
    const std::size_t front = path.rfind('/') + 1;
    if (front == 0 || front > MaxPath) {
        return false;
    }
    std::array<char, MaxPath + 1> text;
    text[path.copy(text.data(), front)] = '\0';
    open_how how{};
    how.flags = OnlyPath | O_DIRECTORY;
    how.resolve = RESOLVE_NO_SYMLINKS;
    directory.reset(
        static_cast<int>(::syscall(SYS_openat2, AT_FDCWD, text.data(), &how, sizeof how)));
    path.remove_prefix(front);
    return directory && take_name(path.empty() ? "." : path);
}

bool Walk::go(int from, std::string_view path) {
    if (path.size() > MaxPath) {
        errno = ENAMETOOLONG;
        return false;
    }
    const char* start = path.starts_with('/') ? "/" : ".";
    Fd next(::openat(from, start, OnlyPath | O_DIRECTORY));
    for (;;) {
        if (!next) {
            return false;
        }
        directory = std::move(next);
        path.remove_prefix(std::min(path.find_first_not_of('/'), path.size()));
        const std::size_t end = path.find('/');
        if (end == path.npos) {
            return take_name(path.empty() ? "." : path);
        }
        if (!take_name(path.substr(0, end)) || !look()) {
            return false;
        }
        next = std::move(found);
        path.remove_prefix(end);
    }
}

// A directory is asked for first, so that one which is mounted on demand comes up.
bool Walk::look() {
    found.reset(::openat(directory.get(), name.data(), OnlyPath | O_DIRECTORY));
    if (found || (errno != ENOTDIR && errno != ELOOP)) {
        return static_cast<bool>(found);
    }
    found.reset(::openat(directory.get(), name.data(), OnlyPath));
    struct stat link = {};
    if (!found || ::fstat(found.get(), &link) != 0) {
        return false;
    }
    if (!S_ISLNK(link.st_mode)) {
        return true;
    }
    const bool arrived = follow();
    if (link.st_uid == 0 || link.st_uid == ::geteuid()) {
        return arrived;
    }
    struct stat target = {};
    if (arrived && ::fstat(found.get(), &target) == 0 && target.st_uid == link.st_uid) {
        return true;
    }
    errno = ELOOP;
    return false;
}

bool Walk::follow() {
    if (++links > MostLinks) {
        errno = ELOOP;
        return false;
    }
    std::array<char, MaxPath + 1> text; // not on the heap: the log needs none
    const ssize_t length = ::readlinkat(found.get(), "", text.data(), text.size());
    return length > 0 && go(directory.get(), {text.data(), static_cast<std::size_t>(length)}) &&
           look();
}

// Keeps a file only when it is the other one, too.
Fd if_same(Fd file, const Fd& other) {
    struct stat info = {};
    struct stat wanted = {};
    if (!file) {
        return file;
    }
    const bool known = ::fstat(file.get(), &info) == 0 && ::fstat(other.get(), &wanted) == 0;
    const int error = known ? ESTALE : errno;
    if (!known || info.st_dev != wanted.st_dev || info.st_ino != wanted.st_ino) {
        file.reset();
        errno = error;
    }
    return file;
}

} // namespace

Fd open_unwaited(int directory, const char* name, int flags, mode_t mode) {
    return Fd(::openat(directory, name, flags | O_NONBLOCK | O_CLOEXEC, mode));
}

Fd open_directory_of(const char* path) {
    Walk walk;
    return walk.begin(path) ? std::move(walk.directory) : Fd();
}

const char* last_name(const char* path) {
    const char* slash = std::strrchr(path, '/');
    return slash ? slash + 1 : path;
}

std::optional<Place> Place::of(const char* path, FileKind kind) {
    if (kind != FileKind::Installed) {
        return Place{.name = path};
    }
    Walk walk;
    if (!walk.begin(path)) {
        return std::nullopt;
    }
    return Place{std::move(walk.directory), walk.name.data(), Fd(), walk.links};
}

std::optional<Place> Place::of_file() const {
    if (!directory) {
        return Place{.name = name};
    }
    Walk walk;
    walk.links = links;
    if (!walk.go(directory.get(), name) || !walk.look()) {
        return std::nullopt;
    }
    Fd file = walk.links > links ? std::move(walk.found) : Fd();
    return Place{std::move(walk.directory), walk.name.data(), std::move(file), walk.links};
}

int Place::at() const {
    return directory ? directory.get() : AT_FDCWD;
}

Fd Place::open_at_once(int flags) const {
    Fd file = open_unwaited(at(), name.c_str(), flags | (directory ? O_NOFOLLOW : 0));
    return pinned && file ? if_same(std::move(file), pinned) : std::move(file);
}

Fd Place::open(int flags) const {
    Fd file = open_at_once(flags);
    // The system takes a lease away in less than a minute. A waiting open would be quicker, but
    // what stands there may be a pipe by then.
    for (int tries = 0; !file && errno == EWOULDBLOCK && tries < LeaseTries; ++tries) {
        const timespec pause{.tv_sec = 0, .tv_nsec = LeasePause};
        ::nanosleep(&pause, nullptr);
        file = open_at_once(flags);
    }
    return file;
}

Fd Place::create(int flags, mode_t mode) const {
    return Fd(::openat(at(), name.c_str(), flags | O_CREAT | O_EXCL | O_CLOEXEC, mode));
}

int Place::remove() const {
    return ::unlinkat(at(), name.c_str(), 0);
}

Fd open_file(const char* path, int flags, FileKind kind) {
    const std::optional<Place> place = Place::of(path, kind);
    const std::optional<Place> file = place ? place->of_file() : std::nullopt;
    return file ? open_file(*file, flags, kind) : Fd();
}

Fd open_file(const Place& place, int flags, FileKind kind) {
    if (kind == FileKind::Any) {
        return Fd(::openat(place.at(), place.name.c_str(), flags | O_CLOEXEC));
    }
    return if_regular(place.open(flags));
}

Fd make_temporary(Place& place) {
    constexpr std::string_view Marks = "XXXXXX";
    constexpr std::string_view Letters =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    constexpr int MostTries = 100;
    constexpr mode_t OwnersOnly = 0600;
    Fd file;
    errno = EINVAL;
    const bool marked = place.name.ends_with(Marks);
    for (int tries = 0; marked && !file && tries < MostTries; ++tries) {
        std::array<unsigned char, Marks.size()> random{};
        if (::getentropy(random.data(), random.size()) != 0) {
            break;
        }
        std::transform(random.begin(), random.end(), place.name.end() - Marks.size(),
                       [&](unsigned char byte) { return Letters[byte % Letters.size()]; });
        file = place.create(O_RDWR, OwnersOnly);
        if (!file && errno != EEXIST) {
            break;
        }
    }
    return file;
}

Fd pin(const Fd& file) {
    return Fd(::fcntl(file.get(), F_DUPFD_CLOEXEC, 0));
}

} // namespace ov
