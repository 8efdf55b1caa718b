// The rows of the catalogue as the programs see them; rights.h has those of the rights.
#pragma once

#include "catalogue/columns.h"
#include "conf/key_index.h"

#include <optional>
#include <span>
#include <string>
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

// Whether the check of a row accepts `text` for the setting `variable`. A row without one accepts
// nothing.
bool accepts(const Columns& row, const Variable& variable, const std::string& text);
// The setting in the form of the row; nothing for a row without one, and a number without a word.
std::optional<std::string> shown(const Columns& row, const Variable& variable);

// All rows, in reading order.
std::span<const Row> catalogue();
// The row of a key, in any case; null when there is none.
const Row* find_row(std::string_view section, std::string_view key);

// Whether it is the submission program that has been chosen.
bool is_chosen(int program);

// All keys by their names: those of the rows by the number of the row, and those of the rights.
const KeyIndex& key_index();
std::size_t number_of(const Row& row);

} // namespace ov
