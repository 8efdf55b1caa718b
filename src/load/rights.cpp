#include "load/rights.h"

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

std::span<const CombinedQuery> combined_queries() {
    using enum Right;
    static constexpr Right hold_list[] = {HoldList};
    static constexpr Right hold[] = {HoldList,   HoldReason,  HoldMessage, HoldApprove,
                                     HoldCancel, HoldForward, HoldAttach,  HoldFreeze};
    static constexpr Right hold_and_code[] = {HoldList,    HoldReason, HoldMessage,
                                              HoldApprove, HoldCancel, HoldForward,
                                              HoldAttach,  CheckPcode, HoldFreeze};
    static constexpr Right archive[] = {ArchiveList,     ArchiveMessage, ArchiveBackup,
                                        ArchiveRetrieve, ArchiveAttach,  CSVDownload};
    static constexpr Right statistics[] = {ViewStatistics, CSVDownload};
    static constexpr Right screening_log[] = {ViewScreeningLog, ArchiveMessage, CSVDownload};
    static constexpr Right manager_log[] = {ViewManagerLog, ArchiveMessage, CSVDownload};
    static constexpr Right viewer_log[] = {ViewViewerLog, ArchiveMessage, CSVDownload};
    static constexpr CombinedQuery queries[] = {
        {"Hold", hold, false},
        {"Hold+", hold_and_code, false},
        {"HoldList+", hold_list, true},
        {"Archive", archive, false},
        {"ViewStatistics+", statistics, false},
        {"ViewScreeningLog+", screening_log, false},
        {"ViewManagerLog+", manager_log, false},
        {"ViewViewerLog+", viewer_log, false},
    };
    return queries;
}

std::span<const Right> listed_rights() {
    static constexpr Right listed[] = {
#define LISTED(right) Right::right,
#include "catalogue/rights.def"
    };
    return listed;
}

bool can_freeze(int rank) {
    const auto role = static_cast<std::size_t>(rank);
    const unsigned option = CF_HoldFreeze[role] ? QueueFreeze_Option : CF_Freeze_Option[role];
    return (option & 0xffU) != 0;
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
