#include "conf/conf_tool.h"

#include "util/log.h"
#include "util/text.h"
#include "util/util_settings.h"

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
Header read_header(Source& source, std::string_view& name) {
    Token token = ini_scan(source);
    if (token == TokenString) {
        name = scan_str;
        token = ini_scan(source);
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
    return source.text().substr(start, source.position() - start);
}

std::string_view trim_blanks(std::string_view text) {
    const std::size_t start = text.find_first_not_of(" \t");
    if (start == text.npos) {
        return {};
    }
    return text.substr(start, text.find_last_not_of(" \t") - start + 1);
}

void log_found(std::string_view sec, std::string_view key, const std::string& value) {
    if ((LogFacility & LogConfScan) != 0 && LogLevel >= LogConfScanLevel) {
        ov_syslog("CONF SCAN: DEBUG sec=%s key=%s  val=%s", std::string(sec).c_str(),
                  std::string(key).c_str(), value.c_str());
    }
}

} // namespace

std::optional<Entry> EntryScan::next() {
    for (;;) {
        switch (ini_scan(source_)) {
        case TokenEof:
            return std::nullopt;
        case TokenEol:
            break;
        case TokenOpen:
            if (read_header(source_, section_) == Header::Valid) {
                section_seen_ = true;
            }
            break;
        case TokenString: {
            const int line = scan_linenumber;
            const std::string_view key = scan_str;
            const Token token = section_seen_ ? ini_scan(source_) : TokenString;
            if (token == TokenEqual) {
                return Entry{section_, key, line, rest_of_line(source_)};
            }
            if (token != TokenEol) {
                skip_eol(source_);
            }
            break;
        }
        default:
            skip_eol(source_);
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
    switch (ini_scan(rest)) {
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

int _getprofile(Source& fp, std::string_view sec, std::string_view key, std::string& ans,
                std::size_t asiz, int flg) {
    ans.clear();
    EntryScan entries(fp);
    while (const std::optional<Entry> entry = entries.next()) {
        if (!same_name(entry->section, sec) || !same_name(entry->key, key)) {
            continue;
        }
        const std::optional<std::string_view> value =
            flg & LineMode ? line_value(*entry) : token_value(*entry);
        if (!value) {
            continue;
        }
        ans = asiz > 0 ? value->substr(0, asiz - 1) : std::string_view();
        log_found(sec, key, ans);
        scan_linenumber = entry->line;
        return 0;
    }
    scan_linenumber = 0;
    return -1;
}

int conf_getprofile(Source& fp, std::string_view sec, std::string_view key, std::string& ans,
                    std::size_t asiz) {
    return _getprofile(fp, sec, key, ans, asiz, LineMode);
}

int conf_fetch(const char* path, std::string_view sec, std::string_view key, std::string& ans,
               std::size_t asiz) {
    std::optional<Source> file = Source::open(path);
    if (!file) {
        std::fprintf(stderr, "cannot open \"%s\"\n", path);
        return -1;
    }
    return conf_getprofile(*file, sec, key, ans, asiz);
}

int get_sec(Source& fp, std::string_view sec) {
    init_scan(fp);
    for (;;) {
        const Token token = ini_scan(fp);
        if (token == TokenEof) {
            return -1;
        }
        if (token != TokenOpen) {
            continue;
        }
        const int line = scan_linenumber;
        std::string_view name;
        if (read_header(fp, name) == Header::Valid && same_name(name, sec)) {
            scan_linenumber = line;
            return 0;
        }
    }
}

} // namespace ov
