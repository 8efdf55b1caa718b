// The commands behind the names under which the tool is started.
#pragma once

namespace ov {

// The system configuration command: works on the main configuration file. Ends the process.
[[noreturn]] void ov_conf(int argc, char** argv);

// The user configuration command of the role `rank` (0 to 5); `is_search` for the three roles of
// the search side.
void ov_usrconf(int argc, char** argv, int rank, int is_search);

// Releases the settings and ends the process with `status`.
[[noreturn]] void mss_exit(int status);

} // namespace ov
