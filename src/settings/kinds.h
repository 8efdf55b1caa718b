// The kinds of values: for each what the loader makes of it, what a check accepts, how it is shown,
// and what the manual says, side by side. A row of the catalogue names a kind by its function, with
// what is special about the row.
//
// Unless a kind says otherwise, a number that does not fit the type of its setting is invalid; a
// setting without a sign takes a negative number that fits an int and wraps it.
#pragma once

#include "addr/addr_list.h"
#include "conf/layout.h"
#include "settings/kind.h"
#include "settings/load.h"
#include "settings/validate.h"
#include "util/host.h"
#include "util/place.h"
#include "util/util.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <initializer_list>
#include <sys/stat.h>
#include <utility>

namespace ov::kinds {

inline Verdict valid_if(bool valid) {
    return valid ? Verdict::Taken : Verdict::Invalid;
}

template <class Type>
Type& setting(const Value& value) {
    return *std::get<Type*>(value.variable);
}

// The other setting that the row names.
template <class Type>
Type& other(const Other& member) {
    return settings.*std::get<Type Settings::*>(member);
}
inline const Text& base_of(const Value& value) {
    return other<Text>(value.manner.first);
}

inline const char* separators_of(const Value& value) {
    return value.manner.characters.data();
}

// The number in an integer setting of any type.
inline std::int64_t number_in(const Variable& variable) {
    return std::visit(
        [](const auto* number) -> std::int64_t {
            if constexpr (std::is_integral_v<std::remove_cvref_t<decltype(*number)>>) {
                return static_cast<std::int64_t>(*number);
            } else {
                return 0; // no row takes a number for what is none
            }
        },
        variable);
}

// Whether an integer setting can hold `number`. One without a sign takes a negative number that
// fits an int, and wraps it.
inline bool fits(const Variable& variable, std::int64_t number) {
    return std::visit(
        [number](const auto* setting) {
            using Type = std::remove_cvref_t<decltype(*setting)>;
            if constexpr (std::is_integral_v<Type>) {
                return std::in_range<Type>(number) ||
                       (std::is_unsigned_v<Type> && number < 0 && number >= INT_MIN);
            } else {
                return false;
            }
        },
        variable);
}

// Stores a number when it is there and fits the setting. Returns whether it does.
inline Verdict store(const Value& value, std::optional<std::int64_t> number) {
    if (!number || !fits(value.variable, *number)) {
        return Verdict::Invalid;
    }
    std::visit(
        [number](auto* setting) {
            using Type = std::remove_reference_t<decltype(*setting)>;
            if constexpr (std::is_integral_v<Type>) {
                *setting = static_cast<Type>(*number);
            }
        },
        value.variable);
    return Verdict::Taken;
}

// The number at the start of `text`, 0 without one; nothing when it is too large for any setting.
inline std::optional<std::int64_t> number_at(const std::string& text, int base = 10) {
    errno = 0;
    const long value = std::strtol(text.c_str(), nullptr, base);
    return errno == ERANGE ? std::nullopt : std::optional<std::int64_t>(value);
}

// The texts that `text_of` gives for the items of a list.
template <class List, class TextOf>
std::string joined(const List& list, TextOf text_of) {
    std::string text;
    bool first = true;
    for (const auto& item : list) {
        if (!first) {
            text += ':';
        }
        first = false;
        text += text_of(item);
    }
    return text;
}

template <class Test>
bool all_words(const Value& value, const char* separators, Test test) {
    const WordList words = split_str(value.text, separators);
    return words && std::all_of(words->begin(), words->end(), test);
}

constexpr std::array<char, 4> characters(const char* text) {
    std::array<char, 4> found{};
    for (std::size_t i = 0; text[i] != '\0'; ++i) {
        found.at(i) = text[i];
        found.at(i + 1) = '\0'; // does not compile where that is no longer in it
    }
    return found;
}

inline Shown show_number(const Value& value) {
    return std::to_string(number_in(value.variable));
}
inline Shown show_text(const Value& value) {
    return std::string(setting<Text>(value).view());
}

// ---- Numbers

// true, yes, on, 1 or false, no, off, 0.
inline Verdict load_boolean(const Loading& value) {
    int number = 0;
    return truefalse(value.text, &number) == 0 ? store(value, number) : Verdict::Invalid;
}
inline bool is_boolean(const Value& value) {
    int ignored = 0;
    return truefalse(value.text, &ignored) == 0;
}
inline Shown show_boolean(const Value& value) {
    return number_in(value.variable) != 0 ? "true" : "false";
}
inline std::string written_boolean(const Value& value) {
    return number_in(value.variable) != 0 ? "yes" : "no";
}
inline constexpr Kind Boolean{.words = {"boolean", TheSame, "true or false",
                                        "true, yes, on, 1 or false, no, off, 0, in any case.",
                                        "yes no"},
                              .types = Numbers,
                              .load = load_boolean,
                              .check = is_boolean,
                              .show = show_boolean,
                              .written = written_boolean};
constexpr Rule boolean() {
    return {&Boolean, {.mode = TokenMode}};
}

// A decimal number; text behind it, or instead of it, is overlooked (no digits: 0).
inline Verdict load_integer(const Loading& value) {
    const std::optional<std::int64_t> number = number_at(value.text);
    const bool within = number && *number >= value.manner.lowest && *number <= value.manner.highest;
    return within ? store(value, number) : Verdict::Invalid;
}
inline constexpr Kind Integer{
    .words = {"number|{bounds}", nullptr, "number",
              "A decimal number, for permissions, too: 416 is 0640. "
              "Text behind it is overlooked, and without digits it is 0. "
              "A setting without a sign takes a negative number and wraps "
              "it."},
    .types = Numbers,
    .load = load_integer,
    .show = show_number};
constexpr Rule integer(std::int64_t lowest = std::numeric_limits<std::int64_t>::min(),
                       std::int64_t highest = NoBound) {
    return {&Integer, {.lowest = lowest, .highest = highest}};
}

// The same, for a setting without a sign up to its largest number.
inline Verdict load_integer64(const Loading& value) {
    const std::optional<std::int64_t> number = number_at(value.text);
    auto* const* large = std::get_if<unsigned long*>(&value.variable);
    if (number || !large) {
        return store(value, number);
    }
    errno = 0;
    const unsigned long beyond = std::strtoul(value.text.c_str(), nullptr, 10);
    if (errno == ERANGE || value.text.find('-') != value.text.npos) {
        return Verdict::Invalid;
    }
    **large = beyond;
    return Verdict::Taken;
}
inline constexpr Kind Integer64{.words = {"number|{range}", nullptr, "number"},
                                .types = type_of<long>() | type_of<unsigned long>(),
                                .load = load_integer64,
                                .show = show_number};
constexpr Rule integer64() {
    return {&Integer64};
}

// A number with base prefixes that the setting can hold; text without digits is 0. In the main file
// only the check knows them.
inline Verdict load_number(const Loading& value) {
    return store(value, number_at(value.text, 0));
}
inline bool is_based_number(const Value& value) {
    const std::optional<std::int64_t> number = number_at(value.text, 0);
    return number && *number >= value.manner.lowest && fits(value.variable, *number);
}
inline constexpr Kind Number{
    .words =
        {"number", "number (0x in front passes, too, but loads as 0)", "number",
         "A number; with 0x in front it is hexadecimal, with 0 octal. Without digits it is 0."},
    .types = Numbers,
    .load = load_number,
    .check = is_based_number,
    .show = show_number};
inline constexpr Kind PositiveNumber{
    .words = {nullptr, "number, not negative (0x in front passes, too, but loads as 0)", nullptr},
    .types = Numbers,
    .check = is_based_number};
constexpr Rule number() {
    return {&Number};
}
constexpr Rule number_not_negative() {
    return {&PositiveNumber, {.lowest = 0}};
}

// A number made of decimal digits only, at most `longest` of them.
inline std::optional<std::int64_t> digits_in(const Value& value) {
    return value.text.size() <= value.manner.longest
               ? decimal_within(value.text, value.manner.lowest, value.manner.highest)
               : std::nullopt;
}
inline Verdict load_digits(const Loading& value) {
    return store(value, digits_in(value));
}
inline bool are_digits(const Value& value) {
    return digits_in(value).has_value();
}
inline constexpr Kind Digits{
    .words = {"digits|{bounds}", TheSame, "number", "Decimal digits and nothing else."},
    .types = Numbers,
    .load = load_digits,
    .check = are_digits,
    .show = show_number};
constexpr Rule digits(std::int64_t lowest = 0, std::int64_t highest = NoBound,
                      std::uint16_t longest = NoLength) {
    return {&Digits, {.lowest = lowest, .highest = highest, .longest = longest}};
}

// Digits, however many: what is loaded may still be too large.
inline bool are_all_digits(const Value& value) {
    return is_alldigit(value.text) != 0;
}
inline constexpr Kind AllDigits{
    .words = {nullptr, "digits", nullptr}, .types = Numbers, .check = are_all_digits};
constexpr Rule all_digits() {
    return {&AllDigits};
}

// Digits from 0 to `highest`; the empty text leaves the setting as it is.
inline Verdict load_limit(const Loading& value) {
    return value.text.empty() ? Verdict::Taken : load_digits(value);
}
inline constexpr Kind Limit{
    .words = {"limit", nullptr, nullptr, "Digits from {bounds}; nothing leaves it as it is."},
    .types = Numbers,
    .load = load_limit};
constexpr Rule limit(std::int64_t highest) {
    return {&Limit, {.lowest = 0, .highest = highest}};
}

// Digits only, within two other settings as they stand.
inline std::int64_t bound_in(const Other& member) {
    if (const auto* number = std::get_if<int Settings::*>(&member)) {
        return settings.**number;
    }
    return settings.*std::get<long Settings::*>(member);
}
inline std::optional<std::int64_t> number_within(const Value& value) {
    return decimal_within(value.text, std::max<std::int64_t>(bound_in(value.manner.first), 0),
                          bound_in(value.manner.second));
}
inline Verdict load_within(const Loading& value) {
    return store(value, number_within(value));
}
inline bool is_within(const Value& value) {
    return number_within(value).has_value();
}
inline constexpr Kind Within{.words = {"digits|from {first} to {second}",
                                       "digits within the defaults of these limits", "number"},
                             .types = Numbers,
                             .load = load_within,
                             .check = is_within,
                             .show = show_number};
template <class Bound>
requires std::is_same_v<Bound, int> || std::is_same_v<Bound, long>
constexpr Rule within(SettingOf<Bound> low, SettingOf<Bound> high) {
    return {&Within, {.first = low, .second = high}};
}

// A word of a value table.
inline Verdict load_word(const Loading& value) {
    const int number = val_vtab(value.manner.table, value.text);
    return number == -1 ? Verdict::Invalid : store(value, number);
}
inline bool is_word(const Value& value) {
    return val_vtab(value.manner.table, value.text) >= 0;
}
inline Shown show_word(const Value& value) {
    const char* word = str_vtab(value.manner.table, static_cast<int>(number_in(value.variable)));
    return word ? Shown(word) : std::nullopt;
}
inline std::string written_word(const Value& value) {
    return show_word(value).value_or("");
}
inline constexpr Kind Word{.words = {"word|{words}", TheSame, "word",
                                     "One of the words that are listed, in any case.", "{choices}"},
                           .types = Numbers,
                           .load = load_word,
                           .check = is_word,
                           .show = show_word,
                           .written = written_word};
constexpr Rule word(Table table) {
    return {&Word, {.table = static_cast<std::int8_t>(table)}};
}

// Which addresses of a message a filter looks at.
inline constexpr Kind Selection{
    .words = {"selection", nullptr, nullptr, "One of {words}, in any case."},
    .types = Numbers,
    .load = load_word};
constexpr Rule selection() {
    return {&Selection, {.table = AddrSelectTable}};
}

// A word of the table of levels, or a number from 0 to NoLevel.
inline Verdict load_level(const Loading& value) {
    return load_word(value) == Verdict::Taken ? Verdict::Taken : load_integer(value);
}
inline bool is_level(const Value& value) {
    return is_word(value) || are_digits(value);
}
inline Shown show_level(const Value& value) {
    return number_in(value.variable) >= NoLevel ? "none" : show_number(value);
}
inline std::string written_level(const Value& value) {
    return show_level(value).value_or("");
}
inline constexpr Kind Level{
    .words = {"level|{words}, or {bounds}", TheSame, "number, or \"none\"",
              "A word or a number; the words stand for 9999 (none), 1 (weak) and 0 (strong). "
              "Any other word is read as a number without digits: as 0.",
              "{choices}"},
    .types = Numbers,
    .load = load_level,
    .check = is_level,
    .show = show_level,
    .written = written_level};
constexpr Rule level() {
    return {&Level, {.lowest = 0, .highest = NoLevel, .table = LogLevelTable}};
}

// The same without the words for the weak and the strong level.
inline bool is_none_or_number(const Value& value) {
    return same_word(value.text, "none") || are_digits(value);
}
inline constexpr Kind NoneOrNumber{
    .words = {nullptr, "level: none, or {bounds}", nullptr, nullptr, "none"},
    .types = Numbers,
    .check = is_none_or_number};
constexpr Rule none_or_number() {
    return {&NoneOrNumber, {.lowest = 0, .highest = NoLevel}};
}

// A size in bytes; without a unit `unit` is meant.
inline Verdict load_bytes(const Loading& value) {
    const std::int64_t size =
        value.text.empty() ? -1 : conv_byte(value.text, value.manner.characters[0]);
    return size >= 0 ? store(value, size) : Verdict::Invalid;
}
inline bool is_bytes(const Value& value) {
    return conv_byte(value.text, value.manner.characters[0]) >= 0;
}
// 1572864 as "1M512K".
inline Shown show_byte_size(const Value& value) {
    const std::int64_t size = number_in(value.variable);
    if (size <= 0) {
        return "0";
    }
    std::string text;
    for (const auto& [unit, shift] : {std::pair{'G', 30}, {'M', 20}, {'K', 10}, {'B', 0}}) {
        const std::int64_t part = shift == 30 ? size >> shift : (size >> shift) & 1023;
        if (part != 0) {
            text += std::to_string(part) + unit;
        }
    }
    return text;
}
// In the shortest form that is exact.
inline std::string written_size(std::int64_t bytes) {
    for (const auto& [unit, shift] : {std::pair{'G', 30}, {'M', 20}, {'K', 10}}) {
        if (bytes != 0 && bytes % (std::int64_t{1} << shift) == 0) {
            return std::to_string(bytes >> shift) + unit;
        }
    }
    return bytes == 0 ? "0" : std::to_string(bytes) + 'B';
}
inline std::string written_bytes(const Value& value) {
    return written_size(number_in(value.variable));
}
inline constexpr Kind Bytes{
    .words = {"size|in bytes; without a unit: {unit}", "size; without a unit: {unit}",
              "size with units",
              "Numbers of at most nine digits, each with a unit \"B\", "
              "\"K\", \"M\" or \"G\" in either case (1024-based), added up: "
              "\"1G512M\". The last number may lack its unit."},
    .types = Numbers,
    .load = load_bytes,
    .check = is_bytes,
    .show = show_byte_size,
    .written = written_bytes};
constexpr Rule bytes(char unit = 'K') {
    return {&Bytes, {.characters = {unit}}};
}

// A size in kilobytes; without a unit megabytes are meant.
inline Verdict load_kilobytes(const Loading& value) {
    const std::int64_t size = value.text.empty() ? -1 : conv_Kbyte(value.text, 'M');
    return size >= 0 ? store(value, size) : Verdict::Invalid;
}
inline bool is_kilobytes(const Value& value) {
    return conv_Kbyte(value.text, 'M') >= 0;
}
inline std::string written_kilobytes(const Value& value) {
    return written_size(number_in(value.variable) << 10);
}
inline constexpr Kind Kilobytes{
    .words = {"size|held in kilobytes; without a unit: M", "size; without a unit: M", "number"},
    .types = Numbers,
    .load = load_kilobytes,
    .check = is_kilobytes,
    .show = show_number,
    .written = written_kilobytes};
constexpr Rule kilobytes() {
    return {&Kilobytes};
}

// Kilobytes that are to stay free on the file system of a directory, for `blocks` also in its
// blocks.
inline Verdict load_min_free(const Loading& value) {
    const Verdict verdict = load_kilobytes(value);
    const std::int64_t size = number_in(value.variable);
    if (verdict != Verdict::Taken || size <= 0) {
        return verdict;
    }
    const char* directory = base_of(value).c_str();
    long& blocks = other<long>(value.manner.second);
    long block = 0;
    if (directory && freeblocks(directory, &block) >= 0 && block > 0) {
        blocks = std::max<long>(size / block + 1, 1);
        return verdict;
    }
    const std::string what = std::string("cannot get block size ") +
                             (directory ? directory : "<null>") + "; [" + value.section +
                             "] MinFree set 0\n";
    value.load.say(value.reader == MainReader ? "WARNING " + what
                                              : std::string(value.load.file) + ":" +
                                                    std::to_string(value.line) + ": " + what);
    store(value, 0);
    blocks = 0;
    return verdict;
}
inline constexpr Kind MinFree{
    .words = {"size|to stay free where {first} is; held in kilobytes; without a unit: M",
              "size; without a unit: M", "number"},
    .types = Numbers,
    .load = load_min_free,
    .check = is_kilobytes,
    .show = show_number,
    .written = written_kilobytes};
constexpr Rule min_free(SettingOf<Text> directory, SettingOf<long> blocks) {
    return {&MinFree, {.first = directory, .second = blocks}};
}

// Other forms in which a number is shown.
inline constexpr Kind AsNumber{
    .words = {nullptr, nullptr, "number"}, .types = Numbers, .show = show_number};
constexpr Rule as_number() {
    return {&AsNumber};
}
inline constexpr Kind AsByteSize{
    .words = {nullptr, nullptr, "size with units"}, .types = Numbers, .show = show_byte_size};
constexpr Rule as_byte_size() {
    return {&AsByteSize};
}
inline std::string hex_number(const char* format, std::int64_t number) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), format, static_cast<unsigned>(number));
    return text.data();
}
inline Shown show_hex_code(const Value& value) {
    return hex_number("0x%08x", number_in(value.variable));
}
inline constexpr Kind AsHexCode{.words = {nullptr, nullptr, "0x and eight hexadecimal digits"},
                                .types = Numbers,
                                .show = show_hex_code};
