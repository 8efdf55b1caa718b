// The load driver on any main file, programs and directories unchecked: the settings afterwards,
// or the value that the message names, against the common rules spelled out plainly.
//
// Input: the load mask, on its line, and the file.
#include "settings/catalogue.h"
#include "settings/conf.h"
#include "conf/load_rules.h"
#include "settings/rights.h"
#include "exit.h"
#include "model.h"
#include "support.h"

#include <algorithm>
#include <map>

using namespace ov;
using namespace ov::fuzz;

namespace {

constexpr unsigned Unchecked = RC_NOCHECK | RC_NODIRCHECK;

struct File {
    std::string_view text;
    std::vector<SlowEntry> lines = slow_entries(text, LineMode);
    std::vector<SlowEntry> tokens = slow_entries(text, TokenMode);

    const SlowEntry* entry(const Row& row) const {
        const bool boolean = row.rule.load == load_rules::load_boolean;
        return slow_lookup(boolean ? tokens : lines, row.section, row.key);
    }
    const SlowEntry* entry(const RightRow& row, std::string_view section) const {
        const bool boolean = row.rule == RightRule::Boolean;
        return slow_lookup(boolean ? tokens : lines, section, row.key);
    }
};

enum class Judgement { Unknown, Valid, Invalid };
struct Judged {
    Judgement judgement = Judgement::Unknown;
    std::string shown;
};

Judged judged_if(bool valid, const std::string& value) {
    return {valid ? Judgement::Valid : Judgement::Invalid, value};
}

// The number of a setting, when its type can hold it.
Judged judged_number(const Row& row, std::int64_t number) {
    if (std::holds_alternative<int*>(row.variable)) {
        return judged_if(number == static_cast<int>(number), shown(number));
    }
    if (std::holds_alternative<long*>(row.variable)) {
        return {Judgement::Valid, shown(number)};
    }
    return {};
}

// What becomes of a value under the rule of its row, for the rules that many rows have.
Judged judge(const Row& row, const std::string& value) {
    const LoadRule& rule = row.rule;
    if (rule.load == load_rules::load_text) {
        return {Judgement::Valid, shown(value.c_str())};
    }
    if (rule.load == load_rules::load_boolean) {
        const int number = slow_boolean(value);
        return judged_if(number != -1, shown(number));
    }
    if (rule.load == load_rules::load_word) {
        for (const VTAB* word = VTable[rule.table]; word->str; ++word) {
            if (same_name(word->str, value)) {
                return {Judgement::Valid, shown(word->val)};
            }
        }
        return {Judgement::Invalid, ""};
    }
    if (rule.load == load_rules::load_digits) {
        if (!all_digits(value) || value.size() > rule.longest) {
            return {Judgement::Invalid, ""};
        }
        if (value.size() > 18) {
            return {}; // too large for this model
        }
        const std::int64_t number = std::stoll(value);
        const bool within = number >= rule.lowest && number <= rule.highest;
        return within ? judged_number(row, number) : Judged{Judgement::Invalid, ""};
    }
    return {};
}

// Whether the row is read with this mask by the reader of the main file, and by none else.
bool is_read(const Row& row, unsigned mask) {
    const Gate& gate = row.gate;
    return row.section && gate.readers == MainReader && gate.program == 0 &&
           (gate.any == 0 || (gate.any & mask) != 0) && (gate.unless & mask) == 0;
}

// By row: whether steps or other rows change the setting, too.
std::vector<bool> changed_elsewhere() {
    std::vector<bool> changed;
    for (const Row& row : catalogue()) {
        const auto same = [&row](const Row& other) { return other.variable == row.variable; };
        changed.push_back(std::string_view(row.key).starts_with("Sendmail") ||
                          std::string_view(row.key) == "ForwardMode" ||
                          std::count_if(catalogue().begin(), catalogue().end(), same) > 1);
    }
    return changed;
}

// The last line that was printed must name a value that stands in the file, there. No value in
// front of it may be one that is known to be invalid.
void check_message(const std::string& errors, const std::string& path, const File& file,
                   unsigned mask) {
    for (const Row& row : catalogue()) {
        if (!row.section) {
            continue;
        }
        const SlowEntry* entry = file.entry(row);
        const std::string place = path + ":" + std::to_string(entry ? entry->line : 0) + ": ";
        const std::string name = "[" + std::string(row.section) + "] " + row.key + ": ";
        const std::string value = entry ? entry->value : "";
        for (const std::string& message :
             {place + name + '"' + value + "\" invalid value \n",
              place + name + '"' + value + "\" must be specified full pathname.\n",
              place + name + '"' + value + "\" cannnot configuration \n",
              place + "invalid value, " + name + value + "\n"}) {
            if (errors.ends_with(message)) {
                require(judge(row, value).judgement != Judgement::Valid, "refused: " + message);
                return;
            }
        }
        const bool invalid =
            entry && is_read(row, mask) && judge(row, value).judgement == Judgement::Invalid;
        require(!invalid, "not refused: " + place + name + value);
    }
    for (const RightRow& row : rights()) {
        for (const std::string section : {"Admin", "Manager"}) {
            const SlowEntry* entry = file.entry(row, section);
            if (entry &&
                errors.ends_with(path + ":" + std::to_string(entry->line) + ": invalid value, [" +
                                 section + "] " + row.key + ": " + entry->value + "\n")) {
                return;
            }
        }
    }
    require_equal(errors, "a message", "the message names no value of the file");
}

void check_settings(const std::vector<std::string>& before, const File& file, unsigned mask) {
    static const std::vector<bool> changed = changed_elsewhere();
    const std::vector<std::string> after = shown_settings();
    for (std::size_t i = 0; i < catalogue().size(); ++i) {
        const Row& row = catalogue()[i];
        if (!is_read(row, mask) || changed[i]) {
            continue;
        }
        const SlowEntry* entry = file.entry(row);
        const Judged expected = entry             ? judge(row, entry->value)
                                : row.rule.absent ? Judged{}
                                                  : Judged{Judgement::Valid, before[i]};
        require(expected.judgement != Judgement::Invalid, std::string("not refused: ") + row.key);
        if (expected.judgement == Judgement::Valid) {
            require_equal(after[i], expected.shown, row.key);
        }
    }
}

} // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t most, unsigned seed) {
    const Row& row = catalogue()[seed / 32 % catalogue().size()];
    const std::string limits[] = {"", "", std::to_string(row.rule.lowest),
                                  std::to_string(row.rule.highest)};
    return with_entry(data, size, most, seed, row.section ? row.section : "SMTP", row.key,
                      limits[(seed >> 20) % std::size(limits)]);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    restore_settings();
    // No test files in directories that the input names.
    ArchiveHardLink = QuarantineHardLink = 0;
    Input input(data, size);
    const unsigned mask = (static_cast<unsigned>(input.number()) & 0xff) | Unchecked;
    const std::string text = input.rest();
    const File file{text};
    for (const SlowEntry& entry : file.lines) {
        if (same_name(entry.key, "ArchiveHardLink") || same_name(entry.key, "QuarantineHardLink")) {
            return -1;
        }
    }

    const std::vector<std::string> before = shown_settings();
    const std::string path = scratch("main.conf");
    write_file(path, text);
    Captured errors(stderr);
    int status = 0;
    try {
        read_config(path.c_str(), mask);
    } catch (const Exit& exit) {
        status = exit.status;
    }
    if (status == 0) {
        check_settings(before, file, mask);
    } else {
        require_equal(status, 1, "exit status");
        check_message(errors.text(), path, file, mask);
    }
    return 0;
}
