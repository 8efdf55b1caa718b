// The reader of a rights file, against the rule of each right spelled out plainly: the rights
// afterwards, or the message that ends the process.
//
// Input: the role, on its line, and the file.
#include "conf/rights.h"
#include "conf/conf_tool.h"
#include "exit.h"
#include "model.h"
#include "support.h"

#include <cstring>

using namespace ov;
using namespace ov::fuzz;

namespace {

// The right as it will be shown when it is given `value`; nothing when the value is invalid.
using Shown = std::optional<std::string>;

Shown slow_number(const std::string& value) {
    errno = 0;
    const long long number = std::strtoll(value.c_str(), nullptr, 0);
    if (errno != 0 || number < -0x80000000LL || number > 0xffffffffLL) {
        return std::nullopt;
    }
    return shown(number & 0xffffffffLL);
}

Shown slow_word(const std::string& value,
                std::initializer_list<std::pair<const char*, int>> words) {
    for (const auto& [word, number] : words) {
        if (same_name(value, word)) {
            return shown(number);
        }
    }
    return std::nullopt;
}

Shown slow_date(const std::string& value) {
    const char* form = "0000/00/00";
    for (std::size_t i = 0; i < 10; ++i) {
        const bool fits = form[i] == '/' ? value[i] == '/' : value[i] >= '0' && value[i] <= '9';
        if (value.size() != 10 || !fits) {
            return std::nullopt;
        }
    }
    const int month = std::stoi(value.substr(5, 2));
    const int day = std::stoi(value.substr(8));
    return month >= 1 && month <= 12 && day >= 1 && day <= 31 ? Shown(shown(value.c_str()))
                                                              : std::nullopt;
}

Shown slow_limit(const std::string& value, const std::string& before) {
    std::string digits = value;
    while (digits.size() > 1 && digits[0] == '0') {
        digits.erase(0, 1);
    }
    if (value.find_first_not_of("0123456789") != value.npos || digits.size() > 4) {
        return std::nullopt;
    }
    return value.empty() ? before : digits;
}

std::string slow_list(const std::string& value) {
    std::vector<std::string> names{""};
    for (const char c : value) {
        if (c != ':') {
            names.back() += c;
        } else if (!names.back().empty()) {
            names.emplace_back();
        }
    }
    if (names.back().empty()) {
        names.pop_back();
    }
    return shown(names);
}

Shown slow_right(const RightRow& row, const std::string& value, const std::string& before) {
    switch (row.rule) {
    case RightRule::Boolean:
        return slow_word(value, {{"true", 1},
                                 {"yes", 1},
                                 {"on", 1},
                                 {"1", 1},
                                 {"false", 0},
                                 {"no", 0},
                                 {"off", 0},
                                 {"0", 0}});
    case RightRule::Number:
        return slow_number(value);
    case RightRule::String:
        return shown(value.c_str());
    case RightRule::List:
        return value.empty() && std::string(row.key).starts_with("Set") ? "unset"
                                                                        : slow_list(value);
    case RightRule::Date:
        return value.empty() ? "unset" : slow_date(value);
    case RightRule::Selection:
        return slow_word(value, {{"header", 1}, {"envelope", 2}, {"both", 3}, {"none", 0}});
    case RightRule::Limit:
        return slow_limit(value, before);
    }
    return std::nullopt;
}

// Whether the user has the right `key`, by what is shown.
bool has(const char* key, const std::vector<std::string>& values) {
    return values[static_cast<std::size_t>(find_right(key) - rights().data())] == "1";
}

// Reads the rights in `section` of `text` into `values`. Gives the message behind "FILE:" of the
// first value that is invalid; empty: there is none.
std::string slow_read(const std::string& text, const std::string& section,
                      std::vector<std::string>& values) {
    const std::vector<SlowEntry> lines = slow_entries(text, LineMode);
    const std::vector<SlowEntry> tokens = slow_entries(text, TokenMode);
    for (std::size_t i = 0; i < rights().size(); ++i) {
        const RightRow& row = rights()[i];
        std::string key = row.key;
        if ((key == "Freeze_Option" && has("HoldFreeze", values)) ||
            (key == "Confirm_Option" && has("HoldConfirm", values))) {
            continue;
        }
        const auto& entries = row.rule == RightRule::Boolean ? tokens : lines;
        const SlowEntry* entry = slow_lookup(entries, section, key);
        if (!entry && key == "ExcludeGroup") {
            key = "RejectGroup";
            entry = slow_lookup(entries, section, key);
        }
        if (!entry) {
            continue;
        }
        const Shown value = slow_right(row, entry->value, values[i]);
        if (!value) {
            return std::to_string(entry->line) + ": invalid value, [" + section + "] " + key +
                   ": " + entry->value + "\n";
        }
        values[i] = *value;
    }
    return "";
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    restore_settings();
    Input input(data, size);
    const int rank = input.number() % Roles;
    const std::string text = input.rest();

    const std::string section = rank % 3 == 1 ? "Manager" : "Admin";
    std::vector<std::string> expected = shown_rights(rank);
    const std::vector<std::string> others = shown_rights((rank + 1) % Roles);
    std::string message = slow_read(text, section, expected);
    const std::string path = scratch("user.conf");
    write_file(path, text);
    Captured errors(stderr);
    int status = 0;
    try {
        read_config_user(path.c_str(), section.c_str(), rank);
    } catch (const Exit& exit) {
        status = exit.status;
    }
    require_equal(errors.text(), message.empty() ? "" : path + ":" + message, "message");
    require_equal(status, message.empty() ? 0 : 1, "exit status");
    const std::vector<std::string> found = shown_rights(rank);
    for (std::size_t i = 0; message.empty() && i < rights().size(); ++i) {
        require_equal(found[i], expected[i], rights()[i].key);
    }
    require(shown_rights((rank + 1) % Roles) == others, "the rights of another role");
    return 0;
}
