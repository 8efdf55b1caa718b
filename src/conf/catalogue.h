// The rows of the catalogue as the load driver sees them.
#pragma once

#include "conf/conf_tool.h"
#include "conf/settings.h"

#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <variant>

namespace ov {

// The readers of a configuration file. Each reads the rows that name it.
enum Reader : std::uint8_t {
    MainReader = 0x1,
    TransferReader = 0x2,
    CypherReader = 0x4,
    SearchReader = 0x8,
};

// When a row is read.
struct Gate {
    std::uint8_t readers = MainReader;
    std::uint8_t program = 0; // the submission program that must have been chosen; 0: any
    std::uint16_t any = 0;    // bits of the load mask, one of which must be set; 0: always
    std::uint16_t unless = 0; // bits that must not be set
};

// A setting variable of any type.
using Variable = std::variant<int*, unsigned*, long*, unsigned long*, Text*, WordList*, IpList*,
                              AddressList*, ServerList*>;

// The number in an integer setting of any type; 0 for a setting of another kind.
std::int64_t number_in(const Variable& variable);

// Whether an integer setting can hold `number`. One without a sign takes a negative number that
// fits an int, and wraps it.
bool fits(const Variable& variable, std::int64_t number);

// What became of a value.
enum class Verdict {
    Taken,
    Invalid,
    NotFullPath,   // a path that must be absolute is not
    NotConfigured, // no path could be made of it
    MemoryExhausted,
};

struct Loading;

// What a rule works on beside its own row: another setting, a list, a piece of text.
using Operand = std::variant<std::monostate, int*, long*, Text*, ServerList*, const char*>;

// What the value of a key has to be and how it is stored. load_rules.h has the rules.
struct LoadRule {
    using Function = Verdict (*)(const Loading&);

    Function load = nullptr;
    Function absent = nullptr; // what is done when the file lacks the key
    std::int64_t lowest = std::numeric_limits<std::int64_t>::min();
    std::int64_t highest = std::numeric_limits<std::int64_t>::max();
    std::uint16_t longest = std::numeric_limits<std::uint16_t>::max(); // in characters
    std::int8_t table = -1;                                            // of the value's words
    std::uint8_t mode = LineMode;                                      // of the lookup
    bool option = false;                                               // what the rule turns on
    Operand first = {};
    Operand second = {};
};

// One key, or a step when it has no section.
struct Row {
    const char* section;
    const char* key;
    Variable variable;
    Gate gate;
    LoadRule rule;
};

// A row whose value is being loaded.
struct Loading {
    const Row& row;
    const std::string& value; // empty when the key is absent
    const char* file;
    unsigned mask;
    Reader reader;
};

// All rows, in reading order.
std::span<const Row> catalogue();

// The number of a section that has keys in the catalogue, and that of the row of one of its keys.
// Names are compared without regard to case. -1: there is none.
int find_section(std::string_view name);
int find_row(int section, std::string_view key);

} // namespace ov
