// The kinds of values. A row of the catalogue, or of the rights, names one by its function, with
// what is special about the row; so it names a check, or a form, that is not that of its kind. What
// the kinds do is in records.h, and what people are told of them in wording.h.
//
// Unless a kind says otherwise, a number that does not fit the type of its setting is invalid; a
// setting without a sign takes a negative number that fits an int and wraps it.
#pragma once

#include "kinds/records.h"
#include "kinds/tables.h"

#include <algorithm>

namespace ov::kinds {

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

// Numbers

// true, yes, on, 1 or false, no, off, 0. A flag is shown as 1 or 0.
constexpr KindOf<Boolean> boolean() { return {{.lowest = 0, .highest = 1, .mode = TokenMode}}; }
constexpr KindOf<Flag> flag() { return {{.lowest = 0, .highest = 1, .mode = TokenMode}}; }
// A decimal number; text behind it, or instead of it, is overlooked (no digits: 0).
constexpr KindOf<Integer> integer(std::int64_t lowest = Least, std::int64_t highest = NoBound)
    { return {{.lowest = lowest, .highest = highest}}; }
// The same, for a setting without a sign up to its largest number.
constexpr KindOf<Integer64> integer64() { return {}; }
// A number with base prefixes, of which only the check knows in the main file; no digits: 0.
constexpr KindOf<PrefixedNumber> number() { return {}; }
// Decimal digits and nothing else, at most `longest` of them.
constexpr KindOf<Digits> digits(std::int64_t lowest = 0, std::int64_t highest = NoBound,
    std::uint16_t longest = NoLength) { return {{lowest, highest, longest}}; }
// Digits from 0 to `highest`; the empty text leaves the setting as it is.
constexpr KindOf<Limit> limit(std::int64_t highest) { return {{.lowest = 0, .highest = highest}}; }
// Digits only, within two other settings as they stand.
template <class Bound> requires std::is_same_v<Bound, int> || std::is_same_v<Bound, std::int64_t>
constexpr KindOf<Within> within(SettingOf<Bound> low, SettingOf<Bound> high)
    { return {{.first = low, .second = high}}; }
// A word of a value table.
constexpr KindOf<Word> word(Table table) { return {{.table = static_cast<std::int8_t>(table)}}; }
// Which addresses of a message a filter looks at.
constexpr KindOf<Selection> selection() { return {{.table = AddrSelectTable}}; }
// A word of the table of levels, or a number.
constexpr KindOf<Level> level()
    { return {{.lowest = 0, .highest = NoLevel, .table = LogLevelTable}}; }
// A size in bytes; without a unit `unit` is meant.
constexpr KindOf<Bytes> bytes(char unit = 'K') { return {{.lowest = 0, .unit = unit}}; }
// A size in kilobytes; without a unit megabytes are meant.
constexpr KindOf<Kilobytes> kilobytes() { return {{.lowest = 0}}; }
// Kilobytes that are to stay free on the file system of a directory; `blocks`: in its blocks.
constexpr KindOf<MinFree> min_free(SettingOf<Text> directory, SettingOf<std::int64_t> blocks)
    { return {{.lowest = 0, .first = directory, .second = blocks}}; }

// Checks: digits, however many (what is loaded may still be too large); a number with prefixes; the
// word "none", or the number of a level.
constexpr CheckRule all_digits() { return {&AreAllDigits, {.lowest = 0}}; }
constexpr CheckRule number_not_negative() { return {&IsNotNegative, {.lowest = 0}}; }
constexpr CheckRule none_or_number()
    { return {&IsNoneOrNumber, {.lowest = 0, .highest = NoLevel}}; }
// Forms: 1572864 as "1M512K"; as "0x0000001f", and as "1f"; its two lowest bits with a tab between.
constexpr FormRule as_number() { return {&AsNumber}; }
constexpr FormRule as_byte_size() { return {&AsByteSize}; }
constexpr FormRule as_hex_code() { return {&AsHexCode}; }
constexpr FormRule as_hex() { return {&AsHex}; }
constexpr FormRule as_access() { return {&AsAccess}; }

// Texts

// Any text.
constexpr KindOf<PlainText> text() { return {}; }
// Any text of at most `longest` characters; the empty one unsets the setting.
constexpr KindOf<Signature> signature(std::uint16_t longest) { return {{.longest = longest}}; }
// A date like "2008/02/31"; the empty text: none.
constexpr KindOf<Date> date() { return {}; }

// Checks: any value of any type; a text without a blank.
constexpr CheckRule anything() { return {&IsAnything}; }
constexpr CheckRule one_word() { return {&IsOneWord}; }
// Forms of a date: they say "unspecified" in spellings of their own, and scripts look for each.
constexpr FormRule as_lower_bound() { return {&AsLowerBound}; }
constexpr FormRule as_upper_bound() { return {&AsUpperBound}; }

// Paths. The default of a file, or of a directory with a base, is taken there in any case.

// The absolute path of something that exists (not looked at with RC_NOCHECK).
constexpr KindOf<Path> path() { return {}; }
// A file, in EtcDirectory when it is relative; or only with an absolute path.
constexpr KindOf<File> file() { return {}; }
constexpr KindOf<FullFile> full_file() { return {}; }
// A directory that exists (not looked at with RC_NODIRCHECK), under `base` when it is relative.
constexpr KindOf<Directory> directory(SettingOf<Text> base) { return {{.first = base}}; }
// The same, made when it is missing; and only with an absolute path.
constexpr KindOf<CreatedDirectory> created_directory(SettingOf<Text> base)
    { return {{.first = base}}; }
constexpr KindOf<FullDirectory> full_directory() { return {}; }
// One under RootDirectory; given empty, there is none. The auxiliary readers want it to exist.
constexpr KindOf<TemplateFolder> template_directory() { return {}; }

// Checks: a program with its full path; that and arguments; or anything that is no full path.
constexpr CheckRule program() { return {&IsProgram}; }
constexpr CheckRule command() { return {&IsCommand}; }
constexpr CheckRule list_program() { return {&IsListProgram}; }
// A directory; one with its full path; one under `base`, or the root, when it is relative; several.
constexpr CheckRule existing_directory() { return {&IsExistingDirectory}; }
constexpr CheckRule queue_directory() { return {&IsQueueFolder}; }
constexpr CheckRule directory_under(SettingOf<Text> base)
    { return {&IsDirectoryUnder, {.first = base}}; }
constexpr CheckRule directory_under_root() { return {&IsDirectoryUnderRoot}; }
constexpr CheckRule directories() { return {&AreDirectories, {.separators = {':'}}}; }
// Writable files, not directories only; a file in TemplateDirectory.
constexpr CheckRule devices() { return {&AreDevices, {.separators = {':'}}}; }
constexpr CheckRule template_file() { return {&IsTemplateFile}; }
// The name of a set that can be read.
constexpr CheckRule keyword_set() { return {&IsKeywordSet}; }
constexpr CheckRule mime_type_set() { return {&IsMimeTypeSet}; }

// Lists

// Words with any of the separators between them.
constexpr KindOf<Words> words(Characters<3> separators) { return {{.separators = separators.all}}; }
// Names of groups, and of sets; the empty text: no sets.
constexpr KindOf<Names> names() { return {{.separators = {':'}}}; }
constexpr KindOf<Sets> sets() { return {{.separators = {':'}}}; }
// Domains. When none is given and programs and directories are checked, the host's own domain,
// which is looked at more closely than what somebody has written.
constexpr KindOf<InternalDomainList> internal_domains() { return {{.separators = {'&', ':'}}}; }
// Conditions on IP addresses.
constexpr KindOf<IpConditionList> ip_conditions() { return {{.separators = {':'}}}; }
// At most MaxAddressList mail addresses; neither is looked at with RC_NOCHECK. The message of a bad
// one has `punctuation` in front of the address.
constexpr KindOf<MailAddresses> addresses(Characters<2> punctuation)
    { return {{.punctuation = punctuation.all}}; }
// At most eight servers, "host" or "host:port" with a port from 1 to 60000.
constexpr KindOf<Servers> servers(SettingOf<ServerList> list)
    { return {{.separators = {' '}, .first = list}}; }
// The same on the gateway's own way out: markers for the submission program and a command, too.
constexpr KindOf<ServersAndMarkers> servers_and_markers(SettingOf<ServerList> list)
    { return {{.separators = {' '}, .first = list}}; }
// At most eight names.
constexpr KindOf<UserGroup> user_group() { return {{.separators = {':'}}}; }

// A check: "host" or "host:port"; of a longer value the first `longest` characters count.
constexpr CheckRule host_port(std::uint16_t longest) { return {&IsHostPort, {.longest = longest}}; }

// clang-format on

} // namespace ov::kinds