constexpr Rule as_hex_code() {
    return {&AsHexCode};
}
inline Shown show_hex(const Value& value) {
    return hex_number("%0x", number_in(value.variable));
}
inline constexpr Kind AsHex{
    .words = {nullptr, nullptr, "hexadecimal digits"}, .types = Numbers, .show = show_hex};
constexpr Rule as_hex() {
    return {&AsHex};
}

// ---- Texts

// Any text.
inline Verdict load_text(const Loading& value) {
    setting<Text>(value).set(value.text);
    return Verdict::Taken;
}
inline constexpr Kind PlainText{.words = {"text", nullptr, "text", "Any text."},
                                .types = Texts,
                                .load = load_text,
                                .show = show_text};
constexpr Rule text() {
    return {&PlainText};
}

inline bool is_anything(const Value&) {
    return true;
}
inline constexpr Kind Anything{
    .words = {nullptr, "anything", nullptr}, .types = AnyType, .check = is_anything};
constexpr Rule anything() {
    return {&Anything};
}

// A text without a blank.
inline bool is_one_word(const Value& value) {
    return value.text.find(' ') == std::string::npos;
}
inline constexpr Kind OneWord{
    .words = {nullptr, "text without a blank", nullptr}, .types = Texts, .check = is_one_word};
constexpr Rule one_word() {
    return {&OneWord};
}

