// The settings: one variable for each key of the main configuration file, holding the key's
// default until the file gives another value. And the words of keys whose values are words.
#pragma once

#include "addr/addr_list.h"
#include "util/text.h"
#include "value/ip.h"

#include <array>
#include <ctime>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace ov {

// Lists that are set differ from those that are not, even when nothing is in them.
using WordList = std::optional<std::vector<std::string>>;
using IpList = std::optional<IpConditions>;

// One server of a list: a host and a port, or a marker.
struct SVRLIST {
    Text host;
    int port = 0;
    int flg = 0; // 1: the mail submission program (MspMarker), 2: a command (CommandMarker)
};
inline constexpr const char* MspMarker = "_MSP_";
inline constexpr const char* CommandMarker = "_CMD_";
using ServerList = std::array<SVRLIST, 8>;

// The six administration roles: administrator, manager and system administrator of the screening
// side, then the same of the search side.
inline constexpr int Roles = 6;
template <class Type>
using PerRole = std::array<Type, Roles>;

// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): in the order of the rows
struct Settings {
    Text ConfigFile; // the main configuration file; the option -f names another

#define SETTING(section, key, variable, type, ...) type variable;
#include "catalogue/keys.def"

#define RIGHT(key, type, ...) PerRole<type> CF_##key;
#include "catalogue/rights.def"

    // What the values of some keys become beside the key's own setting.
    ServerList SvrList = {};       // [SMTP] ServerHost
    ServerList NTF_SvrList = {};   // [SMTP] NTF_ServerHost
    long ArchiveMinFreeBlocks = 0; // [Archive] MinFree, in blocks of its file system
    long CoopMinFreeBlocks = 0;    // [Cooperation] MinFree, likewise
};
// They live to the end of the process: nothing is gained by taking them apart then.
union LastingSettings {
    Settings value;
    ~LastingSettings() {}
};
extern LastingSettings lasting_settings;
inline constexpr Settings& settings = lasting_settings.value;
// Names one of the settings of a type.
template <class Type>
using SettingOf = Type Settings::*;

// Sets all settings to their defaults, and those of logging, the system services and the groups.
void reset_settings();

// Each setting by its name.
inline constexpr Text& ConfigFile = settings.ConfigFile;
#define SETTING(section, key, variable, type, ...)                                                 \
    inline constexpr type& variable = settings.variable;
#include "catalogue/keys.def"
#define RIGHT(key, type, ...) inline constexpr PerRole<type>& CF_##key = settings.CF_##key;
#include "catalogue/rights.def"
inline constexpr PerRole<unsigned>& CF_FreezeOption = settings.CF_Freeze_Option;
inline constexpr PerRole<unsigned>& CF_ConfirmOption = settings.CF_Confirm_Option;
inline constexpr ServerList& SvrList = settings.SvrList;
inline constexpr ServerList& NTF_SvrList = settings.NTF_SvrList;
inline constexpr long& ArchiveMinFreeBlocks = settings.ArchiveMinFreeBlocks;
inline constexpr long& CoopMinFreeBlocks = settings.CoopMinFreeBlocks;

// The level that stands for none.
inline constexpr int NoLevel = 9999;

// One row of a value table: a word and the number that it stands for. A table ends with a row
// without a word and the number -1.
struct VTAB {
    const char* str;
    int val;
};
extern const VTAB Tab_LogLevel[];
extern const VTAB Tab_ArcMode[];
extern const VTAB Tab_FwdMode[];
extern const VTAB Tab_CoopMode[];
extern const VTAB Tab_AppendMode[];
extern const VTAB Tab_NotifyOption[];
extern const VTAB Tab_AddrSelect[];
extern const VTAB Tab_MSPSelect[];

// The numbers of the tables, and the tables by their numbers.
enum Table : int {
    LogLevelTable,
    ArcModeTable,
    FwdModeTable,
    CoopModeTable,
    AppendModeTable,
    NotifyOptionTable,
    AddrSelectTable,
    MSPSelectTable,
};
inline constexpr int Tables = 8;
extern const VTAB* const VTable[Tables];

// The number of `word` in a table, in any case; -1 when there is no such word or table.
int val_vtab(int table, std::string_view word);

// The first word of the number `val` in a table; null when there is none.
const char* str_vtab(int table, int val);

// str_vtab of the table of address selections.
const char* str_addrselect(int val);

} // namespace ov
