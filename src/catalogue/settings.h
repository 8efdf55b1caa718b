// The settings: one variable for each key of the main configuration file, holding the key's
// default until the file gives another value.
#pragma once

#include "kinds/tables.h"
#include "kinds/types.h"

#include <cstdint>
#include <sys/types.h>

namespace ov {

// The rows name these two.
using std::int64_t;
using std::uint64_t;

// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): in the order of the rows
struct Settings {
    Text ConfigFile;

#define SETTING(section, key, variable, type, ...) type variable;
#include "catalogue/keys.def"

#define RIGHT(key, type, ...) PerRole<type> CF_##key;
#include "catalogue/rights.def"

    // What the values of some keys become beside the key's own setting.
    ServerList SvrList = {};               // [SMTP] ServerHost
    ServerList NTF_SvrList = {};           // [SMTP] NTF_ServerHost
    std::int64_t ArchiveMinFreeBlocks = 0; // [Archive] MinFree, in blocks of its file system
    std::int64_t CoopMinFreeBlocks = 0;    // [Cooperation] MinFree, likewise
};
// They live to the end of the process: nothing is gained by taking them apart then.
union LastingSettings {
    Settings value;
    ~LastingSettings() {}
};
extern LastingSettings lasting_settings;
inline constexpr Settings& settings = lasting_settings.value;

// The settings as the rows have them, whatever has been loaded.
const Settings& initial_settings();

// The numbers of the rows by their settings.
enum class RowOf : std::uint16_t {
#define SETTING(section, key, variable, ...) variable,
#include "catalogue/keys.def"
};

// Each setting by its name.
#define SETTING(section, key, variable, type, ...)                                                 \
    inline constexpr type& variable = settings.variable;
#include "catalogue/keys.def"
#define RIGHT(key, type, ...) inline constexpr PerRole<type>& CF_##key = settings.CF_##key;
#include "catalogue/rights.def"
inline constexpr PerRole<unsigned>& CF_FreezeOption = settings.CF_Freeze_Option;
inline constexpr PerRole<unsigned>& CF_ConfirmOption = settings.CF_Confirm_Option;
inline constexpr ServerList& SvrList = settings.SvrList;
inline constexpr ServerList& NTF_SvrList = settings.NTF_SvrList;
inline constexpr std::int64_t& ArchiveMinFreeBlocks = settings.ArchiveMinFreeBlocks;
inline constexpr std::int64_t& CoopMinFreeBlocks = settings.CoopMinFreeBlocks;

} // namespace ov