// Any text of at most `longest` characters; the empty one unsets the setting.
inline Verdict load_signature(const Loading& value) {
    if (value.text.size() > value.manner.longest) {
        value.load.say("Signature too long: " + value.text + "\n");
        return Verdict::Invalid;
    }
    if (value.text.empty()) {
        setting<Text>(value).unset();
        return Verdict::Taken;
    }
    return load_text(value);
}
inline constexpr Kind Signature{
    .words = {"text|of at most {longest} characters; empty: none", nullptr, "text"},
    .types = Texts,
    .load = load_signature,
    .show = show_text};
constexpr Rule signature(std::uint16_t longest) {
    return {&Signature, {.longest = longest}};
}

// A date like "2008/02/31"; the empty text: none.
inline Verdict load_date(const Loading& value) {
    if (value.text.empty()) {
        setting<Text>(value).unset();
        return Verdict::Taken;
    }
    int ignored = 0;
    setting<Text>(value).set(value.text);
    return valid_if(date_str(value.text.c_str(), &ignored, &ignored, &ignored) == 0);
}
inline constexpr Kind Date{
    .words = {"date", nullptr, nullptr, "A date like 2008/02/31, or nothing for none."},
    .types = Texts,
    .load = load_date};
constexpr Rule date() {
    return {&Date};
}

