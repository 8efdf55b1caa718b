// The reader of a rights file, against the rule of each right spelled out plainly: the rights
// afterwards, or the message that ends the process.
//
// Input: the role, on its line, and the file.
#include "settings/rights.h"
#include "conf/conf_tool.h"
#include "exit.h"
#include "model.h"
#include "support.h"

#include <cerrno>
#include <cstdlib>

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

Shown slow_selection(const std::string& value) {
    const std::pair<const char*, int> words[] = {
        {"header", 1}, {"envelope", 2}, {"both", 3}, {"none", 0}};
    for (const auto& [word, number] : words) {
        if (same_name(value, word)) {
            return shown(number);
        }
    }
    return std::nullopt;
}

Shown slow_limit(std::string value, const std::string& before) {
    while (value.size() > 1 && value.front() == '0') {
        value.erase(0, 1);
    }
    return value.empty() ? before : all_digits(value) && value.size() <= 4 ? Shown(value) : Shown();
}

Shown slow_right(const RightRow& row, const std::string& value, const std::string& before) {
    switch (row.rule) {
    case RightRule::Boolean:
        return slow_boolean(value) == -1 ? Shown() : shown(slow_boolean(value));
    case RightRule::Number:
        return slow_number(value);
    case RightRule::String:
        return shown(value.c_str());
    case RightRule::List:
        return value.empty() && std::string(row.key).starts_with("Set")
                   ? "unset"
                   : shown(slow_split(value, ":"));
    case RightRule::Date:
        return value.empty()         ? "unset"
               : slow_is_date(value) ? Shown(shown(value.c_str()))
                                     : Shown();
    case RightRule::Selection:
        return slow_selection(value);
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

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t most, unsigned seed) {
    const RightRow& row = rights()[seed / 32 % rights().size()];
    return with_entry(data, size, most, seed, seed & 0x10000 ? "Admin" : "Manager", row.key);
}

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
