// What a change would make of a file.
#pragma once

#include "ctl/document.h"
#include "ctl/json.h"
#include "ctl/request.h"

#include <optional>
#include <string>
#include <vector>

namespace ov::ctl {

// The text that a file would have, and what that means.
struct Plan {
    std::string text;                     // the old one when nothing is to change
    std::vector<Difference> changed = {}; // section by section
    std::vector<Finding> errors = {};     // that keep it from being made
    std::vector<Finding> warnings = {};   // what was wrong before, and what is likely wrong
};

// Plans what is asked for. The file is a main file or, with `whose`, a rights file that belongs to
// `main`. An error counts when the file has none of its section and key yet, or when they are
// asked for; the others are warnings, so that a file that does not load can be mended step by step.
// What means the same as before stays as it is. Sets all settings.
Plan planned(const Document& file, const std::vector<Asked>& asked,
             const std::optional<RightsOf>& whose = std::nullopt,
             const std::optional<Document>& main = std::nullopt);

} // namespace ov::ctl
