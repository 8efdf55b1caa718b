// The grammar of configuration files and the common kinds of values once more, as plain and slow as
// can be: what the code is held against.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ov::fuzz {

// Reads a text token by token, a character at a time.
class SlowScanner {
  public:
    explicit SlowScanner(std::string_view text);

    // The code of the next token; its text, at most 8191 characters of it, goes to `token`.
    int scan();
    // Takes the rest of the line, up to its line feed, as the token's text.
    void skip_line();

    std::string token;
    int number = 0; // of the last token that was one
    int line = 0;

  private:
    void read();
    void keep();
    int word();

    std::string_view text_;
    std::size_t next_ = 0;
    int c_ = -1; // the character ahead, or -1
};

// The entries of a text, in a lookup's mode: a line that is none in that mode is left out.
struct SlowEntry {
    std::string section;
    std::string key;
    std::string value;
    int line = 0; // of the key
};
std::vector<SlowEntry> slow_entries(std::string_view text, int mode);

// The first one of a section and key, or null.
const SlowEntry* slow_lookup(const std::vector<SlowEntry>& entries, std::string_view section,
                             std::string_view key);

// The line of the first header of a section; 0 when there is none.
int slow_header(std::string_view text, std::string_view section);

// Whether a text is made of decimal digits and not empty.
bool all_digits(std::string_view text);

// 1 or 0 for a boolean word, otherwise -1.
int slow_boolean(std::string_view text);

// The fields between separators, without empty ones.
std::vector<std::string> slow_split(std::string_view text, std::string_view separators);

// A date like "2008/02/31", whatever its numbers, and with a month and a day that there may be.
bool has_form_of_date(const std::string& text);
bool slow_is_date(const std::string& text);

} // namespace ov::fuzz
