// How a configuration file has the number in a setting, for the manual and the sample.
#pragma once

#include "kinds/rule.h"

#include <string>

namespace ov::kinds {

// As the kind reads it: a word, a size with a unit, yes or no; in digits unless it knows better.
std::string written(const Kind& kind, const Value& value);

} // namespace ov::kinds
