// The rules of the rows in words.
#pragma once

#include "settings/catalogue.h"

#include <string>

namespace ov {

// What a rule says of a value: the kind, and beside it what is special about this key.
struct ValueText {
    std::string kind;
    std::string details;
};

// What is loaded, what -c accepts, how -a shows it. The last two are empty for what cannot be
// checked, or shown.
ValueText accepted_text(const Row& row);
std::string checked_text(const Row& row);
std::string shown_text(const Row& row);

// The texts of a kind and its details as one sentence without a full stop.
std::string sentence(const ValueText& text);

} // namespace ov
