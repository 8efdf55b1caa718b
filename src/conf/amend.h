// What becomes of the text of a configuration file when many entries change at once: text in, text
// out.
#pragma once

#include "conf/lookup.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ov {

// All that stands behind the "=" of an entry with that value, the blank there included: bare when
// it reads back so, else in quotes. A value that is read in token mode reads back in both modes.
// Nothing when there is no such text; a value has at most 8191 bytes.
std::optional<std::string> written_value(std::string_view value, int mode);

// The name of a key as it stands in front of the "=", and a section's header: bare when they read
// back so, else in quotes; nothing when they do neither.
std::optional<std::string> written_key(std::string_view name);
std::optional<std::string> written_header(std::string_view section);

// One change. Names are compared as lookups compare them.
struct Change {
    std::string section;
    std::optional<std::string> key;   // nothing: the section itself, which is deleted
    std::optional<std::string> value; // that lookups shall give; nothing: every such entry goes
    int mode = LineMode;              // in which the key is read; line mode always counts, too
};

struct Amended {
    std::string text;        // the old one when the changes are refused
    std::string refusal;     // why, to stand behind the name; empty: all has been done
    std::size_t refused = 0; // the number of the change that is refused
};

// Makes all changes or none. The line feed behind an unfinished last line comes with what is put
// behind it; every byte that is not named here stays.
//
// Deleted first: every entry of a key, with its line, of which a header in front of it stays; of a
// section all headers and entries, and what stands from such a header to the last entry behind it.
// What is not there is no error.
//
// An entry that is set stands in the place of the first one of its name, spelled as that one, while
// later ones stay; it is left as it is when it has the value. A new one follows the last entry
// behind the first header of its section, or that header, unless another header follows on its
// line; else it comes into a new section at the end, which an empty line separates. The order is
// that of the changes.
//
// Refused are a name or a value that cannot be written, a value of a section itself, what is named
// twice, as an entry is with its section, and what would change how any other entry is read: a
// section that is deleted can have the only header in front of one that is broken.
Amended amended(std::string_view text, const std::vector<Change>& changes);

} // namespace ov
