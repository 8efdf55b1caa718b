#include "reference/key_reference.h"

#include "conf/catalogue.h"
#include "conf/layout.h"
#include "conf/load_rules.h"
#include "conf/settings.h"

#include <algorithm>
#include <stdexcept>
#include <type_traits>

namespace ov {

namespace {

const std::pair<const char*, const char*> purposes[] = {
#define SECTION(name, purpose) {name, purpose},
#define SETTING(...)
#define STEP(...)
#include "conf/catalogue.def"
#undef STEP
#undef SETTING
};

const char* purpose_of(std::string_view section) {
    const auto* found = std::find_if(std::begin(purposes), std::end(purposes),
                                     [section](const auto& p) { return p.first == section; });
    if (found == std::end(purposes)) {
        throw std::logic_error("a section has no purpose");
    }
    return found->second;
}

// A size in the shortest form that is exact.
std::string size_text(std::int64_t bytes) {
    for (const auto& [unit, shift] : {std::pair{'G', 30}, {'M', 20}, {'K', 10}}) {
        if (bytes != 0 && bytes % (std::int64_t{1} << shift) == 0) {
            return std::to_string(bytes >> shift) + unit;
        }
    }
    return bytes == 0 ? "0" : std::to_string(bytes) + 'B';
}

std::string number_text(const Row& row, const std::string& kind) {
    if (auto* const* large = std::get_if<unsigned long*>(&row.variable)) {
        return std::to_string(**large);
    }
    const std::int64_t number = number_in(row.variable);
    if (kind == "boolean") {
        return number != 0 ? "yes" : "no";
    }
    if (kind == "word") {
        return str_vtab(row.rule.table, static_cast<int>(number));
    }
    if (kind == "level" && number >= row.rule.highest) {
        return "none";
    }
    if (kind == "size") {
        return size_text(row.rule.load == load_rules::load_bytes ? number : number << 10);
    }
    return std::to_string(number);
}

// A default in the terms of a configuration file.
std::optional<std::string> initial_text(const Row& row, const std::string& kind) {
    return std::visit(
        [&](const auto* setting) -> std::optional<std::string> {
            using Type = std::remove_cvref_t<decltype(*setting)>;
            if constexpr (std::is_integral_v<Type>) {
                return number_text(row, kind);
            } else if constexpr (std::is_same_v<Type, Text>) {
                return *setting ? std::optional(std::string(setting->view())) : std::nullopt;
            } else {
                return std::nullopt; // lists are not set
            }
        },
        row.variable);
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
    const std::vector<ValueText> values = accepted_texts();
    const std::vector<std::string> checks = checked_texts();
    const std::vector<std::string> forms = shown_texts();
    std::size_t number = 0;
    for (const Row& row : catalogue()) {
        const std::size_t i = number++;
        if (!row.section) {
            continue;
        }
        auto section = std::find_if(sections.begin(), sections.end(), [&](const auto& s) {
            return std::string_view(s.section) == row.section;
        });
        if (section == sections.end()) {
            section = sections.insert(section, {row.section, purpose_of(row.section), {}});
        }
        const ValueText& value = values[i];
        const std::optional<std::string> initial = initial_text(row, value.kind);
        const bool is_file = value.kind == "file";
        section->keys.push_back({
            .key = row.key,
            .accepted = value,
            .initial = initial,
            .is_in_etc = is_file && initial && !isfullpath(initial->c_str()),
            .needs_full_path = is_file && row.rule.option == load_rules::FullPath,
            .checked = unless_empty(checks[i]),
            .shown = unless_empty(forms[i]),
            .only = only_text(row.gate),
        });
    }
    return sections;
}

std::string sentence(const ValueText& text) {
    return text.details.empty() ? text.kind : text.kind + ": " + text.details;
}

} // namespace ov
