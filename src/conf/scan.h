// Characters of a configuration file to tokens.
//
// The scanner keeps its state in process-wide variables: one file is scanned at a time.
#pragma once

#include "util/source.h"

#include <cstddef>
#include <string_view>

namespace ov {

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
// The line of the last token, or of what a lookup has found, counted from 1. When the file begins
// with a line feed, that one is not counted: every later line has one less than its true number.
// The editor counts truly.
extern int scan_linenumber;

// Goes back to the first byte of the file. To be called before the first token.
void init_scan(Source& source);

// Reads the next token, with its line in scan_linenumber. Blanks and comments are skipped; the end
// of the file is returned for ever. A quoted string knows no escapes and ends with its line at the
// latest.
Token ini_scan(Source& source);

// The same for those who ask the source for the line.
Token next_token(Source& source);

// The pieces of the grammar: where the blanks that begin at `from` end, where the bare word that
// begins there ends, and whether a bare word is a number.
std::size_t blanks_end(std::string_view text, std::size_t from);
std::size_t word_end(std::string_view text, std::size_t from);
bool is_number(std::string_view word);

// Takes the rest of the line, its line feed excluded, as the last token's text.
void skip_eol(Source& source);

} // namespace ov