// ---- Paths

// The directory that the row names as an absolute path, which nothing may have made it yet: then
// `made` holds it. Null when it cannot be made one.
inline const char* absolute_base(const Value& value, std::optional<std::string>& made) {
    const Text& base = base_of(value);
    if (isfullpath(base.c_str()) && base.view().ends_with('/')) {
        return base.c_str();
    }
    made = mk_dirpath(RootDirectory.c_str(), base.c_str());
    return made ? made->c_str() : nullptr;
}

// What became of a path that should be stored: nothing was made of it, or it was.
inline Verdict take_path(const Loading& value, const std::optional<std::string>& path) {
    if (!path && errno == ENOMEM) {
        return Verdict::MemoryExhausted;
    }
    if (!path) {
        return value.reader == SearchReader ? Verdict::NotConfigured : Verdict::Invalid;
    }
    setting<Text>(value).set(*path);
    return Verdict::Taken;
}

// Puts a default in its place. One for which the place is too deep stays as it is: a key that is
// absent is never refused.
inline Verdict take_default(const Loading& value, const std::optional<std::string>& path) {
    Text& target = setting<Text>(value);
    if (path) {
        target.set(*path);
    } else if (target && errno == ENOMEM) {
        return Verdict::MemoryExhausted;
    }
    return Verdict::Taken;
}

