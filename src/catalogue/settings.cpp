#include "catalogue/settings.h"

#include "addr/addr_grp.h"
#include "catalogue/config_file.h"
#include "catalogue/reset.h"
#include "util/services.h"

#include <memory>
#include <new>

namespace ov {

namespace {

constexpr const char* DefaultConfigFile = "/etc/Tessary.conf";

} // namespace

// The rows as initialisers.
// clang-format off
constinit LastingSettings lasting_settings{{
    .ConfigFile = DefaultConfigFile,
#define SETTING(section, key, variable, type, initial, ...) .variable = initial,
#include "catalogue/keys.def"
#define RIGHT(key, type, kind, defaults, ...) .CF_##key = defaults,
#include "catalogue/rights.def"
}};

namespace {

Settings defaults() {
    return {
        .ConfigFile = DefaultConfigFile,
#define SETTING(section, key, variable, type, initial, ...) .variable = initial,
#include "catalogue/keys.def"
#define RIGHT(key, type, kind, defaults, ...) .CF_##key = defaults,
#include "catalogue/rights.def"
    };
}

} // namespace

// clang-format on

void reset_settings() {
    services = {};
    group_settings = {};
    std::destroy_at(&settings);
    ::new (&settings) Settings(defaults());
}

const Settings& initial_settings() {
    static const Settings initial = defaults();
    return initial;
}

Text& ConfigFile = lasting_settings.value.ConfigFile;

constinit const Installation installation{
    .root = lasting_settings.value.RootDirectory,
    .etc = lasting_settings.value.EtcDirectory,
    .templates = lasting_settings.value.TemplateDirectory,
    .keyword_sets = lasting_settings.value.KEYWD_Dir,
    .mime_type_sets = lasting_settings.value.MTYPE_Dir,
    .most_addresses = lasting_settings.value.MaxAddressList,
};

template <class Type>
Type& setting_of(SettingOf<Type> name) {
    return settings.*name;
}
template int& setting_of(SettingOf<int>);
template std::int64_t& setting_of(SettingOf<std::int64_t>);
template Text& setting_of(SettingOf<Text>);
template ServerList& setting_of(SettingOf<ServerList>);

} // namespace ov
