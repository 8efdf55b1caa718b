// The rights file that --rights names.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace ov::ctl {

// Whose rights are meant.
struct RightsOf {
    int rank = 0;
    std::string user;
};
// Those of "ROLE:USER"; nothing when it is no such text: see WrongRights.
std::optional<RightsOf> rights_of(const std::string& text);
// Those of "ROLE", for all its users: the user is empty.
std::optional<RightsOf> role_of(const std::string& text);
inline constexpr const char* WrongRights =
    "--rights takes ROLE:USER, and ROLE is admin, manager, sysadm, "
    "search_admin, search_manager or search_sysadm";

// The path of the user's file, below the directories in force, and the section that it has.
struct RightsFile {
    std::string path;
    std::string section;
};
RightsFile rights_file(const RightsOf& rights);

// The users of the role who have a rights file, sorted. Nothing, with errno set, when the directory
// cannot be read.
std::optional<std::vector<std::string>> users_of(int rank);

} // namespace ov::ctl
