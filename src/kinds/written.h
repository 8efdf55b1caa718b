// How a configuration file has what is in a setting.
#pragma once

#include "kinds/rule.h"

#include <optional>
#include <string>
#include <vector>

namespace ov::kinds {

// The text that the kind reads as the setting of `value`: a word, a size with a unit, yes or no,
// digits, a list with the separator of the load, which stands alone when the list is empty but set.
// Nothing when the setting is not set.
std::optional<std::string> written(const Kind& kind, const Value& value);

// The items of a list; nothing when it is not set, or the setting is no list.
std::optional<std::vector<std::string>> items_of(const Variable& variable);

// A list as a text: its items with the separator of the load between them, or that alone.
char separator_of(const Manner& manner);
std::string joined_items(const std::vector<std::string>& items, char separator);

// The unit in which a size is held; NUL for a kind that is none.
char unit_held(const Kind& kind);

// Whether the kind is that of a number that says yes or no.
bool is_yes_or_no(const Kind& kind);

} // namespace ov::kinds
