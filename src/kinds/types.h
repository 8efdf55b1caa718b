// What settings are made of, for those who need none of them by its name.
#pragma once

#include "addr/addr_list.h"
#include "util/text.h"
#include "value/ip.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
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

// A setting variable: a number of any type, a text or a list.
using Number = std::variant<int*, unsigned*, std::int64_t*, std::uint64_t*>;
using Variable = std::variant<Number, Text*, WordList*, IpList*, AddressList*, ServerList*>;

// All settings, by their names. They are made elsewhere, and so are the functions and the object
// below.
struct Settings;
// Names one of the settings of a type.
template <class Type>
using SettingOf = Type Settings::*;
// The setting of that name, of the types int, std::int64_t, Text and ServerList.
template <class Type>
Type& setting_of(SettingOf<Type> name);

// What the kinds need to know of the installation, as the settings stand.
struct Installation {
    const Text& root;
    const Text& etc;
    const Text& templates;
    const Text& keyword_sets;
    const Text& mime_type_sets;
    const int& most_addresses; // in a list of mail addresses
};
extern const Installation installation;

} // namespace ov
