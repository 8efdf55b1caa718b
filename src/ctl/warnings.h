// What is likely wrong with the text of a configuration, though it loads.
#pragma once

#include "ctl/survey.h"

#include <vector>

namespace ov::ctl {

// The warnings of a document, and then those of its supplement. The settings are those of the
// survey.
std::vector<Finding> warnings(const Document& document, const Survey& survey);

} // namespace ov::ctl
