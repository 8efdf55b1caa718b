// The rows of the catalogue and of the rights as the programs see them.
//
// A row holds numbers and offsets, no pointers: the tables are read as they lie in the executable,
// wherever that has been loaded to.
#pragma once

#include "catalogue/rule.h"
#include "conf/key_index.h"

#include <cstdint>
#include <span>
#include <string_view>
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
using Member = std::variant<std::monostate, int Settings::*, unsigned Settings::*, long Settings::*,
                            unsigned long Settings::*, Text Settings::*, WordList Settings::*,
                            IpList Settings::*, AddressList Settings::*, ServerList Settings::*>;
// And where that of a right is, which each role has.
using RightMember = std::variant<PerRole<int> Settings::*, PerRole<unsigned> Settings::*,
                                 PerRole<Text> Settings::*, PerRole<WordList> Settings::*>;

// The kind of a column and its manner, by the number that both have.
enum class RuleNumber : std::uint8_t {};
inline constexpr RuleNumber NoRule{0}; // the row has nothing in that column
// Neither is to be asked for NoRule.
const Kind& kind_of(RuleNumber number);
const Manner& manner_of(RuleNumber number);

// What a check says of the empty value, whatever its kind says.
enum class Empty : std::uint8_t { AsTheKind, Accepted, Refused };

// What every row has.
struct Columns {
    std::uint16_t name; // see key_of
    RuleNumber load;
    RuleNumber check; // NoRule: it cannot be checked, or changed
    RuleNumber show;  // NoRule: it cannot be shown
    Empty empty;      // for the check
};
const char* key_of(const Columns& row);

// One key of the main file, or a step when it has no member.
struct Row : Columns {
    std::uint8_t section;
    Gate gate;
    Member member;
};
bool is_step(const Row& row);
const char* section_of(const Row& row); // null for a step
Variable variable_of(const Row& row);   // a null pointer for a step

// All rows, in reading order.
std::span<const Row> catalogue();
// The row of a key, in any case; null when there is none.
const Row* find_row(std::string_view section, std::string_view key);

// The rights, in the order of their rows.
enum class Right : std::uint8_t {
#define RIGHT(key, ...) key,
#include "catalogue/rights.def"
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

struct RightRow : Columns {
    RightQuery query;
    RightMember member;
};

// The setting of a right for the role `rank`.
Variable variable_of(const RightRow& row, int rank);

// All rights, in the order in which they are read.
std::span<const RightRow> rights();
const RightRow& row_of(Right right);
// The row of a right's key, in any case; null when there is none.
const RightRow* find_right(std::string_view key);

// The sections that rights stand in. What ExcludeGroup was called once is still read.
inline constexpr const char* AdminSection = "Admin";
inline constexpr const char* ManagerSection = "Manager";
inline constexpr const char* OldExcludeGroup = "RejectGroup";

// All keys by their names: those of the rows by the number of the row, and those of the rights.
const KeyIndex& key_index();
std::size_t number_of(const Row& row);
// `section` is one of the two above.
std::size_t number_of(Right right, std::string_view section);
std::size_t number_of_old_exclude_group(std::string_view section);

} // namespace ov
