#include "util/text.h"

#include <algorithm>
#include <cstring>

namespace ov {

std::string shortenstring(std::string_view text, std::size_t length) {
    constexpr std::string_view Mark = "...";
    if (text.size() <= length) {
        return std::string(text);
    }
    return std::string(text.substr(0, length - Mark.size())) + std::string(Mark);
}

bool same_word(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) {
        return false;
    }
    // Most names are written as they are spelled here.
    return a.empty() || std::memcmp(a.data(), b.data(), a.size()) == 0 ||
           std::equal(a.begin(), a.end(), b.begin(),
                      [](char x, char y) { return lower(x) == lower(y); });
}

} // namespace ov
