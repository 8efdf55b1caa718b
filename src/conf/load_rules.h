// The rules of the catalogue's "load" column, and its steps.
//
// Unless a rule says otherwise, a number that does not fit the type of its setting is invalid; a
// setting without a sign takes a negative number that fits an int and wraps it.
#pragma once

#include "conf/catalogue.h"

namespace ov::load_rules {

inline constexpr std::int64_t NoBound = std::numeric_limits<std::int64_t>::max();
inline constexpr std::uint16_t NoLength = std::numeric_limits<std::uint16_t>::max();
// What a rule's second argument turns on.
enum FileOption : bool { FullPath = true };         // only an absolute path will do
enum DirectoryOption : bool { Created = true };     // made when it is missing
enum ServerOption : bool { MarkersAllowed = true }; // "_MSP_" and "_CMD_"

Verdict load_boolean(const Loading&);
Verdict load_integer(const Loading&);
Verdict load_integer64(const Loading&);
Verdict load_digits(const Loading&);
Verdict load_within(const Loading&);
Verdict load_word(const Loading&);
Verdict load_level(const Loading&);
Verdict load_bytes(const Loading&);
Verdict load_kilobytes(const Loading&);
Verdict load_min_free(const Loading&);
Verdict load_text(const Loading&);
Verdict load_signature(const Loading&);
Verdict load_path(const Loading&);
Verdict load_file(const Loading&);
Verdict default_file(const Loading&);
Verdict load_directory(const Loading&);
Verdict load_full_directory(const Loading&);
Verdict default_directory(const Loading&);
Verdict load_template_directory(const Loading&);
Verdict load_words(const Loading&);
Verdict load_internal_domains(const Loading&);
Verdict load_ip_conditions(const Loading&);
Verdict load_addresses(const Loading&);
Verdict load_servers(const Loading&);
Verdict load_user_group(const Loading&);

// true, yes, on, 1 or false, no, off, 0.
constexpr LoadRule boolean() {
    return {.load = load_boolean, .mode = TokenMode};
}
// A decimal number; text behind it, or instead of it, is overlooked (no digits: 0).
constexpr LoadRule integer(std::int64_t lowest = std::numeric_limits<std::int64_t>::min(),
                           std::int64_t highest = NoBound) {
    return {.load = load_integer, .lowest = lowest, .highest = highest};
}
// The same, for 64-bit settings without a sign up to their largest number.
constexpr LoadRule integer64() {
    return {.load = load_integer64};
}
// A number made of decimal digits only, at most `longest` of them.
constexpr LoadRule digits(std::int64_t lowest = 0, std::int64_t highest = NoBound,
                          std::uint16_t longest = NoLength) {
    return {.load = load_digits, .lowest = lowest, .highest = highest, .longest = longest};
}
// The settings that bound a value by the rule `within`, as they stand.
std::int64_t lower_limit(const LoadRule& rule);
std::int64_t upper_limit(const LoadRule& rule);

// Digits only, within these two.
template <class Bound>
constexpr LoadRule within(Bound& low, Bound& high) {
    return {.load = load_within, .first = &low, .second = &high};
}
// A word of a value table.
constexpr LoadRule word(Table table) {
    return {.load = load_word, .table = static_cast<std::int8_t>(table)};
}
// A word of the table of levels, or a number from 0 to 9999.
constexpr LoadRule level() {
    return {.load = load_level, .lowest = 0, .highest = 9999, .table = LogLevelTable};
}
// A size in bytes (without a unit: kilobytes are meant), or in kilobytes (megabytes are meant).
constexpr LoadRule bytes() {
    return {.load = load_bytes};
}
constexpr LoadRule kilobytes() {
    return {.load = load_kilobytes};
}
// Kilobytes that are to stay free on the file system of `directory`, for `blocks` also in its
// blocks.
constexpr LoadRule min_free(Text& directory, long& blocks) {
    return {.load = load_min_free, .first = &directory, .second = &blocks};
}
// Any text.
constexpr LoadRule text() {
    return {.load = load_text};
}
// Any text of at most `longest` characters; the empty one unsets the setting.
constexpr LoadRule signature(std::uint16_t longest) {
    return {.load = load_signature, .longest = longest};
}
// The absolute path of something that exists (not looked at with RC_NOCHECK).
constexpr LoadRule path() {
    return {.load = load_path};
}
// A file, in EtcDirectory when it is relative. The default is taken there in any case.
constexpr LoadRule file(FileOption full_path = {}) {
    return {.load = load_file, .absent = default_file, .option = full_path, .first = &EtcDirectory};
}
// A directory that exists (not looked at with RC_NODIRCHECK), under `base` when it is relative.
// The default is taken there in any case. Without a base it has to be absolute.
constexpr LoadRule directory(Text& base, DirectoryOption created = {}) {
    return {.load = load_directory, .absent = default_directory, .option = created, .first = &base};
}
constexpr LoadRule directory() {
    return {.load = load_full_directory};
}
// A directory under RootDirectory; given empty, there is none. The auxiliary readers want it to
// exist.
constexpr LoadRule template_directory() {
    return {.load = load_template_directory, .absent = default_directory, .first = &RootDirectory};
}
// Words separated by any character of `separators`.
constexpr LoadRule words(const char* separators) {
    return {.load = load_words, .first = separators};
}
// Domains. When none is given and programs and directories are checked, the host's own domain.
constexpr LoadRule internal_domains() {
    return {.load = load_internal_domains, .absent = load_internal_domains, .first = "&:"};
}
// Conditions on IP addresses, separated by ":".
constexpr LoadRule ip_conditions() {
    return {.load = load_ip_conditions};
}
// At most MaxAddressList mail addresses; both not looked at with RC_NOCHECK. `punctuation` is what
// the message of a bad one has in front of the address.
constexpr LoadRule addresses(const char* punctuation) {
    return {.load = load_addresses, .first = punctuation};
}
// At most eight servers, "host" or "host:port" with a port from 1 to 60000.
constexpr LoadRule servers(ServerList& list, ServerOption markers = {}) {
    return {.load = load_servers, .option = markers, .first = &list};
}
// At most eight names separated by ":".
constexpr LoadRule user_group() {
    return {.load = load_user_group};
}

// The keys of the chosen submission program become those of sendmail, which the rest of the
// gateway reads.
Verdict chosen_program(const Loading&);
// Forwarding needs an address to forward to.
Verdict forward_mode(const Loading&);
// Whether messages can be linked from queue to queue, and moved into quarantine.
Verdict archive_hard_link(const Loading&);
Verdict quarantine_hard_link(const Loading&);

} // namespace ov::load_rules
