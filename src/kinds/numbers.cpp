#include "kinds/loading.h"
#include "kinds/values.h"
#include "util/disk.h"
#include "util/text.h"
#include "value/convert.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <type_traits>
#include <utility>

namespace ov::kinds {

namespace {

// Whether a setting can hold `number`. One without a sign takes a negative number that fits an int,
// and wraps it.
bool fits(const Number& setting, std::int64_t number) {
    return std::visit(
        [number](const auto* of_type) {
            using Type = std::remove_cvref_t<decltype(*of_type)>;
            return std::in_range<Type>(number) ||
                   (std::is_unsigned_v<Type> && number < 0 && number >= INT_MIN);
        },
        setting);
}

// Stores a number; one that is not there, or does not fit the setting, is invalid.
Verdict store(const Value& value, std::optional<std::int64_t> number) {
    const Number& setting = std::get<Number>(value.variable);
    if (!number || !fits(setting, *number)) {
        return Verdict::Invalid;
    }
    std::visit(
        [number](auto* of_type) {
            *of_type = static_cast<std::remove_reference_t<decltype(*of_type)>>(*number);
        },
        setting);
    return Verdict::Taken;
}

// The number at the start of `text`, 0 without one; nothing when it is too large for any setting.
std::optional<std::int64_t> number_at(const std::string& text, int base = 10) {
    errno = 0;
    const std::int64_t value = std::strtoll(text.c_str(), nullptr, base);
    return errno == ERANGE ? std::nullopt : std::optional<std::int64_t>(value);
}

// A number made of decimal digits only, at most `longest` of them.
std::optional<std::int64_t> digits_in(const Value& value) {
    return value.text.size() <= value.manner.longest
               ? decimal_within(value.text, value.manner.lowest, value.manner.highest)
               : std::nullopt;
}

std::optional<std::int64_t> number_within(const Value& value) {
    return decimal_within(value.text, std::max<std::int64_t>(bound_in(value.manner.first), 0),
                          bound_in(value.manner.second));
}

std::string hex_number(const char* format, std::int64_t number) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), format, static_cast<unsigned>(number));
    return text.data();
}

} // namespace

std::int64_t number_in(const Number& number) {
    return std::visit([](const auto* of_type) { return static_cast<std::int64_t>(*of_type); },
                      number);
}

std::int64_t bound_in(const Other& name) {
    const bool large = std::holds_alternative<SettingOf<std::int64_t>>(name);
    return large ? other<std::int64_t>(name) : other<int>(name);
}

Verdict load_boolean(const Loading& value) {
    int number = 0;
    return truefalse(value.text, &number) == 0 ? store(value, number) : Verdict::Invalid;
}

bool is_boolean(const Value& value) {
    int ignored = 0;
    return truefalse(value.text, &ignored) == 0;
}

std::optional<std::string> show_boolean(const Value& value) {
    return number_of(value) != 0 ? "true" : "false";
}

Verdict load_integer(const Loading& value) {
    const std::optional<std::int64_t> number = number_at(value.text);
    const bool within = number && *number >= value.manner.lowest && *number <= value.manner.highest;
    return within ? store(value, number) : Verdict::Invalid;
}

Verdict load_integer64(const Loading& value) {
    const std::optional<std::int64_t> number = number_at(value.text);
    auto* const* large = std::get_if<std::uint64_t*>(&std::get<Number>(value.variable));
    if (number || !large) {
        return store(value, number);
    }
    errno = 0;
    const std::uint64_t beyond = std::strtoull(value.text.c_str(), nullptr, 10);
    if (errno == ERANGE || value.text.find('-') != value.text.npos) {
        return Verdict::Invalid;
    }
    **large = beyond;
    return Verdict::Taken;
}

Verdict load_number(const Loading& value) {
    return store(value, number_at(value.text, 0));
}

bool is_based_number(const Value& value) {
    const std::optional<std::int64_t> number = number_at(value.text, 0);
    return number && *number >= value.manner.lowest &&
           fits(std::get<Number>(value.variable), *number);
}

