#include "catalogue/catalogue.h"

#include "catalogue/kinds.h"

#include "load/steps.h"

#include <algorithm>
#include <array>
#include <type_traits>

namespace ov {

namespace {

using namespace kinds;
using namespace steps;
using S = Settings;

// The gates. Numbers are bits of the load mask.
constexpr std::uint16_t REC = RC_RECEIVE;
constexpr std::uint16_t ARC = RC_ARCHIVE;
constexpr std::uint16_t MAN = RC_MANAGE;
constexpr std::uint16_t EXT = RC_EXTRACT;
constexpr std::uint16_t BRW = RC_BROWSE;
constexpr std::uint16_t Always = 0;
// Left alone by callers that want no directory looked at.
constexpr Gate Files{.unless = RC_NODIRCHECK};
// Read for the chosen mail submission program only.
constexpr Gate Sendmail{.program = 1};
constexpr Gate Postfix{.program = 2};
constexpr Gate Qmail{.program = 3};
// The auxiliary sections, and the directories that their readers need.
constexpr Gate Transfer{.readers = TransferReader};
constexpr Gate Cypher{.readers = CypherReader};
constexpr Gate Search{.readers = SearchReader};
constexpr Gate Aux{.readers = CypherReader | SearchReader};
constexpr Gate MainAndAux{.readers = MainReader | CypherReader | SearchReader};

constexpr Gate gate(Gate given) {
    return given;
}
constexpr Gate gate(int any) {
    return {.any = static_cast<std::uint16_t>(any)};
}

// The columns behind the kind of a row. Without a rule of their own they follow that of the kind.
struct Checked {
    Rule rule = {};
    Empty empty = Empty::AsTheKind;
};
constexpr Checked checked(Rule rule = {}) {
    return {rule};
}
constexpr Checked checked_or_empty(Rule rule = {}) {
    return {rule, Empty::Accepted};
}
constexpr Checked checked_not_empty(Rule rule = {}) {
    return {rule, Empty::Refused};
}
struct ShownAs {
    Rule rule = {};
};
constexpr ShownAs shown(Rule rule = {}) {
    return {rule};
}

// The rules of a row; one without a kind: the row has nothing in that column.
struct Rules {
    Rule load = {};
    Rule check = {};
    Rule show = {};
    Empty empty = Empty::AsTheKind;

