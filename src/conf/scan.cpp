#include "conf/scan.h"

#include "util/handle.h"
#include "util/text.h"
#include "util/util.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ov {

std::string_view scan_str;
int scan_len = 0;
int scan_num = 0;
int scan_linenumber = 0;

namespace {

constexpr std::size_t LongestNumber = 8;

// Grows for a file with a longer line.
constexpr std::size_t BufferSize = 65536;

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
    if (source.lookahead() == '\n') {
        ++scan_linenumber;
    }
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

Source::Source(Fd file) : file_(std::move(file)), at_end_(false) {
    struct stat info {};
    regular_ = ::fstat(file_.get(), &info) == 0 && S_ISREG(info.st_mode);
    // A small file is read at once, with room to see its end.
    const auto size = static_cast<std::size_t>(std::max<off_t>(info.st_size, 0));
    capacity_ = regular_ && size > 0 && size < BufferSize ? size + 1 : BufferSize;
    buffer_ = std::make_unique_for_overwrite<char[]>(capacity_);
    next_window();
    at_start_ = true;
}

std::optional<Source> Source::open(const char* path, FileKind kind) {
    Fd file = open_file(path, O_RDONLY, kind);
    if (!file) {
        return std::nullopt;
    }
    return Source(std::move(file));
}

void Source::rewind() {
    position_ = 0;
    if (at_start_) {
        return;
    }
    ::lseek(file_.get(), 0, SEEK_SET);
    at_end_ = false;
    used_ = 0;
    window_ = {};
    next_window();
    at_start_ = true;
}

void Source::next_window() {
    if (at_end_) {
        return;
    }
    // The beginning of a line that has not been read to its end comes to the front.
    const std::size_t begun = used_ - window_.size();
    std::copy_n(buffer_.get() + window_.size(), begun, buffer_.get());
    used_ = begun;
    position_ = 0;
    at_start_ = false;
    for (;;) {
        if (used_ >= LongestFileLine) {
            at_end_ = true;
            window_ = {buffer_.get(), used_};
            return;
        }
        if (used_ == capacity_) {
            auto larger = std::make_unique_for_overwrite<char[]>(capacity_ * 2);
            std::copy_n(buffer_.get(), used_, larger.get());
            buffer_ = std::move(larger);
            capacity_ *= 2;
        }
        const ssize_t got = ::read(file_.get(), buffer_.get() + used_, capacity_ - used_);
        if (got == -1 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            at_end_ = true;
            window_ = {buffer_.get(), used_};
            return;
        }
        const std::string_view read(buffer_.get() + used_, static_cast<std::size_t>(got));
        const std::size_t feed = read.rfind('\n');
        used_ += read.size();
        if (feed != read.npos) {
            window_ = {buffer_.get(), used_ - read.size() + feed + 1};
            return;
        }
    }
}

void init_scan(Source& source) {
    source.rewind();
    scan_linenumber = 1;
}

Token ini_scan(Source& source) {
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
