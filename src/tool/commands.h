// The commands behind the names under which the tool is started.
#pragma once

#include <array>

namespace ov {

// A role command: its name, the rank of its role, and whether it is of the search side.
struct RoleCommand {
    const char* name;
    int rank;
    int is_search;
};
inline constexpr std::array<RoleCommand, 6> RoleCommands{{
    {"ov_admconf", 0, 0},
    {"ov_mgrconf", 1, 0},
    {"ov_sysadmconf", 2, 0},
    {"srch_admconf", 3, 1},
    {"srch_mgrconf", 4, 1},
    {"srch_sysadmconf", 5, 1},
}};

// The system configuration command: works on the main configuration file. Ends the process.
[[noreturn]] void ov_conf(int argc, char** argv);

// The user configuration command of the role `rank` (0 to 5); `is_search` for the three roles of
// the search side.
void ov_usrconf(int argc, char** argv, int rank, int is_search);

// Releases the settings and ends the process with `status`.
[[noreturn]] void mss_exit(int status);

} // namespace ov
