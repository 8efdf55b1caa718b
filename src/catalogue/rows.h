// The rows of the catalogue and of the rights as they are written, for the packing and the proofs.
// The rules of each are expanded once, here: what is wrong with one is said once.
#pragma once

#include "catalogue/right_names.h"
#include "catalogue/settings.h"
#include "kinds/kinds.h"
#include "kinds/loading.h"

#include <algorithm>
#include <concepts>
#include <string_view>
#include <variant>

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
consteval Gate gate(int any) {
    if ((any & ~(REC | ARC | MAN | EXT | BRW)) != 0) {
        throw "no bits of the load mask that rows are read for";
    }
    return {.any = static_cast<std::uint16_t>(any)};
}
Gate gate(bool) = delete;

// The columns behind the kind of a row: each with a rule of its own, or as the kind has it.
struct OwnCheck {
    Empty empty;
};
struct Checked {
    CheckRule rule{&NoCheck};
    Empty empty = Empty::AsTheKind;
};
constexpr OwnCheck checked() {
    return {Empty::AsTheKind};
}
constexpr Checked checked(CheckRule rule) {
    return {rule, Empty::AsTheKind};
}
constexpr OwnCheck checked_or_empty() {
    return {Empty::Accepted};
}
constexpr Checked checked_or_empty(CheckRule rule) {
    return {rule, Empty::Accepted};
}
constexpr OwnCheck checked_not_empty() {
    return {Empty::Refused};
}
constexpr Checked checked_not_empty(CheckRule rule) {
    return {rule, Empty::Refused};
}
struct OwnForm {};
struct Shown {
    FormRule rule{&NoForm};
};
constexpr OwnForm shown() {
    return {};
}
constexpr Shown shown(FormRule rule) {
    return {rule};
}

// The value is not shown unless it is asked for.
struct Secret {};
constexpr Secret secret() {
    return {};
}

// A column of a row whose kind is `load`. There is none of the kind's own when it has no check, or
// no form.
template <const Kind& kind>
requires std::convertible_to<KindOf<kind>, CheckRule>
constexpr Checked column(KindOf<kind> load, OwnCheck own) {
    return {load, own.empty};
}
constexpr Checked column(KindRule, Checked given) {
    return given;
}
template <const Kind& kind>
requires std::convertible_to<KindOf<kind>, FormRule>
constexpr Shown column(KindOf<kind> load, OwnForm) {
    return {load};
}
constexpr Shown column(KindRule, Shown given) {
    return given;
}

constexpr Secret column(KindRule, Secret given) {
    return given;
}

// The rules of a row.
struct Rules {
    KindRule load;
    CheckRule check;
    FormRule show;
    Empty empty; // for the check
    bool secret = false;

    constexpr explicit Rules(KindRule kind, Checked checked = {}, Shown shown = {})
        : load(kind), check(checked.rule), show(shown.rule), empty(checked.empty) {}
    constexpr Rules(KindRule kind, Shown shown) : Rules(kind, {}, shown) {}
    constexpr Rules(KindRule kind, Checked checked, Shown shown, Secret)
        : Rules(kind, checked, shown) {
        secret = true;
    }

    constexpr bool is_checked() const { return check.record != &NoCheck; }
    constexpr bool is_shown() const { return show.record != &NoForm; }
};
// Of a kind and, once at most and in this order, a check, a form, and that it is secret.
template <const Kind& kind, class... Columns>
requires requires(KindOf<kind> load, Columns... columns) {
    Rules(load, column(load, columns)...);
}
constexpr Rules rules(KindOf<kind> load, Columns... columns) {
    return Rules(load, column(load, columns)...);
}

// What a default is written as, by the type of the setting. Lists have none: {}.
template <class Type>
struct Initial {
    std::monostate none;
};
template <std::integral Type>
struct Initial<Type> {
    Type number;
};
template <>
struct Initial<Text> {
    std::string_view text;
};
template <std::integral Type>
struct Initial<PerRole<Type>> {
    PerRole<Type> numbers;
};
// A default: a number, or one for each role, or a text; empty: the text may not be set either.
struct Default {
    std::array<std::int64_t, Roles> numbers{};
    std::size_t count = 0;
    std::string_view text = {};
};
template <class Type>
constexpr Default default_of(Initial<Type> of_row) {
    Default all;
    if constexpr (requires { of_row.number; }) {
        all.numbers[all.count++] = static_cast<std::int64_t>(of_row.number);
    } else if constexpr (requires { of_row.numbers; }) {
        for (const auto number : of_row.numbers) {
            all.numbers[all.count++] = static_cast<std::int64_t>(number);
        }
    } else if constexpr (requires { of_row.text; }) {
        all.text = of_row.text;
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
    WrittenRow{section,           key, &S::variable, default_of<type>({initial}), gate(when),      \
               rules(__VA_ARGS__)},
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
    WrittenRight{#key, &S::CF_##key, default_of<PerRole<type>>({defaults}), RightQuery::query,     \
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
