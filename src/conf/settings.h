// The settings: one variable for each key of the main configuration file, holding the key's
// default until the file gives another value.
#pragma once

#include "util/text.h"

#include <sys/types.h>

namespace ov {

// The main configuration file; the option -f names another.
extern Text ConfigFile;

#define SETTING(section, key, variable, type, ...) extern type variable;
#include "conf/catalogue.def"
#undef SETTING

} // namespace ov
