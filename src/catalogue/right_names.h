// The rights by their names, for those who need single ones.
#pragma once

#include "catalogue/rights.h"

namespace ov {

enum class Right : std::uint8_t {
#define RIGHT(key, ...) key,
#include "catalogue/rights.def"
};

} // namespace ov
