// What a row of the catalogue is made of. It holds numbers and offsets, no
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
using Member = std::variant<int Settings::*, unsigned Settings::*, std::int64_t Settings::*,
                            std::uint64_t Settings::*, Text Settings::*, WordList Settings::*,
                            IpList Settings::*, AddressList Settings::*, ServerList Settings::*>;
// Whether a rule names the setting that is there.
constexpr bool names(const Other& other, const Member& member) {
    return std::visit(
        [&member](auto named) {
            if constexpr (std::is_same_v<decltype(named), std::monostate>) {
                return false;
            } else {
                const auto* of_type = std::get_if<decltype(named)>(&member);
                return of_type && *of_type == named;
            }
        },
        other);
}

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
    bool secret; // the value is not shown unless it is asked for
};

// One key of the main file.
struct Row : Columns {
    std::uint8_t section;
    Gate gate;
    Member member;
};

} // namespace ov
