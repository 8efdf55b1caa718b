#include "conf/catalogue.h"

#include "conf/conf.h"
#include "conf/load_rules.h"

#include <algorithm>
#include <array>
#include <climits>
#include <type_traits>
#include <utility>

namespace ov {

namespace {

using namespace load_rules;

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

constexpr Row rows[] = {
#define SETTING(section, key, variable, type, initial, when, rule, ...)                            \
    {section, key, &variable, gate(when), rule},
#define STEP(when, step) {nullptr, #step, {}, gate(when), {.load = step}},
#include "conf/catalogue.def"
#undef STEP
#undef SETTING
};

// The names of the sections, each once.
constexpr std::size_t MostSections = 32;
struct Sections {
    std::array<std::string_view, MostSections> names;
    std::size_t count = 0;
};
constexpr Sections sections = [] {
    Sections found;
    for (const Row& row : rows) {
        const auto end = found.names.begin() + found.count;
        if (row.section && std::find(found.names.begin(), end, row.section) == end) {
            found.names[found.count++] = row.section;
        }
    }
    return found;
}();

// Where the rows of the keys are found: an open hash table. Its number of buckets is a power of
// two and well above the number of keys.
constexpr std::size_t Buckets = 2048;
constexpr std::uint16_t Free = 0xffff;
struct Bucket {
    std::uint16_t row = Free;
    std::uint8_t section = 0;
};

// Equal for names that differ in case only. The end of a key tells most: many begin alike.
constexpr std::size_t bucket_of(std::size_t section, std::string_view key) {
    constexpr std::size_t Telling = 10;
    auto hash = static_cast<std::uint32_t>(section * 64 + key.size());
    for (const char c : key.substr(key.size() - std::min(key.size(), Telling))) {
        hash = (hash ^ (static_cast<unsigned char>(c) | 0x20U)) * 0x01000193U;
    }
    return (hash ^ (hash >> 15)) % Buckets;
}

constexpr std::array<Bucket, Buckets> buckets = [] {
    std::array<Bucket, Buckets> table{};
    std::uint16_t number = 0;
    for (const Row& row : rows) {
        if (row.section) {
            const auto* name = std::find(sections.names.begin(), sections.names.end(), row.section);
            const auto section = static_cast<std::size_t>(name - sections.names.begin());
            std::size_t bucket = bucket_of(section, row.key);
            while (table[bucket].row != Free) {
                bucket = (bucket + 1) % Buckets;
            }
            table[bucket] = {number, static_cast<std::uint8_t>(section)};
        }
        ++number;
    }
    return table;
}();

} // namespace

std::int64_t number_in(const Variable& variable) {
    return std::visit(
        [](const auto* setting) -> std::int64_t {
            if constexpr (std::is_integral_v<std::remove_cvref_t<decltype(*setting)>>) {
                return static_cast<std::int64_t>(*setting);
            } else {
                return 0;
            }
        },
        variable);
}

bool fits(const Variable& variable, std::int64_t number) {
    return std::visit(
        [number](const auto* setting) {
            using Type = std::remove_cvref_t<decltype(*setting)>;
            if constexpr (std::is_integral_v<Type>) {
                return std::in_range<Type>(number) ||
                       (std::is_unsigned_v<Type> && number < 0 && number >= INT_MIN);
            } else {
                return false;
            }
        },
        variable);
}

int find_section(std::string_view name) {
    for (std::size_t i = 0; i < sections.count; ++i) {
        if (same_word(sections.names[i], name)) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

int find_row(int section, std::string_view key) {
    std::size_t bucket = bucket_of(static_cast<std::size_t>(section), key);
    for (; buckets[bucket].row != Free; bucket = (bucket + 1) % Buckets) {
        if (buckets[bucket].section == section && same_word(rows[buckets[bucket].row].key, key)) {
            return buckets[bucket].row;
        }
    }
    return -1;
}

std::span<const Row> catalogue() {
    return rows;
}

} // namespace ov
