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

// Configuration files are read whole.
constexpr std::size_t SmallestBuffer = 4096;
// What is read at most from a pipe or a device: one without an end must not take all memory.
constexpr std::size_t LargestDevice = std::size_t{64} << 20;

bool is_blank(char c) {
    return c == ' ' || c == '\t';
}

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
    return std::min(source.text().find('\n', from), source.text().size());
}

Token quoted_string(Source& source) {
    const std::string_view text = source.text();
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
    const std::string_view text = source.text();
    const std::size_t start = source.position();
    const auto end = std::find_if(text.begin() + static_cast<std::ptrdiff_t>(start), text.end(),
                                  [](char c) { return word_ends[static_cast<unsigned char>(c)]; });
    const auto length = static_cast<std::size_t>(end - text.begin()) - start;
    advance(source, start + length);
    set_token(text.substr(start, length));
    if (length > LongestNumber || !is_alldigit(scan_str)) {
        return TokenString;
    }
    scan_num = 0;
    for (const char digit : scan_str) {
        scan_num = scan_num * 10 + (digit - '0');
    }
    return TokenNumber;
}

} // namespace

Source::Source(int fd) {
    struct stat info {};
    const bool regular = ::fstat(fd, &info) == 0 && S_ISREG(info.st_mode);
    // One byte more than a file has shows its end with the first read.
    std::size_t room = regular ? static_cast<std::size_t>(info.st_size) + 1 : 0;
    room = std::max(room, SmallestBuffer);
    bytes_ = std::make_unique_for_overwrite<char[]>(room);
    std::size_t size = 0;
    for (;;) {
        if (size == room) {
            if (!regular && size >= LargestDevice) {
                break;
            }
            auto larger = std::make_unique_for_overwrite<char[]>(room * 2);
            std::copy_n(bytes_.get(), size, larger.get());
            bytes_ = std::move(larger);
            room *= 2;
        }
        const ssize_t got = ::read(fd, bytes_.get() + size, room - size);
        if (got == -1 && errno == EINTR) {
            continue;
        }
        if (got == -1) {
            read_error_ = errno;
        }
        if (got <= 0) {
            break;
        }
        size += static_cast<std::size_t>(got);
    }
    text_ = std::string_view(bytes_.get(), size);
}

std::optional<Source> Source::open(const char* path) {
    const Fd file(::open(path, O_RDONLY | O_CLOEXEC));
    if (!file) {
        return std::nullopt;
    }
    return Source(file.get());
}

void init_scan(Source& source) {
    source.move_to(0);
    scan_linenumber = 1;
}

Token ini_scan(Source& source) {
    const std::string_view text = source.text();
    for (;;) {
        std::size_t position = source.position();
        while (position < text.size() && is_blank(text[position])) {
            ++position;
        }
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

void skip_eol(Source& source) {
    const std::size_t start = source.position();
    const std::size_t end = end_of_line(source, start);
    advance(source, end);
    set_token(source.text().substr(start, end - start));
}

} // namespace ov
