// Characters of a configuration file to tokens.
//
// The scanner keeps its state in process-wide variables: one file is scanned at a time.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>

namespace ov {

// The bytes of an open configuration file, and how far they have been scanned. Everything that
// the scanner and the lookup give out points into these bytes.
class Source {
  public:
    Source() = default;
    // Reads the open file `fd` to its end. A read error looks like the end to the scanner.
    explicit Source(int fd);
    // Scans `text`, which must outlive the source.
    explicit Source(std::string_view text) : text_(text) {}

    // The file `path`; nothing, with errno set, when it cannot be opened.
    static std::optional<Source> open(const char* path);

    std::string_view text() const { return text_; }
    // The errno of the read that failed, or 0.
    int read_error() const { return read_error_; }
    std::size_t position() const { return position_; }

    // The character at the position, or -1 at the end.
    int lookahead() const {
        return position_ < text_.size() ? static_cast<unsigned char>(text_[position_]) : -1;
    }
    void move_to(std::size_t position) { position_ = position; }

  private:
    std::unique_ptr<char[]> bytes_;
    std::string_view text_;
    std::size_t position_ = 0;
    int read_error_ = 0;
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

// The text of the last token, at most 8191 bytes of it ("EOF" and "LF" for the two ends).
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

// Takes the rest of the line, its line feed excluded, as the last token's text.
void skip_eol(Source& source);

} // namespace ov
