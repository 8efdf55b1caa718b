// The system's log of who has changed what.
#pragma once

#include "ctl/json.h"

#include <string>
#include <vector>

namespace ov::ctl {

// Logs the changes of a file (syslog, facility authpriv): by whom, which file, and each entry with
// its values, of which secret ones are masked. More than fits a line goes on in further ones, each
// of which says by whom and which file.
void audit(const std::string& file, const std::vector<Difference>& changed);

// The same for anything else that has been done to it.
void audit(const std::string& file, const std::string& what);

} // namespace ov::ctl
