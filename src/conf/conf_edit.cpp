#include "conf/conf_tool.h"
#include "util/handle.h"
#include "util/log.h"
#include "util/text.h"
#include "util/util.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <initializer_list>
#include <sys/stat.h>

namespace ov {

namespace {

constexpr int LockToEdit = LockExclusive | LockNoWait;
constexpr std::size_t BufferSize = 8192;
constexpr mode_t NewFileMode = 0644;

// The two editors follow one protocol; they differ in what they report.
struct Editor {
    const char* name;
    bool clears_umask;         // before the file is opened for the write-back
    bool logs_temporary_file;  // when that cannot be created
    bool tells_open_error;     // with the error number
    bool read_error_of_target; // a failed copy back blames the configuration file
};
constexpr Editor Modify{"conf_modify", true, false, true, true};
constexpr Editor Delete{"conf_delete", false, true, false, false};

std::string concat(std::initializer_list<std::string_view> pieces) {
    std::string text;
    for (const std::string_view piece : pieces) {
        text += piece;
    }
    return text;
}

// The edited text: what stays in front, the new lines, what stays behind.
struct Edit {
    std::string_view head;
    std::string insertion;
    std::string_view tail;
};

struct Range {
    std::size_t begin;
    std::size_t end;
};

// The line with the number `number`, counted from 1. The editor takes lines as they fit a buffer
// of 8192 bytes: a longer one counts as several. Behind the last line stands an empty one.
Range numbered_line(std::string_view text, int number) {
    Range line{0, 0};
    for (int n = 0; n < number; ++n) {
        line.begin = line.end;
        const std::string_view piece = text.substr(line.begin, BufferSize - 1);
        const std::size_t feed = piece.find('\n');
        line.end += feed == piece.npos ? piece.size() : feed + 1;
    }
    return line;
}

void report(const Editor& editor, const char* what, const std::string& object, int error) {
    syserr("%s: %s: %s (%d)", editor.name, what, object.c_str(), error);
    std::fprintf(stderr, "%s: %s\n", what, object.c_str());
}

// Opens the file for editing and locks it, without waiting for another editor.
Fd open_locked(const Editor& editor, const char* path) {
    Fd file(::open(path, O_RDWR | O_CLOEXEC));
    if (!file) {
        if (editor.tells_open_error) {
            std::fprintf(stderr, "cannot open: %s (%d)\n", path, errno);
        } else {
            std::fprintf(stderr, "cannot open: %s\n", path);
        }
        return file;
    }
    if (lockfile(file.get(), LockToEdit) != 0) {
        std::fprintf(stderr, "cannot lock: %s\n", path);
        file.reset();
    }
    return file;
}

// Reads the locked file. One that cannot be read to its end must not be written back.
std::optional<std::string> read_whole(const Editor& editor, const char* path, const Fd& file) {
    std::string text;
    struct stat info {};
    const bool regular = ::fstat(file.get(), &info) == 0 && S_ISREG(info.st_mode);
    if (regular) {
        text.reserve(static_cast<std::size_t>(info.st_size));
    }
    std::array<char, 8 * BufferSize> buffer;
    for (;;) {
        const ssize_t got = ::read(file.get(), buffer.data(), buffer.size());
        if (got == 0) {
            return text;
        }
        if (got > 0) {
            text.append(buffer.data(), static_cast<std::size_t>(got));
        }
        const bool endless = !regular && text.size() > LongestFileLine;
        if (endless || (got < 0 && errno != EINTR)) {
            report(editor, "read error", path, endless ? EFBIG : errno);
            return std::nullopt;
        }
    }
}

// Writes the edited text to a new file beside the configuration file. Returns that file's name,
// or nothing on failure.
std::optional<std::string> write_temporary(const Editor& editor, const char* path,
                                           const Edit& edit) {
    std::string name = concat({path, ".tmp.XXXXXX"});
    name.resize(std::min(name.size(), MaxPath)); // one that is cut is refused by mkstemp
    Fd file(::mkstemp(name.data()));
    if (!file) {
        if (editor.logs_temporary_file) {
            syserr("%s: cannot create tmp file: %s (%d)", editor.name, name.c_str(), errno);
        }
        std::fprintf(stderr, "cannot create tmp file: %s\n", name.c_str());
        return std::nullopt;
    }
    Stream stream(::fdopen(file.get(), "w"));
    if (!stream) {
        if (editor.logs_temporary_file) {
            syserr("%s: cannot open tmp file: %s (%d)\n", editor.name, name.c_str(), errno);
        }
        std::fprintf(stderr, "cannot open tmp file: %s\n", name.c_str());
        return std::nullopt;
    }
    file.release(); // the stream owns it now
    for (const std::string_view piece : {edit.head, std::string_view(edit.insertion), edit.tail}) {
        if (!piece.empty()) {
            std::fwrite(piece.data(), 1, piece.size(), stream.get());
        }
    }
    const bool written = std::ferror(stream.get()) == 0 && std::fflush(stream.get()) == 0;
    const bool closed = std::fclose(stream.release()) == 0;
    if (!written || !closed) {
        ::unlink(name.c_str());
        return std::nullopt;
    }
    return name;
}

// Copies the temporary file into the configuration file, which is open, empty and locked.
bool copy_back(const Editor& editor, const char* path, const Fd& file,
               const std::string& temporary) {
    const Fd source(::open(temporary.c_str(), O_RDONLY | O_CLOEXEC));
    if (!source) {
        report(editor, "cannot open", temporary, errno);
        return false;
    }
    std::array<char, BufferSize> buffer;
    for (;;) {
        const ssize_t got = ::read(source.get(), buffer.data(), buffer.size());
        if (got == 0) {
            return true;
        }
        if (got < 0) {
            if (editor.read_error_of_target) {
                syserr("%s: read error %s (%d)", editor.name, path, errno);
                std::fprintf(stderr, "read error: %s\n", path);
            } else {
                report(editor, "read error", temporary, errno);
            }
            return false;
        }
        errno = 0; // a short write sets none
        if (::write(file.get(), buffer.data(), static_cast<std::size_t>(got)) != got) {
            report(editor, "write error", temporary, errno);
            return false;
        }
    }
}

// Puts the edited text into the file `path`, which `file` holds open and locked.
int rewrite(const Editor& editor, const char* path, Fd file, const Edit& edit) {
    const std::optional<std::string> temporary = write_temporary(editor, path, edit);
    if (!temporary) {
        return -1;
    }
    file.reset(); // and with it the lock
    if (editor.clears_umask) {
        ::umask(0);
    }
    file.reset(::open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, NewFileMode));
    if (!file) {
        report(editor, "cannot open", path, errno);
        return -1; // the edited text is still in the temporary file
    }
    if (lockfile(file.get(), LockToEdit) != 0) {
        report(editor, "cannot lock", path, errno);
        file.reset();
        ::unlink(temporary->c_str());
        return -1;
    }
    const bool copied = copy_back(editor, path, file, *temporary);
    file.reset();
    ::unlink(temporary->c_str());
    return copied ? 0 : -1;
}

} // namespace

