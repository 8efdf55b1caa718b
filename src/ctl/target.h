// The file that is replaced as a whole, so that every reader sees its old text or its new one.
//
// Between open_target and the end of the target nobody else changes the file who keeps to the
// rules: the lock file keeps out those who use it, and a lock on the file itself ov_conf.
#pragma once

#include "ctl/lock_file.h"
#include "util/place.h"

#include <optional>
#include <string>
#include <sys/stat.h>

namespace ov::ctl {

// What is wanted of a file.
struct Wish {
    std::string path = {};
    FileKind kind = FileKind::Any;        // Installed: a rights file; links are looked at
    std::optional<std::string> lock = {}; // the lock file; none: the caller of the command holds it
    std::string main = {};     // the main file, whose group a new lock file gets; empty: path
    int wait = LongWait;       // seconds, for all locks; 0: do not wait
    bool create = false;       // replace makes a file that is missing
    bool may_be_empty = false; // a main file without a text is none that was left in pieces
    bool only_look = false;    // nothing will be written: what may be read is enough
    bool interrupted = false;  // what an interrupted write has left is wanted, too
};

// A file that is locked and has been read.
struct Target {
    std::string path;
    FileKind kind = FileKind::Any;
    bool exists = false;
    std::string text = {};

    Held lock = {};
    Place place = {};      // where the file is, behind links
    Fd file = Fd();        // locked; none: it is missing
    struct stat read = {}; // as the file was when it was read
};

struct Opened {
    std::optional<Target> target = {};
    std::string error = {}; // a sentence that names the file, or the lock file
    bool is_locked = false; // somebody else holds one of the locks
};
// Locks the file and reads it. Refused are a file that is no regular one, that cannot be written,
// has 64 MiB or more, stays locked, is missing (unless `create`), has been left in pieces by an
// interrupted write (unless `interrupted`), or is a hard link in a directory where others may
// write, who may have linked what they cannot write. Who only looks shares the lock file, does not
// make it, and does not lock the file itself.
Opened open_target(const Wish& wish);

} // namespace ov::ctl