// The absolute path of something that exists (not looked at with RC_NOCHECK).
inline Verdict load_path(const Loading& value) {
    if (!isfullpath(value.text.c_str())) {
        return Verdict::NotFullPath;
    }
    struct stat info = {};
    if (!(value.load.mask & RC_NOCHECK) &&
        (value.text.size() > MaxPath || ::stat(value.text.c_str(), &info) != 0)) {
        return Verdict::Invalid;
    }
    return load_text(value);
}
inline constexpr Kind Path{
    .words = {"path", nullptr, "text",
              "The full path of something; \"ov_conf -m\" wants it to exist."},
    .types = Texts,
    .load = load_path,
    .show = show_text};
constexpr Rule path() {
    return {&Path};
}

// A file, in EtcDirectory when it is relative. The default is taken there in any case.
inline std::optional<std::string> file_path(const Value& value, const char* name) {
    std::optional<std::string> made;
    const char* base = isfullpath(name) ? nullptr : absolute_base(value, made);
    return base || isfullpath(name) ? mk_filepath(base, name) : std::nullopt;
}
inline Verdict load_file(const Loading& value) {
    return take_path(value, file_path(value, value.text.c_str()));
}
inline Verdict default_file(const Loading& value) {
    return take_default(value, file_path(value, setting<Text>(value).c_str()));
}
inline constexpr Kind File{.words = {"file|relative: in {first}", nullptr, "text",
                                     "The path of a file, which need not exist."},
                           .types = Texts,
                           .load = load_file,
                           .absent = default_file,
                           .show = show_text};
constexpr Rule file() {
    return {&File, {.first = &Settings::EtcDirectory}};
}

// The same, but only an absolute path will do.
inline Verdict load_full_file(const Loading& value) {
    return isfullpath(value.text.c_str()) ? load_file(value) : Verdict::NotFullPath;
}
inline constexpr Kind FullFile{.words = {"file|with its full path", nullptr, "text"},
                               .types = Texts,
                               .load = load_full_file,
                               .absent = default_file,
                               .show = show_text};
constexpr Rule full_file() {
    return {&FullFile, {.first = &Settings::EtcDirectory}};
}

inline std::optional<std::string> directory_path(const Value& value, const char* name) {
    std::optional<std::string> made;
    const char* base = isfullpath(name) ? nullptr : absolute_base(value, made);
    return base || isfullpath(name) ? mk_dirpath(base, name) : std::nullopt;
}

// Stores the path of a directory that stands in the file, when it exists.
inline Verdict take_directory(const Loading& value, const std::optional<std::string>& path) {
    if (path && !(value.load.mask & RC_NODIRCHECK) && !value.load.knows_directory(*path)) {
        return Verdict::Invalid;
    }
    return take_path(value, path);
}

// A directory that exists (not looked at with RC_NODIRCHECK), under `base` when it is relative.
// The default is taken there in any case.
inline Verdict load_directory(const Loading& value) {
    return value.text.empty() ? Verdict::Invalid
                              : take_directory(value, directory_path(value, value.text.c_str()));
}
inline Verdict default_directory(const Loading& value) {
    return take_default(value, directory_path(value, setting<Text>(value).c_str()));
}
inline constexpr Kind Directory{.words = {"directory|relative: under {first}", nullptr, "text",
                                          "A directory that exists. A default is not looked at."},
                                .types = Texts,
                                .load = load_directory,
                                .absent = default_directory,
                                .show = show_text};
constexpr Rule directory(SettingOf<Text> base) {
    return {&Directory, {.first = base}};
}

// The same, and made when it is missing. Another load may be making it at the same time.
inline Verdict load_created_directory(const Loading& value) {
    constexpr mode_t Mode = 0755;
    if (value.text.empty()) {
        return Verdict::Invalid;
    }
    const std::optional<std::string> path = directory_path(value, value.text.c_str());
    if (path && !(value.load.mask & RC_NODIRCHECK) && !value.load.knows_directory(*path)) {
        const std::string name = path->substr(0, path->find_last_not_of('/') + 1);
        if (const auto place = Place::of(name.c_str(), FileKind::Installed)) {
            ::mkdirat(place->at(), place->name.c_str(), Mode);
        }
    }
    return take_directory(value, path);
}
inline constexpr Kind CreatedDirectory{
    .words = {"directory|relative: under {first}; made when it is missing", nullptr, "text"},
    .types = Texts,
    .load = load_created_directory,
    .absent = default_directory,
    .show = show_text};
constexpr Rule created_directory(SettingOf<Text> base) {
    return {&CreatedDirectory, {.first = base}};
}

// The same with an absolute path.
inline Verdict load_full_directory(const Loading& value) {
    if (value.text.empty()) {
        return Verdict::Invalid;
    }
    return isfullpath(value.text.c_str())
               ? take_directory(value, mk_dirpath(nullptr, value.text.c_str()))
               : Verdict::NotFullPath;
}
inline constexpr Kind FullDirectory{.words = {"directory|with its full path", nullptr, "text"},
                                    .types = Texts,
                                    .load = load_full_directory,
                                    .show = show_text};
constexpr Rule full_directory() {
    return {&FullDirectory};
}

// A directory under RootDirectory; given empty, there is none. The auxiliary readers want it to
// exist.
inline Verdict load_template_directory(const Loading& value) {
    if (value.text.empty()) {
        setting<Text>(value).unset();
        return Verdict::Taken;
    }
    const std::optional<std::string> path = directory_path(value, value.text.c_str());
    return value.reader == MainReader ? take_path(value, path) : take_directory(value, path);
}
inline constexpr Kind TemplateFolder{
    .words = {"directory|relative: under {first}; empty: none", nullptr, nullptr},
    .types = Texts,
    .load = load_template_directory,
    .absent = default_directory,
    .show = show_text};
constexpr Rule template_directory() {
    return {&TemplateFolder, {.first = &Settings::RootDirectory}};
}

