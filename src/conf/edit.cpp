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

// The line of the entry; 0: there is none.
int line_of(Source& source, const char* sec, const char* key) {
    std::string value;
    return line_of_entry(source, sec, key, value, MaxText + 1, LineMode);
}

} // namespace

Edit modified(std::string_view text, const char* sec, const char* key, std::string_view value) {
    Source source(text);
    std::string entry = written_entry(key, " ");
    entry += value.substr(0, MaxText);
    entry += '\n';
    if (const int number = line_of(source, sec, key); number != 0) {
        const Range line = numbered_line(text, number);
        return {text.substr(0, line.begin), std::move(entry), text.substr(line.end)};
    }
    if (const int number = line_of_header(source, sec); number != 0) {
        const Range header = numbered_line(text, number);
        return {text.substr(0, header.end), std::move(entry), text.substr(header.end)};
    }
    return {text, "[" + std::string(sec) + "]\n" + entry, {}};
}

std::optional<Edit> deleted(std::string_view text, const char* sec, const char* key) {
    Source source(text);
    const int number = line_of(source, sec, key);
    if (number == 0) {
        return std::nullopt;
    }
    const Range line = numbered_line(text, number);
    return Edit{text.substr(0, line.begin), {}, text.substr(line.end)};
}

} // namespace ov
