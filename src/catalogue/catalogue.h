// The rows of the catalogue and of the rights as the programs see them.
#pragma once

#include "catalogue/columns.h"
#include "conf/key_index.h"

#include <span>
#include <string_view>

namespace ov {

// The kind, the check and the form of a row, each with the manner in which the row wants it.
const Kind& kind_of(KindNumber number);
const Check& check_of(CheckNumber number);
const Form& form_of(FormNumber number);
const Manner& manner_of(KindNumber number);
const Manner& manner_of(CheckNumber number);
const Manner& manner_of(FormNumber number);

// The names of a row as they are written in a file, and the setting that its key fills.
const char* key_of(const Columns& row);
const char* section_of(const Row& row);
Variable variable_of(const Row& row);

// All rows, in reading order.
std::span<const Row> catalogue();
// The row of a key, in any case; null when there is none.
const Row* find_row(std::string_view section, std::string_view key);

// Whether it is the submission program that has been chosen.
bool is_chosen(int program);

// The row of a right, and its setting for the role `rank`.
const RightRow& row_of(Right right);
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

// All rights, in the order in which they are read.
std::span<const RightRow> rights();
// The row of a right's key, in any case; null when there is none.
const RightRow* find_right(std::string_view key);

// All keys by their names: those of the rows by the number of the row, and those of the rights.
const KeyIndex& key_index();
std::size_t number_of(const Row& row);
// `section` is AdminSection or ManagerSection.
std::size_t number_of(Right right, std::string_view section);
std::size_t number_of_old_exclude_group(std::string_view section);

} // namespace ov
