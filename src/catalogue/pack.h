// The rows as they lie in the executable: numbers and offsets, no pointers, so that nothing of them
// has to be relocated when a command starts, which would take longer than reading them. Of the
// pointers there are few: a kind, a check and a form stand once for all rows that want them in the
// same manner.
#pragma once

#include "catalogue/rows.h"
#include "conf/key_index.h"

#include <algorithm>

namespace ov::pack {

using rows::number_of_section;
using rows::Rules;
using rows::WrittenRight;
using rows::WrittenRow;

inline constexpr std::size_t Keys = std::size(rows::written_rows);
inline constexpr std::size_t Rights = std::size(rows::written_rights);
inline constexpr std::size_t RightsKeys = Rights + 1; // with the old name of one, the last

// All names of keys, each behind the other.
inline constexpr char key_names[] =
#define SETTING(section, key, ...) key "\0"
#include "catalogue/keys.def"
#define RIGHT(key, ...) #key "\0"
#include "catalogue/rights.def"
    "";

// The distinct rules, of which a row holds the number.
template <class Record>
struct DistinctRules {
    static constexpr std::size_t Most = 160;
    std::array<const Record*, Most> records{};
    std::array<Manner, Most> manners{};
    std::size_t count = 0;

    constexpr std::uint8_t number_of(const Rule<Record>& rule) {
        std::size_t number = 0;
        while (number < count &&
               !(records[number] == rule.record && manners[number] == rule.manner)) {
            ++number;
        }
        count = std::max(count, number + 1);
        records[number] = rule.record;
        manners[number] = rule.manner;
        return static_cast<std::uint8_t>(number);
    }
};

struct Tables {
    std::array<Row, Keys> rows{};
    std::array<RightRow, Rights> rights{};
    std::array<std::uint16_t, Keys + Rights> starts{}; // of the names
    DistinctRules<Kind> kinds;
    DistinctRules<Check> checks;
    DistinctRules<Form> forms;

    constexpr Columns columns(std::uint16_t name, const Rules& of_row) {
        return {name,
                KindNumber{kinds.number_of(of_row.load)},
                CheckNumber{checks.number_of(of_row.check)},
                FormNumber{forms.number_of(of_row.show)},
                of_row.empty,
                of_row.secret};
    }
};
constexpr Tables build() {
    Tables tables;
    tables.checks.number_of({&NoCheck}); // the first: see NotChecked and NotShown
    tables.forms.number_of({&NoForm});
    std::uint16_t start = 0;
    for (std::uint16_t& name : tables.starts) {
        name = start;
        start = static_cast<std::uint16_t>(start + std::string_view(key_names + start).size() + 1);
    }
    for (std::size_t i = 0; i < Keys; ++i) {
        const WrittenRow& row = rows::written_rows[i];
        tables.rows[i] = {tables.columns(tables.starts[i], row.rules),
                          number_of_section(row.section), row.gate, row.member};
    }
    for (std::size_t i = 0; i < Rights; ++i) {
        const WrittenRight& right = rows::written_rights[i];
        tables.rights[i] = {tables.columns(tables.starts[Keys + i], right.rules), right.query,
                            right.member};
    }
    return tables;
}
inline constexpr Tables built = build();

// What is read at run time, apart and no larger than it has to be.
inline constexpr std::array<Row, Keys> rows = built.rows;
inline constexpr std::array<RightRow, Rights> right_rows = built.rights;
inline constexpr std::array<std::uint16_t, Keys + Rights> starts = built.starts;
template <std::size_t Size, class Type, std::size_t Most>
constexpr std::array<Type, Size> first_of(const std::array<Type, Most>& all) {
    std::array<Type, Size> first{};
    std::copy_n(all.begin(), Size, first.begin());
    return first;
}
inline constexpr auto distinct_kinds = first_of<built.kinds.count>(built.kinds.records);
inline constexpr auto kind_manners = first_of<built.kinds.count>(built.kinds.manners);
inline constexpr auto distinct_checks = first_of<built.checks.count>(built.checks.records);
inline constexpr auto check_manners = first_of<built.checks.count>(built.checks.manners);
inline constexpr auto distinct_forms = first_of<built.forms.count>(built.forms.records);
inline constexpr auto form_manners = first_of<built.forms.count>(built.forms.manners);

// The keys of the rights are numbered behind the rows, once for each section.
inline constexpr std::size_t IndexedKeys = Keys + 2 * RightsKeys;
constexpr std::size_t first_right(std::string_view section) {
    return section == AdminSection ? Keys : Keys + RightsKeys;
}

constexpr const char* key_of_number(std::size_t number) {
    const std::size_t name = number < Keys + RightsKeys ? number : number - RightsKeys;
    return name == Keys + Rights ? OldExcludeGroup : key_names + starts[name];
}

inline constexpr std::size_t Buckets = 2048;
inline constexpr std::array<KeyIndex::Bucket, Buckets> buckets = [] {
    std::array<KeyIndex::Bucket, Buckets> table{};
    const auto enter = [&table](std::size_t number, std::uint8_t section) {
        std::size_t at = KeyIndex::place(section, key_of_number(number), Buckets);
        while (table[at].number != KeyIndex::Free) {
            at = (at + 1) % Buckets;
        }
        table[at] = {static_cast<std::uint16_t>(number), section};
    };
    for (std::size_t i = 0; i < Keys; ++i) {
        enter(i, rows[i].section);
    }
    for (const char* section : {AdminSection, ManagerSection}) {
        for (std::size_t i = 0; i < RightsKeys; ++i) {
            enter(first_right(section) + i, number_of_section(section));
        }
    }
    return table;
}();

} // namespace ov::pack
