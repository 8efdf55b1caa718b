// The directories of the installation, for those who load nothing else.
#pragma once

namespace ov {

// Establishes RootDirectory, TemplateDirectory and EtcDirectory from the configuration file. All
// three are absolute afterwards and end in "/"; an empty TemplateDirectory is unset. Returns 0
// when they exist, -1 otherwise; says only of an unopenable file why.
int setdir(const char* configfile);

} // namespace ov
