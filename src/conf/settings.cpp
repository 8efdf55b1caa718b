#include "conf/settings.h"

#include "util/util_settings.h" // the compiler holds these declarations against the rows

namespace ov {

constinit Text ConfigFile = "/etc/Tessary.conf";

#define SETTING(section, key, variable, type, ...) constinit type variable = __VA_ARGS__;
#include "conf/catalogue.def"
#undef SETTING

} // namespace ov
