// What is wrong with a row, or does not fit together, does not compile. This file is compiled
// before all that needs the rows, so that a fault is named once, by its row.
#include "catalogue/pack.h"
#include "kinds/wording.h"

namespace ov {

namespace {

using rows::Default;
using rows::Rules;
using rows::written_rights;
using rows::written_rows;
using rows::WrittenRow;

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

constexpr bool has_words(const Rules& rules) {
    return !kinds::words_of(*rules.load.record).empty() &&
           (!rules.is_checked() || !kinds::words_of(*rules.check.record).empty()) &&
           (!rules.is_shown() || !kinds::words_of(*rules.show.record).empty());
}

// A row makes the setting that it names: a misspelt name is found by its key, which it repeats
// behind one of these.
constexpr std::string_view prefixes[] = {
    "",     "ACL", "Archive", "CM_",   "CR_",   "Coop", "DBG_",    "Expire", "FTP",
    "IBE_", "Log", "Notice",  "Queue", "SMTP_", "Scr",  "Search_", "Srch",
};
// The settings that do not repeat it.
// clang-format off
constexpr std::string_view called_otherwise[] = {
    "IBESvrList", "IBE_server_in", "IBE_server_out", "MLogDirPerm", "MLogPerm", "MLog_gid",
    "MLog_uid", "NoticeReplyTo", "NotifyDiskSwitchAddr", "ScrBasisSetKEYWORD", "ScrBasisSetMIME",
    "ScrDefaultSetKEYWORD", "ScrDefaultSetMIME", "ScrJS1TAROSignature", "ScrLogFormatKEYWORD",
    "ScrLogFormatMIME", "ScrLogLevelDPINFO", "ScrLogLevelKEYWORD", "ScrLogLevelMIME",
    "ScrLogOptionDPINFO", "ScrLogOptionKEYWORD", "ScrLogOptionMIME", "ScrMSExcelSignature",
    "ScrMSPPTSignature", "ScrMSWordSignature", "ScrNGLevelDPINFO", "ScrNGLevelKEYWORD",
    "ScrNGLevelMIME", "ScrPDFSignature", "ScrThresholdDPINFO", "SrchIndexDirectories",
};
// clang-format on
constexpr bool is_called_for(std::string_view variable, std::string_view key) {
    const auto among = [](const auto& names, std::string_view name) {
        return std::find(std::begin(names), std::end(names), name) != std::end(names);
    };
    return (variable.ends_with(key) &&
            among(prefixes, variable.substr(0, variable.size() - key.size()))) ||
           among(called_otherwise, variable);
}

// The default of another setting; of one that is no row's, 0.
constexpr std::int64_t default_of(const Other& name) {
    for (const WrittenRow& row : written_rows) {
        if (names(name, row.member)) {
            return row.initial.numbers[0];
        }
    }
    return 0;
}

template <class Record>
constexpr bool is_within(const Rule<Record>& rule) {
    const void* record = rule.record;
    return record == &kinds::Within || record == &kinds::IsWithin;
}
template <class Record>
constexpr std::int64_t lowest(const Rule<Record>& rule) {
    return is_within(rule) ? default_of(rule.manner.first) : rule.manner.lowest;
}
template <class Record>
constexpr std::int64_t highest(const Rule<Record>& rule) {
    return is_within(rule) ? default_of(rule.manner.second) : rule.manner.highest;
}

constexpr std::size_t digits_of(std::int64_t number) {
    std::size_t digits = 1;
    for (; number > 9; number /= 10) {
        ++digits;
    }
    return digits;
}

// In order, none that the setting cannot hold, or that takes more digits than may be written, and
// none that is beyond the tables.
template <class Type, class Record>
constexpr bool is_sound(const Rule<Record>& rule) {
    const void* record = rule.record;
    const bool is_digits = record == &kinds::Digits || record == &kinds::AreDigits;
    if (highest(rule) != NoBound) {
        if constexpr (std::is_integral_v<Type>) {
            if (!std::in_range<Type>(highest(rule))) {
                return false;
            }
        }
        if (is_digits && digits_of(highest(rule)) > rule.manner.longest) {
            return false;
        }
    }
    return lowest(rule) <= highest(rule) && (!is_digits || lowest(rule) >= 0) &&
           rule.manner.table < Tables;
}
template <class Type>
constexpr bool has_sound_bounds(const Rules& rules) {
    return is_sound<Type>(rules.load) && is_sound<Type>(rules.check);
}

// The kind, the check and the form know the same words, where they know words at all, and a size
// has one of the units.
constexpr bool agree(const Manner& one, const Manner& other) {
    return one.table == -1 || other.table == -1 || one.table == other.table;
}
constexpr bool agrees(const Rules& rules) {
    const char unit = rules.load.manner.unit;
    return agree(rules.load.manner, rules.check.manner) &&
           agree(rules.load.manner, rules.show.manner) &&
           agree(rules.check.manner, rules.show.manner) &&
           (unit == '\0' || std::string_view("BKMG").find(unit) != std::string_view::npos);
}

// A key that can be written without quotes, and is no number.
constexpr bool is_bare_name(std::string_view key) {
    return std::all_of(key.begin(), key.end(), is_name_character) &&
           !std::all_of(key.begin(), key.end(), is_digit);
}

constexpr bool has_word(const Manner& manner, std::int64_t number) {
    const VTAB* row = VTable[manner.table];
    while (row->str && row->val != number) {
        ++row;
    }
    return row->str != nullptr;
}

template <class Record>
constexpr bool takes(const Rule<Record>& rule, std::int64_t number) {
    const Manner& manner = rule.manner;
    const bool words_only = manner.table != -1 && manner.highest == NoBound;
    return number >= lowest(rule) && number <= highest(rule) &&
           (manner.longest == NoLength || digits_of(number) <= manner.longest) &&
           (!words_only || has_word(manner, number));
}

constexpr bool wants_full_path(const Rules& rules) {
    const Kind* kind = rules.load.record;
    const Check* check = rules.check.record;
    return kind == &kinds::Path || kind == &kinds::FullDirectory || check == &kinds::IsProgram ||
           check == &kinds::IsCommand || check == &kinds::IsQueueFolder;
}
constexpr bool takes(const Rules& rules, std::string_view text) {
    return text.size() <= std::min<std::size_t>(rules.load.manner.longest, MaxText) &&
           (!wants_full_path(rules) || text.empty() || text.starts_with('/')) &&
           (rules.check.record != &kinds::IsOneWord || text.find(' ') == text.npos);
}

// One that the kind takes, and the check, as far as that is no matter of the disk.
constexpr bool has_sound_default(const Rules& rules, const Default& initial) {
    for (std::size_t i = 0; i < initial.count; ++i) {
        if (!takes(rules.load, initial.numbers[i]) || !takes(rules.check, initial.numbers[i])) {
            return false;
        }
    }
    return takes(rules, initial.text);
}

// Whether a right of the type can be answered so.
template <class Type>
constexpr bool can_answer(RightQuery query, const Rules& rules) {
    switch (query) {
    case RightQuery::None:
        return true;
    case RightQuery::Alone:
    case RightQuery::Named:
        return rules.is_shown();
    case RightQuery::WithSet:
        return rules.is_shown() && std::is_same_v<Type, unsigned>;
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
    return std::count(std::begin(all), std::end(all), right) ==
           (right_of(right).rules.is_shown() ? 1 : 0);
}

#define PROVE(name, type, row)                                                                     \
    static_assert(is_bare_name(row.key), name ": is no name of a key");                            \
    static_assert(are_for<type>(row.rules), name ": its kind, check or form is for other types");  \
    static_assert(has_words(row.rules), name ": its kind, check or form has no words");            \
    static_assert(has_sound_bounds<type>(row.rules),                                               \
                  name ": its bounds are the wrong way round, or beyond its type or the tables");  \
    static_assert(agrees(row.rules), name ": has words of two tables, or no unit of a size");      \
    static_assert(has_sound_default(row.rules, row.initial),                                       \
                  name ": its default is outside its bounds, or no value of its kind or check");

#define SETTING(section, key, variable, type, ...)                                                 \
    static_assert(rows::number_of_section(section) < std::size(rows::sections),                    \
                  "[" section "] " key ": there is no SECTION of that name");                      \
    static_assert(stands_once(section, key), "[" section "] " key ": has two rows");               \
    static_assert(is_called_for(#variable, key),                                                   \
                  "[" section "] " key ": its setting has another name; is it misspelt?");         \
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