    constexpr void add(const Checked& column) {
        check = column.rule.kind ? column.rule : load;
        empty = column.empty;
    }
    constexpr void add(const ShownAs& column) { show = column.rule.kind ? column.rule : load; }
};
template <class... Column>
constexpr Rules rules(Rule load, Column... columns) {
    Rules all{.load = load};
    (all.add(columns), ...);
    return all;
}

// Whether a kind is for settings of the type; none is for all.
template <class Type>
constexpr bool is_for(const Kind* kind) {
    return !kind || (kind->types & type_of<Type>());
}
#define HOLD_AGAINST_THE_TYPE(name, type, ...)                                                     \
    static_assert(rules(__VA_ARGS__).load.kind->load && rules(__VA_ARGS__).load.kind->words.load,  \
                  name ": its kind cannot be loaded, or has no words");                            \
    static_assert(!rules(__VA_ARGS__).check.kind || (rules(__VA_ARGS__).check.kind->check &&       \
                                                     rules(__VA_ARGS__).check.kind->words.check),  \
                  name ": the kind of its check checks nothing, or has no words");                 \
    static_assert(!rules(__VA_ARGS__).show.kind || (rules(__VA_ARGS__).show.kind->show &&          \
                                                    rules(__VA_ARGS__).show.kind->words.show),     \
                  name ": the kind of its form shows nothing, or has no words");                   \
    static_assert(is_for<type>(rules(__VA_ARGS__).load.kind),                                      \
                  name ": what its kind loads does not fit the setting's type");                   \
    static_assert(is_for<type>(rules(__VA_ARGS__).check.kind),                                     \
                  name ": what its check is for does not fit the setting's type");                 \
    static_assert(is_for<type>(rules(__VA_ARGS__).show.kind),                                      \
                  name ": what its form shows does not fit the setting's type");
#define SETTING(section, key, variable, type, initial, when, ...)                                  \
    HOLD_AGAINST_THE_TYPE("[" section "] " key, type, __VA_ARGS__)
#include "catalogue/keys.def"
// Whether a right of the type can be answered so.
template <class Type>
constexpr bool can_answer(RightQuery query) {
    switch (query) {
    case RightQuery::None:
        return true;
    case RightQuery::Flag:
    case RightQuery::Selection:
        return std::is_same_v<Type, int>;
    case RightQuery::NamedMask:
    case RightQuery::Level:
    case RightQuery::LevelAndSet:
        return std::is_same_v<Type, unsigned>;
    case RightQuery::NamedText:
        return std::is_same_v<Type, Text>;
    case RightQuery::Names:
    case RightQuery::Selectable:
        return std::is_same_v<Type, WordList>;
    }
    return false;
}
#define RIGHT(key, type, kind, defaults, query, ...)                                               \
    HOLD_AGAINST_THE_TYPE(#key, type, kind __VA_OPT__(, ) __VA_ARGS__)                             \
    static_assert(can_answer<type>(RightQuery::query),                                             \
                  #key ": how it is answered does not fit the setting's type");
#include "catalogue/rights.def"

// A step is a kind that takes no value.
template <Verdict (*function)(const Loading&)>
inline constexpr Kind Step{.words = {}, .load = function};

// The rows as they are written.
struct WrittenRow {
    const char* section;
    const char* key;
    Member member;
    Gate gate;
    Rules rules;
};
constexpr WrittenRow written_rows[] = {
#define SETTING(section, key, variable, type, initial, when, ...)                                  \
    {section, key, &Settings::variable, gate(when), rules(__VA_ARGS__)},
#define STEP(when, step) {nullptr, #step, {}, gate(when), {.load = {&Step<step>}}},
#include "catalogue/keys.def"
};
struct WrittenRight {
    const char* key;
    RightMember member;
    RightQuery query;
    Rules rules;
};
constexpr WrittenRight written_rights[] = {
#define RIGHT(key, type, kind, defaults, query, ...)                                               \
    {#key, &Settings::CF_##key, RightQuery::query, rules(kind __VA_OPT__(, ) __VA_ARGS__)},
#include "catalogue/rights.def"
};
constexpr std::size_t Keys = std::size(written_rows);
constexpr std::size_t Rights = std::size(written_rights);
constexpr std::size_t RightsKeys = Rights + 1; // with the old name of one, the last

// All names of keys, each behind the other.
constexpr char key_names[] =
#define SETTING(section, key, ...) key "\0"
#define STEP(when, step) #step "\0"
#include "catalogue/keys.def"
#define RIGHT(key, ...) #key "\0"
#include "catalogue/rights.def"
    "";

// The names of the sections. Of the two that rights stand in, one has other keys, too.
constexpr std::string_view sections[] = {
#define SECTION(name, purpose) name,
#include "catalogue/keys.def"
    ManagerSection,
};
constexpr std::uint8_t number_of_section(std::string_view name) {
    return static_cast<std::uint8_t>(std::find(std::begin(sections), std::end(sections), name) -
                                     std::begin(sections));
}
#define SETTING(section, key, ...)                                                                 \
    static_assert(number_of_section(section) < std::size(sections),                                \
                  "[" section "] " key ": there is no SECTION of that name");
#include "catalogue/keys.def"

// The distinct rules; the first one stands for none.
constexpr std::size_t MostRules = 160;
struct DistinctRules {
    std::array<Rule, MostRules> rules{};
    std::size_t count = 1;

    constexpr RuleNumber number_of(const Rule& rule) {
        if (!rule.kind) {
            return NoRule;
        }
        std::size_t number = 1;
        while (number < count && !(rules[number] == rule)) {
            ++number;
        }
        count = std::max(count, number + 1);
        rules[number] = rule;
        return static_cast<RuleNumber>(number);
    }
};

struct Tables {
    std::array<Row, Keys> rows{};
    std::array<RightRow, Rights> rights{};
    std::array<std::uint16_t, Keys + Rights> starts{}; // of the names
    DistinctRules rules;
};
constexpr Tables build() {
    Tables tables;
    std::uint16_t start = 0;
    for (std::uint16_t& name : tables.starts) {
        name = start;
        start = static_cast<std::uint16_t>(start + std::string_view(key_names + start).size() + 1);
    }
    const auto columns = [&tables](std::uint16_t name, const Rules& rules) {
        return Columns{name, tables.rules.number_of(rules.load),
                       tables.rules.number_of(rules.check), tables.rules.number_of(rules.show),
                       rules.empty};
    };
    for (std::size_t i = 0; i < Keys; ++i) {
        const WrittenRow& row = written_rows[i];
        tables.rows[i] = {columns(tables.starts[i], row.rules),
                          row.section ? number_of_section(row.section) : std::uint8_t{0}, row.gate,
                          row.member};
    }
    for (std::size_t i = 0; i < Rights; ++i) {
        const WrittenRight& right = written_rights[i];
        tables.rights[i] = {columns(tables.starts[Keys + i], right.rules), right.query,
                            right.member};
    }
    return tables;
}
constexpr Tables built = build();
constexpr std::array<Row, Keys> rows = built.rows;
constexpr std::array<RightRow, Rights> right_rows = built.rights;
constexpr std::array<std::uint16_t, Keys + Rights> starts = built.starts;
// Apart, since only the kinds are pointers.
constexpr std::size_t DistinctCount = built.rules.count;
constexpr std::array<const Kind*, DistinctCount> distinct_kinds = [] {
    std::array<const Kind*, DistinctCount> kinds{};
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        kinds[i] = built.rules.rules[i].kind;
    }
    return kinds;
}();
constexpr std::array<Manner, DistinctCount> distinct_manners = [] {
    std::array<Manner, DistinctCount> manners{};
    for (std::size_t i = 0; i < manners.size(); ++i) {
        manners[i] = built.rules.rules[i].manner;
    }
    return manners;
}();

// The keys of the rights are numbered behind the rows, once for each section.
constexpr std::size_t IndexedKeys = Keys + 2 * RightsKeys;
constexpr std::size_t first_right(std::string_view section) {
    return section == AdminSection ? Keys : Keys + RightsKeys;
}

constexpr const char* key_of_number(std::size_t number) {
    const std::size_t name = number < Keys + RightsKeys ? number : number - RightsKeys;
    return name == Keys + Rights ? OldExcludeGroup : key_names + starts[name];
}

constexpr std::size_t Buckets = 2048;
constexpr std::array<KeyIndex::Bucket, Buckets> buckets = [] {
    std::array<KeyIndex::Bucket, Buckets> table{};
    const auto enter = [&table](std::size_t number, std::uint8_t section) {
        std::size_t at = KeyIndex::place(section, key_of_number(number), Buckets);
        while (table[at].number != KeyIndex::Free) {
            at = (at + 1) % Buckets;
        }
        table[at] = {static_cast<std::uint16_t>(number), section};
    };
    for (std::size_t i = 0; i < Keys; ++i) {
        if (written_rows[i].section) {
            enter(i, rows[i].section);
        }
    }
    for (const char* section : {AdminSection, ManagerSection}) {
        for (std::size_t i = 0; i < RightsKeys; ++i) {
            enter(first_right(section) + i, number_of_section(section));
        }
    }
    return table;
}();

constexpr KeyIndex index{sections, key_of_number, IndexedKeys, buckets};

// Whether a key has one row only: all of the same name are found where the search begins.
constexpr bool stands_once(std::string_view section, std::string_view key) {
    const std::uint8_t wanted = number_of_section(section);
    int rows_of_key = 0;
    for (std::size_t at = KeyIndex::place(wanted, key, Buckets);
         buckets[at].number != KeyIndex::Free; at = (at + 1) % Buckets) {
        rows_of_key +=
            buckets[at].section == wanted && same_word(key_of_number(buckets[at].number), key);
    }
    return rows_of_key == 1;
}
#define SETTING(section, key, ...)                                                                 \
    static_assert(stands_once(section, key), "[" section "] " key ": has two rows");
#include "catalogue/keys.def"
#define RIGHT(key, ...)                                                                            \
    static_assert(stands_once(AdminSection, #key) && stands_once(ManagerSection, #key),            \
                  #key ": has two rows");
#include "catalogue/rights.def"

} // namespace

const Kind& kind_of(RuleNumber number) {
    return *distinct_kinds[static_cast<std::size_t>(number)];
}

const Manner& manner_of(RuleNumber number) {
    return distinct_manners[static_cast<std::size_t>(number)];
}

const char* key_of(const Columns& row) {
    return key_names + row.name;
}

bool is_step(const Row& row) {
    return std::holds_alternative<std::monostate>(row.member);
}

const char* section_of(const Row& row) {
    return is_step(row) ? nullptr : sections[row.section].data();
}

Variable variable_of(const Row& row) {
    return std::visit(
        [](auto member) -> Variable {
            if constexpr (std::is_same_v<decltype(member), std::monostate>) {
                return {};
            } else {
                return &(settings.*member);
            }
        },
        row.member);
}

Variable variable_of(const RightRow& row, int rank) {
    return std::visit(
        [rank](auto member) -> Variable {
            return &(settings.*member)[static_cast<std::size_t>(rank)];
        },
        row.member);
}

std::span<const Row> catalogue() {
    return rows;
}

const Row* find_row(std::string_view section, std::string_view key) {
    const int number = index.find(section, key);
    return number == -1 || static_cast<std::size_t>(number) >= Keys
               ? nullptr
               : &rows[static_cast<std::size_t>(number)];
}

std::span<const RightRow> rights() {
    return right_rows;
}

const RightRow& row_of(Right right) {
    return right_rows[static_cast<std::size_t>(right)];
}

const RightRow* find_right(std::string_view key) {
    const int found = index.find(AdminSection, key);
    const auto number = static_cast<std::size_t>(found) - Keys;
    return found == -1 || number >= Rights ? nullptr : &right_rows[number];
}

const KeyIndex& key_index() {
    return index;
}

std::size_t number_of(const Row& row) {
    return static_cast<std::size_t>(&row - rows.data());
}

std::size_t number_of(Right right, std::string_view section) {
    return first_right(section) + static_cast<std::size_t>(right);
}

std::size_t number_of_old_exclude_group(std::string_view section) {
    return first_right(section) + Rights;
}

} // namespace ov