// What a check wants to exist: a program with its arguments, a program, a directory of a queue.
inline bool is_command(const Value& value) {
    const WordList words = split_str(value.text, " ");
    return words && !words->empty() && isvalid_program(words->front().c_str());
}
inline constexpr Kind Command{
    .words = {nullptr, "existing program with its full path, and arguments", nullptr},
    .types = Texts,
    .check = is_command};
constexpr Rule command() {
    return {&Command};
}

inline bool is_program(const Value& value) {
    return isvalid_program(value.text.c_str()) != 0;
}
inline constexpr Kind Program{.words = {nullptr, "existing program with its full path", nullptr},
                              .types = Texts,
                              .check = is_program};
constexpr Rule program() {
    return {&Program};
}

inline bool is_queue_directory(const Value& value) {
    return isvalid_full_dir(value.text.c_str()) != 0;
}
inline constexpr Kind QueueFolder{
    .words = {nullptr, "existing directory with its full path", nullptr},
    .types = Texts,
    .check = is_queue_directory};
constexpr Rule queue_directory() {
    return {&QueueFolder};
}

// A program without arguments, or anything that is no absolute path.
inline bool is_list_program(const Value& value) {
    return !isfullpath(value.text.c_str()) || is_program(value);
}
inline constexpr Kind ListProgram{
    .words = {nullptr, "existing program, or anything that is no full path", nullptr},
    .types = Texts,
    .check = is_list_program};
constexpr Rule list_program() {
    return {&ListProgram};
}

inline bool is_existing_directory(const Value& value) {
    return isvalid_dir(value.text.c_str()) != 0;
}
inline constexpr Kind ExistingDirectory{.words = {nullptr, "existing directory", nullptr},
                                        .types = Texts,
                                        .check = is_existing_directory};
constexpr Rule existing_directory() {
    return {&ExistingDirectory};
}

// No settings have been loaded when this is checked: the base may still be a relative one.
inline bool is_directory_under(const Value& value) {
    const std::optional<std::string> path = directory_path(value, value.text.c_str());
    return path && isvalid_dir(path->c_str());
}
inline constexpr Kind DirectoryUnder{
    .words = {nullptr, "existing directory; relative: under {first} at its default", nullptr},
    .types = Texts,
    .check = is_directory_under};
constexpr Rule directory_under(SettingOf<Text> base) {
    return {&DirectoryUnder, {.first = base}};
}
// RootDirectory itself is looked up for a check.
inline constexpr Kind DirectoryUnderRoot{
    .words = {nullptr, "existing directory; relative: under {first}", nullptr},
    .types = Texts,
    .check = is_directory_under};
constexpr Rule directory_under_root() {
    return {&DirectoryUnderRoot, {.first = &Settings::RootDirectory}};
}

inline bool are_directories(const Value& value) {
    return all_words(value, separators_of(value),
                     [](const std::string& word) { return isvalid_dir(word.c_str()) != 0; });
}
inline constexpr Kind Directories{.words = {nullptr, "existing directories, {separators}", nullptr},
                                  .types = Texts,
                                  .check = are_directories};
constexpr Rule directories() {
    return {&Directories, {.characters = characters(":")}};
}

// Writable, and not directories only.
inline bool are_devices(const Value& value) {
    const WordList words = split_str(value.text, separators_of(value));
    const auto is_writable = [](const std::string& word) {
        return ::access(word.c_str(), W_OK) == 0;
    };
    const auto is_device = [](const std::string& word) { return !isvalid_dir(word.c_str()); };
    return words && std::all_of(words->begin(), words->end(), is_writable) &&
           std::any_of(words->begin(), words->end(), is_device);
}
inline constexpr Kind Devices{
    .words = {nullptr, "writable files, {separators}, not directories only", nullptr},
    .types = Texts,
    .check = are_devices};
constexpr Rule devices() {
    return {&Devices, {.characters = characters(":")}};
}

inline bool is_template_file(const Value& value) {
    return isvalid_file(TemplateDirectory.c_str(), value.text.c_str()) != 0;
}
inline constexpr Kind TemplateFile{
    .words = {nullptr, "existing file; relative: in TemplateDirectory", nullptr},
    .types = Texts,
    .check = is_template_file};
constexpr Rule template_file() {
    return {&TemplateFile};
}

inline bool is_keyword_set(const Value& value) {
    return isvalid_keywd(value.text) != 0;
}
inline constexpr Kind KeywordSet{
    .words = {nullptr, "name of a keyword set that can be read where KEYWD_Dir is by default",
              nullptr},
    .types = Texts,
    .check = is_keyword_set};
constexpr Rule keyword_set() {
    return {&KeywordSet};
}

inline bool is_mime_type_set(const Value& value) {
    return isvalid_mtype(value.text) != 0;
}
inline constexpr Kind MimeTypeSet{
    .words = {nullptr, "name of a MIME type set that can be read where MTYPE_Dir is by default",
              nullptr},
    .types = Texts,
    .check = is_mime_type_set};
constexpr Rule mime_type_set() {
    return {&MimeTypeSet};
}

// ---- Lists

// Words separated by any of the characters.
inline Verdict load_words(const Loading& value) {
    WordList words = split_str(value.text, separators_of(value));
    if (!words) {
        return Verdict::MemoryExhausted;
    }
    setting<WordList>(value) = std::move(words);
    return Verdict::Taken;
}
inline constexpr Kind Words{.words = {"words|{separators}", nullptr, nullptr, "Any words."},
                            .types = type_of<WordList>(),
                            .load = load_words};
constexpr Rule words(const char* separators) {
    return {&Words, {.characters = characters(separators)}};
}

// Names of groups.
inline constexpr Kind Names{.words = {"names", nullptr, nullptr, "Names, with \":\" between them."},
                            .types = type_of<WordList>(),
                            .load = load_words};
