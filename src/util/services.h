// What logging and the system services are told by whoever has loaded the settings.
#pragma once

#include "util/text.h"

#include <cstdint>
#include <sys/types.h>

namespace ov {

struct ServiceSettings {
    unsigned facility = 0;               // which events are logged, one bit each
    int level = 0;                       // how much is logged; 0 is least
    unsigned log_option = 0;             // bit 0x10000: milliseconds in the time stamps
    int log_mode = 0666;                 // of a new log file
    uid_t log_owner = 0;                 // of the log file
    gid_t log_group = 0;                 // likewise
    Text log_directory;                  // where the daily log is kept
    std::uint64_t alternate_host_id = 0; // to use instead of the system's; 0: none
    bool no_core = true;                 // core files are forbidden
};
inline constinit ServiceSettings services;

} // namespace ov
