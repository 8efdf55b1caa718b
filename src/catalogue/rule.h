// What the kinds of values are made of. kinds.h has the kinds.
#pragma once

#include "catalogue/settings.h"
#include "conf/conf_tool.h"

#include <array>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>

namespace ov {

// A setting variable of any type.
using Variable = std::variant<int*, unsigned*, long*, unsigned long*, Text*, WordList*, IpList*,
                              AddressList*, ServerList*>;

// Sets of these types.
using Types = std::uint16_t;
template <class Type, std::size_t Index = 0>
consteval Types type_of() {
    if constexpr (std::is_same_v<Type*, std::variant_alternative_t<Index, Variable>>) {
        return static_cast<Types>(1U << Index);
    } else {
        return type_of<Type, Index + 1>();
    }
}
inline constexpr Types Numbers =
    type_of<int>() | type_of<unsigned>() | type_of<long>() | type_of<unsigned long>();
inline constexpr Types Texts = type_of<Text>();
inline constexpr Types AnyType = std::numeric_limits<Types>::max();

// Another setting that a rule needs.
using Other = std::variant<std::monostate, int Settings::*, long Settings::*, Text Settings::*,
                           ServerList Settings::*>;

// The readers of a configuration file. Each reads the rows that name it.
enum Reader : std::uint8_t {
    MainReader = 0x1,
    TransferReader = 0x2,
    CypherReader = 0x4,
    SearchReader = 0x8,
    RightsReader = 0x10, // of a rights file, and of the rights in the main file
};

// What became of a value.
enum class Verdict : std::uint8_t {
    Taken,
    Invalid,
    NotFullPath,   // a path that must be absolute is not
    NotConfigured, // no path could be made of it
    CannotOpen,    // not a value: the file itself
    MemoryExhausted,
};

struct Manner;
struct Load;

// A value, the setting that it is for, and what the row wants of it.
struct Value {
    const Manner& manner;
    Variable variable;
    const std::string& text; // empty when the key is absent
};

// A value that is being loaded.
struct Loading : Value {
    Load& load; // what is being loaded, with the mask and what is said on the way
    Reader reader;
    const char* section;
    int line; // of the value in its file; 0: it does not stand there
};

using Shown = std::optional<std::string>;

// How the manual speaks of a kind. In braces stands what the row puts in: {bounds},
// {range}, {words}, {separators}, {longest}, {unit}, and the keys of its other settings, {first}
// and {second}. Null: the kind is not for that column.
struct Wording {
    const char* load;  // "kind" or "kind|details"
    const char* check; //
    const char* show;
    const char* meaning = nullptr; // of the name of the kind; kinds of one name have it once
    const char* offered = nullptr; // the values that the completion offers; {choices}: the words
};
// The check accepts what is described for the load.
inline constexpr const char* TheSame = "{load}";

// One kind of value: everything that the tool knows about it. What a kind does not have is null:
// one without `load` can only be checked or shown.
struct Kind {
    Wording words;
    Types types = 0; // of the settings that it is for
    Verdict (*load)(const Loading&) = nullptr;
    Verdict (*absent)(const Loading&) = nullptr; // what is done when the file lacks the key
    bool (*check)(const Value&) = nullptr;
    Shown (*show)(const Value&) = nullptr;
    std::string (*written)(const Value&) = nullptr; // a number as a file has it; null: in digits
};

inline constexpr std::int64_t NoBound = std::numeric_limits<std::int64_t>::max();
inline constexpr std::uint16_t NoLength = std::numeric_limits<std::uint16_t>::max();

// How a row wants its kind.
struct Manner {
    std::int64_t lowest = std::numeric_limits<std::int64_t>::min();
    std::int64_t highest = NoBound;
    std::uint16_t longest = NoLength; // in characters
    std::int8_t table = -1;           // of the value's words
    std::uint8_t mode = LineMode;     // of the lookup
    std::array<char, 4> characters{}; // separators, a unit, punctuation, and a NUL
    Other first = {};
    Other second = {};

    bool operator==(const Manner&) const = default;
};

struct Rule {
    const Kind* kind = nullptr; // null: the row has nothing in the column
    Manner manner = {};

    bool operator==(const Rule&) const = default;
};

} // namespace ov
