#include "conf/get_vals.h"

#include "conf/catalogue.h"
#include "util/host.h"
#include "util/text.h"

#include <array>
#include <cstdio>

namespace ov {

namespace {

using Shown = std::optional<std::string>;

constexpr int HighestLevel = 9999; // and above: none

// How a setting is shown.
struct PrintRule {
    Shown (*print)(const Variable&, int table) = nullptr; // null: it is not
    int table = -1;                                       // of words
};

template <class Type>
const Type& setting(const Variable& variable) {
    return *std::get<Type*>(variable);
}

std::string hex_number(const char* format, std::int64_t number) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), format, static_cast<unsigned>(number));
    return text.data();
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

Shown print_number(const Variable& variable, int) {
    return std::to_string(number_in(variable));
}

Shown print_hex_code(const Variable& variable, int) {
    return hex_number("0x%08x", number_in(variable));
}

Shown print_hex(const Variable& variable, int) {
    return hex_number("%0x", number_in(variable));
}

Shown print_boolean(const Variable& variable, int) {
    return number_in(variable) != 0 ? "true" : "false";
}

Shown print_word(const Variable& variable, int table) {
    const char* word = str_vtab(table, static_cast<int>(number_in(variable)));
    return word ? Shown(word) : std::nullopt;
}

Shown print_text(const Variable& variable, int) {
    return std::string(setting<Text>(variable).view());
}

Shown print_byte_size(const Variable& variable, int) {
    const std::int64_t size = number_in(variable);
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

Shown print_level(const Variable& variable, int) {
    const std::int64_t level = number_in(variable);
    return level >= HighestLevel ? "none" : std::to_string(level);
}

Shown print_conditions(const Variable& variable, int) {
    const IpList& list = setting<IpList>(variable);
    return joined(list.value_or(IpConditions{}),
                  [](const IPADDRCOND& condition) { return condition.str.data(); });
}

Shown print_internal_domains(const Variable& variable, int) {
    const WordList& list = setting<WordList>(variable);
    if (list) {
        return joined(*list, [](const std::string& word) { return word; });
    }
    std::string domain;
    return get_internaldomain(domain, MaxText + 1) == 0 ? domain : "";
}

Shown print_names(const Variable& variable, int) {
    std::vector<std::string_view> names;
    for (const SVRLIST& member : setting<ServerList>(variable)) {
        if (member.host) {
            names.push_back(member.host.view());
        }
    }
    return joined(names, [](std::string_view name) { return name; });
}

// As many addresses as fit a path-sized line, with nothing in them that a terminal would obey.
Shown print_addresses(const Variable& variable, int) {
    std::string text;
    const ADDRS* cell = setting<AddressList>(variable).get();
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
        } else if (c < ' ' || c > '~') {
            c = '?';
        }
    }
    return text;
}

// The forms of the catalogue's "print" column.
constexpr PrintRule unshown() {
    return {};
}
constexpr PrintRule number() {
    return {print_number};
}
constexpr PrintRule hex_code() { // 0x and eight digits
    return {print_hex_code};
}
constexpr PrintRule hex() { // digits only
    return {print_hex};
}
constexpr PrintRule boolean() {
    return {print_boolean};
}
constexpr PrintRule word(Table table) {
    return {print_word, table};
}
constexpr PrintRule text() {
    return {print_text};
}
constexpr PrintRule byte_size() { // 1572864 as "1M512K"
    return {print_byte_size};
}
constexpr PrintRule level() {
    return {print_level};
}
constexpr PrintRule conditions() {
    return {print_conditions};
}
constexpr PrintRule internal_domains() { // the host's own when there are none
    return {print_internal_domains};
}
constexpr PrintRule names() {
    return {print_names};
}
constexpr PrintRule addresses() {
    return {print_addresses};
}

// By the number of the row in the catalogue.
constexpr PrintRule rules[] = {
#define SETTING(section, key, variable, type, initial, gate, load, check, print) (print),
#define STEP(gate, step) {},
#include "conf/catalogue.def"
#undef STEP
#undef SETTING
};

} // namespace

std::optional<std::string> get_vals(const char* file, const char* section, const char* key,
                                    int all) {
    std::optional<Source> source = Source::open(file);
    if (!source) {
        std::fprintf(stderr, "cannot open: %s\n", file);
        return std::nullopt;
    }
    std::string written;
    if (conf_getprofile(*source, section, key, written, MaxText + 1) == 0 && all == 0) {
        return written;
    }
    const int section_number = find_section(section);
    const int number_of_row = section_number == -1 ? -1 : find_row(section_number, key);
    if (number_of_row == -1 || !rules[number_of_row].print) {
        return std::nullopt;
    }
    const Row& row = catalogue()[static_cast<std::size_t>(number_of_row)];
    return rules[number_of_row].print(row.variable, rules[number_of_row].table);
}

} // namespace ov
