// What a row of the catalogue, or of the rights, is made of. It holds numbers and offsets, no
// pointers: the tables are read as they lie in the executable, wherever that has been loaded to.
#pragma once

#include "kinds/rule.h"

#include <cstdint>
#include <variant>

namespace ov {

// When a row is read.
struct Gate {
    std::uint8_t readers = MainReader;
    std::uint8_t program = 0; // the submission program that must have been chosen; 0: any
    std::uint16_t any = 0;    // bits of the load mask, one of which must be set; 0: always
    std::uint16_t unless = 0; // bits that must not be set
};

// Where the setting of a key is.
using Member = std::variant<int Settings::*, unsigned Settings::*, long Settings::*,
                            unsigned long Settings::*, Text Settings::*, WordList Settings::*,
                            IpList Settings::*, AddressList Settings::*, ServerList Settings::*>;
// And where that of a right is, which each role has.
using RightMember = std::variant<PerRole<int> Settings::*, PerRole<unsigned> Settings::*,
                                 PerRole<Text> Settings::*, PerRole<WordList> Settings::*>;

// The numbers of the kind, the check and the form of a row, each with the manner of the row.
enum class KindNumber : std::uint8_t {};
enum class CheckNumber : std::uint8_t {};
enum class FormNumber : std::uint8_t {};
inline constexpr CheckNumber NotChecked{0}; // the row cannot be checked, or changed: NoCheck
inline constexpr FormNumber NotShown{0};    // it cannot be shown: NoForm

// What a check says of the empty value, whatever its kind says.
enum class Empty : std::uint8_t { AsTheKind, Accepted, Refused };

// What every row has.
struct Columns {
    std::uint16_t name; // see key_of
    KindNumber load;
    CheckNumber check;
    FormNumber show;
    Empty empty; // for the check
};

// One key of the main file.
struct Row : Columns {
    std::uint8_t section;
    Gate gate;
    Member member;
};

// The rights, in the order of their rows.
enum class Right : std::uint8_t {
#define RIGHT(key, ...) key,
#include "catalogue/rights.def"
};

// How a right is answered when it is asked for alone.
enum class RightQuery : std::uint8_t {
    None,
    Alone,      // in its form
    Named,      // as it is listed: with its key in front
    WithSet,    // in its form, and whether the user may choose the set
    Lines,      // its names, a line each
    Selectable, // the groups that the user may select
};

struct RightRow : Columns {
    RightQuery query;
    RightMember member;
};

// The sections that rights stand in. What ExcludeGroup was called once is still read.
inline constexpr const char* AdminSection = "Admin";
inline constexpr const char* ManagerSection = "Manager";
inline constexpr const char* OldExcludeGroup = "RejectGroup";

} // namespace ov
