// Characters of a configuration file to tokens.
//
// The scanner keeps its state in process-wide variables: one file is scanned at a time.
#pragma once

#include "util/handle.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>

namespace ov {

// No line is longer than this. A device without an end, or without a line feed, must not take all
// memory: it reads as if the file ended there.
inline constexpr std::size_t LongestFileLine = std::size_t{64} << 20;

// An open configuration file and how far it has been scanned. A window of whole lines is held at a
// time; what the scanner gives out points into it and lives until the window moves on.
class Source {
  public:
    // Scans the open file `file`. A read error looks like the end of the file.
    explicit Source(Fd file);
    // Scans `text`, which must outlive the source.
    explicit Source(std::string_view text) : window_(text) {}
    // The file `path`; nothing, with errno set, when it cannot be opened.
    static std::optional<Source> open(const char* path, FileKind kind = FileKind::Any);

    // Goes back to the first byte.
    void rewind();

    // Whether it can be read again from the start with the same outcome.
    bool is_regular_file() const { return regular_; }

    // The window: it ends behind a line feed or with the file.
    std::string_view window() const { return window_; }
    std::size_t position() const { return position_; }
    // The character at the position, or -1 at the end of the file.
    int lookahead() const {
        return position_ < window_.size() ? static_cast<unsigned char>(window_[position_]) : -1;
    }
    // Goes on to `position` in the window; at its end, to the start of the next one.
    void move_to(std::size_t position) {
        position_ = position;
        if (position_ == window_.size()) {
            next_window();
        }
    }

  private:
    void next_window();

    Fd file_;
    bool regular_ = false;
    bool at_end_ = true;   // nothing more can be read
    bool at_start_ = true; // the window is the first one
    std::unique_ptr<char[]> buffer_;
    std::size_t capacity_ = 0;
    std::size_t used_ = 0; // bytes in the buffer, those behind the window included
    std::string_view window_;
    std::size_t position_ = 0;
};

enum Token : int {
    TokenEof = 1,
    TokenOpen = 2,    // "["
    TokenClose = 3,   // "]"
    TokenEqual = 4,   // "="
    TokenEol = 5,     // end of line
    TokenNumber = 16, // a bare word of 1 to 8 decimal digits
    TokenString = 17, // a quoted string, or any other bare word
};

// The text of the last token, at most 8191 bytes of it ("EOF" and "LF" for the two ends). It lives
// until the next token is read.
extern std::string_view scan_str;
extern int scan_len;
// The value of the last number.
extern int scan_num;
// The current line, counted from 1. When the file begins with a line feed, that one is not
// counted: every later line has one less than its true number. The editor counts truly.
extern int scan_linenumber;

// Goes back to the first byte of the file. To be called before the first ini_scan.
void init_scan(Source& source);

// Reads the next token. Blanks and comments are skipped; the end of the file is returned for ever.
// A quoted string knows no escapes and ends with its line at the latest.
Token ini_scan(Source& source);

// The pieces of the grammar: where the blanks that begin at `from` end, where the bare word that
// begins there ends, and whether a bare word is a number.
std::size_t blanks_end(std::string_view text, std::size_t from);
std::size_t word_end(std::string_view text, std::size_t from);
bool is_number(std::string_view word);

// Takes the rest of the line, its line feed excluded, as the last token's text.
void skip_eol(Source& source);

} // namespace ov
