#include "ctl/leftovers.h"

#include "util/source.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <unistd.h>
#include <utility>

namespace ov::ctl {

namespace {

constexpr std::time_t Young = 60; // in seconds

struct Pattern {
    Leftover::Of of;
    const char* front; // of the name of the file
    const char* behind;
};
constexpr Pattern patterns[] = {{Leftover::Of::Conf, "", ".tmp."},
                                {Leftover::Of::Draft, ".", ".apply."},
                                {Leftover::Of::Whole, ".", ".whole."}};

const Pattern* pattern_of(std::string_view name, std::string_view file) {
    constexpr std::size_t Letters = 6;
    constexpr std::string_view Known =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    const auto matches = [&](const Pattern& pattern) {
        const std::string front = std::string(pattern.front).append(file) + pattern.behind;
        return name.size() == front.size() + Letters && name.starts_with(front) &&
               name.find_first_not_of(Known, front.size()) == name.npos;
    };
    const auto* found = std::find_if(std::begin(patterns), std::end(patterns), matches);
    return found == std::end(patterns) ? nullptr : found;
}

struct DirectoryCloser {
    void operator()(DIR* directory) const { ::closedir(directory); }
};

Fd open_list(const Place& place) {
    return Fd(::openat(place.at(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

// The names in a directory, sorted; none where it cannot be read.
std::vector<std::string> names_in(const Place& place) {
    Fd file = open_list(place);
    const std::unique_ptr<DIR, DirectoryCloser> directory(file ? ::fdopendir(file.get()) : nullptr);
    std::vector<std::string> names;
    if (directory) {
        file.release(); // the stream owns it now
        while (const dirent* entry = ::readdir(directory.get())) {
            names.emplace_back(entry->d_name);
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

// Why it is not looked into; empty: it is.
std::string why_closed(const struct stat& info) {
    return !S_ISREG(info.st_mode) ? "it is not a regular file"
           : info.st_nlink != 1   ? "it has another name, too"
                                  : "";
}

bool is_own(const struct stat& info, const struct stat& file) {
    return info.st_uid == file.st_uid || info.st_uid == 0 || info.st_uid == ::geteuid();
}

// A date in the future makes nothing young for ever.
bool is_young(const struct stat& info) {
    const std::time_t age = std::time(nullptr) - info.st_mtime;
    return age >= 0 && age < Young;
}

// Whether whoever writes it is still alive. A lease is given only when nobody has the file open for
// writing; where there are none, it is a question of time.
bool is_written(const Fd& file, const struct stat& info) {
    if (::fcntl(file.get(), F_SETLEASE, F_RDLCK) == 0) {
        ::fcntl(file.get(), F_SETLEASE, F_UNLCK);
        return false;
    }
    return errno == EAGAIN || is_young(info);
}

// Opens what has the name; nothing, with the reason, when it is not to be looked into.
Fd open_copy(const Place& place, const std::string& name, struct stat& info, std::string& reason) {
    Fd opened;
    if (::fstatat(place.at(), name.c_str(), &info, AT_SYMLINK_NOFOLLOW) == 0) {
        reason = why_closed(info);
        if (reason.empty()) {
            opened = open_unwaited(place.at(), name.c_str(), O_RDONLY | O_NOFOLLOW);
        }
    }
    if (opened && ::fstat(opened.get(), &info) == 0) {
        reason = why_closed(info);
    } else if (reason.empty()) {
        reason = std::strerror(errno);
    }
    if (!reason.empty()) {
        opened.reset();
    }
    return opened;
}

// Reads no more of a copy than is compared: others may have made it large.
std::optional<Leftover::What> compared(const Fd& copy, off_t size, std::string_view text) {
    using What = Leftover::What;
    std::string begin(std::min(text.size(), static_cast<std::size_t>(size)), '\0');
    std::size_t got = 0;
    while (got < begin.size()) {
        const ssize_t more = retried([&] {
            return ::pread(copy.get(), &begin[got], begin.size() - got, static_cast<off_t>(got));
        });
        if (more <= 0) {
            return more == 0 ? std::optional(What::Other) : std::nullopt;
        }
        got += static_cast<std::size_t>(more);
    }
    return !text.starts_with(begin)              ? What::Other
           : std::cmp_less(size, text.size())    ? What::Part
           : std::cmp_greater(size, text.size()) ? What::Rest
                                                 : What::Equal;
}

// What is to be known of a copy that is open, or of one that is not, for `left.reason`.
void examine(Leftover& left, const Fd& opened, const struct stat& info, const struct stat& file,
             std::string_view text) {
    left.size = info.st_size;
    left.time = info.st_mtime;
    left.is_in_use = opened ? is_written(opened, info) : why_closed(info).empty() && is_young(info);
    if (!opened) {
        return;
    }
    const auto what = is_own(info, file) ? compared(opened, info.st_size, text) : std::nullopt;
    if (what) {
        left.what = *what;
        left.reason = left.is_in_use   ? "it is being written"
                      : is_young(info) ? "it is younger than a minute"
                                       : "";
    } else {
        left.reason = is_own(info, file) ? std::strerror(errno) : "it belongs to another user";
    }
}

} // namespace

bool can_list(const Place& place) {
    return static_cast<bool>(open_list(place));
}

std::vector<Leftover> leftovers(const Place& place, const struct stat& file,
                                std::string_view text) {
    std::vector<Leftover> found;
    for (const std::string& name : names_in(place)) {
        if (const Pattern* pattern = pattern_of(name, place.name)) {
            Leftover left{.name = name, .of = pattern->of};
            struct stat info = {};
            const Fd opened = open_copy(place, name, info, left.reason);
            if (info.st_nlink != 0) { // else it has just been removed
                examine(left, opened, info, file, text);
                found.push_back(std::move(left));
            }
        }
    }
    return found;
}

const char* origin_of(const Leftover& leftover) {
    return leftover.of == Leftover::Of::Conf ? "of ov_conf" : "of ov_confctl";
}

std::string in_words(const Leftover& leftover) {
    using What = Leftover::What;
    std::string words;
    switch (leftover.what) {
    case What::Equal:
        words = "equal to the file";
        break;
    case What::Rest:
        words = leftover.of == Leftover::Of::Draft
                    ? "a new text that was not put into the file"
                    : "the whole text, of which the file has a beginning or nothing";
        break;
    case What::Part:
        words = "a beginning of the file";
        break;
    case What::Other:
        words = "another text, and the file is no beginning of it";
        break;
    case What::Foreign:
        break;
    }
    const std::string untouched =
        leftover.reason.empty() ? "" : "not touched, because " + leftover.reason;
    return words + (words.empty() || untouched.empty() ? "" : "; ") + untouched;
}

std::optional<std::string> text_of(const Leftover& leftover, const Place& place,
                                   const struct stat& file) {
    struct stat info = {};
    std::string reason;
    const Fd opened = open_copy(place, leftover.name, info, reason);
    if (!opened || !is_own(info, file) || info.st_size != leftover.size ||
        info.st_mtime != leftover.time) {
        errno = ESTALE;
        return std::nullopt;
    }
    return read_whole(opened.get());
}

} // namespace ov::ctl
