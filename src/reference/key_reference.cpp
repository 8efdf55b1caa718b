#include "reference/key_reference.h"

#include "kinds/kinds.h"
#include "kinds/written.h"

#include <algorithm>
#include <type_traits>

namespace ov {

namespace {

// What the catalogue says beside its rows.
struct Line {
    const char* section; // null: this is the purpose of the key in the next line
    const char* key;     // null: this is the purpose of the section
    const char* purpose;
};
constexpr Line all_lines[] = {
#define SECTION(name, purpose) {name, nullptr, purpose},
#define PURPOSE(sentence) {nullptr, nullptr, sentence},
#define SETTING(section, key, ...) {section, key, nullptr},
#include "catalogue/keys.def"
};

const char* purpose_of(std::string_view section, const char* key = nullptr) {
    const auto* found =
        std::find_if(std::begin(all_lines), std::end(all_lines), [&](const Line& line) {
            return line.section && line.section == section && !line.key == !key &&
                   (!key || std::string_view(key) == line.key);
        });
    const Line& beside = key ? *std::prev(found) : *found;
    return key && beside.section ? nullptr : beside.purpose;
}

// A default in the terms of a configuration file. Lists are not set.
std::optional<std::string> initial_text(const Row& row) {
    return kinds::written(kind_of(row.load), {manner_of(row.load), variable_of(row), ""});
}

std::string only_text(const Gate& gate) {
    return gate.program == 0
               ? ""
               : std::string("MailSubmissionProgram = ") + str_vtab(MSPSelectTable, gate.program);
}

std::optional<std::string> unless_empty(const std::string& text) {
    return text.empty() ? std::nullopt : std::optional(text);
}

} // namespace

std::vector<SectionReference> key_reference() {
    std::vector<SectionReference> sections;
    for (const Row& row : catalogue()) {
        auto section = std::find_if(sections.begin(), sections.end(), [&](const auto& s) {
            return std::string_view(s.section) == section_of(row);
        });
        if (section == sections.end()) {
            section = sections.insert(section, {section_of(row), purpose_of(section_of(row)), {}});
        }
        const ValueText value = accepted_text(row);
        const std::optional<std::string> initial = initial_text(row);
        const bool is_file = value.kind == "file";
        section->keys.push_back({
            .key = key_of(row),
            .purpose = purpose_of(section_of(row), key_of(row)),
            .accepted = value,
            .initial = initial,
            .is_in_etc = is_file && initial && !initial->starts_with('/'),
            .needs_full_path = is_file && &kind_of(row.load) == &kinds::FullFile,
            .checked = unless_empty(checked_text(row)),
            .shown = unless_empty(shown_text(row)),
            .offered = offered_text(row),
            .offered_to_check = offered_check_text(row),
            .secret = row.secret,
            .only = only_text(row.gate),
        });
    }
    return sections;
}

} // namespace ov