constexpr Rule names() {
    return {&Names, {.characters = characters(":")}};
}

// Names of sets; the empty text: none.
inline Verdict load_sets(const Loading& value) {
    if (value.text.empty()) {
        setting<WordList>(value).reset();
        return Verdict::Taken;
    }
    return load_words(value);
}
inline constexpr Kind Sets{
    .words = {"names", nullptr, nullptr}, .types = type_of<WordList>(), .load = load_sets};
constexpr Rule sets() {
    return {&Sets, {.characters = characters(":")}};
}

// Domains. When none is given and programs and directories are checked, the host's own domain,
// which is looked at more closely than what somebody has written.
inline bool are_domain_names(const Loading& value, const std::vector<std::string>& words) {
    for (const std::string& word : words) {
        if (word.find_first_of("@?#$%&:;[]!<>()~{}/+^|,=\"") != word.npos) {
            value.load.say("invalid domain name\"" + word + "\"\n");
            return false;
        }
    }
    return true;
}
inline Verdict load_internal_domains(const Loading& value) {
    constexpr std::size_t LongestDomainList = 4096;
    std::string domains = value.text;
    const bool given = !domains.empty();
    if (!given) {
        if (value.load.mask & RC_NOCHECK) {
            return Verdict::Taken;
        }
        if (get_internaldomain(domains, LongestDomainList) != 0) {
            value.load.say("cannot set default internal domain\n");
            return Verdict::Invalid;
        }
    }
    WordList words = split_str(domains, separators_of(value));
    if (!words) {
        return Verdict::MemoryExhausted;
    }
    if (!given && !are_domain_names(value, *words)) {
        return Verdict::Invalid;
    }
    setting<WordList>(value) = std::move(words);
    return Verdict::Taken;
}
inline bool are_domains(const Value& value) {
    return all_words(value, separators_of(value), [](const std::string& word) {
        return std::all_of(word.begin(), word.end(), is_name_character);
    });
}
inline Shown show_internal_domains(const Value& value) {
    if (const WordList& list = setting<WordList>(value)) {
        return joined(*list, [](const std::string& word) { return word; });
    }
    std::string domain;
    return get_internaldomain(domain, MaxText + 1) == 0 ? domain : "";
}
inline constexpr Kind InternalDomainList{
    .words =
        {"domains|{separators}", R"(domains of letters, digits, ".", "-" and "_")",
         R"(list, separated by ":"; the host's own domain when there is none)",
         "Mail domains. Without any, the registrable domain of the host's own name counts; on a "
         "host whose name has none, they have to be given."},
    .types = type_of<WordList>(),
    .load = load_internal_domains,
    .absent = load_internal_domains,
    .check = are_domains,
    .show = show_internal_domains};
constexpr Rule internal_domains() {
    return {&InternalDomainList, {.characters = characters("&:")}};
}

// Conditions on IP addresses.
inline Verdict load_ip_conditions(const Loading& value) {
    int no_memory = 0;
    IpList conditions = ipaddr_makeaddr(value.text, &no_memory);
    if (!conditions) {
        return no_memory ? Verdict::MemoryExhausted : Verdict::Invalid;
    }
    setting<IpList>(value) = std::move(conditions);
    return Verdict::Taken;
}
inline bool are_networks(const Value& value) {
    return all_words(value, separators_of(value),
                     [](const std::string& word) { return isvalid_ipaddr(word.c_str(), 0) != 0; });
}
inline Shown show_conditions(const Value& value) {
    return joined(setting<IpList>(value).value_or(IpConditions{}),
                  [](const IPADDRCOND& condition) { return condition.str.data(); });
}
inline constexpr Kind IpConditionList{
    .words =
        {"IP addresses|{separators}", "IP addresses and networks", "list, {separators}",
         "IPv4 addresses, leading parts of one, networks with the mask length behind \"/\", or "
         "patterns with \"*\"."},
    .types = type_of<IpList>(),
    .load = load_ip_conditions,
    .check = are_networks,
    .show = show_conditions};
constexpr Rule ip_conditions() {
    return {&IpConditionList, {.characters = characters(":")}};
}

// At most MaxAddressList mail addresses; both not looked at with RC_NOCHECK. `punctuation` is what
// the message of a bad one has in front of the address.
inline Verdict load_addresses(const Loading& value) {
    const WordList words = split_str(value.text, ";,");
    if (!words) {
        return Verdict::MemoryExhausted;
    }
    if (!(value.load.mask & RC_NOCHECK)) {
        if (std::cmp_greater(words->size(), MaxAddressList)) {
            value.load.say("Too much mail addresses. \"" + value.text + "\"\n");
            return Verdict::Invalid;
        }
        for (const std::string& word : *words) {
            if (!isvalid_address(word.c_str(), AddressPlain)) {
                value.load.say(std::string("Invalid mail address") +
                               value.manner.characters.data() + " \"" + word + "\"\n");
                return Verdict::Invalid;
            }
        }
    }
    AddressList list;
    for (const std::string& word : *words) {
        if (!append_addresses(&list, word)) {
            free_ADDRS(std::move(list));
            return Verdict::MemoryExhausted;
        }
    }
    free_ADDRS(std::exchange(setting<AddressList>(value), std::move(list)));
    return Verdict::Taken;
}
inline bool are_addresses(const Value& value) {
    return all_words(value, ";,", [](const std::string& word) {
        return isvalid_address(word.c_str(), AddressStrict) != 0;
    });
}
// As many addresses as fit a path-sized line, with nothing in them that a terminal would obey.
inline Shown show_addresses(const Value& value) {
    std::string text;
    const ADDRS* cell = setting<AddressList>(value).get();
    for (; cell; cell = cell->next.get()) {
        const std::string_view address = cell->str ? std::string_view(*cell->str) : "";
        if (text.size() + (text.empty() ? 0 : 1) + address.size() > MaxPath) {
            break;
        }
        if (!text.empty()) {
            text += ';';
        }
        text += address;
    }
    for (char& c : text) {
        if (c == '\t' || c == '\r' || c == '\n') {
            c = ' ';
        } else if (!is_printable(c)) {
            c = '?';
        }
    }
    return text;
}
inline constexpr Kind MailAddresses{
    .words = {R"(mail addresses|separated by ";" or ","; at most MaxAddressList)",
              R"(mail addresses of letters, digits, ".", "-" and "_")", R"(list, separated by ";")",
              "Mail addresses, also with a name, \"Taro <taro@example.com>\": the bare address is "
              "kept."},
    .types = type_of<AddressList>(),
    .load = load_addresses,
    .check = are_addresses,
    .show = show_addresses};
