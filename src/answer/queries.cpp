#include "answer/queries.h"

#include "catalogue/right_names.h"
#include "catalogue/settings.h"

namespace ov {

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

bool can_freeze(int rank) {
    const auto role = static_cast<std::size_t>(rank);
    const unsigned option = CF_HoldFreeze[role] ? QueueFreeze_Option : CF_Freeze_Option[role];
    return (option & 0xffU) != 0;
}

} // namespace ov
