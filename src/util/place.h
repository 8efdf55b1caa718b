// Where files are, and how they are opened.
//
// The folders of the installation belong to the gateway's user, and others may write there; the
// super-user works in them all the same. A link that somebody has left there is followed only when
// it leads to nothing that its owner could not change himself: its owner must be the super-user,
// the caller, or the owner of what it leads to. That holds for every link on the way from "/" on,
// of which there may be 40. Where one is not followed, opening has failed (ELOOP).
#pragma once

#include "util/handle.h"

#include <optional>
#include <string>
#include <sys/types.h>

namespace ov {

// Which files are wanted, and whose word their path is.
enum class FileKind {
    Any,       // what the caller of the command has named: links are followed, pipes waited for
    Installed, // regular ones below the installation, where links have to be looked at; any other
               // is not waited for, and cannot be opened (EINVAL)
};

// Opens what has the name `name` in `directory`, and waits neither for the other end of a pipe nor
// for a process that has leased the file.
Fd open_unwaited(int directory, const char* name, int flags, mode_t mode = 0);

// The directory of the file `path` below the installation, for the calls that take a name in a
// directory; an empty guard, with errno set, when it cannot be had. Allocates nothing.
Fd open_directory_of(const char* path);
// What stands behind the last "/" of a path: the file's name in that directory.
const char* last_name(const char* path);

// A name in a directory.
struct Place {
    Fd directory = Fd(); // none: the name is a path, as the caller of the command has written it
    std::string name;
    Fd pinned = Fd(); // the only file that is opened; none: any
    int links = 0;    // that were followed on the way

    // The place that `path` names.
    static std::optional<Place> of(const char* path, FileKind kind);
    // Where the file is: elsewhere when there is a link at the place. That file is pinned then.
    // Nothing, with errno set, when there is no file, or a link may not be followed.
    std::optional<Place> of_file() const;

    // The directory as an argument of system calls.
    int at() const;
    // Opens the file. Below the installation a link that stands there by now is not followed
    // (ELOOP). Another file than the pinned one is not opened (ESTALE). It waits a minute for a
    // process that has leased the file, and not for the other end of a pipe.
    Fd open(int flags) const;
    // The same without waiting for a lease (EWOULDBLOCK).
    Fd open_at_once(int flags) const;
    // Makes the file, which must not be there, and opens it.
    Fd create(int flags, mode_t mode) const;
    int remove() const;
};

// Opens the file `path` that is there; an empty guard, with errno set, when it cannot be opened.
Fd open_file(const char* path, int flags, FileKind kind = FileKind::Any);
Fd open_file(const Place& place, int flags, FileKind kind);

// Makes a new file that only its owner may read, and opens it for reading and writing. The six "X"
// at the end of the place's name become letters that are not in use; without them: EINVAL.
Fd make_temporary(Place& place);

// Another descriptor of the file: while it is open, no other file can be taken for it.
Fd pin(const Fd& file);

} // namespace ov
