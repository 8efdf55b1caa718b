// The six administration roles.
//
// A role has a directory, and a user of the role a rights file "<user>.conf" in it, in the format
// of the main configuration file and with one section. What a file does not set keeps the default
// of the role.
#pragma once

#include "kinds/types.h"

#include <array>
#include <string>
#include <string_view>

namespace ov {

// A role: the command that serves it, whether it is of the search side, the directory of its rights
// files, and the section in them.
struct Role {
    const char* command;
    bool is_search;
    SettingOf<Text> directory;
    const char* section;
};
// By rank.
extern const std::array<Role, Roles> AllRoles;

// Whether a user may have that name: it becomes part of a path.
bool isvalid_username(std::string_view name);

// The rights file of a user of the role `rank`, and, when `section` is given, the section that all
// of it stands in. Returns 0, or -1 for no user, and, after a line in the log, for no such role.
int access_cffile(int rank, const char* user, std::string& path, std::string* section);

} // namespace ov
