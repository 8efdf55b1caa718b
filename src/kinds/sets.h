// The sets of keywords and of MIME types, a file each in the directory of their sort.
#pragma once

#include <string_view>

namespace ov {

// Whether the set of that name (letters, digits and "_") can be read: 1 or 0.
int isvalid_keywd(std::string_view name);
int isvalid_mtype(std::string_view name);

} // namespace ov
