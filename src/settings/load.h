// What loading a configuration file takes, and what it comes to.
#pragma once

#include "conf/snapshot.h"
#include "settings/kind.h"

#include <string>
#include <vector>

namespace ov {

// The load mask: the groups of settings that a caller wants, and what is not to be looked at.
inline constexpr unsigned RC_RECEIVE = 0x0001;    // receiving and screening
inline constexpr unsigned RC_ARCHIVE = 0x0002;    // the archive: store, removal, backup
inline constexpr unsigned RC_TRANSFER = 0x0004;   // the transfer to the cooperating host
inline constexpr unsigned RC_MANAGE = 0x0010;     // the management of the queues, and notices
inline constexpr unsigned RC_EXTRACT = 0x0020;    // extraction of archives, details of screening
inline constexpr unsigned RC_BROWSE = 0x0040;     // browsing and searching
inline constexpr unsigned RC_NOCHECK = 0x1000;    // programs and queue directories need not exist
inline constexpr unsigned RC_NODIRCHECK = 0x2000; // directories need not exist; no [Files]
inline constexpr unsigned RC_LOCALPASS = 0x10000; // this is the local supplement file
inline constexpr unsigned RC_AUXONLY = 0x20000;   // the auxiliary sections only

// A value that loading has refused. The texts are those of the file's reader, and live on.
struct Refusal {
    Verdict verdict;
    Reader reader;
    const char* file;
    int line; // 0 for a value that does not stand in the file
    const char* section;
    const char* key; // null for a step
    std::string value;
    int error = 0; // of a file that cannot be opened
};

// Say on standard error what is wrong, and what loading has to say on the way.
void print_refusal(const Refusal& refusal);
void print_warning(const std::string& lines);

// A file that is being loaded.
struct Load {
    const char* file;
    unsigned mask;
    // Is told of warnings, and of what is wrong with a value, as they come up; null: nobody is.
    void (*tell)(const std::string& lines) = nullptr;
    std::vector<std::string> directories = {}; // that have been looked at and exist

    // Whether the directory exists; each is looked at once.
    bool knows_directory(const std::string& path);
    void say(const std::string& lines) const;
};

// Loads the rows of `reader` that are for callers with the load's mask, up to the first value that
// is refused.
std::optional<Refusal> load_rows(Load& load, const Snapshot& snapshot, Reader reader);

// Loads the rights in `section` into the settings of the role `rank`, likewise.
std::optional<Refusal> load_rights(Load& load, const Snapshot& snapshot, const char* section,
                                   int rank);

} // namespace ov
