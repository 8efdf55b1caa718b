// The keys of a configuration, with what is in force.
#pragma once

#include "ctl/survey.h"
#include "reference/names.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace ov::ctl {

// A value in the type that programs expect; nothing: it is not set.
using Typed = std::variant<std::monostate, bool, std::int64_t, std::uint64_t, std::string,
                           std::vector<std::string>>;

// One key. A value is the text that a file sets it with; nothing: it is not set.
struct ShownKey {
    const char* section;
    const char* key;
    std::optional<std::string> value = {};
    std::optional<std::string> initial = {}; // that holds while no file sets it
    std::string_view file = {};              // that sets it; empty: it is the default
    int line = 0;
    bool secret = false;
    std::string kind = {}; // this and the next one for programs only
    Typed typed = {};

    bool is_changed() const { return value != initial; }
};

// The file and the line of an origin.
using FileLine = std::pair<std::string_view, int>;
FileLine place_of(const Origin& origin, const Document& document, const Survey& survey);

enum class For : std::uint8_t { People, Programs };

// The keys `names` of the configuration that has been loaded, rights among them.
std::vector<ShownKey> shown_keys(const Document& document, const Survey& survey,
                                 const std::vector<KeyName>& names, For whom);

// The rights of a user of the role `rank`, which have been loaded, in their order. Of each, the
// file and the line that set it.
std::vector<ShownKey> shown_rights(const char* section, int rank,
                                   const std::vector<FileLine>& origins, For whom);

// The key as a line of a configuration file: an entry where a file sets it, else a comment. A
// secret is a comment unless `with_secrets`.
std::string line_of(const ShownKey& key, bool with_secrets);

// The text that sets a key of the row to what a program has given, as `typed` of a shown key has
// it; null: a key of which nothing is known. Nothing when the key takes no value of that type.
std::optional<std::string> text_of(const Columns* row, const Typed& typed);

// A value as it stands behind the "=", in quotes where it would not read back without.
std::string in_quotes(const std::string& value);

} // namespace ov::ctl
