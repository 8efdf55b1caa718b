#include "conf/scan.h"

#include "util/text.h"

#include <algorithm>
#include <array>

namespace ov {

std::string_view scan_str;
int scan_len = 0;
int scan_num = 0;
int scan_linenumber = 0;

namespace {

constexpr std::size_t LongestNumber = 8;

// The characters that end a bare word.
constexpr std::array<bool, 256> word_ends = [] {
    std::array<bool, 256> ends{};
    for (const char c : {'\n', '=', '[', ']', '#', ' ', '\t'}) {
        ends[static_cast<unsigned char>(c)] = true;
    }
    return ends;
}();

// Moves on to `position`. A line feed counts when it becomes the lookahead, so at most the
// character at `position` may be one.
void advance(Source& source, std::size_t position) {
    if (position == source.position()) {
        return;
    }
    source.move_to(position);
    source.add_lines(source.lookahead() == '\n');
}

void set_token(std::string_view text) {
    scan_str = text.substr(0, MaxText);
    scan_len = static_cast<int>(scan_str.size());
}

Token one_character(Source& source, Token token, std::string_view text) {
    advance(source, source.position() + 1);
    set_token(text);
    return token;
}

std::size_t end_of_line(const Source& source, std::size_t from) {
    return std::min(source.window().find('\n', from), source.window().size());
}

Token quoted_string(Source& source) {
    const std::string_view text = source.window();
    const std::size_t start = source.position() + 1;
    const std::size_t end = std::min(text.find_first_of("\"\n", start), text.size());
    advance(source, end);
    if (source.lookahead() == '"') {
        advance(source, end + 1);
    }
    set_token(text.substr(start, end - start));
    return TokenString;
}

Token bare_word(Source& source) {
    const std::size_t start = source.position();
    const std::size_t end = word_end(source.window(), start);
    advance(source, end);
    set_token(source.window().substr(start, end - start));
    if (!is_number(scan_str)) {
        return TokenString;
    }
    scan_num = 0;
    for (const char digit : scan_str) {
        scan_num = scan_num * 10 + (digit - '0');
    }
    return TokenNumber;
}

} // namespace

void init_scan(Source& source) {
    source.rewind();
    scan_linenumber = source.line();
}

Token next_token(Source& source) {
    for (;;) {
        const std::string_view text = source.window();
        const std::size_t position = blanks_end(text, source.position());
        advance(source, position);
        switch (source.lookahead()) {
        case '=':
            return one_character(source, TokenEqual, "=");
        case '[':
            return one_character(source, TokenOpen, "[");
        case ']':
            return one_character(source, TokenClose, "]");
        case '\n':
            return one_character(source, TokenEol, "LF");
        case -1:
            set_token("EOF");
            return TokenEof;
        case '"':
            return quoted_string(source);
        case '#':
            advance(source, end_of_line(source, position));
            break;
        default:
            return bare_word(source);
        }
    }
}

Token ini_scan(Source& source) {
    const Token token = next_token(source);
    scan_linenumber = source.line();
    return token;
}

std::size_t blanks_end(std::string_view text, std::size_t from) {
    while (from < text.size() && (text[from] == ' ' || text[from] == '\t')) {
        ++from;
    }
    return from;
}

std::size_t word_end(std::string_view text, std::size_t from) {
    while (from < text.size() && !word_ends[static_cast<unsigned char>(text[from])]) {
        ++from;
    }
    return from;
}

bool is_number(std::string_view word) {
    return word.size() <= LongestNumber && is_alldigit(word);
}

void skip_eol(Source& source) {
    const std::size_t start = source.position();
    const std::size_t end = end_of_line(source, start);
    advance(source, end);
    set_token(source.window().substr(start, end - start));
}

} // namespace ov
