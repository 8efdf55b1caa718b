#include "model.h"

#include "conf/conf_tool.h"
#include "support.h"

#include <optional>

namespace ov::fuzz {

namespace {

constexpr std::size_t Longest = 8191;

std::string without_blanks_around(std::string text) {
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) {
        text.pop_back();
    }
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) {
        text.erase(0, 1);
    }
    return text;
}

// The value behind a "="; nothing when the line is no entry in that mode.
std::optional<std::string> value_behind(SlowScanner& scanner, int mode) {
    if (mode == LineMode) {
        scanner.skip_line();
        std::string value = without_blanks_around(c_string(scanner.token));
        if (value.size() > 2 && value.front() == '"' && value.back() == '"') {
            value = value.substr(1, value.size() - 2);
        }
        return value;
    }
    const int token = scanner.scan();
    if (token == TokenEol || token == TokenEof) {
        return "";
    }
    const std::string value = c_string(scanner.token);
    scanner.skip_line();
    return token == TokenString || token == TokenNumber ? std::optional(value) : std::nullopt;
}

} // namespace

SlowScanner::SlowScanner(std::string_view text) : text_(text) {
    read();
    line = 1; // whatever has been read: a line feed at the very start does not count
}

void SlowScanner::read() {
    c_ = next_ < text_.size() ? static_cast<unsigned char>(text_[next_++]) : -1;
    if (c_ == '\n') {
        ++line;
    }
}

void SlowScanner::keep() {
    if (token.size() < Longest) {
        token += static_cast<char>(c_);
    }
    read();
}

int SlowScanner::scan() {
    while (c_ == ' ' || c_ == '\t' || c_ == '#') {
        if (c_ == '#') {
            skip_line();
        } else {
            read();
        }
    }
    token.clear();
    switch (c_) {
    case '=':
        keep();
        return TokenEqual;
    case '[':
        keep();
        return TokenOpen;
    case ']':
        keep();
        return TokenClose;
    case '\n':
        read();
        token = "LF";
        return TokenEol;
    case -1:
        token = "EOF";
        return TokenEof;
    case '"':
        read();
        while (c_ != -1 && c_ != '\n' && c_ != '"') {
            keep();
        }
        if (c_ == '"') {
            read();
        }
        return TokenString;
    default:
        return word();
    }
}

int SlowScanner::word() {
    bool digits = true;
    while (c_ != -1 && c_ != '\n' && c_ != '=' && c_ != '[' && c_ != ']' && c_ != '#' &&
           c_ != ' ' && c_ != '\t') {
        digits = digits && c_ >= '0' && c_ <= '9';
        keep();
    }
    if (!digits || token.size() >= 9) {
        return TokenString;
    }
    number = std::stoi(token);
    return TokenNumber;
}

void SlowScanner::skip_line() {
    token.clear();
    while (c_ != -1 && c_ != '\n') {
        keep();
    }
}

std::vector<SlowEntry> slow_entries(std::string_view text, int mode) {
    std::vector<SlowEntry> entries;
    SlowScanner scanner(text);
    std::string section;
    bool in_section = false;
    for (int token = scanner.scan(); token != TokenEof; token = scanner.scan()) {
        if (token == TokenOpen) {
            token = scanner.scan();
            if (token == TokenString) {
                section = c_string(scanner.token); // though there may be no "]"
                token = scanner.scan();
                if (token == TokenClose) {
                    in_section = true;
                    continue;
                }
            }
        } else if (token == TokenString && in_section) {
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

const SlowEntry* slow_lookup(const std::vector<SlowEntry>& entries, std::string_view section,
                             std::string_view key) {
    for (const SlowEntry& entry : entries) {
        if (same_name(entry.section, section) && same_name(entry.key, key)) {
            return &entry;
        }
    }
    return nullptr;
}

int slow_header(std::string_view text, std::string_view section) {
    SlowScanner scanner(text);
    for (int token = scanner.scan(); token != TokenEof; token = scanner.scan()) {
        if (token != TokenOpen) {
            continue;
        }
        const int line = scanner.line;
        token = scanner.scan();
        if (token == TokenString) {
            const std::string name = c_string(scanner.token);
            token = scanner.scan();
            if (token == TokenClose) {
                if (same_name(name, section)) {
                    return line;
                }
                continue;
            }
        }
        if (token != TokenEol) {
            scanner.skip_line();
        }
    }
    return 0;
}

bool all_digits(std::string_view text) {
    return !text.empty() && text.find_first_not_of("0123456789") == text.npos;
}

int slow_boolean(std::string_view text) {
    for (const char* word : {"true", "yes", "on", "1"}) {
        if (same_name(text, word)) {
            return 1;
        }
    }
    for (const char* word : {"false", "no", "off", "0"}) {
        if (same_name(text, word)) {
            return 0;
        }
    }
    return -1;
}

std::vector<std::string> slow_split(std::string_view text, std::string_view separators) {
    std::vector<std::string> fields;
    std::string field;
    for (const char c : std::string(text) + separators.front()) {
        if (separators.find(c) == separators.npos) {
            field += c;
        } else if (!field.empty()) {
            fields.push_back(field);
            field.clear();
        }
    }
    return fields;
}

bool has_form_of_date(const std::string& text) {
    return text.size() == 10 && all_digits(text.substr(0, 4)) && text[4] == '/' &&
           all_digits(text.substr(5, 2)) && text[7] == '/' && all_digits(text.substr(8));
}

bool slow_is_date(const std::string& text) {
    if (!has_form_of_date(text)) {
        return false;
    }
    const int month = std::stoi(text.substr(5, 2));
    const int day = std::stoi(text.substr(8));
    return month >= 1 && month <= 12 && day >= 1 && day <= 31;
}

} // namespace ov::fuzz
