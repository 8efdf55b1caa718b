// What every command begins with, for those who need no setting by its name.
#pragma once

#include "util/text.h"

namespace ov {

// The main configuration file; the option -f names another.
extern Text& ConfigFile;

// Sets all settings to their defaults, and those of logging, the system services and the groups.
void reset_settings();

} // namespace ov
