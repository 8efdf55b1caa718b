#include "model.h"

#include "conf/lookup.h"
#include "support.h"

#include <algorithm>
#include <optional>
#include <strings.h>

namespace ov::fuzz {

namespace {

bool same_name(std::string_view a, std::string_view b) {
    return a.size() == b.size() && ::strncasecmp(a.data(), b.data(), a.size()) == 0;
}

// Reads a header behind its "[". The name counts even when there is no "]".
bool header(SlowScanner& scanner, std::string& name) {
    int token = scanner.scan();
    if (token == TokenString) {
        name = c_string(scanner.token);
        token = scanner.scan();
        if (token == TokenClose) {
            return true;
        }
    }
    if (token != TokenEol) {
        scanner.skip_line();
    }
    return false;
}

// The value behind a "="; nothing when the line is no entry in that mode.
std::optional<std::string> value_behind(SlowScanner& scanner, int mode) {
    if (mode == LineMode) {
        scanner.skip_line();
        std::string value = c_string(scanner.token);
        value.erase(value.find_last_not_of(" \t") + 1);
        value.erase(0, value.find_first_not_of(" \t"));
        const bool is_quoted = value.size() > 2 && value.front() == '"' && value.back() == '"';
        return is_quoted ? value.substr(1, value.size() - 2) : value;
    }
    const int token = scanner.scan();
    if (token == TokenEol || token == TokenEof) {
        return "";
    }
    const std::string value = c_string(scanner.token);
    scanner.skip_line();
    return token == TokenString || token == TokenNumber ? std::optional(value) : std::nullopt;
}

std::vector<SlowEntry> entries_of(std::string_view text, int mode) {
    std::vector<SlowEntry> entries;
    SlowScanner scanner{text};
    std::string section;
    bool in_section = false;
    for (int token = scanner.scan(); token != TokenEof; token = scanner.scan()) {
        if (token == TokenOpen) {
            in_section = header(scanner, section) || in_section;
            continue;
        }
        if (token == TokenString && in_section) {
            const int line = scanner.line;
            const std::string key = c_string(scanner.token);
            token = scanner.scan();
            if (token == TokenEqual) {
                if (const std::optional<std::string> value = value_behind(scanner, mode)) {
                    entries.push_back({section, key, *value, line});
                }
                continue;
            }
        }
        if (token != TokenEol) {
            scanner.skip_line();
        }
    }
    return entries;
}

} // namespace

// A line feed counts when it is the character ahead, unless it is the first one of all.
void SlowScanner::move_to(std::size_t end) {
    while (position < end) {
        ++position;
        line += position < text.size() && text[position] == '\n';
    }
}

void SlowScanner::take(std::size_t start, std::size_t end) {
    token = text.substr(start, std::min<std::size_t>(end - start, 8191));
    move_to(end);
}

int SlowScanner::scan() {
    move_to(std::min(text.find_first_not_of(" \t", position), text.size()));
    if (position == text.size()) {
        token = "EOF";
        return TokenEof;
    }
    const char c = text[position];
    if (c == '#') {
        skip_line();
        return scan();
    }
    if (const std::size_t mark = std::string_view("[]=\n").find(c); mark != text.npos) {
        take(position, position + 1);
        token = c == '\n' ? "LF" : token;
        return TokenOpen + static_cast<int>(mark);
    }
    const bool is_quoted = c == '"';
    const std::size_t start = position + (is_quoted ? 1 : 0);
    take(start, std::min(text.find_first_of(is_quoted ? "\"\n" : "\n=[]# \t", start), text.size()));
    if (is_quoted) {
        move_to(position + (text.substr(position).starts_with('"') ? 1 : 0));
        return TokenString;
    }
    if (token.size() > 8 || token.find_first_not_of("0123456789") != token.npos) {
        return TokenString;
    }
    number = std::stoi(token);
    return TokenNumber;
}

void SlowScanner::skip_line() {
    take(position, std::min(text.find('\n', position), text.size()));
}

SlowFile::SlowFile(std::string_view text)
    : entries{entries_of(text, TokenMode), entries_of(text, LineMode)} {}

const SlowEntry* SlowFile::lookup(std::string_view section, std::string_view key, int mode) const {
    for (const SlowEntry& entry : entries[mode]) {
        if (same_name(entry.section, section) && same_name(entry.key, key)) {
            return &entry;
        }
    }
    return nullptr;
}

int slow_header(std::string_view text, std::string_view section) {
    SlowScanner scanner{text};
    for (int token = scanner.scan(); token != TokenEof; token = scanner.scan()) {
        const int line = scanner.line;
        std::string name;
        if (token == TokenOpen && header(scanner, name) && same_name(name, section)) {
            return line;
        }
    }
    return 0;
}

} // namespace ov::fuzz
