#include "reference/vocabulary.h"

#include "conf/catalogue.h"
#include "conf/load_rules.h"
#include "conf/settings.h"

#include <algorithm>
#include <climits>
#include <limits>
#include <stdexcept>
#include <type_traits>
#include <utility>

namespace ov {

namespace {

using load_rules::NoBound;
using load_rules::NoLength;

// The key whose setting is `variable`.
template <class Type>
std::string key_of(const Type& variable) {
    for (const Row& row : catalogue()) {
        const auto* const* setting = std::get_if<std::remove_const_t<Type>*>(&row.variable);
        if (row.section && setting && *setting == &variable) {
            return row.key;
        }
    }
    throw std::logic_error("a rule names a setting that has no key");
}

std::string words_of(Table table) {
    std::string words;
    for (const VTAB* row = VTable[table]; row->str; ++row) {
        words += (words.empty() ? "" : row[1].str ? ", " : " or ") + std::string(row->str);
    }
    return words;
}

std::string bounds(std::int64_t lowest, std::int64_t highest, std::size_t longest) {
    std::string text = std::to_string(lowest) + " to " + std::to_string(highest);
    return longest == NoLength ? text : text + ", at most " + std::to_string(longest) + " of them";
}

// The names of the separators that `characters` holds.
std::string separators(std::string_view characters) {
    std::string text;
    for (const char c : characters) {
        text += (text.empty() ? "" : " or ") + ("\"" + std::string(1, c) + "\"");
    }
    return "separated by " + text;
}

// The vocabulary of the "load" column. A number without bounds gets those of its setting later.
namespace accepted {

enum FileOption : bool { FullPath = true };
enum DirectoryOption : bool { Created = true };
enum ServerOption : bool { MarkersAllowed = true };
constexpr std::int64_t Lowest = std::numeric_limits<std::int64_t>::min();

struct Rule {
    ValueText text;
    std::int64_t lowest = Lowest;
    std::int64_t highest = NoBound;
    std::size_t longest = NoLength;
    bool bounded = false;
    bool whole_range = false; // of a setting without a sign, too
};

Rule plain(const char* kind, std::string details = "") {
    return {{kind, std::move(details)}};
}
Rule boolean() {
    return plain("boolean");
}
Rule integer(std::int64_t lowest = Lowest, std::int64_t highest = NoBound) {
    return {{"number", ""}, lowest, highest, NoLength, true};
}
Rule integer64() {
    Rule rule = integer();
    rule.whole_range = true;
    return rule;
}
Rule digits(std::int64_t lowest = 0, std::int64_t highest = NoBound,
            std::size_t longest = NoLength) {
    return {{"digits", ""}, lowest, highest, longest, true};
}
template <class Bound>
Rule within(const Bound& low, const Bound& high) {
    return plain("digits", "from " + key_of(low) + " to " + key_of(high));
}
Rule word(Table table) {
    return plain("word", words_of(table));
}
Rule level() {
    return plain("level", words_of(LogLevelTable) + ", or 0 to 9999");
}
Rule bytes() {
    return plain("size", "in bytes; without a unit: K");
}
Rule kilobytes() {
    return plain("size", "held in kilobytes; without a unit: M");
}
Rule min_free(const Text& directory, long&) {
    return plain("size", "to stay free where " + key_of(directory) +
                             " is; held in kilobytes; without a unit: M");
}
Rule text() {
    return plain("text");
}
Rule signature(std::size_t longest) {
    return plain("text", "of at most " + std::to_string(longest) + " characters; empty: none");
}
Rule path() {
    return plain("path");
}
Rule file(FileOption option = {}) {
    return plain("file", option == FullPath ? "with its full path" : "relative: in EtcDirectory");
}
Rule directory(const Text& base, DirectoryOption option = {}) {
    return plain("directory", "relative: under " + key_of(base) +
                                  (option == Created ? "; made when it is missing" : ""));
}
Rule directory() {
    return plain("directory", "with its full path");
}
Rule template_directory() {
    return plain("directory", "relative: under RootDirectory; empty: none");
}
Rule words(const char* characters) {
    return plain("words", separators(characters));
}
Rule internal_domains() {
    return plain("domains", separators("&:"));
}
Rule ip_conditions() {
    return plain("IP addresses", separators(":"));
}
Rule addresses(const char*) {
    return plain("mail addresses", separators(";,") + "; at most MaxAddressList");
}
Rule servers(const ServerList&, ServerOption markers = {}) {
    return plain("servers",
                 markers == MarkersAllowed ? R"("_MSP_" and "_CMD_" may be among them)" : "");
}
Rule user_group() {
    return plain("words", separators(":") + "; at most eight");
}

// By the number of the row.
std::vector<Rule> rules() {
    return {
#define SETTING(section, key, variable, type, initial, gate, load, check, print) (load),
#define STEP(gate, step) {},
#include "conf/catalogue.def"
#undef STEP
#undef SETTING
    };
}

} // namespace accepted

// The vocabulary of the "check" column. The empty text: it cannot be checked.
namespace checked {

enum LevelWords : bool { NoneOnly = false, AnyWord = true };
enum NumberSign : bool { AnySign = false, NotNegative = true };

std::string empty_or(const std::string& rule) {
    return rule + "; may be empty";
}
std::string required(const std::string& rule) {
    return rule + "; not empty";
}
std::string unchecked() {
    return "";
}
std::string anything() {
    return "anything";
}
std::string boolean() {
    return "boolean";
}
std::string word(Table table) {
    return "word: " + words_of(table);
}
std::string digits(std::int64_t lowest, std::int64_t highest, std::size_t longest = NoLength) {
    return "digits: " + bounds(lowest, highest, longest);
}
std::string all_digits() {
    return "digits";
}
std::string within_limits() {
    return "digits within the defaults of these limits";
}
std::string number(NumberSign sign = AnySign) {
    return std::string("number") + (sign == NotNegative ? ", not negative" : "") +
           " (0x in front passes, too, but loads as 0)";
}
std::string level(LevelWords words) {
    return "level: " + (words == AnyWord ? words_of(LogLevelTable) : "none") + ", or 0 to 9999";
}
std::string size(char unit) {
    return std::string("size; without a unit: ") + unit;
}
std::string bytes(char unit) {
    return size(unit);
}
std::string kilobytes(char unit) {
    return size(unit);
}
std::string networks() {
    return "IP addresses and networks";
}
std::string one_word() {
    return "text without a blank";
}
std::string host_port(std::size_t longest) {
    return R"("host" or "host:port", of which )" + std::to_string(longest) + " characters count";
}
std::string servers() {
    return R"(at most eight servers, "_MSP_" and "_CMD_" among them)";
}
std::string command() {
    return "existing program with its full path, and arguments";
}
std::string program() {
    return "existing program with its full path";
}
std::string queue_directory() {
    return "existing directory with its full path";
}
std::string list_program() {
    return "existing program, or anything that is no full path";
}
std::string existing_directory() {
    return "existing directory";
}
std::string directory_under(const Text& base) {
    return "existing directory; relative: under " + key_of(base) +
           (&base == &RootDirectory ? "" : " at its default");
}
std::string directories() {
    return "existing directories, " + separators(":");
}
std::string devices() {
    return "writable files, " + separators(":") + ", not directories only";
}
std::string domains() {
    return R"(domains of letters, digits, ".", "-" and "_")";
}
std::string addresses() {
    return R"(mail addresses of letters, digits, ".", "-" and "_")";
}
std::string template_file() {
    return "existing file; relative: in TemplateDirectory";
}
std::string keyword_set() {
    return "name of a keyword set that can be read where KEYWD_Dir is by default";
}
std::string mime_type_set() {
    return "name of a MIME type set that can be read where MTYPE_Dir is by default";
}

std::vector<std::string> rules() {
    return {
#define SETTING(section, key, variable, type, initial, gate, load, check, print) (check),
#define STEP(gate, step) {},
#include "conf/catalogue.def"
#undef STEP
#undef SETTING
    };
}

} // namespace checked

// The vocabulary of the "print" column. The empty text: it cannot be shown.
namespace shown {

std::string unshown() {
    return "";
}
std::string number() {
    return "number";
}
std::string hex_code() {
    return "0x and eight hexadecimal digits";
}
std::string hex() {
    return "hexadecimal digits";
}
std::string boolean() {
    return "true or false";
}
std::string word(Table) {
    return "word";
}
std::string text() {
    return "text";
}
std::string byte_size() {
    return "size with units";
}
std::string level() {
    return R"(number, or "none")";
}
std::string conditions() {
    return "list, " + separators(":");
}
std::string internal_domains() {
    return "list, " + separators(":") + "; the host's own domain when there is none";
}
std::string names() {
    return "list, " + separators(":");
}
std::string addresses() {
    return "list, " + separators(";");
}

std::vector<std::string> rules() {
    return {
#define SETTING(section, key, variable, type, initial, gate, load, check, print) (print),
#define STEP(gate, step) {},
#include "conf/catalogue.def"
#undef STEP
#undef SETTING
    };
}

} // namespace shown

// The largest number of so many digits.
std::int64_t largest_of(std::size_t digits) {
    std::int64_t number = 0;
    for (; digits > 0 && number < NoBound / 10; --digits) {
        number = number * 10 + 9;
    }
    return digits > 0 ? NoBound : number;
}

// The bounds of a number: those of its rule and those of its setting.
ValueText with_bounds(const accepted::Rule& rule, const Variable& variable) {
    ValueText text = rule.text;
    if (!rule.bounded) {
        return text;
    }
    std::visit(
        [&](const auto* setting) {
            using Type = std::remove_cvref_t<decltype(*setting)>;
            if constexpr (std::is_integral_v<Type>) {
                using Limits = std::numeric_limits<Type>;
                const bool beyond = std::cmp_greater(Limits::max(), NoBound);
                const std::int64_t least =
                    std::is_signed_v<Type> ? static_cast<std::int64_t>(Limits::min()) : 0;
                const std::int64_t most =
                    std::min(beyond ? NoBound : static_cast<std::int64_t>(Limits::max()),
                             largest_of(rule.longest));
                text.details = beyond && rule.whole_range
                                   ? "0 to " + std::to_string(Limits::max())
                                   : bounds(std::max(rule.lowest, least),
                                            std::min(rule.highest, most), rule.longest);
            }
        },
        variable);
    return text;
}

} // namespace

std::vector<ValueText> accepted_texts() {
    std::vector<ValueText> texts;
    const std::span<const Row> rows = catalogue();
    for (const accepted::Rule& rule : accepted::rules()) {
        texts.push_back(with_bounds(rule, rows[texts.size()].variable));
    }
    return texts;
}

std::vector<std::string> checked_texts() {
    return checked::rules();
}

std::vector<std::string> shown_texts() {
    return shown::rules();
}

} // namespace ov
