// The grammar of configuration files once more, as plain and slow as can be: what the code is held
// against.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ov::fuzz {

// Reads a text token by token.
struct SlowScanner {
    std::string_view text;
    std::size_t position = 0;
    std::string token = {}; // at most 8191 characters of it
    int number = 0;         // of the last token that was one
    int line = 1;

    // The code of the next token.
    int scan();
    // Takes the rest of the line, up to its line feed, as the token's text.
    void skip_line();

    void take(std::size_t start, std::size_t end);
    void move_to(std::size_t end);
};

struct SlowEntry {
    std::string section;
    std::string key;
    std::string value;
    int line = 0; // of the key
};

// The entries of a text as those of each mode find them: a line that is none in a mode is left out.
struct SlowFile {
    explicit SlowFile(std::string_view text);

    // The first one of a section and key, or null.
    const SlowEntry* lookup(std::string_view section, std::string_view key, int mode) const;

    std::vector<SlowEntry> entries[2]; // by mode
};

// The line of the first header of a section; 0 when there is none.
int slow_header(std::string_view text, std::string_view section);

} // namespace ov::fuzz
