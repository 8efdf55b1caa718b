// The rules of the rows in words.
#pragma once

#include "catalogue/catalogue.h"
#include "catalogue/rights.h"

#include <map>
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

// The values that the completion offers for the key, to be loaded and to be checked; without any:
// empty.
std::string offered_text(const Row& row);
std::string offered_check_text(const Row& row);

// What the kinds are, by their names, for all kinds that a row of the catalogue loads, or one of
// the rights. One with two meanings throws.
using Meanings = std::map<std::string, std::string>;
Meanings meanings();
Meanings meanings_of_rights();

// The same of a right: what is read, and what it can be changed to ("no": it cannot).
ValueText accepted_text(const RightRow& right);
std::string changed_text(const RightRow& right);

// The texts of a kind and its details as one sentence without a full stop.
std::string sentence(const ValueText& text);

} // namespace ov
