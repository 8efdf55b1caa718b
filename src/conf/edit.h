// What becomes of the text of a configuration file when one entry changes: text in, text out.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ov {

// An edited text: what stays in front, the new lines, what stays behind. It points into the old
// one.
struct Edit {
    std::string_view head;
    std::string insertion;
    std::string_view tail;
};

// Gives the entry of `sec` and `key` the value `value`, cut to 8191 characters: replaces its line
// by "key = value", or puts that line right behind the first header of the section, or behind a new
// header at the end. Every other byte stays.
Edit modified(std::string_view text, const char* sec, const char* key, std::string_view value);

// Removes the line of the first entry of `sec` and `key`; nothing when there is none.
std::optional<Edit> deleted(std::string_view text, const char* sec, const char* key);

// An entry as it stands on its line; `rest` is all that stands behind the "=".
inline std::string written_entry(std::string_view key, std::string_view rest) {
    std::string entry = std::string(key) + " =";
    entry += rest;
    return entry;
}

} // namespace ov
