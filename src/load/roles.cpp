#include "load/roles.h"

#include "catalogue/rights.h"
#include "catalogue/settings.h"
#include "util/log.h"

#include <algorithm>

namespace ov {

constexpr std::array<Role, Roles> AllRoles{{
    {"ov_admconf", false, &Settings::Admin_Dir, AdminSection},
    {"ov_mgrconf", false, &Settings::Manager_Dir, ManagerSection},
    {"ov_sysadmconf", false, &Settings::Sysadm_Dir, AdminSection},
    {"srch_admconf", true, &Settings::SRCH_Admin_Dir, AdminSection},
    {"srch_mgrconf", true, &Settings::SRCH_Manager_Dir, ManagerSection},
    {"srch_sysadmconf", true, &Settings::SRCH_Sysadm_Dir, AdminSection},
}};

bool isvalid_username(std::string_view name) {
    const auto may_end = [](char c) { return c != '-' && c != '.'; };
    return !name.empty() && may_end(name.front()) && may_end(name.back()) &&
           std::all_of(name.begin(), name.end(), is_name_character);
}

int access_cffile(int rank, const char* user, std::string& path, std::string* section) {
    if (!user) {
        return -1;
    }
    if (rank < 0 || rank >= Roles) {
        syserr("CONF: invalid user: rank=%d user=%s", rank, user);
        return -1;
    }
    const Role& role = AllRoles[static_cast<std::size_t>(rank)];
    path = (settings.*role.directory).view();
    path += '/';
    path += user;
    path += ".conf";
    path.resize(std::min(path.size(), MaxPath));
    if (section) {
        *section = role.section;
    }
    return 0;
}

} // namespace ov
