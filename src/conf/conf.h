// Loading of the whole configuration.
#pragma once

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

// The role number of callers that are in no role.
inline constexpr int NoRole = 10;

// Loads the settings of the groups in `mask` from `file`, then the auxiliary sections, and then
// those of the local supplement file, when there is one. Comes back only when all values are
// valid: at the first one that is not, and when the file cannot be opened, it says why on standard
// error and ends the process with status 1.
void read_config(const char* file, unsigned mask);

// read_config, and the start of logging with what has been loaded; then, for a `user` of the role
// `rank`, his rights.
void setconfig(const char* file, unsigned mask, int rank, const char* user);

// Releases the lists that the settings own. For the end of the process. Returns 0.
int conf_free();

} // namespace ov
