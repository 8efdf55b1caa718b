// The settings that logging and the system services obey. They are defined with all others in
// conf/settings.cpp; these declarations keep this folder free of the rest of the settings.
#pragma once

#include "util/text.h"

#include <sys/types.h>

namespace ov {

extern unsigned LogFacility;          // which events are logged, one bit each
extern int LogLevel;                  // how much is logged; 0 is least
extern unsigned SystemLogOption;      // bit 0x10000: milliseconds in the time stamps
extern int LogPerm;                   // mode of a new log file
extern uid_t Log_uid;                 // owner of the log file
extern gid_t Log_gid;                 // and its group
extern Text LogDirectory;             // where the daily log is kept
extern unsigned long AlternateHostID; // host identifier to use instead of the system's; 0: none
extern unsigned DBG_NoCore;           // non-zero: no core files

} // namespace ov
