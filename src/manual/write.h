// The generated parts of the manual pages, the sample configuration, the completion and the list of
// keys.
#pragma once

#include <string>
#include <string_view>

namespace ov {

// The text that stands for a line "@NAME@" of a template. An unknown name throws. The names are
// those of the table behind the texts in write.cpp.
std::string generated(std::string_view name);

} // namespace ov
