// The words of keys whose values are words.
#pragma once

#include <string_view>

namespace ov {

// The level that stands for none.
inline constexpr int NoLevel = 9999;

// One row of a value table: a word and the number that it stands for. A table ends with a row
// without a word and the number -1.
struct VTAB {
    const char* str;
    int val;
};
inline constexpr VTAB Tab_LogLevel[] = {
    {"none", NoLevel}, {"weak", 1}, {"strong", 0}, {nullptr, -1}};
inline constexpr VTAB Tab_ArcMode[] = {{"none", 0}, {"all", 1},  {"out", 2},
                                       {"in", 3},   {"rule", 4}, {nullptr, -1}};
inline constexpr VTAB Tab_FwdMode[] = {
    {"none", 0}, {"all", 1}, {"out", 2}, {"in", 3}, {nullptr, -1}};
inline constexpr VTAB Tab_CoopMode[] = {
    {"none", 0}, {"all", 1}, {"out", 2}, {"in", 3}, {nullptr, -1}};
inline constexpr VTAB Tab_AppendMode[] = {{"none", 0}, {"all", 1},  {"out", 2},
                                          {"in", 3},   {"rule", 4}, {nullptr, -1}};
inline constexpr VTAB Tab_NotifyOption[] = {
    {"cont", 0}, {"nega", 1}, {"no", 2}, {"yes", 3}, {nullptr, -1}};
inline constexpr VTAB Tab_AddrSelect[] = {
    {"header", 1}, {"envelope", 2}, {"both", 3}, {"none", 0}, {nullptr, -1}};
inline constexpr VTAB Tab_MSPSelect[] = {
    {"sendmail", 1}, {"postfix", 2}, {"qmail", 3}, {nullptr, -1}};

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
inline constexpr const VTAB* VTable[Tables] = {Tab_LogLevel,   Tab_ArcMode,    Tab_FwdMode,
                                               Tab_CoopMode,   Tab_AppendMode, Tab_NotifyOption,
                                               Tab_AddrSelect, Tab_MSPSelect};

// The number of `word` in a table, in any case; -1 when there is no such word or table.
int val_vtab(int table, std::string_view word);

// The first word of the number `val` in a table; null when there is none.
const char* str_vtab(int table, int val);

// str_vtab of the table of address selections.
const char* str_addrselect(int val);

} // namespace ov
