#include "conf/lookup.h"

#include "util/log.h"
#include "util/services.h"
#include "util/text.h"

#include <algorithm>
#include <cstdio>

namespace ov {

namespace {

// Lookups are logged for those who look for a fault in a configuration.
constexpr unsigned LogConfScan = 0x2000;
constexpr int LogConfScanLevel = 90;

// Names are C strings to whoever compares them.
bool same_name(std::string_view in_file, std::string_view wanted) {
    return same_word(c_text(in_file), wanted);
}

// What stands behind a "[".
enum class Header {
    Valid,
    Malformed, // the rest of the line has been skipped
    EndOfFile,
};

// Reads a header behind its "[". The name, when there is one, goes to `name` even when the header
// turns out to be malformed.
Header read_header(Source& source, std::string& name) {
    Token token = next_token(source);
    if (token == TokenString) {
        name = scan_str;
        token = next_token(source);
        if (token == TokenClose) {
            return Header::Valid;
        }
    }
    if (token == TokenEof) {
        return Header::EndOfFile;
    }
    if (token != TokenEol) {
        skip_eol(source);
    }
    return Header::Malformed;
}

// Takes the rest of the line whole, whatever its length.
std::string_view rest_of_line(Source& source) {
    const std::size_t start = source.position();
    skip_eol(source);
    return source.window().substr(start, source.position() - start);
}

// Whether only blanks stand in front of the character at `position` on its line.
bool begins_line(std::string_view text, std::size_t position) {
    const std::size_t before = text.substr(0, position).find_last_not_of(" \t");
    return before == text.npos || text[before] == '\n';
}

std::string_view trim_blanks(std::string_view text) {
    const std::size_t start = blanks_end(text, 0);
    std::size_t end = text.size();
    while (end > start && (text[end - 1] == ' ' || text[end - 1] == '\t')) {
        --end;
    }
    return text.substr(start, end - start);
}

} // namespace

std::optional<Entry> EntryScan::next() {
    std::optional<Entry> entry(std::in_place);
    for (;;) {
        switch (next_piece(*entry)) {
        case Piece::Entry:
            return entry;
        case Piece::End:
            entry.reset();
            return entry;
        default:
            break;
        }
    }
}

Piece EntryScan::next_piece(Entry& entry) {
    if (plain_entry(entry)) {
        return Piece::Entry;
    }
    switch (next_token(source_)) {
    case TokenEof:
        return Piece::End;
    case TokenEol:
        return Piece::EmptyLine;
    case TokenOpen:
        ++headers_;
        if (read_header(source_, section_) != Header::Valid) {
            return Piece::BrokenHeader;
        }
        section_seen_ = true;
        return Piece::Header;
    case TokenString: {
        const int line = source_.line();
        const std::string_view key = scan_str; // on the same line as all that is read here
        const Token token = section_seen_ ? next_token(source_) : TokenString;
        if (token == TokenEqual) {
            entry = {section_, headers_, key, line, rest_of_line(source_)};
            return Piece::Entry;
        }
        if (token != TokenEol) {
            skip_eol(source_);
        }
        return Piece::Skipped;
    }
    default:
        skip_eol(source_);
        return Piece::Skipped;
    }
}

// Takes the entry on the next line when that is of the common form, "Key = value" without quotes
// and comments around the key: the same as the tokens would give, only faster.
bool EntryScan::plain_entry(Entry& entry) {
    const std::string_view text = source_.window();
    std::size_t start = source_.position();
    if (!section_seen_ || start == text.size() || text[start] != '\n') {
        return false;
    }
    start = blanks_end(text, start + 1);
    const std::size_t end = word_end(text, start);
    const std::size_t equal = blanks_end(text, end);
    if (start == end || text[start] == '"' || equal == text.size() || text[equal] != '=') {
        return false;
    }
    const std::string_view key = text.substr(start, std::min(end - start, MaxText));
    if (text[start] <= '9' && is_number(key)) {
        return false;
    }
    const std::size_t feed = std::min(text.find('\n', equal), text.size());
    source_.move_to(feed);
    entry = {section_, headers_, key, source_.line(), text.substr(equal + 1, feed - equal - 1)};
    source_.add_lines(feed < text.size());
    return true;
}

void EntryScan::skip_section() {
    while (source_.lookahead() != -1) {
        const std::string_view text = source_.window();
        const std::size_t start = source_.position();
        std::size_t bracket = text.find('[', start);
        while (bracket != text.npos && !begins_line(text, bracket)) {
            bracket = text.find('[', bracket + 1);
        }
        const std::size_t end = std::min(bracket, text.size());
        if (end > start) {
            const std::string_view passed = text.substr(start + 1, end - start - 1);
            source_.add_lines(static_cast<int>(std::count(passed.begin(), passed.end(), '\n')));
            source_.move_to(end);
            source_.add_lines(end == text.size() && source_.lookahead() == '\n');
        }
        if (bracket != text.npos) {
            return;
        }
    }
}

std::string_view line_value(const Entry& entry) {
    const std::string_view value = trim_blanks(c_text(entry.rest.substr(0, MaxText)));
    if (value.size() > 2 && value.front() == '"' && value.back() == '"') {
        return value.substr(1, value.size() - 2);
    }
    return value;
}

std::optional<std::string_view> token_value(const Entry& entry) {
    Source rest(entry.rest);
    switch (next_token(rest)) {
    case TokenString:
    case TokenNumber:
        return c_text(scan_str);
    case TokenEol:
    case TokenEof:
        return std::string_view();
    default:
        return std::nullopt;
    }
}

std::optional<std::string_view> value_in(const Entry& entry, int mode) {
    return (mode & LineMode) != 0 ? std::optional(line_value(entry)) : token_value(entry);
}

bool take_value(const Entry& entry, const char* sec, const char* key, std::string& ans,
                std::size_t asiz, int flg) {
    const std::optional<std::string_view> value =
        flg & LineMode ? line_value(entry) : token_value(entry);
    if (!value) {
        return false;
    }
    if ((services.facility & LogConfScan) != 0 && services.level >= LogConfScanLevel) {
        ov_syslog("CONF SCAN: DEBUG sec=%s key=%s  val=%s", sec ? sec : "", key ? key : "",
                  std::string(*value).c_str());
    }
    ans = asiz > 0 ? value->substr(0, asiz - 1) : std::string_view();
    return true;
}

int line_of_entry(Source& source, const char* sec, const char* key, std::string& ans,
                  std::size_t asiz, int flg) {
    const std::string_view section = sec ? sec : "";
    const std::string_view name = key ? key : "";
    ans.clear();
    EntryScan entries(source);
    while (const std::optional<Entry> entry = entries.next()) {
        if (!same_name(entry->section, section)) {
            entries.skip_section();
        } else if (same_name(entry->key, name) && take_value(*entry, sec, key, ans, asiz, flg)) {
            return entry->line;
        }
    }
    return 0;
}

int _getprofile(Source& fp, const char* sec, const char* key, std::string& ans, std::size_t asiz,
                int flg) {
    scan_linenumber = line_of_entry(fp, sec, key, ans, asiz, flg);
    return scan_linenumber == 0 ? -1 : 0;
}

int conf_getprofile(Source& fp, const char* sec, const char* key, std::string& ans,
                    std::size_t asiz) {
    return _getprofile(fp, sec, key, ans, asiz, LineMode);
}

int conf_fetch(const char* path, const char* sec, const char* key, std::string& ans,
               std::size_t asiz) {
    std::optional<Source> file = Source::open(path);
    if (!file) {
        std::fprintf(stderr, "cannot open \"%s\"\n", path);
        return -1;
    }
    return conf_getprofile(*file, sec, key, ans, asiz);
}

int line_of_header(Source& source, std::string_view sec) {
    source.rewind();
    for (;;) {
        const Token token = next_token(source);
        if (token == TokenEof) {
            return 0;
        }
        if (token != TokenOpen) {
            continue;
        }
        const int line = source.line();
        std::string name;
        if (read_header(source, name) == Header::Valid && same_name(name, sec)) {
            return line;
        }
    }
}

int get_sec(Source& fp, std::string_view sec) {
    const int line = line_of_header(fp, sec);
    if (line == 0) {
        return -1;
    }
    scan_linenumber = line;
    return 0;
}

} // namespace ov
