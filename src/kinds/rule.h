// What a row says of its value: how it is loaded, what a check accepts, in which form it is shown.
// kinds.h has the kinds.
#pragma once

#include "conf/lookup.h"
#include "kinds/types.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <type_traits>
#include <variant>

namespace ov {

// Types of settings, a bit each.
enum Types : std::uint8_t {
    Numbers = 0x1,
    LargeNumbers = 0x2, // of 64 bits; they are among the numbers
    Texts = 0x4,
    WordLists = 0x8,
    IpLists = 0x10,
    AddressLists = 0x20,
    ServerLists = 0x40,
    AnyType = 0x7f,
};
template <class Type>
consteval Types type_of() {
    if constexpr (std::is_integral_v<Type>) {
        return sizeof(Type) == sizeof(std::int64_t) ? static_cast<Types>(Numbers | LargeNumbers)
                                                    : Numbers;
    } else if constexpr (std::is_same_v<Type, Text>) {
        return Texts;
    } else if constexpr (std::is_same_v<Type, WordList>) {
        return WordLists;
    } else if constexpr (std::is_same_v<Type, IpList>) {
        return IpLists;
    } else if constexpr (std::is_same_v<Type, AddressList>) {
        return AddressLists;
    } else {
        static_assert(std::is_same_v<Type, ServerList>);
        return ServerLists;
    }
}

// Another setting that a rule needs.
using Other = std::variant<std::monostate, int Settings::*, std::int64_t Settings::*,
                           Text Settings::*, ServerList Settings::*>;

inline constexpr std::int64_t Least = std::numeric_limits<std::int64_t>::min();
inline constexpr std::int64_t NoBound = std::numeric_limits<std::int64_t>::max();
inline constexpr std::uint16_t NoLength = std::numeric_limits<std::uint16_t>::max();

// What is special about a row's value.
struct Manner {
    std::int64_t lowest = Least;
    std::int64_t highest = NoBound;
    std::uint16_t longest = NoLength;  // in characters
    std::int8_t table = -1;            // of the value's words
    std::uint8_t mode = LineMode;      // of the lookup
    char unit = '\0';                  // of a size without one
    std::array<char, 3> separators{};  // of a list, and a NUL
    std::array<char, 2> punctuation{}; // in what is said of a bad value, and a NUL
    Other first = {};
    Other second = {};

    bool operator==(const Manner&) const = default;
};

// A value, the setting that it is for, and what the row wants of it.
struct Value {
    const Manner& manner;
    Variable variable;
    const std::string& text; // empty when the key is absent
};

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
    MemoryExhausted,
};

struct Load;

// A value that is being loaded.
struct Loading : Value {
    Load& load; // what is being loaded, with the mask and what is said on the way
    Reader reader;
    const char* section;
    int line; // of the value in its file; 0: it does not stand there
};

// What a check accepts.
struct Check {
    Types types; // of the settings whose values it knows
    bool (*accepts)(const Value&);
};

// How a setting is shown. Nothing: it cannot be, as a number without a word.
struct Form {
    Types types;
    std::optional<std::string> (*text_of)(const Value&);
};

// What those rows have that cannot be checked, or shown.
inline bool accepts_nothing(const Value&) {
    return false;
}
inline std::optional<std::string> shows_nothing(const Value&) {
    return std::nullopt;
}
inline constexpr Check NoCheck{AnyType, accepts_nothing};
inline constexpr Form NoForm{AnyType, shows_nothing};

// What most kinds do when the file lacks the key.
inline Verdict keep_default(const Loading&) {
    return Verdict::Taken;
}

// How a value is loaded, with the check and the form of rows that name no others.
struct Kind {
    Types types;
    Verdict (*load)(const Loading&);
    const Check& check;
    const Form& form;
    Verdict (*absent)(const Loading&) = keep_default;
};

// A kind, a check or a form, and how a row wants it.
template <class Record>
struct Rule {
    const Record* record;
    Manner manner = {};

    bool operator==(const Rule&) const = default;
};
using KindRule = Rule<Kind>;
using CheckRule = Rule<Check>;
using FormRule = Rule<Form>;

// A rule of one kind. As a check, and as a form, it is that of the kind; one that the kind has not
// does not compile.
template <const Kind& kind>
struct KindOf {
    Manner manner = {};

    constexpr operator KindRule() const { return {&kind, manner}; }
    constexpr operator CheckRule() const requires(&kind.check != &NoCheck) {
        return {&kind.check, manner};
    }
    constexpr operator FormRule() const requires(&kind.form != &NoForm) {
        return {&kind.form, manner};
    }
};

} // namespace ov