constexpr Rule addresses(const char* punctuation) {
    return {&MailAddresses, {.characters = characters(punctuation)}};
}

// Clears the list and gives each word of `text` to `read`, which says whether it is valid, with a
// record of its own. More words than there are records are invalid.
template <class Read>
Verdict fill(ServerList& list, const std::string& text, const char* separators, Read read) {
    for (SVRLIST& record : list) {
        record.host.unset();
        record.port = 0;
        record.flg = 0;
    }
    const WordList words = split_str(text, separators);
    if (!words) {
        return Verdict::MemoryExhausted;
    }
    if (words->size() > list.size()) {
        return Verdict::Invalid;
    }
    auto record = list.begin();
    for (const std::string& word : *words) {
        if (!read(word, *record++)) {
            return Verdict::Invalid;
        }
    }
    return Verdict::Taken;
}

// What `host` marks in a list of servers (see SVRLIST); 0: it is a host.
inline int marker(std::string_view host) {
    return same_word(host, MspMarker) ? 1 : same_word(host, CommandMarker) ? 2 : 0;
}

// Reads "host" or "host:port", or a marker where it may stand. Returns whether the port is one.
inline bool read_server(const std::string& word, bool markers_allowed, SVRLIST& server) {
    const std::optional<HostAndPort> given = split_hostport(word);
    if (!given) {
        return false;
    }
    server.flg = markers_allowed ? marker(given->host) : 0;
    if (server.flg != 0) {
        server.host.set(server.flg == 1 ? MspMarker : CommandMarker);
    } else {
        server.host.set(given->host);
        server.port = given->port;
    }
    return true;
}

// At most eight servers, "host" or "host:port" with a port from 1 to 60000; where it is the
// gateway's own way out, the markers for the submission program and a command may be among them.
inline Verdict load_server_list(const Loading& value, bool markers_allowed) {
    const Verdict verdict =
        fill(other<ServerList>(value.manner.first), value.text, separators_of(value),
             [markers_allowed](const std::string& word, SVRLIST& server) {
                 return read_server(word, markers_allowed, server);
             });
    return verdict == Verdict::Taken ? load_text(value) : verdict;
}
inline Verdict load_servers(const Loading& value) {
    return load_server_list(value, false);
}
inline Verdict load_servers_and_markers(const Loading& value) {
    return load_server_list(value, true);
}
inline bool are_servers(const Value& value) {
    const WordList words = split_str(value.text, separators_of(value));
    return words && words->size() <= std::tuple_size_v<ServerList> &&
           std::all_of(words->begin(), words->end(), [](const std::string& word) {
               return marker(word) != 0 || isvalid_hostport(word);
           });
}
inline constexpr Kind Servers{
    .words =
        {"servers", nullptr, "text",
         "At most eight of \"host\" or \"host:port\", separated by blanks, with a port from 1 to "
         "60000; without one it is 25."},
    .types = Texts,
    .load = load_servers,
    .show = show_text};
constexpr Rule servers(SettingOf<ServerList> list) {
    return {&Servers, {.characters = characters(" "), .first = list}};
}
inline constexpr Kind ServersAndMarkers{
    .words = {R"(servers|"_MSP_" and "_CMD_" may be among them)",
              R"(at most eight servers, "_MSP_" and "_CMD_" among them)", "text"},
    .types = Texts,
    .load = load_servers_and_markers,
    .check = are_servers,
    .show = show_text};
constexpr Rule servers_and_markers(SettingOf<ServerList> list) {
    return {&ServersAndMarkers, {.characters = characters(" "), .first = list}};
}

// "host" or "host:port"; of a longer value the first `longest` characters count.
inline bool is_host_port(const Value& value) {
    return isvalid_hostport(value.text.substr(0, value.manner.longest));
}
inline constexpr Kind HostPort{
    .words = {nullptr, R"("host" or "host:port", of which {longest} characters count)", nullptr},
    .types = Texts,
    .check = is_host_port};
constexpr Rule host_port(std::uint16_t longest) {
    return {&HostPort, {.longest = longest}};
}

// At most eight names.
inline Verdict load_user_group(const Loading& value) {
    return fill(setting<ServerList>(value), value.text, separators_of(value),
                [](const std::string& word, SVRLIST& member) {
                    member.host.set(word);
                    return true;
                });
}
inline Shown show_user_group(const Value& value) {
    std::vector<std::string_view> names;
    for (const SVRLIST& member : setting<ServerList>(value)) {
        if (member.host) {
            names.push_back(member.host.view());
        }
    }
    return joined(names, [](std::string_view name) { return name; });
}
inline constexpr Kind UserGroup{
    .words = {"words|{separators}; at most eight", nullptr, "list, {separators}"},
    .types = type_of<ServerList>(),
    .load = load_user_group,
    .show = show_user_group};
constexpr Rule user_group() {
    return {&UserGroup, {.characters = characters(":")}};
}

} // namespace ov::kinds
