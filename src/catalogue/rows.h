// The rows of the catalogue and of the rights as they are written, for the packing and the proofs.
// The rules of each are expanded once, here: what is wrong with one is said once.
#pragma once

#include "catalogue/right_names.h"
#include "catalogue/settings.h"
#include "kinds/kinds.h"
#include "kinds/loading.h"

#include <algorithm>
#include <optional>
#include <string_view>

namespace ov::rows {

using namespace kinds;
using S = Settings;

// The gates. Numbers are bits of the load mask.
inline constexpr std::uint16_t REC = RC_RECEIVE;
inline constexpr std::uint16_t ARC = RC_ARCHIVE;
inline constexpr std::uint16_t MAN = RC_MANAGE;
inline constexpr std::uint16_t EXT = RC_EXTRACT;
inline constexpr std::uint16_t BRW = RC_BROWSE;
inline constexpr std::uint16_t Always = 0;
// Left alone by callers that want no directory looked at.
inline constexpr Gate Files{.unless = RC_NODIRCHECK};
// Read for the chosen mail submission program only.
inline constexpr Gate Sendmail{.program = 1};
inline constexpr Gate Postfix{.program = 2};
inline constexpr Gate Qmail{.program = 3};
// The auxiliary sections, and the directories that their readers need.
inline constexpr Gate Transfer{.readers = TransferReader};
inline constexpr Gate Cypher{.readers = CypherReader};
inline constexpr Gate Search{.readers = SearchReader};
inline constexpr Gate Aux{.readers = CypherReader | SearchReader};
inline constexpr Gate MainAndAux{.readers = MainReader | CypherReader | SearchReader};

constexpr Gate gate(Gate given) {
    return given;
}
constexpr Gate gate(int any) {
    return {.any = static_cast<std::uint16_t>(any)};
}

// The columns behind the kind of a row. Without a rule of their own they follow that of the kind.
struct Checked {
    std::optional<CheckRule> rule;
    Empty empty;
};
constexpr CheckRule check_of(CheckRule given) {
    return given;
}
constexpr CheckRule check_of(KindRule given) {
    return {&given.record->check, given.manner};
}
template <class... Given>
constexpr Checked checked(Given... given) {
    return {{check_of(given)...}, Empty::AsTheKind};
}
template <class... Given>
constexpr Checked checked_or_empty(Given... given) {
    return {{check_of(given)...}, Empty::Accepted};
}
template <class... Given>
constexpr Checked checked_not_empty(Given... given) {
    return {{check_of(given)...}, Empty::Refused};
}
struct ShownAs {
    std::optional<FormRule> rule;
};
constexpr ShownAs shown(std::optional<FormRule> rule = std::nullopt) {
    return {rule};
}

// The rules of a row.
struct Rules {
    KindRule load;
    CheckRule check{&NoCheck};
    FormRule show{&NoForm};
    Empty empty = Empty::AsTheKind;
    int checks = 0; // how often the row has the column
    int forms = 0;

    constexpr void add(const Checked& column) {
        check = column.rule.value_or(check_of(load));
        empty = column.empty;
        ++checks;
    }
    constexpr void add(const ShownAs& column) {
        show = column.rule.value_or(FormRule{&load.record->form, load.manner});
        ++forms;
    }
};
template <class... Column>
constexpr Rules rules(KindRule load, Column... columns) {
    Rules all{.load = load};
    (all.add(columns), ...);
    return all;
}

// A default: a number, or one for each role, or a text; lists have none.
struct Default {
    std::array<std::int64_t, Roles> numbers{};
    std::size_t count = 0;
    const char* text = nullptr;
};
template <class Type>
constexpr Default
default_of(std::conditional_t<std::is_integral_v<Type>, Type, const char*> of_row) {
    if constexpr (std::is_integral_v<Type>) {
        return {.numbers = {static_cast<std::int64_t>(of_row)}, .count = 1};
    } else {
        return {.text = of_row};
    }
}
template <class Type>
constexpr Default
default_of_roles(std::conditional_t<std::is_integral_v<Type>, PerRole<Type>, const char*> of_row) {
    Default all;
    if constexpr (std::is_integral_v<Type>) {
        for (const Type number : of_row) {
            all.numbers[all.count++] = static_cast<std::int64_t>(number);
        }
    }
    return all;
}

struct WrittenRow {
    std::string_view section;
    const char* key;
    Member member;
    Default initial;
    Gate gate;
    Rules rules;
};
inline constexpr WrittenRow written_rows[] = {
#define SETTING(section, key, variable, type, initial, when, ...)                                  \
    {section, key, &S::variable, default_of<type>(initial), gate(when), rules(__VA_ARGS__)},
#include "catalogue/keys.def"
};

struct WrittenRight {
    const char* key;
    RightMember member;
    Default initial;
    RightQuery query;
    Rules rules;
};
inline constexpr WrittenRight written_rights[] = {
#define RIGHT(key, type, kind, defaults, query, ...)                                               \
    {#key, &S::CF_##key, default_of_roles<type>(defaults), RightQuery::query,                      \
     rules(kind __VA_OPT__(, ) __VA_ARGS__)},
#include "catalogue/rights.def"
};

// The names of the sections. Of the two that rights stand in, one has other keys, too.
inline constexpr std::string_view sections[] = {
#define SECTION(name, purpose) name,
#include "catalogue/keys.def"
    ManagerSection,
};
constexpr std::uint8_t number_of_section(std::string_view name) {
    return static_cast<std::uint8_t>(std::find(std::begin(sections), std::end(sections), name) -
                                     std::begin(sections));
}

} // namespace ov::rows
