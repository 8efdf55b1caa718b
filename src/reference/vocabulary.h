// The rules of the catalogue's columns in words.
#pragma once

#include <string>
#include <vector>

namespace ov {

// What a rule says of a value: the kind, and beside it what is special about this key.
struct ValueText {
    std::string kind;
    std::string details;
};

// By the number of the row: what is loaded, what -c accepts, how -a shows it. The last two are
// empty for what cannot be checked, or shown.
std::vector<ValueText> accepted_texts();
std::vector<std::string> checked_texts();
std::vector<std::string> shown_texts();

} // namespace ov
