// What is wrong with a row, or does not fit together, does not compile. This file is compiled
// before all that needs the rows, so that a fault is named once, by its key.
#include "catalogue/pack.h"
#include "kinds/words.h"

namespace ov {

namespace {

using rows::Default;
using rows::Rules;
using rows::written_rights;
using rows::written_rows;
using rows::WrittenRow;

// The rows by their variables.
enum class RowOf : std::uint16_t {
#define SETTING(section, key, variable, ...) variable,
#include "catalogue/keys.def"
};
constexpr const WrittenRow& row_of(RowOf number) {
    return written_rows[static_cast<std::size_t>(number)];
}
constexpr const rows::WrittenRight& right_of(Right number) {
    return written_rights[static_cast<std::size_t>(number)];
}

// Whether the key has one row only: all of the same name are found where the search begins.
constexpr bool stands_once(std::string_view section, std::string_view key) {
    const std::uint8_t wanted = rows::number_of_section(section);
    int rows_of_key = 0;
    for (std::size_t at = KeyIndex::place(wanted, key, pack::Buckets);
         pack::buckets[at].number != KeyIndex::Free; at = (at + 1) % pack::Buckets) {
        rows_of_key += pack::buckets[at].section == wanted &&
                       same_word(pack::key_of_number(pack::buckets[at].number), key);
    }
    return rows_of_key == 1;
}

template <class Type>
constexpr bool are_for(const Rules& rules) {
    constexpr Types type = type_of<Type>();
    return (rules.load.record->types & type) && (rules.check.record->types & type) &&
           (rules.show.record->types & type);
}

constexpr bool has_columns_once(const Rules& rules) {
    return rules.checks <= 1 && rules.forms <= 1;
}

constexpr bool has_what_it_names(const Rules& rules) {
    return (rules.checks == 0 || rules.check.record != &NoCheck) &&
           (rules.forms == 0 || rules.show.record != &NoForm);
}

constexpr bool has_words(const Rules& rules) {
    return kinds::words_of(*rules.load.record) &&
           (rules.checks == 0 || kinds::words_of(*rules.check.record)) &&
           (rules.forms == 0 || kinds::words_of(*rules.show.record));
}

// The default of another setting; of one that is no row's, 0.
constexpr std::int64_t default_of(const Other& name) {
    for (const WrittenRow& row : written_rows) {
        const bool found = std::visit(
            [&row](auto other) {
                if constexpr (std::is_same_v<decltype(other), std::monostate>) {
                    return false;
                } else {
                    const auto* member = std::get_if<decltype(other)>(&row.member);
                    return member && *member == other;
                }
            },
            name);
        if (found) {
            return row.initial.numbers[0];
        }
    }
    return 0;
}

constexpr bool is_within(const KindRule& rule) {
    return rule.record == &kinds::Within;
}
constexpr std::int64_t lowest(const KindRule& rule) {
    return is_within(rule) ? default_of(rule.manner.first) : rule.manner.lowest;
}
constexpr std::int64_t highest(const KindRule& rule) {
    return is_within(rule) ? default_of(rule.manner.second) : rule.manner.highest;
}

// In order, and none that the setting cannot hold.
template <class Type>
constexpr bool has_sound_bounds(const Rules& rules) {
    if constexpr (std::is_integral_v<Type>) {
        if (highest(rules.load) != NoBound && !std::in_range<Type>(highest(rules.load))) {
            return false;
        }
    }
    return lowest(rules.load) <= highest(rules.load) &&
           rules.check.manner.lowest <= rules.check.manner.highest;
}

// A key that can be written without quotes, and is no number.
constexpr bool is_bare_name(std::string_view key) {
    return std::all_of(key.begin(), key.end(), is_name_character) &&
           !std::all_of(key.begin(), key.end(), is_digit);
}

constexpr bool wants_full_path(const KindRule& rule) {
    return rule.record == &kinds::Path || rule.record == &kinds::FullDirectory;
}

constexpr std::size_t digits_of(std::int64_t number) {
    std::size_t digits = 1;
    for (; number > 9; number /= 10) {
        ++digits;
    }
    return digits;
}

constexpr bool has_word(const Manner& manner, std::int64_t number) {
    const VTAB* row = VTable[manner.table];
    while (row->str && row->val != number) {
        ++row;
    }
    return row->str != nullptr;
}

constexpr bool has_sound_default(const Rules& rules, const Default& initial) {
    const Manner& manner = rules.load.manner;
    if (const std::string_view text = initial.text ? initial.text : "";
        text.size() > std::min<std::size_t>(manner.longest, MaxText) ||
        (wants_full_path(rules.load) && !text.empty() && !text.starts_with('/'))) {
        return false;
    }
    for (std::size_t i = 0; i < initial.count; ++i) {
        const std::int64_t number = initial.numbers[i];
        const bool words_only = manner.table != -1 && manner.highest == NoBound;
        if (number < lowest(rules.load) || number > highest(rules.load) ||
            (manner.longest != NoLength && digits_of(number) > manner.longest) ||
            (words_only && !has_word(manner, number))) {
            return false;
        }
    }
    return true;
}

// Whether a right of the type can be answered so.
template <class Type>
constexpr bool can_answer(RightQuery query, const Rules& rules) {
    switch (query) {
    case RightQuery::None:
        return true;
    case RightQuery::Alone:
    case RightQuery::Named:
        return rules.forms == 1;
    case RightQuery::WithSet:
        return rules.forms == 1 && std::is_same_v<Type, unsigned>;
    case RightQuery::Lines:
    case RightQuery::Selectable:
        return std::is_same_v<Type, WordList>;
    }
    return false;
}

// Whether the right is listed once when it is shown, and else not.
constexpr bool is_listed_as_shown(Right right) {
    constexpr Right all[] = {
#define LISTED(right) Right::right,
#include "catalogue/rights.def"
    };
    return std::count(std::begin(all), std::end(all), right) == right_of(right).rules.forms;
}

#define PROVE(name, type, row)                                                                     \
    static_assert(is_bare_name(row.key), name ": is no name of a key");                            \
    static_assert(has_columns_once(row.rules), name ": a column stands there twice");              \
    static_assert(has_what_it_names(row.rules),                                                    \
                  name ": its kind has no check or form of its own");                              \
    static_assert(are_for<type>(row.rules), name ": its kind, check or form is for other types");  \
    static_assert(has_words(row.rules), name ": its kind, check or form has no words");            \
    static_assert(has_sound_bounds<type>(row.rules),                                               \
                  name ": its bounds are the wrong way round, or beyond its type");                \
    static_assert(has_sound_default(row.rules, row.initial),                                       \
                  name ": its default is outside its bounds, or no value of its kind");

#define SETTING(section, key, variable, type, ...)                                                 \
    static_assert(rows::number_of_section(section) < std::size(rows::sections),                    \
                  "[" section "] " key ": there is no SECTION of that name");                      \
    static_assert(stands_once(section, key), "[" section "] " key ": has two rows");               \
    PROVE("[" section "] " key, type, row_of(RowOf::variable))
#include "catalogue/keys.def"

#define RIGHT(key, type, ...)                                                                      \
    static_assert(stands_once(AdminSection, #key) && stands_once(ManagerSection, #key),            \
                  #key ": has two rows");                                                          \
    static_assert(can_answer<type>(right_of(Right::key).query, right_of(Right::key).rules),        \
                  #key ": cannot be answered so");                                                 \
    static_assert(is_listed_as_shown(Right::key),                                                  \
                  #key ": must be listed once when it is shown, and else not");                    \
    PROVE(#key, type, right_of(Right::key))
#include "catalogue/rights.def"

} // namespace

} // namespace ov
