// The rights of the users of the administration roles, as the programs see their rows.
#pragma once

#include "catalogue/columns.h"

#include <span>
#include <string_view>
#include <variant>

namespace ov {

// The rights, in the order of their rows; right_names.h names them.
enum class Right : std::uint8_t;

// Where the setting of a right is, which each role has.
using RightMember = std::variant<PerRole<int> Settings::*, PerRole<unsigned> Settings::*,
                                 PerRole<Text> Settings::*, PerRole<WordList> Settings::*>;

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

// All rights, in the order in which they are read.
std::span<const RightRow> rights();
// Those that the listing of a user has, in its order.
std::span<const Right> listed_rights();
const RightRow& row_of(Right right);
// The row of a right's key, in any case; null when there is none.
const RightRow* find_right(std::string_view key);

// The setting of a right for the role `rank`.
Variable variable_of(const RightRow& row, int rank);
// The same setting, which has to be of the type.
template <class Type>
Type& setting_of(Right right, int rank) {
    const Variable setting = variable_of(row_of(right), rank);
    if constexpr (std::is_integral_v<Type>) {
        return *std::get<Type*>(std::get<Number>(setting));
    } else {
        return *std::get<Type*>(setting);
    }
}

// The numbers of a right's keys in key_index; `section` is AdminSection or ManagerSection.
std::size_t number_of(Right right, std::string_view section);
std::size_t number_of_old_exclude_group(std::string_view section);

} // namespace ov
