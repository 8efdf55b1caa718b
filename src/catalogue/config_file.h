// The main configuration file, for those who need no other setting.
#pragma once

#include "util/text.h"

namespace ov {

// Its path; the option -f names another than the default.
extern Text& ConfigFile;

} // namespace ov
