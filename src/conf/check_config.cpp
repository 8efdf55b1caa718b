#include "conf/check_config.h"

#include "conf/catalogue.h"
#include "conf/layout.h"
#include "conf/load_rules.h"
#include "conf/validate.h"
#include "util/text.h"
#include "util/util.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

namespace ov {

namespace {

struct Checking;

// What is acceptable for a key.
struct CheckRule {
    using Function = bool (*)(const Checking&);

    Function accepts = nullptr; // null: the key cannot be checked
    bool takes_empty = false;   // whatever the function says of the empty value
    bool wants_text = false;    // the empty value is refused
    bool option = false;        // what the rule's argument turns on
    char unit = 0;              // of a size without one
    std::int8_t table = -1;     // of words
    std::int64_t lowest = 0;
    std::int64_t highest = 0;
    std::size_t longest = std::string::npos; // in characters
    const Text* base = nullptr;              // the directory of a relative value
};

// A value under check.
struct Checking {
    const CheckRule& rule;
    const Row& row;
    const std::string& value;
};

enum LevelWords : bool { NoneOnly = false, AnyWord = true };
enum NumberSign : bool { AnySign = false, NotNegative = true };

constexpr std::size_t MostServers = std::tuple_size_v<ServerList>;

template <class Test>
bool all_words(const std::string& text, const char* separators, Test test) {
    const WordList words = split_str(text, separators);
    return words && std::all_of(words->begin(), words->end(), test);
}

bool is_host_port(const std::string& text) {
    const std::size_t colon = text.find(':');
    return (colon == text.npos || server_port(text.substr(colon + 1))) &&
           isvalid_hostname(text.substr(0, colon).c_str());
}

bool is_boolean(const Checking& checking) {
    int ignored = 0;
    return truefalse(checking.value, &ignored) == 0;
}

bool is_word(const Checking& checking) {
    return val_vtab(checking.rule.table, checking.value) >= 0;
}

bool are_digits(const Checking& checking) {
    const CheckRule& rule = checking.rule;
    return checking.value.size() <= rule.longest &&
           decimal_within(checking.value, rule.lowest, rule.highest);
}

bool is_all_digits(const Checking& checking) {
    return is_alldigit(checking.value) != 0;
}

bool is_within_limits(const Checking& checking) {
    return decimal_within(checking.value, load_rules::lower_limit(checking.row.rule),
                          load_rules::upper_limit(checking.row.rule))
        .has_value();
}

bool is_any_number(const Checking& checking) {
    errno = 0;
    const long number = std::strtol(checking.value.c_str(), nullptr, 0);
    return errno != ERANGE && fits(checking.row.variable, number) &&
           (checking.rule.option != NotNegative || number >= 0);
}

bool is_level(const Checking& checking) {
    const bool word = checking.rule.option == AnyWord ? val_vtab(LogLevelTable, checking.value) >= 0
                                                      : same_word(checking.value, "none");
    return word || decimal_within(checking.value, 0, 9999);
}

bool is_bytes(const Checking& checking) {
    return conv_byte(checking.value, checking.rule.unit) >= 0;
}

bool is_kilobytes(const Checking& checking) {
    return conv_Kbyte(checking.value, checking.rule.unit) >= 0;
}

bool are_networks(const Checking& checking) {
    return all_words(checking.value, ":",
                     [](const std::string& word) { return isvalid_ipaddr(word.c_str(), 0) != 0; });
}

bool is_one_word(const Checking& checking) {
    return checking.value.find(' ') == std::string::npos;
}

bool is_host_and_port(const Checking& checking) {
    return is_host_port(checking.value.substr(0, checking.rule.longest));
}

bool are_servers(const Checking& checking) {
    const WordList words = split_str(checking.value, " ");
    return words && words->size() <= MostServers &&
           std::all_of(words->begin(), words->end(), [](const std::string& word) {
               return same_word(word, "_MSP_") || same_word(word, "_CMD_") || is_host_port(word);
           });
}

bool is_command(const Checking& checking) {
    const WordList words = split_str(checking.value, " ");
    return words && !words->empty() && isvalid_program(words->front().c_str());
}

bool is_full_program(const Checking& checking) {
    return isvalid_program(checking.value.c_str()) != 0;
}

bool is_queue_directory(const Checking& checking) {
    return isfullpath(checking.value.c_str()) && isvalid_dir(checking.value.c_str());
}

bool is_list_program(const Checking& checking) {
    return !isfullpath(checking.value.c_str()) || isvalid_program(checking.value.c_str());
}

bool is_existing_directory(const Checking& checking) {
    return isvalid_dir(checking.value.c_str()) != 0;
}

bool is_directory_under(const Checking& checking) {
    // No settings have been loaded: the base may still be a relative one.
    const std::optional<std::string> base =
        mk_dirpath(RootDirectory.c_str(), checking.rule.base->c_str());
    const std::optional<std::string> path =
        base ? mk_dirpath(base->c_str(), checking.value.c_str()) : std::nullopt;
    return path && isvalid_dir(path->c_str());
}

bool are_directories(const Checking& checking) {
    return all_words(checking.value, ":",
                     [](const std::string& word) { return isvalid_dir(word.c_str()) != 0; });
}

// Writable, and not directories only.
bool are_devices(const Checking& checking) {
    const WordList words = split_str(checking.value, ":");
    const auto is_writable = [](const std::string& word) {
        return ::access(word.c_str(), W_OK) == 0;
    };
    const auto is_device = [](const std::string& word) { return !isvalid_dir(word.c_str()); };
    return words && std::all_of(words->begin(), words->end(), is_writable) &&
           std::any_of(words->begin(), words->end(), is_device);
}

bool are_domains(const Checking& checking) {
    return all_words(checking.value, "&:", [](const std::string& word) {
        return std::all_of(word.begin(), word.end(), [](unsigned char c) {
            return (c < 0x80 && std::isalnum(c)) || c == '.' || c == '-' || c == '_';
        });
    });
}

bool are_addresses(const Checking& checking) {
    return all_words(checking.value, ";,", [](const std::string& word) {
        return isvalid_address(word.c_str(), AddressStrict) != 0;
    });
}

bool is_template_file(const Checking& checking) {
    return isvalid_file(TemplateDirectory.c_str(), checking.value.c_str()) != 0;
}

bool is_keyword_set(const Checking& checking) {
    return isvalid_keywd(checking.value) != 0;
}

bool is_mime_type_set(const Checking& checking) {
    return isvalid_mtype(checking.value) != 0;
}

bool is_anything(const Checking&) {
    return true;
}

// The rules of the catalogue's "check" column.

// The empty value is acceptable, or it is not, whatever the rule says.
constexpr CheckRule empty_or(CheckRule rule) {
    rule.takes_empty = true;
    return rule;
}
constexpr CheckRule required(CheckRule rule) {
    rule.wants_text = true;
    return rule;
}
constexpr CheckRule unchecked() {
    return {};
}
constexpr CheckRule anything() {
    return {.accepts = is_anything};
}
constexpr CheckRule boolean() {
    return {.accepts = is_boolean};
}
constexpr CheckRule word(Table table) {
    return {.accepts = is_word, .table = static_cast<std::int8_t>(table)};
}
// Decimal digits, at most `longest` of them, of a number within the bounds.
constexpr CheckRule digits(std::int64_t lowest, std::int64_t highest,
                           std::size_t longest = std::string::npos) {
    return {.accepts = are_digits, .lowest = lowest, .highest = highest, .longest = longest};
}
constexpr CheckRule all_digits() {
    return {.accepts = is_all_digits};
}
// Digits of a number within the two settings that bound the loaded value.
constexpr CheckRule within_limits() {
    return {.accepts = is_within_limits};
}
// Anything that converts with base prefixes to a number that the setting can hold; text without
// digits is 0.
constexpr CheckRule number(NumberSign sign = AnySign) {
    return {.accepts = is_any_number, .option = sign};
}
// "none" or, if so wanted, any word of the table of levels; or a number from 0 to 9999.
constexpr CheckRule level(LevelWords words) {
    return {.accepts = is_level, .option = words};
}
constexpr CheckRule bytes(char unit) {
    return {.accepts = is_bytes, .unit = unit};
}
constexpr CheckRule kilobytes(char unit) {
    return {.accepts = is_kilobytes, .unit = unit};
}
// IPv4 addresses and networks, separated by ":".
constexpr CheckRule networks() {
    return {.accepts = are_networks};
}
// No blank in it.
constexpr CheckRule one_word() {
    return {.accepts = is_one_word};
}
// "host" or "host:port"; of a longer value the first `longest` characters count.
constexpr CheckRule host_port(std::size_t longest) {
    return {.accepts = is_host_and_port, .longest = longest};
}
// At most eight of these, or the words "_MSP_" and "_CMD_", separated by blanks.
constexpr CheckRule servers() {
    return {.accepts = are_servers};
}
// The absolute path of a program, and its arguments; of a program alone; of a queue directory.
constexpr CheckRule command() {
    return {.accepts = is_command};
}
constexpr CheckRule program() {
    return {.accepts = is_full_program};
}
constexpr CheckRule queue_directory() {
    return {.accepts = is_queue_directory};
}
// A program without arguments, or anything that is no absolute path.
constexpr CheckRule list_program() {
    return {.accepts = is_list_program};
}
constexpr CheckRule existing_directory() {
    return {.accepts = is_existing_directory};
}
constexpr CheckRule directory_under(const Text& base) {
    return {.accepts = is_directory_under, .base = &base};
}
// Separated by ":".
constexpr CheckRule directories() {
    return {.accepts = are_directories};
}
constexpr CheckRule devices() {
    return {.accepts = are_devices};
}
constexpr CheckRule domains() {
    return {.accepts = are_domains};
}
constexpr CheckRule addresses() {
    return {.accepts = are_addresses};
}
constexpr CheckRule template_file() {
    return {.accepts = is_template_file};
}
constexpr CheckRule keyword_set() {
    return {.accepts = is_keyword_set};
}
constexpr CheckRule mime_type_set() {
    return {.accepts = is_mime_type_set};
}

// By the number of the row in the catalogue.
constexpr CheckRule rules[] = {
#define SETTING(section, key, variable, type, initial, gate, load, check, print) (check),
#define STEP(gate, step) {},
#include "conf/catalogue.def"
#undef STEP
#undef SETTING
};

} // namespace

int check_config(const char* section, const char* key, const char* value) {
    if (!section || !key || !value) {
        return -1;
    }
    const int section_number = find_section(section);
    const int number = section_number == -1 ? -1 : find_row(section_number, key);
    if (number == -1) {
        return -1;
    }
    const CheckRule& rule = rules[number];
    const std::string text(value);
    if (!rule.accepts || (text.empty() && rule.wants_text)) {
        return -1;
    }
    if (text.empty() && rule.takes_empty) {
        return 0;
    }
    return rule.accepts({rule, catalogue()[static_cast<std::size_t>(number)], text}) ? 0 : -1;
}

} // namespace ov
