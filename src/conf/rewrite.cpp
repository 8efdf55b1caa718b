#include "conf/rewrite.h"

#include "conf/edit.h"
#include "util/lock.h"
#include "util/log.h"
#include "util/process.h"
#include "util/source.h"
#include "util/text.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>

namespace ov {

namespace {

constexpr int LockToEdit = LockExclusive | LockNoWait;
constexpr std::size_t BufferSize = 8192; // of what is copied at once
constexpr mode_t NewFileMode = 0644;

// The two editors follow one protocol; they differ in what they report.
struct Editor {
    const char* name;
    bool clears_umask;         // before the file is opened for the write-back
    bool logs_temporary_file;  // when that cannot be created
    bool tells_open_error;     // with the error number
    bool read_error_of_target; // a failed copy back blames the configuration file
};
constexpr Editor Modify{.name = "conf_modify",
                        .clears_umask = true,
                        .logs_temporary_file = false,
                        .tells_open_error = true,
                        .read_error_of_target = true};
constexpr Editor Delete{.name = "conf_delete",
                        .clears_umask = false,
                        .logs_temporary_file = true,
                        .tells_open_error = false,
                        .read_error_of_target = false};

void report(const Editor& editor, const char* what, const std::string& object, int error) {
    syserr("%s: %s: %s (%d)", editor.name, what, object.c_str(), error);
    std::fprintf(stderr, "%s: %s\n", what, object.c_str());
}

// The file that is edited, open and locked.
struct Target {
    const char* path; // as messages name it
    Place written;    // where that is: the temporary file lies beside it
    Place file;       // where the file itself is
    Fd locked;
};

// Opens the file for editing and locks it, without waiting for another editor.
std::optional<Target> open_locked(const Editor& editor, const char* path, FileKind kind) {
    std::optional<Place> written = Place::of(path, kind);
    std::optional<Place> place = written ? written->of_file() : std::nullopt;
    Fd file = place ? open_file(*place, O_RDWR, kind) : Fd();
    if (!file) {
        if (editor.tells_open_error) {
            std::fprintf(stderr, "cannot open: %s (%d)\n", path, errno);
        } else {
            std::fprintf(stderr, "cannot open: %s\n", path);
        }
        return std::nullopt;
    }
    if (lockfile(file.get(), LockToEdit) != 0) {
        std::fprintf(stderr, "cannot lock: %s\n", path);
        return std::nullopt;
    }
    return Target{path, std::move(*written), std::move(*place), std::move(file)};
}

// Reads the locked file. One that cannot be read to its end must not be written back.
std::optional<std::string> read_target(const Editor& editor, const Target& target) {
    std::optional<std::string> text = read_whole(target.locked.get());
    if (!text) {
        report(editor, "read error", target.path, errno);
    }
    return text;
}

// The file with the edited text, beside the configuration file.
struct Temporary {
    std::string path; // as messages name it
    Place place;
};

// Writes a piece of the edited text, going on where a signal has interrupted it.
bool write_piece(std::FILE* stream, std::string_view piece) {
    while (!piece.empty()) {
        piece.remove_prefix(std::fwrite(piece.data(), 1, piece.size(), stream));
        if (!piece.empty() && errno != EINTR) {
            return false;
        }
        std::clearerr(stream);
    }
    return true;
}

// Makes a new file beside the configuration file, for nobody else to read, and a stream to write to
// it. Tells what cannot be made.
Stream make_temporary(const Editor& editor, const Target& target, Temporary& temporary) {
    const std::string_view path = target.path;
    const std::string_view front = path.substr(0, path.size() - target.written.name.size());
    Place& place = temporary.place;
    const bool beside = static_cast<bool>(target.written.directory);
    place.directory = beside ? pin(target.written.directory) : Fd();
    place.name = target.written.name + ".tmp.XXXXXX";
    // A whole path that is longer than a path may be is cut, and refused for what it lacks then.
    place.name.resize(std::min(place.name.size(), MaxPath - front.size()));
    const mode_t mask = ::umask(0); // it has to be readable again whatever the caller's mask is
    Fd file = beside && !place.directory ? Fd() : ov::make_temporary(place);
    ::umask(mask);
    temporary.path = std::string(front) + place.name;
    const auto tell = [&](const char* format, const char* what) {
        if (editor.logs_temporary_file) {
            syserr(format, editor.name, temporary.path.c_str(), errno);
        }
        std::fprintf(stderr, "cannot %s tmp file: %s\n", what, temporary.path.c_str());
    };
    if (!file) {
        tell("%s: cannot create tmp file: %s (%d)", "create");
        return nullptr;
    }
    Stream stream(::fdopen(file.get(), "w"));
    if (!stream) {
        tell("%s: cannot open tmp file: %s (%d)\n", "open");
        return nullptr;
    }
    place.pinned = pin(file);
    file.release(); // the stream owns it now
    return stream;
}

// Writes the edited text to a file beside the configuration file. Returns nothing on failure.
std::optional<Temporary> write_temporary(const Editor& editor, const Target& target,
                                         const Edit& edit) {
    Temporary temporary;
    const Place& place = temporary.place;
    Stream stream = make_temporary(editor, target, temporary);
    if (!stream) {
        return std::nullopt;
    }
    std::setvbuf(stream.get(), nullptr, _IONBF, 0);
    const bool written = place.pinned && write_piece(stream.get(), edit.head) &&
                         write_piece(stream.get(), edit.insertion) &&
                         write_piece(stream.get(), edit.tail) && std::fflush(stream.get()) == 0 &&
                         sync_data(::fileno(stream.get())) == 0;
    const bool closed = std::fclose(stream.release()) == 0;
    if (!written || !closed) {
        place.remove();
        return std::nullopt;
    }
    return temporary;
}

// Makes the file again that has lost its name, with the owner and the mode that it had. Where it
// cannot be given to its group, that gets no rights.
Fd make_again(const Place& place) {
    struct stat had = {};
    const bool known = ::fstat(place.pinned.get(), &had) == 0;
    Fd file = place.create(O_WRONLY, known ? S_IRUSR | S_IWUSR : NewFileMode);
    if (file && known) {
        const bool given = ::fchown(file.get(), had.st_uid, had.st_gid) == 0 ||
                           ::fchown(file.get(), static_cast<uid_t>(-1), had.st_gid) == 0;
        ::fchmod(file.get(), had.st_mode & (given ? ACCESSPERMS : S_IRWXU | S_IRWXO));
    }
    return file;
}

// Opens the configuration file for the write-back and empties it: the file that was locked, or,
// when there is none by that name any more, a new one.
Fd open_emptied(const Place& place) {
    Fd file = place.open(O_WRONLY);
    if (!file && errno == ENOENT) {
        file = make_again(place);
    }
    struct stat info = {};
    if (file && (::fstat(file.get(), &info) != 0 ||
                 (S_ISREG(info.st_mode) && ::ftruncate(file.get(), 0) != 0))) {
        const int error = errno;
        file.reset();
        errno = error;
    }
    return file;
}

// Copies the temporary file into the configuration file, which is open, empty and locked.
bool copy_back(const Editor& editor, const char* path, const Fd& file, const Temporary& temporary) {
    const Fd source = temporary.place.open(O_RDONLY | O_NOFOLLOW);
    if (!source) {
        report(editor, "cannot open", temporary.path, errno);
        return false;
    }
    std::array<char, BufferSize> buffer;
    for (;;) {
        const ssize_t got =
            retried([&] { return ::read(source.get(), buffer.data(), BufferSize); });
        if (got == 0) {
            return true;
        }
        if (got < 0) {
            if (editor.read_error_of_target) {
                syserr("%s: read error %s (%d)", editor.name, path, errno);
                std::fprintf(stderr, "read error: %s\n", path);
            } else {
                report(editor, "read error", temporary.path, errno);
            }
            return false;
        }
        errno = 0; // a short write sets none
        const auto size = static_cast<std::size_t>(got);
        if (retried([&] { return ::write(file.get(), buffer.data(), size); }) != got) {
            report(editor, "write error", temporary.path, errno);
            return false;
        }
    }
}

// Gives the file, which has been emptied and perhaps written to, its old text back. When that
// fails, too, the text is lost.
void put_back(const Fd& file, std::string_view text) {
    if (::ftruncate(file.get(), 0) != 0 || ::lseek(file.get(), 0, SEEK_SET) != 0) {
        return;
    }
    while (!text.empty()) {
        const ssize_t put = retried([&] { return ::write(file.get(), text.data(), text.size()); });
        if (put <= 0) {
            return;
        }
        text.remove_prefix(static_cast<std::size_t>(put));
    }
    sync_data(file.get());
}

// Puts the edited text into the file in the place of its text, `old`.
int rewrite(const Editor& editor, Target target, const std::string& old, const Edit& edit) {
    const HeldSignals held; // from here on a signal would leave half of the work behind
    std::optional<Temporary> temporary = write_temporary(editor, target, edit);
    if (!temporary) {
        return -1;
    }
    const char* path = target.path;
    target.file.pinned = pin(target.locked);
    if (!target.file.pinned) {
        report(editor, "cannot open", path, errno);
        return -1;
    }
    target.locked.reset(); // and with it the lock
    if (editor.clears_umask) {
        ::umask(0);
    }
    Fd file = open_emptied(target.file);
    if (!file) {
        report(editor, "cannot open", path, errno);
        return -1; // the edited text is still in the temporary file
    }
    target.file.pinned.reset(); // now: later on it would take the lock along
    if (lockfile(file.get(), LockToEdit) != 0) {
        report(editor, "cannot lock", path, errno);
        file.reset();
        temporary->place.remove();
        return -1;
    }
    if (!copy_back(editor, path, file, *temporary)) {
        temporary->place.remove();
        temporary->place.pinned.reset(); // now there is room
        put_back(file, old);
        return -1;
    }
    const bool synced = sync_data(file.get()) == 0;
    const int error = errno;
    const bool closed = ::close(file.release()) == 0;
    if (!synced || !closed) {
        report(editor, "write error", temporary->path, synced ? errno : error);
        return -1; // the temporary file may be the only whole copy
    }
    temporary->place.remove();
    return 0;
}

} // namespace

int conf_modify(const char* configfile, const char* sec, const char* key, const char* value,
                FileKind kind) {
    std::optional<Target> target = open_locked(Modify, configfile, kind);
    const auto text = target ? read_target(Modify, *target) : std::nullopt;
    return text ? rewrite(Modify, std::move(*target), *text, modified(*text, sec, key, value)) : -1;
}

int conf_delete(const char* configfile, const char* sec, const char* key) {
    std::optional<Target> target = open_locked(Delete, configfile, FileKind::Any);
    const auto text = target ? read_target(Delete, *target) : std::nullopt;
    const std::optional<Edit> edit = text ? deleted(*text, sec, key) : std::nullopt;
    if (text && !edit) {
        std::fprintf(stderr, "No such entry [%s] %s\n", sec, key);
    }
    return edit ? rewrite(Delete, std::move(*target), *text, *edit) : -1;
}

} // namespace ov
