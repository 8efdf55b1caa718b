#include "conf/rights.h"

#include "conf/layout.h"
#include "conf/loader.h"
#include "conf/validate.h"
#include "util/log.h"
#include "util/util.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <new>

namespace ov {

// The "defaults" column: of each role, the same for all, none.
// clang-format off
#define Each(...) {{__VA_ARGS__}}
#define All(value) {{value, value, value, value, value, value}}
#define Unset {}
// clang-format on
#define RIGHT(key, setting, type, rule, defaults, query, change)                                   \
    constinit PerRole<type> setting = defaults;
#include "conf/rights.def"
#undef RIGHT

namespace {

constexpr RightRow rows[] = {
#define RIGHT(key, setting, type, rule, defaults, query, change)                                   \
    {#key, &(setting), RightRule::rule, RightQuery::query, RightChange::change},
#include "conf/rights.def"
#undef RIGHT
};

#undef Unset
#undef All
#undef Each

constexpr long HighestLimit = 9999;

// Where the rights files of a role are, and the section in them.
struct Role {
    const Text& directory;
    const char* section;
};
const Role roles[Roles] = {
    {Admin_Dir, "Admin"},      {Manager_Dir, "Manager"},      {Sysadm_Dir, "Admin"},
    {SRCH_Admin_Dir, "Admin"}, {SRCH_Manager_Dir, "Manager"}, {SRCH_Sysadm_Dir, "Admin"},
};

// A rights file that is being read.
struct Reading {
    const Snapshot& snapshot;
    const char* path;
    const char* section;
    std::size_t rank;
};

[[noreturn]] void refuse(const Reading& reading, const char* key, const std::string& value) {
    const auto shown = [](const char* text) { return text ? text : "<null>"; };
    std::fprintf(stderr, "%s:%d: invalid value, [%s] %s: %s\n", shown(reading.path),
                 scan_linenumber, shown(reading.section), shown(key), value.c_str());
    std::exit(EXIT_FAILURE);
}

template <class Type>
Type& setting_of(const RightRow& row, const Reading& reading) {
    return (*std::get<PerRole<Type>*>(row.setting))[reading.rank];
}

bool read_number(const std::string& value, unsigned& setting) {
    errno = 0;
    const long number = std::strtol(value.c_str(), nullptr, 0);
    if (errno == ERANGE || !fits(&setting, number)) {
        return false;
    }
    setting = static_cast<unsigned>(number); // a negative number wraps
    return true;
}

bool read_limit(const std::string& value, int& setting) {
    const std::optional<std::int64_t> number = decimal_within(value, 0, HighestLimit);
    setting = static_cast<int>(number.value_or(setting));
    return number.has_value();
}

bool read_list(const std::string& value, WordList& setting) {
    WordList words = split_str(value, ":");
    if (!words) {
        throw std::bad_alloc();
    }
    setting = std::move(words);
    return true;
}

// Stores the value of a right. Returns whether it is valid.
bool read_right(const RightRow& row, const Reading& reading, const std::string& value) {
    switch (row.rule) {
    case RightRule::Boolean:
        return truefalse(value, &setting_of<int>(row, reading)) == 0;
    case RightRule::Number:
        return read_number(value, setting_of<unsigned>(row, reading));
    case RightRule::String:
        setting_of<Text>(row, reading).set(value);
        return true;
    case RightRule::List:
        return read_list(value, setting_of<WordList>(row, reading));
    case RightRule::Date: {
        int ignored = 0;
        if (value.empty()) {
            setting_of<Text>(row, reading).unset();
            return true;
        }
        setting_of<Text>(row, reading).set(value);
        return date_str(value.c_str(), &ignored, &ignored, &ignored) == 0;
    }
    case RightRule::Selection: {
        const int number = val_vtab(AddrSelectTable, value);
        setting_of<int>(row, reading) = number;
        return number != -1;
    }
    case RightRule::Limit:
        return value.empty() || read_limit(value, setting_of<int>(row, reading));
    }
    return false;
}

// Whether the right is read at all: a user with the right to freeze or confirm follows the system's
// options instead of options of his own.
bool is_read(Right right, std::size_t rank) {
    switch (right) {
    case Right::Freeze_Option:
        return !CF_HoldFreeze[rank];
    case Right::Confirm_Option:
        return !CF_HoldConfirm[rank];
    default:
        return true;
    }
}

void read_one(Right right, const Reading& reading) {
    const RightRow& row = row_of(right);
    const int mode = row.rule == RightRule::Boolean ? TokenMode : LineMode;
    const char* key = row.key;
    std::string value;
    if (reading.snapshot.lookup(reading.section, key, value, mode) != 0) {
        key = "RejectGroup"; // what ExcludeGroup was called once
        if (right != Right::ExcludeGroup ||
            reading.snapshot.lookup(reading.section, key, value, mode) != 0) {
            return;
        }
    }
    const bool is_set = right == Right::SetMTYPE || right == Right::SetKEYWD;
    if (is_set && value.empty()) {
        setting_of<WordList>(row, reading).reset();
        return;
    }
    bool valid = false;
    try {
        valid = read_right(row, reading, value);
    } catch (const std::bad_alloc&) {
        std::fputs("malloc error\n", stderr);
    }
    if (!valid) {
        refuse(reading, key, value);
    }
}

// The number made of the digits of `text`, or -1 when there is anything else in it.
int field(std::string_view text) {
    int number = 0;
    for (const char c : text) {
        number = number * 10 + (c - '0');
    }
    return is_alldigit(text) ? number : -1;
}

} // namespace

std::span<const RightRow> rights() {
    return rows;
}

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

const Text& role_directory(int rank) {
    return roles[rank].directory;
}

const RightRow& row_of(Right right) {
    return rows[static_cast<std::size_t>(right)];
}

const RightRow* find_right(std::string_view key) {
    const auto* row = std::find_if(std::begin(rows), std::end(rows), [key](const RightRow& right) {
        return same_word(right.key, key);
    });
    return row == std::end(rows) ? nullptr : row;
}

int access_cffile(int rank, const char* user, std::string& path, std::string* section) {
    if (!user) {
        return -1;
    }
    if (rank < 0 || rank >= Roles) {
        syserr("CONF: invalid user: rank=%d user=%s", rank, user);
        return -1;
    }
    const Role& role = roles[rank];
    path = role.directory.view();
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
    if (const Snapshot* snapshot = scan(path, FileKind::Regular)) {
        read_rights(*snapshot, path, section, rank);
    } else if (errno != ENOENT) {
        syserr("cannot open configfile \"%s\" (%d)", path, errno);
    }
}

void read_rights(const Snapshot& snapshot, const char* path, const char* section, int rank) {
    const Reading reading{snapshot, path, section, static_cast<std::size_t>(rank)};
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        const auto right = static_cast<Right>(i);
        if (is_read(right, reading.rank)) {
            read_one(right, reading);
        }
    }
}

int date_str(const char* text, int* year, int* month, int* day) {
    const std::string_view date(text ? text : "");
    if (date.size() != 10 || date[4] != '/' || date[7] != '/') {
        return -1;
    }
    const int y = field(date.substr(0, 4));
    const int m = field(date.substr(5, 2));
    const int d = field(date.substr(8, 2));
    if (y < 0 || m < 0 || d < 0 || (month && (m < 1 || m > 12)) || (day && (d < 1 || d > 31))) {
        return -1;
    }
    for (const auto& [target, value] : {std::pair{year, y}, {month, m}, {day, d}}) {
        if (target) {
            *target = value;
        }
    }
    return 0;
}

} // namespace ov
