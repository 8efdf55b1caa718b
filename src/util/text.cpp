#include "util/text.h"

#include <algorithm>
#include <cstdio>
#include <new>

namespace ov {

namespace {

// The bytes that the list of `fields` fields of a text of `length` characters is accounted with.
int list_size(std::size_t length, std::size_t separators) {
    return static_cast<int>(length + 9 + 4 * separators);
}

std::vector<std::string> fields_of(std::string_view str, std::string_view sep) {
    std::vector<std::string> fields;
    std::size_t start = str.find_first_not_of(sep);
    while (start != str.npos) {
        const std::size_t end = std::min(str.find_first_of(sep, start), str.size());
        fields.emplace_back(str.substr(start, end - start));
        start = str.find_first_not_of(sep, end);
    }
    return fields;
}

} // namespace

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

std::optional<std::vector<std::string>> split_str(std::string_view str, std::string_view sep) {
    try {
        return fields_of(str, sep);
    } catch (const std::bad_alloc&) {
        const auto separators = std::count_if(str.begin(), str.end(),
                                              [sep](char c) { return sep.find(c) != sep.npos; });
        std::fprintf(stderr, "%s: calloc error: sz = %d\n", "split_str",
                     list_size(str.size(), static_cast<std::size_t>(separators)));
        return std::nullopt;
    }
}

std::size_t strlcpy(char* dst, const char* src, std::size_t len) {
    const std::string_view text(src);
    if (len > 0) {
        const std::size_t copied = text.copy(dst, len - 1);
        dst[copied] = '\0';
    }
    return text.size();
}

int is_alldigit(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), is_digit);
}

} // namespace ov
