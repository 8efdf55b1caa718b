#include "settings/rights.h"

#include "settings/conf.h"
#include "util/log.h"

#include <algorithm>
#include <cerrno>

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

namespace {

constexpr ListedRight listed[] = {
#define LISTED(right, form) {Right::right, ListedAs::form},
#include "settings/rights.def"
};
constexpr Right listed_or_left_out[] = {
#define LISTED(right, form) Right::right,
#define UNLISTED(right) Right::right,
#include "settings/rights.def"
};
#define RIGHT(key, ...)                                                                            \
    static_assert(                                                                                 \
        std::count(std::begin(listed_or_left_out), std::end(listed_or_left_out), Right::key) == 1, \
        #key ": must stand once in the listing, or be left out there");
#include "settings/rights.def"
// Whether a right of the type can be listed so.
template <class Type>
constexpr bool can_list(ListedAs form) {
    switch (form) {
    case ListedAs::Number:
    case ListedAs::Word:
        return std::is_same_v<Type, PerRole<int>>;
    case ListedAs::Mask:
    case ListedAs::Level:
        return std::is_same_v<Type, PerRole<unsigned>>;
    case ListedAs::PlainText:
    case ListedAs::Date:
        return std::is_same_v<Type, PerRole<Text>>;
    case ListedAs::Names:
        return std::is_same_v<Type, PerRole<WordList>>;
    }
    return false;
}
#define LISTED(right, form)                                                                        \
    static_assert(can_list<decltype(Settings::CF_##right)>(ListedAs::form),                        \
                  #right ": how it is listed does not fit the setting's type");
#include "settings/rights.def"

} // namespace

std::span<const ListedRight> listed_rights() {
    return listed;
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

void read_config_user(const char* path, const char* section, int rank) {
    if (std::optional<Configuration> file = Configuration::open(path, FileKind::Installed)) {
        end_when_refused(load_rights(file->load, file->snapshot, section, rank));
    } else if (errno != ENOENT) {
        syserr("cannot open configfile \"%s\" (%d)", path, errno);
    }
}

} // namespace ov
