// The kinds of values. A row of the catalogue, or of the rights, names one by its function, with
// what is special about the row: the functions stand here behind their kinds. What they do is in
// kinds/, and what people are told of them in kinds/words.h.
//
// Unless a kind says otherwise, a number that does not fit the type of its setting is invalid; a
// setting without a sign takes a negative number that fits an int and wraps it.
#pragma once

#include "kinds/rule.h"
#include "kinds/tables.h"

#include <algorithm>
#include <string_view>

namespace ov {

// Whether a keyword set, or a MIME type set, of that name (letters, digits and "_") can be read.
int isvalid_keywd(std::string_view name);
int isvalid_mtype(std::string_view name);

} // namespace ov

namespace ov::kinds {

using Loads = Verdict(const Loading&);
using Checks = bool(const Value&);
using Shows = std::optional<std::string>(const Value&);

// The number in a setting, and the bound that another setting is.
std::int64_t number_in(const Number& number);
std::int64_t bound_in(const Other& name);

// The characters of a literal, and a NUL.
template <std::size_t Room>
struct Characters {
    std::array<char, Room> all{};

    template <std::size_t Size>
    requires(Size <= Room) constexpr Characters(const char (&text)[Size]) {
        std::copy_n(text, Size, all.begin());
    }
};

// clang-format off

// Numbers: numbers.cpp

Loads load_boolean, load_integer, load_integer64, load_number, load_digits, load_limit, load_within, load_word,
    load_level, load_bytes, load_kilobytes, load_min_free;
Checks is_boolean, is_based_number, are_digits, are_all_digits, is_within, is_word, is_level, is_none_or_number,
    is_bytes, is_kilobytes;
Shows show_boolean, show_number, show_word, show_level, show_byte_size, show_hex_code, show_hex, show_access;

inline constexpr Form AsNumber{Numbers, show_number};
constexpr FormRule as_number() { return {&AsNumber}; }
// 1572864 as "1M512K".
inline constexpr Form AsByteSize{Numbers, show_byte_size};
constexpr FormRule as_byte_size() { return {&AsByteSize}; }
// As "0x0000001f", and as "1f".
inline constexpr Form AsHexCode{Numbers, show_hex_code};
constexpr FormRule as_hex_code() { return {&AsHexCode}; }
inline constexpr Form AsHex{Numbers, show_hex};
constexpr FormRule as_hex() { return {&AsHex}; }
// Its two lowest bits, with a tab between them.
inline constexpr Form AsAccess{Numbers, show_access};
constexpr FormRule as_access() { return {&AsAccess}; }

// true, yes, on, 1 or false, no, off, 0.
inline constexpr Check IsBoolean{Numbers, is_boolean};
inline constexpr Form AsTrueOrFalse{Numbers, show_boolean};
inline constexpr Kind Boolean{Numbers, load_boolean, IsBoolean, AsTrueOrFalse};
constexpr KindOf<Boolean> boolean() { return {{.lowest = 0, .highest = 1, .mode = TokenMode}}; }
// The same, shown as 1 or 0.
inline constexpr Kind Flag{Numbers, load_boolean, IsBoolean, AsNumber};
constexpr KindOf<Flag> flag() { return {{.lowest = 0, .highest = 1, .mode = TokenMode}}; }

// A decimal number; text behind it, or instead of it, is overlooked (no digits: 0).
inline constexpr Kind Integer{Numbers, load_integer, NoCheck, AsNumber};
constexpr KindOf<Integer> integer(std::int64_t lowest = std::numeric_limits<std::int64_t>::min(),
                           std::int64_t highest = NoBound) {
    return {{.lowest = lowest, .highest = highest}};
}

// The same, for a setting without a sign up to its largest number.
inline constexpr Kind Integer64{LargeNumbers, load_integer64, NoCheck, AsNumber};
constexpr KindOf<Integer64> integer64() { return {}; }

// A number with base prefixes that the setting can hold; text without digits is 0. In the main file only the
// check knows them.
inline constexpr Check IsNumber{Numbers, is_based_number};
inline constexpr Kind PrefixedNumber{Numbers, load_number, IsNumber, AsNumber};
constexpr KindOf<PrefixedNumber> number() { return {}; }
inline constexpr Check IsNotNegative{Numbers, is_based_number};
constexpr CheckRule number_not_negative() { return {&IsNotNegative, {.lowest = 0}}; }

// Decimal digits and nothing else, at most `longest` of them.
inline constexpr Check AreDigits{Numbers, are_digits};
inline constexpr Kind Digits{Numbers, load_digits, AreDigits, AsNumber};
constexpr KindOf<Digits> digits(std::int64_t lowest = 0, std::int64_t highest = NoBound,
                          std::uint16_t longest = NoLength) {
    return {{.lowest = lowest, .highest = highest, .longest = longest}};
}

// Digits, however many: what is loaded may still be too large.
inline constexpr Check AreAllDigits{Numbers, are_all_digits};
constexpr CheckRule all_digits() { return {&AreAllDigits, {.lowest = 0}}; }

// Digits from 0 to `highest`; the empty text leaves the setting as it is.
inline constexpr Kind Limit{Numbers, load_limit, NoCheck, AsNumber};
constexpr KindOf<Limit> limit(std::int64_t highest) { return {{.lowest = 0, .highest = highest}}; }

// Digits only, within two other settings as they stand.
inline constexpr Check IsWithin{Numbers, is_within};
inline constexpr Kind Within{Numbers, load_within, IsWithin, AsNumber};
template <class Bound>
requires std::is_same_v<Bound, int> || std::is_same_v<Bound, long>
constexpr KindOf<Within> within(SettingOf<Bound> low, SettingOf<Bound> high) {
    return {{.first = low, .second = high}};
}

// A word of a value table.
inline constexpr Check IsWord{Numbers, is_word};
inline constexpr Form AsWord{Numbers, show_word};
inline constexpr Kind Word{Numbers, load_word, IsWord, AsWord};
constexpr KindOf<Word> word(Table table) { return {{.table = static_cast<std::int8_t>(table)}}; }

// Which addresses of a message a filter looks at.
inline constexpr Kind Selection{Numbers, load_word, NoCheck, AsWord};
constexpr KindOf<Selection> selection() { return {{.table = AddrSelectTable}}; }

// A word of the table of levels, or a number from 0 to NoLevel.
inline constexpr Check IsLevel{Numbers, is_level};
inline constexpr Form AsLevel{Numbers, show_level};
inline constexpr Kind Level{Numbers, load_level, IsLevel, AsLevel};
constexpr KindOf<Level> level() { return {{.lowest = 0, .highest = NoLevel, .table = LogLevelTable}}; }
// The same without the words for the weak and the strong level.
inline constexpr Check IsNoneOrNumber{Numbers, is_none_or_number};
constexpr CheckRule none_or_number() { return {&IsNoneOrNumber, {.lowest = 0, .highest = NoLevel}}; }

// A size in bytes; without a unit `unit` is meant.
inline constexpr Check IsBytes{Numbers, is_bytes};
inline constexpr Kind Bytes{Numbers, load_bytes, IsBytes, AsByteSize};
constexpr KindOf<Bytes> bytes(char unit = 'K') { return {{.lowest = 0, .unit = unit}}; }

// A size in kilobytes; without a unit megabytes are meant.
inline constexpr Check IsKilobytes{Numbers, is_kilobytes};
inline constexpr Kind Kilobytes{Numbers, load_kilobytes, IsKilobytes, AsNumber};
constexpr KindOf<Kilobytes> kilobytes() { return {{.lowest = 0}}; }

// Kilobytes that are to stay free on the file system of a directory, for `blocks` also in its blocks.
inline constexpr Kind MinFree{Numbers, load_min_free, IsKilobytes, AsNumber};
constexpr KindOf<MinFree> min_free(SettingOf<Text> directory, SettingOf<long> blocks) {
    return {{.lowest = 0, .first = directory, .second = blocks}};
}

// Texts: texts.cpp

Loads load_text, load_signature, load_date;
Checks is_anything, is_one_word;
Shows show_text, show_lower_bound, show_upper_bound;

// Any text.
inline constexpr Form AsText{Texts, show_text};
inline constexpr Kind PlainText{Texts, load_text, NoCheck, AsText};
constexpr KindOf<PlainText> text() { return {}; }

inline constexpr Check IsAnything{AnyType, is_anything};
constexpr CheckRule anything() { return {&IsAnything}; }
// A text without a blank.
inline constexpr Check IsOneWord{Texts, is_one_word};
constexpr CheckRule one_word() { return {&IsOneWord}; }

// Any text of at most `longest` characters; the empty one unsets the setting.
inline constexpr Kind Signature{Texts, load_signature, NoCheck, AsText};
constexpr KindOf<Signature> signature(std::uint16_t longest) { return {{.longest = longest}}; }

// A date like "2008/02/31"; the empty text: none.
inline constexpr Kind Date{Texts, load_date, NoCheck, NoForm};
constexpr KindOf<Date> date() { return {}; }
// The two say "unspecified" in spellings of their own; scripts look for each.
inline constexpr Form AsLowerBound{Texts, show_lower_bound};
constexpr FormRule as_lower_bound() { return {&AsLowerBound}; }
inline constexpr Form AsUpperBound{Texts, show_upper_bound};
constexpr FormRule as_upper_bound() { return {&AsUpperBound}; }

// Paths: paths.cpp

Loads load_path, load_file, load_full_file, load_directory, load_created_directory, load_full_directory,
    load_template_directory;
Loads default_file, default_directory, default_template_directory;
Checks is_command, is_program, is_queue_directory, is_list_program, is_existing_directory, is_directory_under,
    is_directory_under_root, are_directories, are_devices, is_template_file, is_keyword_set, is_mime_type_set;

// The absolute path of something that exists (not looked at with RC_NOCHECK).
inline constexpr Kind Path{Texts, load_path, NoCheck, AsText};
constexpr KindOf<Path> path() { return {}; }

// A file, in EtcDirectory when it is relative; or only with an absolute path. The default is taken there in any
// case.
inline constexpr Kind File{Texts, load_file, NoCheck, AsText, default_file};
constexpr KindOf<File> file() { return {}; }
inline constexpr Kind FullFile{Texts, load_full_file, NoCheck, AsText, default_file};
constexpr KindOf<FullFile> full_file() { return {}; }

// A directory that exists (not looked at with RC_NODIRCHECK), under `base` when it is relative. The default is
// taken there in any case.
inline constexpr Kind Directory{Texts, load_directory, NoCheck, AsText, default_directory};
constexpr KindOf<Directory> directory(SettingOf<Text> base) { return {{.first = base}}; }
// The same, and made when it is missing.
inline constexpr Kind CreatedDirectory{Texts, load_created_directory, NoCheck, AsText, default_directory};
constexpr KindOf<CreatedDirectory> created_directory(SettingOf<Text> base) { return {{.first = base}}; }
// The same with an absolute path.
inline constexpr Kind FullDirectory{Texts, load_full_directory, NoCheck, AsText};
constexpr KindOf<FullDirectory> full_directory() { return {}; }

// A directory under RootDirectory; given empty, there is none. The auxiliary readers want it to exist.
inline constexpr Kind TemplateFolder{Texts, load_template_directory, NoCheck, NoForm,
                                     default_template_directory};
constexpr KindOf<TemplateFolder> template_directory() { return {}; }

// What a check wants to exist: a program with its full path, and with arguments, or anything that is no full
// path.
inline constexpr Check IsProgram{Texts, is_program};
constexpr CheckRule program() { return {&IsProgram}; }
inline constexpr Check IsCommand{Texts, is_command};
constexpr CheckRule command() { return {&IsCommand}; }
inline constexpr Check IsListProgram{Texts, is_list_program};
constexpr CheckRule list_program() { return {&IsListProgram}; }

// A directory, one with its full path, one under `base` when it is relative, several of them.
inline constexpr Check IsExistingDirectory{Texts, is_existing_directory};
constexpr CheckRule existing_directory() { return {&IsExistingDirectory}; }
inline constexpr Check IsQueueFolder{Texts, is_queue_directory};
constexpr CheckRule queue_directory() { return {&IsQueueFolder}; }
inline constexpr Check IsDirectoryUnder{Texts, is_directory_under};
constexpr CheckRule directory_under(SettingOf<Text> base) { return {&IsDirectoryUnder, {.first = base}}; }
inline constexpr Check IsDirectoryUnderRoot{Texts, is_directory_under_root};
constexpr CheckRule directory_under_root() { return {&IsDirectoryUnderRoot}; }
inline constexpr Check AreDirectories{Texts, are_directories};
constexpr CheckRule directories() { return {&AreDirectories, {.separators = {':'}}}; }
// Writable files, not directories only.
inline constexpr Check AreDevices{Texts, are_devices};
constexpr CheckRule devices() { return {&AreDevices, {.separators = {':'}}}; }

// A file in TemplateDirectory, and the file of a set in the directory of its kind.
inline constexpr Check IsTemplateFile{Texts, is_template_file};
constexpr CheckRule template_file() { return {&IsTemplateFile}; }
inline constexpr Check IsKeywordSet{Texts, is_keyword_set};
constexpr CheckRule keyword_set() { return {&IsKeywordSet}; }
inline constexpr Check IsMimeTypeSet{Texts, is_mime_type_set};
constexpr CheckRule mime_type_set() { return {&IsMimeTypeSet}; }

// Lists: lists.cpp

Loads load_words, load_sets, load_internal_domains, load_ip_conditions, load_addresses, load_servers,
    load_servers_and_markers, load_user_group;
Checks are_domains, are_networks, are_addresses, are_servers, is_host_port;
Shows show_names, show_internal_domains, show_conditions, show_addresses, show_user_group;

// Words with any of the separators between them.
inline constexpr Kind Words{WordLists, load_words, NoCheck, NoForm};
constexpr KindOf<Words> words(Characters<3> separators) { return {{.separators = separators.all}}; }

// Names of groups, and of sets; the empty text: no sets.
inline constexpr Form AsNames{WordLists, show_names};
inline constexpr Kind Names{WordLists, load_words, NoCheck, AsNames};
constexpr KindOf<Names> names() { return {{.separators = {':'}}}; }
inline constexpr Kind Sets{WordLists, load_sets, NoCheck, NoForm};
constexpr KindOf<Sets> sets() { return {{.separators = {':'}}}; }

// Domains. When none is given and programs and directories are checked, the host's own domain, which is looked
// at more closely than what somebody has written.
inline constexpr Check AreDomains{WordLists, are_domains};
inline constexpr Form AsInternalDomains{WordLists, show_internal_domains};
inline constexpr Kind InternalDomainList{WordLists, load_internal_domains, AreDomains, AsInternalDomains,
    load_internal_domains};
constexpr KindOf<InternalDomainList> internal_domains() { return {{.separators = {'&', ':'}}}; }

// Conditions on IP addresses.
inline constexpr Check AreNetworks{IpLists, are_networks};
inline constexpr Form AsConditions{IpLists, show_conditions};
inline constexpr Kind IpConditionList{IpLists, load_ip_conditions, AreNetworks, AsConditions};
constexpr KindOf<IpConditionList> ip_conditions() { return {{.separators = {':'}}}; }

// At most MaxAddressList mail addresses; both not looked at with RC_NOCHECK. `punctuation` is what the message
// of a bad one has in front of the address.
inline constexpr Check AreAddresses{AddressLists, are_addresses};
inline constexpr Form AsAddresses{AddressLists, show_addresses};
inline constexpr Kind MailAddresses{AddressLists, load_addresses, AreAddresses, AsAddresses};
constexpr KindOf<MailAddresses> addresses(Characters<2> punctuation) {
    return {{.punctuation = punctuation.all}};
}

// At most eight servers, "host" or "host:port" with a port from 1 to 60000; where it is the gateway's own way
// out, the markers for the submission program and a command may be among them.
inline constexpr Kind Servers{Texts, load_servers, NoCheck, AsText};
constexpr KindOf<Servers> servers(SettingOf<ServerList> list) {
    return {{.separators = {' '}, .first = list}};
}
inline constexpr Check AreServers{Texts, are_servers};
inline constexpr Kind ServersAndMarkers{Texts, load_servers_and_markers, AreServers, AsText};
constexpr KindOf<ServersAndMarkers> servers_and_markers(SettingOf<ServerList> list) {
    return {{.separators = {' '}, .first = list}};
}

// "host" or "host:port"; of a longer value the first `longest` characters count.
inline constexpr Check IsHostPort{Texts, is_host_port};
constexpr CheckRule host_port(std::uint16_t longest) { return {&IsHostPort, {.longest = longest}}; }

// At most eight names.
inline constexpr Form AsUserGroup{ServerLists, show_user_group};
inline constexpr Kind UserGroup{ServerLists, load_user_group, NoCheck, AsUserGroup};
constexpr KindOf<UserGroup> user_group() { return {{.separators = {':'}}}; }

// clang-format on

} // namespace ov::kinds
