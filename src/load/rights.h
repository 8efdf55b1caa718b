// The rights of the users of the six administration roles.
//
// A role has a directory, and a user of the role a rights file "<user>.conf" in it, in the format
// of the main configuration file and with one section. What a file does not set keeps the default
// of the role.
#pragma once

#include "catalogue/catalogue.h"

#include <array>
#include <span>
#include <string>

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
inline constexpr std::array<Role, Roles> AllRoles{{
    {"ov_admconf", false, &Settings::Admin_Dir, AdminSection},
    {"ov_mgrconf", false, &Settings::Manager_Dir, ManagerSection},
    {"ov_sysadmconf", false, &Settings::Sysadm_Dir, AdminSection},
    {"srch_admconf", true, &Settings::SRCH_Admin_Dir, AdminSection},
    {"srch_mgrconf", true, &Settings::SRCH_Manager_Dir, ManagerSection},
    {"srch_sysadmconf", true, &Settings::SRCH_Sysadm_Dir, AdminSection},
}};

// A query for several rights at once: they are answered one after the other.
struct CombinedQuery {
    const char* name;
    std::span<const Right> rights;
    bool tells_freezing; // and then whether freezing messages is switched on for the user
};
std::span<const CombinedQuery> combined_queries();

// How a right is listed, behind its key.
enum class ListedAs : std::uint8_t {
    Number,    // in decimal digits
    Word,      // of its table
    Mask,      // as eight hexadecimal digits
    Level,     // its two lowest bits, and whether the user may choose the set
    PlainText, // as it is
    Date,      // like 2008/02/31
    Names,     // with ":" between them
};
struct ListedRight {
    Right right;
    ListedAs form;
};
// The rights that the listing of a user has, in its order.
std::span<const ListedRight> listed_rights();

// The rights file of a user of the role `rank`, and, when `section` is given, the section that all
// of it stands in. Returns 0, or -1 for no user, and, after a line in the log, for no such role.
int access_cffile(int rank, const char* user, std::string& path, std::string* section);

} // namespace ov
