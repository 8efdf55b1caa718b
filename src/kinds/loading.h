// A file that is being loaded, and what its caller wants of it.
#pragma once

#include <string>
#include <string_view>
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
inline constexpr unsigned RC_NOTRIALS = 0x40000;  // no files are made to try something
inline constexpr unsigned RC_NOHOST = 0x80000;    // the host is not asked for its domain

inline void tell_nobody(const std::string&) {}

struct Load;
// Makes the directory `path`, in a directory that is there. Whether it has been made is looked at
// afterwards.
void make_directory(Load& load, const std::string& path);

// A file that is being loaded.
struct Load {
    const char* file;
    unsigned mask;
    // Is told of warnings, and of what is wrong with a value, as they come up.
    void (*tell)(const std::string& lines) = tell_nobody;
    // Is called for a missing directory that a key wants to be made.
    void (*make)(Load& load, const std::string& path) = make_directory;
    std::vector<std::string> directories = {}; // that have been looked at and exist
    std::vector<std::string> missing = {};     // and those that do not

    // Whether the directory exists; each is looked at once. What lies under one that is missing is
    // not looked at, and taken for granted.
    bool knows_directory(const std::string& path);
    bool lies_under_missing(std::string_view path) const;
};

} // namespace ov