Verdict load_digits(const Loading& value) {
    return store(value, digits_in(value));
}

bool are_digits(const Value& value) {
    return digits_in(value).has_value();
}

bool are_all_digits(const Value& value) {
    return is_alldigit(value.text) != 0;
}

Verdict load_limit(const Loading& value) {
    return value.text.empty() ? Verdict::Taken : load_digits(value);
}

Verdict load_within(const Loading& value) {
    return store(value, number_within(value));
}

bool is_within(const Value& value) {
    return number_within(value).has_value();
}

Verdict load_word(const Loading& value) {
    const int number = val_vtab(value.manner.table, value.text);
    return number == -1 ? Verdict::Invalid : store(value, number);
}

bool is_word(const Value& value) {
    return val_vtab(value.manner.table, value.text) >= 0;
}

std::optional<std::string> show_word(const Value& value) {
    const char* word = str_vtab(value.manner.table, static_cast<int>(number_of(value)));
    return word ? std::optional<std::string>(word) : std::nullopt;
}

Verdict load_level(const Loading& value) {
    return load_word(value) == Verdict::Taken ? Verdict::Taken : load_integer(value);
}

bool is_level(const Value& value) {
    return is_word(value) || are_digits(value);
}

std::optional<std::string> show_level(const Value& value) {
    return number_of(value) >= NoLevel ? "none" : show_number(value);
}

bool is_none_or_number(const Value& value) {
    return same_word(value.text, "none") || are_digits(value);
}

Verdict load_bytes(const Loading& value) {
    const std::int64_t size = value.text.empty() ? -1 : conv_byte(value.text, value.manner.unit);
    return size >= 0 ? store(value, size) : Verdict::Invalid;
}

bool is_bytes(const Value& value) {
    return conv_byte(value.text, value.manner.unit) >= 0;
}

Verdict load_kilobytes(const Loading& value) {
    const std::int64_t size = value.text.empty() ? -1 : conv_Kbyte(value.text, 'M');
    return size >= 0 ? store(value, size) : Verdict::Invalid;
}

bool is_kilobytes(const Value& value) {
    return conv_Kbyte(value.text, 'M') >= 0;
}

Verdict load_min_free(const Loading& value) {
    const Verdict verdict = load_kilobytes(value);
    const std::int64_t size = number_of(value);
    if (verdict != Verdict::Taken || size <= 0) {
        return verdict;
    }
    const char* directory = other<Text>(value.manner.first).c_str();
    if ((value.load.mask & RC_NOTRIALS) && directory && !isvalid_dir(directory)) {
        return verdict; // it may be made by the time that it is used
    }
    std::int64_t& blocks = other<std::int64_t>(value.manner.second);
    std::int64_t block = 0;
    if (directory && freeblocks(directory, &block) >= 0 && block > 0) {
        blocks = std::max<std::int64_t>(size / block + 1, 1);
        return verdict;
    }
    const std::string what = std::string("cannot get block size ") +
                             (directory ? directory : "<null>") + "; [" + value.section +
                             "] MinFree set 0\n";
    value.load.tell(value.reader == MainReader ? "WARNING " + what
                                               : std::string(value.load.file) + ":" +
                                                     std::to_string(value.line) + ": " + what);
    store(value, 0);
    blocks = 0;
    return verdict;
}

std::optional<std::string> show_hex_code(const Value& value) {
    return hex_number("0x%08x", number_of(value));
}

std::optional<std::string> show_hex(const Value& value) {
    return hex_number("%0x", number_of(value));
}

std::optional<std::string> show_number(const Value& value) {
    return std::to_string(number_of(value));
}

std::optional<std::string> show_byte_size(const Value& value) {
    const std::int64_t size = number_of(value);
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

std::optional<std::string> show_access(const Value& value) {
    const std::int64_t bits = number_of(value);
    return std::to_string(bits & 1) + '\t' + std::to_string((bits >> 1) & 1);
}

} // namespace ov::kinds
