#include "reference/text.h"

#include "util/text.h"

#include <algorithm>
#include <array>
#include <vector>

namespace ov {

namespace {

// How many bytes behind a first one make a character of UTF-8 with it.
std::size_t bytes_behind(unsigned char first) {
    return first >= 0xf0 && first < 0xf5 ? 3 : first >= 0xe0 ? 2 : first >= 0xc2 ? 1 : 0;
}

} // namespace

std::string printable(std::string_view text) {
    const auto byte = [text](std::size_t at) {
        return at < text.size() ? static_cast<unsigned char>(text[at]) : 0U;
    };
    std::string shown;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        std::size_t behind = c >= 0xc2 && c < 0xf5 ? bytes_behind(c) : 0;
        for (std::size_t j = 1; j <= behind; ++j) {
            behind = (byte(i + j) & 0xc0U) == 0x80U ? behind : 0;
        }
        // What turns the direction of writing, or separates lines.
        const bool is_hidden =
            c == 0xe2 && behind == 2 &&
            ((byte(i + 1) == 0x80U && byte(i + 2) >= 0xa8U && byte(i + 2) <= 0xaeU) ||
             (byte(i + 1) == 0x81U && byte(i + 2) >= 0xa6U && byte(i + 2) <= 0xa9U));
        const bool is_control = is_hidden || c < ' ' || c == 0x7f || (c >= 0x80 && c < 0xa0) ||
                                (c == 0xc2 && behind == 1 && byte(i + 1) < 0xa0U);
        shown += is_control ? c == '\t' ? " " : "?" : text.substr(i, behind + 1);
        i += behind;
    }
    return shown;
}

std::string shortened(std::string_view text) {
    constexpr std::size_t Longest = 80;
    return text.size() <= Longest ? std::string(text)
                                  : std::string(text.substr(0, Longest)) + "...";
}

std::size_t distance(std::string_view a, std::string_view b) {
    constexpr std::size_t Longest = 64; // no name is longer
    if (a.size() > Longest || b.size() > Longest) {
        return Longest;
    }
    std::array<std::array<std::size_t, Longest + 1>, Longest + 1> far{};
    const auto same = [](char x, char y) { return same_word({&x, 1}, {&y, 1}); };
    for (std::size_t i = 0; i <= a.size(); ++i) {
        for (std::size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                far[i][j] = i + j;
                continue;
            }
            far[i][j] = std::min({far[i - 1][j] + 1, far[i][j - 1] + 1,
                                  far[i - 1][j - 1] + !same(a[i - 1], b[j - 1])});
            if (i > 1 && j > 1 && same(a[i - 1], b[j - 2]) && same(a[i - 2], b[j - 1])) {
                far[i][j] = std::min(far[i][j], far[i - 2][j - 2] + 1);
            }
        }
    }
    return far[a.size()][b.size()];
}

} // namespace ov
