#include "ctl/replace.h"

#include "ctl/leftovers.h"
#include "util/process.h"
#include "util/source.h"

#include <acl/libacl.h>
#include <algorithm>
#include <array>
#include <attr/libattr.h>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <initializer_list>

namespace ov::ctl {

namespace {

constexpr mode_t NewMain = 0640;
constexpr mode_t NewRights = 0644;

bool is_one_of(int error, std::initializer_list<int> errors) {
    return std::find(errors.begin(), errors.end(), error) != errors.end();
}

int sync_all(int fd) {
    const int result = retried([fd] { return ::fsync(fd); });
    return result == -1 && errno == EINVAL ? 0 : result;
}

// Brings the names in the directory onto the disk. One that may not be read is left to the system.
int sync_names(const Place& place) {
    const Fd directory(::openat(place.at(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return directory ? sync_all(directory.get()) : 0;
}

// Writes the text to the start of the file.
bool write_text(const Fd& file, std::string_view text) {
    off_t at = 0;
    while (!text.empty()) {
        const ssize_t put =
            retried([&] { return ::pwrite(file.get(), text.data(), text.size(), at); });
        if (put <= 0) {
            errno = put == 0 ? ENOSPC : errno;
            return false;
        }
        at += put;
        text.remove_prefix(static_cast<std::size_t>(put));
    }
    return true;
}

// A file beside the target.
struct Beside {
    Place place = {};
    Fd file = Fd();
};

Place place_beside(const Target& target, std::string name) {
    return {pin(target.place.directory), std::move(name)};
}

// The path of what has that name beside the target, for people.
std::string path_of(const Target& target, const std::string& name) {
    std::array<char, 4096> folder{};
    const std::string link = "/proc/self/fd/" + std::to_string(target.place.at());
    const ssize_t length = ::readlink(link.c_str(), folder.data(), folder.size());
    const std::string_view path(folder.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
    return path.empty() || path == "/" ? std::string(path) + name : std::string(path) + '/' + name;
}

std::string not_written(const Target& target, const std::string& what, int error) {
    return target.path + ": " + what + ": " + std::strerror(error);
}

// Makes a new file with the text, for its owner only. An empty guard, with errno set, when it
// cannot be made.
Beside draft_of(const Target& target, std::string_view text) {
    Beside draft{.place = place_beside(target, '.' + target.place.name + ".apply.XXXXXX")};
    draft.file = draft.place.directory ? make_temporary(draft.place) : Fd();
    if (draft.file && !write_text(draft.file, text)) {
        const int error = errno;
        draft.place.remove();
        draft.file.reset();
        errno = error;
    }
    return draft;
}

// An attribute that a file has from others, and not for the text that it happens to have.
int is_kept(const char* name, error_context* context) {
    return std::strcmp(name, "security.ima") != 0 ? attr_copy_check_permissions(name, context) : 0;
}

// Gives the new file what the old one has. Returns what it cannot have, or nothing.
const char* give_all(const Fd& file, const Target& target) {
    const struct stat& old = target.read;
    struct stat info = {};
    if (::fstat(file.get(), &info) != 0 ||
        ((info.st_uid != old.st_uid || info.st_gid != old.st_gid) &&
         ::fchown(file.get(), old.st_uid, old.st_gid) != 0)) {
        return "owner";
    }
    const char* path = target.path.c_str();
    if (perm_copy_fd(path, target.file.get(), path, file.get(), nullptr) != 0 ||
        ::fstat(file.get(), &info) != 0 || info.st_mode != old.st_mode) {
        return "mode or access list";
    }
    const int copied = attr_copy_fd(path, target.file.get(), path, file.get(), is_kept, nullptr);
    return copied == 0 ? nullptr : "extended attributes";
}

// Whether the file is still as it was read.
bool is_untouched(const Target& target) {
    struct stat now = {};
    const struct stat& old = target.read;
    const auto same = [](const timespec& a, const timespec& b) {
        return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
    };
    return ::fstatat(target.place.at(), target.place.name.c_str(), &now, AT_SYMLINK_NOFOLLOW) ==
               0 &&
           now.st_dev == old.st_dev && now.st_ino == old.st_ino && now.st_size == old.st_size &&
           same(now.st_mtim, old.st_mtim) && same(now.st_ctim, old.st_ctim);
}

int rename_to(const Place& from, const Place& to) {
    return ::renameat(from.at(), from.name.c_str(), to.at(), to.name.c_str());
}

constexpr const char* Changed = ": somebody has changed it in the meantime";
constexpr const char* NotSafe = "the folder could not be brought onto the disk";

// What renaming comes to: done, impossible by nature, or failed.
struct Outcome {
    bool is_done = false;
    std::string reason = {}; // why it is impossible
    std::string error = {};
};

// Lets the draft take the name of the file.
Outcome take_name(const Target& target, const Beside& draft) {
    if (target.read.st_nlink > 1) {
        return {.reason = "it has other names, too"};
    }
    if (const char* lacking = give_all(draft.file, target)) {
        return {.reason = std::string("a new file cannot have its ") + lacking};
    }
    if (sync_all(draft.file.get()) != 0) {
        return {.error = not_written(target, "a new text cannot be written", errno)};
    }
    if (!is_untouched(target)) {
        return {.error = target.path + Changed};
    }
    if (rename_to(draft.place, target.place) == 0) {
        return {.is_done = true};
    }
    return is_one_of(errno, {EBUSY, EPERM, EACCES, EXDEV})
               ? Outcome{.reason = std::string("it cannot be renamed: ") + std::strerror(errno)}
               : Outcome{.error = not_written(target, "it cannot be renamed", errno)};
}

// Puts the text into the file itself. Emptied first, the file is a beginning of the text whenever
// the process is killed, and that can be told from a copy; the room is then taken at once. Without
// a copy it is never empty, and one write comes near to all or nothing.
bool write_over(const Fd& file, std::string_view text, bool has_copy) {
    const auto size = static_cast<off_t>(text.size());
    if (!has_copy) {
        return write_text(file, text) && ::ftruncate(file.get(), size) == 0 &&
               sync_all(file.get()) == 0;
    }
    if (::ftruncate(file.get(), 0) != 0) {
        return false;
    }
    const bool has_room =
        size == 0 ||
        retried([&] { return ::fallocate(file.get(), FALLOC_FL_KEEP_SIZE, 0, size); }) == 0 ||
        errno != ENOSPC;
    return has_room && write_text(file, text) && sync_all(file.get()) == 0;
}

// Whether the file has the text, though nothing could be written.
bool has_text(const Fd& file, const std::string& text) {
    return ::lseek(file.get(), 0, SEEK_SET) == 0 && read_whole(file.get()) == text;
}

// Writes over the file. `is_lost` says that it has neither text then.
std::string overwrite(const Target& target, std::string_view text, bool has_copy, bool& is_lost) {
    if (!is_untouched(target)) {
        return target.path + Changed;
    }
    if (write_over(target.file, text, has_copy)) {
        return "";
    }
    std::string error = not_written(target, "it cannot be written", errno);
    is_lost =
        !write_over(target.file, target.text, has_copy) && !has_text(target.file, target.text);
    if (is_lost) {
        if (has_copy) { // what is empty is not taken for a text
            [[maybe_unused]] const int emptied = ::ftruncate(target.file.get(), 0);
        }
        error += "; its old text is lost";
    }
    return error;
}

// Writes over the file, once the draft, if there could be one, is safe under the name of a whole
// text.
Replaced write_in_place(const Target& target, std::string_view text, Beside draft,
                        std::string reason) {
    Replaced result{.how = How::InPlace, .note = std::move(reason)};
    if (draft.file) {
        const std::size_t mark = draft.place.name.rfind('.');
        Place whole = place_beside(target, '.' + target.place.name + ".whole" +
                                               draft.place.name.substr(mark));
        if (sync_all(draft.file.get()) != 0 || rename_to(draft.place, whole) != 0) {
            result.error = not_written(target, "a new text cannot be written", errno);
            draft.place.remove();
            return result;
        }
        draft.place = std::move(whole);
        sync_names(target.place);
    }
    bool is_lost = false;
    result.error = overwrite(target, text, static_cast<bool>(draft.file), is_lost);
    if (draft.file && !is_lost) {
        draft.place.remove();
    } else if (draft.file) {
        result.error +=
            "; the new one is in " + path_of(target, draft.place.name) + ": see ov_confctl recover";
    }
    return result;
}

// Replaces a file that is there.
Replaced replace_existing(const Target& target, std::string_view text) {
    Beside draft = draft_of(target, text);
    if (!draft.file) {
        return is_one_of(errno, {EACCES, EPERM, EROFS, ENAMETOOLONG})
                   ? write_in_place(target, text, Beside(),
                                    std::string("no file can be made beside it: ") +
                                        std::strerror(errno))
                   : Replaced{.error = not_written(target, "a new text cannot be written", errno)};
    }
    Outcome outcome = take_name(target, draft);
    if (!outcome.reason.empty()) {
        return write_in_place(target, text, std::move(draft), std::move(outcome.reason));
    }
    if (!outcome.is_done) {
        draft.place.remove();
        return {.error = std::move(outcome.error)};
    }
    return {.note = sync_names(target.place) == 0 ? "" : NotSafe};
}

// Gives a new file its owner, if the caller may, and its mode.
bool make_usual(const Target& target, const Fd& file) {
    struct stat directory = {};
    if (target.kind == FileKind::Any) {
        return ::fchmod(file.get(), NewMain) == 0;
    }
    if (::fstat(target.place.directory.get(), &directory) != 0) {
        return false;
    }
    [[maybe_unused]] const bool given =
        ::fchown(file.get(), directory.st_uid, directory.st_gid) == 0 ||
        ::fchown(file.get(), static_cast<uid_t>(-1), directory.st_gid) == 0;
    return ::fchmod(file.get(), NewRights) == 0;
}

// Gives the draft a name that nothing may have.
int take_new_name(const Target& target, const Beside& draft) {
    const Place& to = target.place;
    const int result = ::renameat2(draft.place.at(), draft.place.name.c_str(), to.at(),
                                   to.name.c_str(), RENAME_NOREPLACE);
    struct stat there = {};
    if (result == 0 || errno != EINVAL) {
        return result;
    }
    if (::fstatat(to.at(), to.name.c_str(), &there, AT_SYMLINK_NOFOLLOW) == 0) {
        errno = EEXIST;
        return -1;
    }
    return rename_to(draft.place, to);
}

Replaced create(const Target& target, std::string_view text) {
    const Beside draft = draft_of(target, text);
    if (draft.file && make_usual(target, draft.file) && sync_all(draft.file.get()) == 0 &&
        take_new_name(target, draft) == 0) {
        return {.how = How::Created, .note = sync_names(target.place) == 0 ? "" : NotSafe};
    }
    Replaced failed{.error = not_written(target, "it cannot be made", errno)};
    if (draft.file) {
        draft.place.remove();
    }
    return failed;
}

// Makes the file of the old text; an empty guard, with errno set, when it cannot be made.
Beside make_backup(const Target& target) {
    constexpr int Most = 100;
    std::array<char, sizeof ".20261231-235959"> date{};
    const std::time_t now = std::time(nullptr);
    tm local{};
    std::strftime(date.data(), date.size(), ".%Y%m%d-%H%M%S", ::localtime_r(&now, &local));
    Beside backup;
    errno = EEXIST;
    for (int number = 1; !backup.file && number < Most && errno == EEXIST; ++number) {
        const std::string count = number == 1 ? "" : '.' + std::to_string(number);
        backup.place = place_beside(target, target.place.name + date.data() + count + ".bak");
        backup.file = backup.place.create(O_WRONLY, S_IRUSR | S_IWUSR);
    }
    return backup;
}

// Keeps the old text. Where the copy cannot have the owner, it is for the caller only.
std::string keep_backup(const Target& target, Beside& backup) {
    backup = make_backup(target);
    if (backup.file && write_text(backup.file, target.text)) {
        give_all(backup.file, target);
        if (sync_all(backup.file.get()) == 0 && sync_names(target.place) == 0) {
            return "";
        }
    }
    return not_written(target, "its old text cannot be kept", errno);
}

} // namespace

void tidy(const Target& target) {
    using What = Leftover::What;
    for (const Leftover& left : leftovers(target.place, target.read, target.text)) {
        const bool is_needed = left.of == Leftover::Of::Conf ||
                               (left.of == Leftover::Of::Whole && left.what == What::Rest);
        if (!is_needed && left.what != What::Foreign && !left.is_in_use) {
            place_beside(target, left.name).remove();
        }
    }
}

Replaced replace(Target& target, std::string_view text, bool backup) {
    const HeldSignals held; // from here on a signal would leave half of the work behind
    if (text.size() >= TooLong) {
        return {.error = target.path + ": it would have 64 MiB or more"};
    }
    tidy(target);
    if (!target.exists) {
        return create(target, text);
    }
    Beside kept;
    std::string error = backup ? keep_backup(target, kept) : "";
    Replaced result =
        error.empty() ? replace_existing(target, text) : Replaced{.error = std::move(error)};
    if (!result.error.empty() && kept.file) {
        kept.place.remove();
    } else if (kept.file) {
        result.backup = path_of(target, kept.place.name);
    }
    return result;
}

Replaced remove(Target& target, bool backup) {
    const HeldSignals held;
    tidy(target);
    Beside kept;
    Replaced result{.how = How::Removed, .error = backup ? keep_backup(target, kept) : ""};
    const auto written = Place::of(target.path.c_str(), target.kind); // a link goes itself
    if (result.error.empty() && written && !is_untouched(target)) {
        result.error = target.path + Changed;
    } else if (result.error.empty() && (!written || written->remove() != 0)) {
        result.error = not_written(target, "it cannot be removed", errno);
    }
    if (result.error.empty()) {
        result.backup = kept.file ? path_of(target, kept.place.name) : "";
        result.note = sync_names(*written) == 0 ? "" : NotSafe;
    } else if (kept.file) {
        kept.place.remove();
    }
    return result;
}

} // namespace ov::ctl
