// The files of the sets that a user or a default can choose.
#pragma once

#include <string_view>

namespace ov {

// Whether a keyword set, or a MIME type set, of that name (letters, digits and "_") can be read.
int isvalid_keywd(std::string_view name);
int isvalid_mtype(std::string_view name);

} // namespace ov
