#include "conf/edit.h"

#include "conf/lookup.h"
#include "util/text.h"

namespace ov {

namespace {

struct Range {
    std::size_t begin;
    std::size_t end;
};

// The line with the number `number`, counted from 1. One of more than 8191 bytes counts as several.
// Behind the last line stands an empty one.
Range numbered_line(std::string_view text, int number) {
    Range line{0, 0};
    for (int n = 0; n < number; ++n) {
        line.begin = line.end;
        const std::string_view piece = text.substr(line.begin, MaxText);
        const std::size_t feed = piece.find('\n');
        line.end += feed == piece.npos ? piece.size() : feed + 1;
    }
    return line;
}

// Whether there is an entry; scan_linenumber is its line then.
bool finds(Source& source, const char* sec, const char* key) {
    std::string value;
    return conf_getprofile(source, sec, key, value, MaxText + 1) == 0;
}

} // namespace

Edit modified(std::string_view text, const char* sec, const char* key, std::string_view value) {
    Source source(text);
    std::string entry = std::string(key) + " = ";
    entry += value.substr(0, MaxText);
    entry += '\n';
    if (finds(source, sec, key)) {
        const Range line = numbered_line(text, scan_linenumber);
        return {text.substr(0, line.begin), std::move(entry), text.substr(line.end)};
    }
    if (get_sec(source, sec) == 0) {
        const Range header = numbered_line(text, scan_linenumber);
        return {text.substr(0, header.end), std::move(entry), text.substr(header.end)};
    }
    return {text, "[" + std::string(sec) + "]\n" + entry, {}};
}

std::optional<Edit> deleted(std::string_view text, const char* sec, const char* key) {
    Source source(text);
    if (!finds(source, sec, key)) {
        return std::nullopt;
    }
    const Range line = numbered_line(text, scan_linenumber);
    return Edit{text.substr(0, line.begin), {}, text.substr(line.end)};
}

} // namespace ov
