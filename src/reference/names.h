// The names of sections and keys, as people write them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ov {

// The sections of the main file: those of the catalogue and that of the managers' rights.
const std::vector<std::string_view>& section_names();
bool is_known_section(std::string_view section);

// ": did you mean NAME?", or nothing for an empty name.
std::string did_you_mean(std::string_view name);

// What may be meant by a key that its section does not have: a key of it, or of another section.
std::string likely_key(std::string_view section, std::string_view key);

// A key of the main file: a row of the catalogue, or a right in its section.
struct KeyName {
    std::string_view section;
    std::string_view key;
    std::size_t number; // of the row, or of the right
    bool is_right;
    std::size_t place = 0; // among all keys
};
// All keys in the order of the manual: section by section, as they are first read.
const std::vector<KeyName>& key_names();

// The keys that a name stands for: "Section", "Section.Key", or patterns of them with "*" and "?",
// in any case. Empty: there are none.
std::vector<KeyName> keys_named(std::string_view name);
// What to say of such a name.
std::string no_such_name(std::string_view name);

} // namespace ov
