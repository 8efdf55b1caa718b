#include "ctl/target.h"

#include "ctl/leftovers.h"
#include "util/source.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <utility>

namespace ov::ctl {

namespace {

std::string because(const std::string& path, const std::string& reason) {
    return (path.empty() ? "\"\"" : path) + ": " + reason;
}

std::string because(const std::string& path, int error) {
    return because(path, error == EFBIG    ? "64 MiB or larger"
                         : error == EINVAL ? "it is not a regular file"
                                           : std::strerror(error));
}

// Where the file is that the caller of the command has named, or would be made. Links are followed
// as the system does.
std::optional<Place> place_of_named(const std::string& path) {
    namespace fs = std::filesystem;
    std::error_code error;
    fs::path real = fs::canonical(path, error);
    if (error == std::errc::no_such_file_or_directory) {
        const fs::path written(path);
        const fs::path parent = written.parent_path();
        real = fs::canonical(parent.empty() ? "." : parent, error) / written.filename();
    }
    if (error) {
        errno = error.value();
        return std::nullopt;
    }
    Fd directory(::open(real.parent_path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    return directory ? std::optional(Place{std::move(directory), real.filename().string()})
                     : std::nullopt;
}

std::optional<Place> place_of(const std::string& path, FileKind kind) {
    if (kind == FileKind::Any) {
        return place_of_named(path);
    }
    std::optional<Place> written = Place::of(path.c_str(), kind);
    std::optional<Place> file = written ? written->of_file() : std::nullopt;
    return file || errno != ENOENT ? std::move(file) : std::move(written);
}

bool is_same(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// The lock that ov_conf meets. It is not lost with another descriptor of the file.
bool lock_itself(const Fd& file) {
    struct flock whole = {};
    whole.l_type = F_WRLCK;
    whole.l_whence = SEEK_SET;
    const int result = retried([&] { return ::fcntl(file.get(), F_OFD_SETLK, &whole); });
    return result == 0 || errno == EINVAL; // a file system without locking counts as locked
}

constexpr const char* LockedByOthers = "somebody who changes it has locked it";

// The new text that ov_conf has written beside the file and not yet into it; empty: there is none.
// For a moment it has no lock then, and whoever takes it makes ov_conf leave an empty file.
std::string name_in_use(const Wish& wish, const Place& place, const struct stat& file) {
    if (wish.only_look) {
        return "";
    }
    const std::vector<Leftover> all = leftovers(place, file, "");
    const auto found = std::find_if(all.begin(), all.end(), [](const Leftover& left) {
        return left.of == Leftover::Of::Conf && left.is_in_use;
    });
    return found == all.end() ? "" : found->name;
}

// Whether another user may have linked this name to a file that he could not write himself.
bool may_be_foreign(const Target& target) {
    struct stat directory = {};
    if (target.read.st_nlink == 1) {
        return false;
    }
    return ::fstat(target.place.directory.get(), &directory) != 0 ||
           (directory.st_mode & (S_IWGRP | S_IWOTH)) != 0 ||
           (directory.st_uid != 0 && directory.st_uid != ::geteuid() &&
            directory.st_uid != target.read.st_uid);
}

// Why the file is no whole text; empty: it is one. `first` is how the file was before the lock.
std::string why_interrupted(const Target& target, const Wish& wish, const struct stat& first) {
    const bool is_cut =
        is_same(first, target.read) && std::cmp_less(target.text.size(), first.st_size);
    for (const Leftover& left : leftovers(target.place, target.read, target.text)) {
        const bool is_conf = left.of == Leftover::Of::Conf;
        if ((is_conf && (is_cut || target.text.empty())) ||
            (left.of != Leftover::Of::Draft && left.what == Leftover::What::Rest)) {
            return "a change of this file was interrupted, and " + left.name +
                   " is beside it: see ov_confctl recover";
        }
    }
    if (is_cut && target.text.empty()) {
        return "somebody has emptied it just now";
    }
    const bool is_whole = !target.text.empty() || wish.kind != FileKind::Any || wish.may_be_empty;
    return is_whole ? ""
                    : "it is empty, as a change that was interrupted leaves it: see ov_confctl "
                      "recover, or take it as it is by --create";
}

enum class Step { Done, Missing, Busy, Swapped, Failed };

// Opens, locks and reads the file. `error` gets the sentence for all but Done.
Step try_to_open(Target& target, const Wish& wish, std::string& error) {
    struct stat first = {};
    const std::string& path = target.path;
    const int access = wish.only_look ? O_RDONLY : O_RDWR;
    target.file = if_regular(target.place.open_at_once(access | O_NOCTTY));
    if (!target.file || ::fstat(target.file.get(), &first) != 0) {
        const int reason = errno;
        if (reason == EWOULDBLOCK) { // who has leased it gives it up soon, or loses it
            error = because(path, LockedByOthers);
            return Step::Busy;
        }
        error = because(path, reason);
        return reason == ENOENT ? Step::Missing : reason == ESTALE ? Step::Swapped : Step::Failed;
    }
    error = because(path, LockedByOthers);
    if (const std::string name = name_in_use(wish, target.place, first); !name.empty()) {
        error = because(path, name + " beside it is being written");
        return Step::Busy;
    }
    if (!wish.only_look && !lock_itself(target.file)) {
        const int reason = errno;
        if (reason == EAGAIN || reason == EACCES) {
            return Step::Busy;
        }
        error = because(path, reason);
        return Step::Failed;
    }
    struct stat there = {};
    if (::fstatat(target.place.at(), target.place.name.c_str(), &there, AT_SYMLINK_NOFOLLOW) != 0 ||
        ::fstat(target.file.get(), &target.read) != 0 || !is_same(there, target.read)) {
        error = because(path, "somebody puts other files in its place");
        return Step::Swapped;
    }
    if (const std::string name = name_in_use(wish, target.place, first); !name.empty()) {
        error = because(path, name + " beside it is being written");
        return Step::Busy;
    }
    if (may_be_foreign(target)) {
        error =
            because(path, "it has another name, too, and somebody else may have given it this one");
        return Step::Failed;
    }
    std::optional<std::string> text = read_whole(target.file.get());
    if (!text) {
        error = because(path, errno);
        return Step::Failed;
    }
    target.text = std::move(*text);
    const std::string reason = wish.interrupted ? "" : why_interrupted(target, wish, first);
    error = reason.empty() ? "" : because(path, reason);
    return reason.empty() ? Step::Done : Step::Failed;
}

// Finds the file and locks it, again and again while others put another one in its place.
std::string open_and_lock(Target& target, const Wish& wish, Patience& patience, bool& is_locked) {
    constexpr int MostSwaps = 20;
    for (int swaps = 0;;) {
        target.file.reset();
        std::optional<Place> place = place_of(wish.path, wish.kind);
        if (!place) {
            return because(wish.path, errno == ENOENT && wish.create ? "its directory is missing"
                                                                     : std::strerror(errno));
        }
        target.place = std::move(*place);
        std::string error;
        const Step step = try_to_open(target, wish, error);
        target.exists = step == Step::Done;
        if (step == Step::Done || (step == Step::Missing && wish.create)) {
            return "";
        }
        if (step == Step::Missing || step == Step::Failed ||
            (step == Step::Swapped && ++swaps == MostSwaps)) {
            return error;
        }
        if (step == Step::Busy) {
            target.file.reset(); // so that ov_conf, which is at work, can go on
            is_locked = !patience.lasts(wish.path);
            if (is_locked) {
                return error;
            }
        }
    }
}

} // namespace

Opened open_target(const Wish& wish) {
    Patience patience(wish.wait);
    Target target{.path = wish.path, .kind = wish.kind};
    const std::string& main = wish.main.empty() ? wish.path : wish.main;
    // No lock file is made for what is not there, or is no file.
    struct stat info = {};
    const bool is_there = ::stat(main.c_str(), &info) == 0;
    if (is_there ? !S_ISREG(info.st_mode) : !wish.create) {
        return {.error =
                    because(main, is_there ? (S_ISDIR(info.st_mode) ? EISDIR : EINVAL) : errno)};
    }
    if (wish.lock) {
        target.lock = wish.only_look ? lock_for_reading(*wish.lock, patience)
                                     : lock_for_writing(*wish.lock, main, patience);
        if (!target.lock.error.empty()) {
            return {.error = std::move(target.lock.error), .is_locked = target.lock.is_busy};
        }
    }
    Opened opened;
    opened.error = open_and_lock(target, wish, patience, opened.is_locked);
    if (opened.error.empty()) {
        opened.target = std::move(target);
    }
    return opened;
}

} // namespace ov::ctl
