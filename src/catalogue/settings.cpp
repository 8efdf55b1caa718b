#include "catalogue/settings.h"

#include "addr/addr_grp.h"
#include "util/util_settings.h"

#include <memory>
#include <new>

namespace ov {

namespace {

constexpr const char* DefaultConfigFile = "/etc/Tessary.conf";

} // namespace

// The rows as initialisers, with the "defaults" column of the rights: of each role, the same for
// all, none.
// clang-format off
#define Each(...) {{__VA_ARGS__}}
#define All(value) {{value, value, value, value, value, value}}
#define Unset {}

constinit LastingSettings lasting_settings{{
    .ConfigFile = DefaultConfigFile,
#define SETTING(section, key, variable, type, initial, ...) .variable = initial,
#include "catalogue/keys.def"
#define RIGHT(key, type, kind, defaults, ...) .CF_##key = defaults,
#include "catalogue/rights.def"
}};

void reset_settings() {
    services = {};
    group_settings = {};
    std::destroy_at(&settings);
    ::new (&settings) Settings{
        .ConfigFile = DefaultConfigFile,
#define SETTING(section, key, variable, type, initial, ...) .variable = initial,
#include "catalogue/keys.def"
#define RIGHT(key, type, kind, defaults, ...) .CF_##key = defaults,
#include "catalogue/rights.def"
    };
}

#undef Unset
#undef All
#undef Each
// clang-format on

const VTAB Tab_LogLevel[] = {{"none", NoLevel}, {"weak", 1}, {"strong", 0}, {nullptr, -1}};
const VTAB Tab_ArcMode[] = {{"none", 0}, {"all", 1},  {"out", 2},
                            {"in", 3},   {"rule", 4}, {nullptr, -1}};
const VTAB Tab_FwdMode[] = {{"none", 0}, {"all", 1}, {"out", 2}, {"in", 3}, {nullptr, -1}};
const VTAB Tab_CoopMode[] = {{"none", 0}, {"all", 1}, {"out", 2}, {"in", 3}, {nullptr, -1}};
const VTAB Tab_AppendMode[] = {{"none", 0}, {"all", 1},  {"out", 2},
                               {"in", 3},   {"rule", 4}, {nullptr, -1}};
const VTAB Tab_NotifyOption[] = {{"cont", 0}, {"nega", 1}, {"no", 2}, {"yes", 3}, {nullptr, -1}};
const VTAB Tab_AddrSelect[] = {
    {"header", 1}, {"envelope", 2}, {"both", 3}, {"none", 0}, {nullptr, -1}};
const VTAB Tab_MSPSelect[] = {{"sendmail", 1}, {"postfix", 2}, {"qmail", 3}, {nullptr, -1}};

const VTAB* const VTable[Tables] = {Tab_LogLevel,   Tab_ArcMode,    Tab_FwdMode,
                                    Tab_CoopMode,   Tab_AppendMode, Tab_NotifyOption,
                                    Tab_AddrSelect, Tab_MSPSelect};

int val_vtab(int table, std::string_view word) {
    if (table < 0 || table >= Tables) {
        return -1;
    }
    for (const VTAB* row = VTable[table]; row->str; ++row) {
        if (same_word(row->str, word)) {
            return row->val;
        }
    }
    return -1;
}

const char* str_vtab(int table, int val) {
    if (table < 0 || table >= Tables) {
        return nullptr;
    }
    for (const VTAB* row = VTable[table]; row->val >= 0; ++row) {
        if (row->val == val) {
            return row->str;
        }
    }
    return nullptr;
}

const char* str_addrselect(int val) {
    return str_vtab(AddrSelectTable, val);
}

} // namespace ov
