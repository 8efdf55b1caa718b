// The rights of the users of the six administration roles.
//
// A role has a directory, and a user of the role a rights file "<user>.conf" in it, in the format
// of the main configuration file and with one section. What a file does not set keeps the default
// of the role. Roles 0 to 2 are administrator, manager and system administrator of the screening
// side, roles 3 to 5 the same of the search side.
#pragma once

#include "conf/settings.h"
#include "conf/snapshot.h"

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>

namespace ov {

inline constexpr int Roles = 6;
template <class Type>
using PerRole = std::array<Type, Roles>;

#define RIGHT(key, setting, type, rule, defaults, query, change) extern PerRole<type> setting;
#include "conf/rights.def"
#undef RIGHT

// The rights, in the order of their rows.
enum class Right : std::uint8_t {
#define RIGHT(key, setting, type, rule, defaults, query, change) key,
#include "conf/rights.def"
#undef RIGHT
};

// How the value of a right is read.
enum class RightRule : std::uint8_t {
    Boolean,
    Number,    // with base prefixes
    String,    // any text
    List,      // names separated by ":"
    Date,      // "2008/02/31"; empty: none
    Selection, // a word of the table of address selections
    Limit,     // 0 to 9999; empty: the default
};

// How a right is answered when it is asked for alone.
enum class RightQuery : std::uint8_t {
    None,
    Flag,        // 1 or 0
    NamedMask,   // with its key, as eight hexadecimal digits
    NamedText,   // with its key
    Level,       // its two lowest bits
    LevelAndSet, // these, and whether the user may choose the set
    Names,       // a line each
    Selectable,  // the groups that the user may select
    Selection,   // the word
};

// Which values a right can be given from the command line.
enum class RightChange : std::uint8_t { Fixed, Boolean, Digits, Anything };

using RightSetting =
    std::variant<PerRole<int>*, PerRole<unsigned>*, PerRole<Text>*, PerRole<WordList>*>;

struct RightRow {
    const char* key;
    RightSetting setting;
    RightRule rule;
    RightQuery query;
    RightChange change;
};

// All rights, in the order in which they are read.
std::span<const RightRow> rights();
const RightRow& row_of(Right right);
// The row of a key, in any case; null when there is none.
const RightRow* find_right(std::string_view key);

// A query for several rights at once: they are answered one after the other.
struct CombinedQuery {
    const char* name;
    std::span<const Right> rights;
    bool tells_freezing; // and then whether freezing messages is switched on for the user
};
std::span<const CombinedQuery> combined_queries();

// The setting that holds the directory of a role's rights files.
const Text& role_directory(int rank);

// The rights file of a user of the role `rank`, and, when `section` is given, the section that all
// of it stands in. Returns 0, or -1 for no user, and, after a line in the log, for no such role.
int access_cffile(int rank, const char* user, std::string& path, std::string* section);

// Reads the rights in `section` of the file `path` into the settings of the role `rank`. A file
// that is missing, or, after a line in the log, cannot be opened or is no regular file, leaves the
// defaults. An invalid value ends the process with status 1, after a message.
void read_config_user(const char* path, const char* section, int rank);

// The same from a file that has been scanned.
void read_rights(const Snapshot& snapshot, const char* path, const char* section, int rank);

// Whether `text` is a date like "2008/02/31": month 1 to 12, day 1 to 31. Returns 0 and gives the
// fields, or -1. A field that is not asked for (null) is not checked against its range either.
int date_str(const char* text, int* year, int* month, int* day);

} // namespace ov
