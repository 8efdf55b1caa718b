#include "value/convert.h"

#include "util/text.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <utility>

namespace ov {

namespace {

constexpr std::size_t LongestSizeNumber = 9;
constexpr std::int64_t LargestSize = 0x7FFFFFFFFFFFFFFE;

// A unit of sizes, in units of `base` bytes; nothing for any other character.
struct Size {
    std::int64_t factor;
    std::int64_t divisor;
};
std::optional<Size> size_unit(char unit, bool in_bytes) {
    constexpr std::int64_t K = 1024;
    switch (unit) {
    case 'B':
    case 'b':
        return in_bytes ? Size{1, 1} : Size{1, K};
    case 'K':
    case 'k':
        return Size{in_bytes ? K : 1, 1};
    case 'M':
    case 'm':
        return Size{in_bytes ? K * K : K, 1};
    case 'G':
    case 'g':
        return Size{in_bytes ? K * K * K : K * K, 1};
    default:
        return std::nullopt;
    }
}

std::int64_t conv_size(std::string_view text, char defunit, bool in_bytes) {
    if (defunit != 'B' && defunit != 'M' && defunit != 'G') {
        defunit = 'K';
    }
    std::int64_t total = 0;
    while (!text.empty()) {
        const auto end = std::find_if_not(text.begin(), text.end(), is_digit);
        const auto digits = static_cast<std::size_t>(end - text.begin());
        if (digits > LongestSizeNumber) {
            return -1;
        }
        std::int64_t number = 0; // nine digits and the largest unit stay below the limit
        std::from_chars(text.data(), text.data() + digits, number);
        const std::optional<Size> unit =
            size_unit(digits < text.size() ? text[digits] : defunit, in_bytes);
        if (!unit) {
            return -1;
        }
        const std::int64_t size = number * unit->factor / unit->divisor;
        if (size > LargestSize - total) {
            return -1;
        }
        total += size;
        text.remove_prefix(std::min(digits + 1, text.size()));
    }
    return total;
}

// The number made of the digits of `text`, or -1 when there is anything else in it.
int field(std::string_view text) {
    int number = 0;
    for (const char c : text) {
        number = number * 10 + (c - '0');
    }
    return is_alldigit(text) ? number : -1;
}

} // namespace

int truefalse(std::string_view word, int* out) {
    constexpr std::array<std::string_view, 4> true_words{"true", "yes", "on", "1"};
    constexpr std::array<std::string_view, 4> false_words{"false", "no", "off", "0"};
    const auto is_word = [word](std::string_view known) { return same_word(word, known); };
    if (std::any_of(true_words.begin(), true_words.end(), is_word)) {
        *out = 1;
        return 0;
    }
    if (std::any_of(false_words.begin(), false_words.end(), is_word)) {
        *out = 0;
        return 0;
    }
    return -1;
}

std::int64_t conv_byte(std::string_view text, char defunit) {
    return conv_size(text, defunit, true);
}

std::int64_t conv_Kbyte(std::string_view text, char defunit) {
    return conv_size(text, defunit, false);
}

std::optional<std::int64_t> decimal_within(const std::string& text, std::int64_t lowest,
                                           std::int64_t highest) {
    errno = 0;
    const std::int64_t number = std::strtoll(text.c_str(), nullptr, 10);
    if (!is_alldigit(text) || errno == ERANGE || number < lowest || number > highest) {
        return std::nullopt;
    }
    return number;
}

int valid_str(std::string_view text) {
    return std::all_of(text.begin(), text.end(), is_printable);
}

int date_str(const char* text, int* year, int* month, int* day) {
    const std::string_view date(text ? text : "");
    if (date.size() != 10 || date[4] != '/' || date[7] != '/') {
        return -1;
    }
    const int y = field(date.substr(0, 4));
    const int m = field(date.substr(5, 2));
    const int d = field(date.substr(8, 2));
    if (y < 0 || m < 0 || d < 0 || (month && (m < 1 || m > 12)) || (day && (d < 1 || d > 31))) {
        return -1;
    }
    for (const auto& [target, value] : {std::pair{year, y}, {month, m}, {day, d}}) {
        if (target) {
            *target = value;
        }
    }
    return 0;
}

} // namespace ov
