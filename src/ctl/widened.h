// What else goes with the changes that are asked for, by what stands in the file.
#pragma once

#include "ctl/request.h"

#include <string>
#include <vector>

namespace ov::ctl {

// Asks for the deletion of all other keys in the sections of the keys that are asked for.
void add_others(std::vector<Asked>& asked, const std::string& text, const KnownKeys& known);

// Asks for the deletion of a whole section in the place of keys when it has no entry left then, or
// has none already.
void widen_to_sections(std::vector<Asked>& asked, const std::string& text);

} // namespace ov::ctl
