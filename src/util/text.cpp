#include "util/text.h"

#include <algorithm>

namespace ov {

std::string shortenstring(std::string_view text, std::size_t length) {
    constexpr std::string_view Mark = "...";
    if (text.size() <= length) {
        return std::string(text);
    }
    return std::string(text.substr(0, length - Mark.size())) + std::string(Mark);
}

std::string lowered(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), lower);
    return text;
}

} // namespace ov