int conf_modify(const char* configfile, const char* sec, const char* key, const char* value) {
    Fd file = open_locked(Modify, configfile);
    if (!file) {
        return -1;
    }
    const std::optional<std::string> whole = read_whole(Modify, configfile, file);
    if (!whole) {
        return -1;
    }
    const std::string_view text = *whole;
    Source source(text);
    const std::string entry =
        concat({key, " = ", std::string_view(value).substr(0, MaxText), "\n"});
    Edit edit{text, concat({"[", sec, "]\n", entry}), {}};
    std::string old_value;
    if (conf_getprofile(source, sec, key, old_value, BufferSize) == 0) {
        const Range line = numbered_line(text, scan_linenumber);
        edit = {text.substr(0, line.begin), entry, text.substr(line.end)};
    } else if (get_sec(source, sec) == 0) {
        const Range header = numbered_line(text, scan_linenumber);
        edit = {text.substr(0, header.end), entry, text.substr(header.end)};
    }
    return rewrite(Modify, configfile, std::move(file), edit);
}

int conf_delete(const char* configfile, const char* sec, const char* key) {
    Fd file = open_locked(Delete, configfile);
    if (!file) {
        return -1;
    }
    const std::optional<std::string> whole = read_whole(Delete, configfile, file);
    if (!whole) {
        return -1;
    }
    const std::string_view text = *whole;
    Source source(text);
    std::string old_value;
    if (conf_getprofile(source, sec, key, old_value, BufferSize) != 0) {
        std::fprintf(stderr, "No such entry [%s] %s\n", sec, key);
        return -1;
    }
    const Range line = numbered_line(text, scan_linenumber);
    return rewrite(Delete, configfile, std::move(file),
                   Edit{text.substr(0, line.begin), {}, text.substr(line.end)});
}

} // namespace ov
