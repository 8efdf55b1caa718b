#include "manual/write.h"

#include "answer/queries.h"
#include "kinds/written.h"
#include "load/roles.h"
#include "reference/key_reference.h"

#include <algorithm>
#include <initializer_list>
#include <stdexcept>

namespace ov {

namespace {

// The text as an argument of a manual page's macro: quoted, and never taken for a macro itself.
std::string argument(std::string_view text) {
    std::string quoted = "\"\\&";
    for (const char c : text) {
        quoted += c == '"' ? "\\(dq" : c == '\\' ? "\\e" : std::string(1, c);
    }
    return quoted + '"';
}

// The text as a line, or a part of one, of a manual page.
std::string line(std::string text) {
    for (std::size_t at = 0; (at = text.find('"', at)) != text.npos; at += 4) {
        text.replace(at, 1, "\\(dq");
    }
    return text;
}

// Sentences, each on a line of a manual page.
std::string lines(std::string text) {
    text = line(std::move(text));
    for (std::size_t at = 0; (at = text.find(". ", at)) != text.npos;) {
        text.replace(at, 2, ".\n");
    }
    return text + "\n";
}

// Sentences as comments of a configuration file, none of them longer than a line of the sample.
std::string comments(std::string_view text) {
    constexpr std::size_t Longest = 98;
    std::string all;
    while (text.size() > Longest) {
        const std::size_t blank = text.rfind(' ', Longest);
        all += "# " + std::string(text.substr(0, blank)) + "\n";
        text.remove_prefix(blank + 1);
    }
    return all + "# " + std::string(text) + "\n";
}

std::string capitalised(std::string text) {
    if (lower(text[0]) == text[0] && is_letter_or_digit(text[0]) && !is_digit(text[0])) {
        text[0] = static_cast<char>(text[0] - 'a' + 'A');
    }
    return text;
}

std::string manual_key(const KeyReference& key) {
    std::string text = std::string(".It Ic ") + argument(key.key) + "\n";
    text += key.purpose ? lines(key.purpose) : "";
    text += capitalised(line(sentence(key.accepted))) + ".\n";
    if (!key.initial) {
        text += "Default: not set.\n";
    } else if (key.initial->empty()) {
        text += "Default: empty.\n";
    } else {
        text += "Default:\n.Ql " + argument(*key.initial) +
                (key.is_in_etc ? "\nin\n.Ic EtcDirectory .\n" : " .\n");
    }
    if (key.secret) {
        text +=
            "A secret: the answers of\n.Xr ov_confctl 8\nmask it unless they are asked not to.\n";
    }
    if (!key.only.empty()) {
        text += "Read with\n.Ql " + argument(key.only) + "\nonly.\n";
    }
    text += key.checked || key.shown ? ".br\n" : "";
    if (key.checked) {
        const bool same = *key.checked == sentence(key.accepted);
        text += "Check: " + (same ? "the same" : line(*key.checked)) + ".\n";
    }
    if (key.shown) {
        text += "Show: " + line(*key.shown) + ".\n";
    }
    return text;
}

// A default of a right as it is written in a rights file; texts and lists are not set.
std::string written(const RightRow& row, int rank) {
    return kinds::written(kind_of(row.load), {manner_of(row.load), variable_of(row, rank), ""})
        .value_or("-");
}

// The defaults of the six roles: one when they are all the same.
std::string defaults(const RightRow& row) {
    std::string all;
    bool same = true;
    for (int rank = 0; rank < Roles; ++rank) {
        const std::string text = written(row, rank);
        all += (rank == 0 ? "" : " ") + text;
        same = same && text == written(row, 0);
    }
    return same ? written(row, 0) : all;
}

// A directory of the installation by its key, and its default.
const Row& directory(const char* key) {
    return *find_row("Directories", key);
}
std::string default_of(const Row& directory) {
    return std::get<Text*>(variable_of(directory))->c_str();
}

const Row& directory_of(const Role& role) {
    const auto rows = catalogue();
    const auto found = std::find_if(rows.begin(), rows.end(), [&role](const Row& row) {
        const auto* text = std::get_if<SettingOf<Text>>(&row.member);
        return text && *text == role.directory;
    });
    if (found == rows.end()) {
        throw std::logic_error("a directory has no key");
    }
    return *found;
}

template <class Items, class TextOf>
std::string shell_list(const std::string& name, const Items& items, TextOf text_of) {
    std::string text;
    for (const auto& item : items) {
        const std::string word = text_of(item);
        text += (text.empty() || word.empty() ? "" : " ") + word;
    }
    return name + "='" + text + "'\n";
}

// The names of the rights that can be given values of one kind.
std::string assignable(const char* name, std::string_view kind) {
    return shell_list(name, rights(), [kind](const RightRow& right) {
        return changed_text(right) == kind ? std::string(key_of(right)) : "";
    });
}

// A shell's table of the keys of each section that `has_it` names, by the section's name in lower
// case: it is found in any.
template <class HasIt>
std::string keys_of_sections(const char* name, HasIt has_it) {
    std::string text = std::string("declare -gA ") + name + "=(\n";
    for (const SectionReference& section : key_reference()) {
        text += shell_list(
            "    [" + lowered(section.section) + "]", section.keys,
            [&has_it](const KeyReference& key) { return has_it(key) ? std::string(key.key) : ""; });
    }
    return text + ")\n";
}

// A shell's table of the values that can be offered for a key, by section and key.
using Offered = std::string KeyReference::*;
std::string offers(const char* name, Offered offered) {
    std::string text = std::string("declare -gA ") + name + "=(\n";
    for (const SectionReference& section : key_reference()) {
        for (const KeyReference& key : section.keys) {
            if (!(key.*offered).empty()) {
                text += "    [" + lowered(std::string(section.section) + "." + key.key) + "]='" +
                        key.*offered + "'\n";
            }
        }
    }
    return text + ")\n";
}

std::string tabbed(std::initializer_list<std::string> fields) {
    std::string text;
    for (const std::string& field : fields) {
        text += (text.empty() ? "" : "\t") + field;
    }
    return text + "\n";
}

// Kinds and what they mean, sorted by their names.
std::string kinds_list(const Meanings& all) {
    std::string text = ".Bl -tag -width Ds\n";
    std::vector<std::pair<std::string, std::string>> sorted(all.begin(), all.end());
    std::sort(sorted.begin(), sorted.end(),
              [](const auto& a, const auto& b) { return lowered(a.first) < lowered(b.first); });
    for (const auto& [name, meaning] : sorted) {
        text += ".It " + name + "\n" + lines(meaning);
    }
    return text + ".El\n";
}

// The list of all sections and keys for a manual page (mdoc).
std::string manual_keys() {
    std::string text;
    for (const SectionReference& section : key_reference()) {
        text += std::string(".Ss \\&[") + section.section + "]\\&\n" + lines(section.purpose) +
                ".Bl -tag -width Ds\n";
        for (const KeyReference& key : section.keys) {
            text += manual_key(key);
        }
        text += ".El\n";
    }
    return text;
}

// The lists of the kinds of values, and of those of rights, for a manual page (mdoc).
std::string manual_kinds() {
    return kinds_list(meanings());
}

std::string manual_right_kinds() {
    return kinds_list(meanings_of_rights());
}

// How many of the keys have no check, as the beginning of a sentence.
std::string manual_unchecked() {
    std::size_t keys = 0;
    std::size_t unchecked = 0;
    for (const SectionReference& section : key_reference()) {
        keys += section.keys.size();
        unchecked +=
            static_cast<std::size_t>(std::count_if(section.keys.begin(), section.keys.end(),
                                                   [](const auto& key) { return !key.checked; }));
    }
    return "Of the " + std::to_string(keys) + " keys " + std::to_string(unchecked) +
           " have no check:\n";
}

// The list of the queries for several rights for a manual page (mdoc).
std::string manual_queries() {
    std::string text = ".Bl -tag -width Ds\n";
    for (const CombinedQuery& query : combined_queries()) {
        text += std::string(".It Ic ") + query.name;
        const char* separator = "\n.Ic ";
        for (const Right right : query.rights) {
            text += separator + std::string(key_of(row_of(right)));
            separator = " ,\n.Ic ";
        }
        text += query.tells_freezing
                    ? " ,\nand whether freezing messages is switched on for the user\n"
                    : "\n";
    }
    return text + ".El\n";
}

// The list of all rights for a manual page (mdoc).
std::string manual_rights() {
    std::string text = ".Bl -column \"FromFilterSelect_Search\" \"selection\" \"3 0 0 3 0 0\" "
                       "\"asked\" \"anything\"\n"
                       ".It Sy Right Ta Sy Kind Ta Sy Default Ta Sy Asked Ta Sy Changed\n";
    for (const RightRow& right : rights()) {
        text += std::string(".It Ic ") + key_of(right) + " Ta " + sentence(accepted_text(right)) +
                " Ta " + defaults(right) + " Ta " +
                (right.query == RightQuery::None ? "no" : "yes") + " Ta " + changed_text(right) +
                "\n";
    }
    return text + ".El\n";
}

// All keys at their defaults, each commented out, as a configuration file.
std::string sample_keys() {
    const std::string folder =
        default_of(directory("RootDirectory")) + default_of(directory("EtcDirectory"));
    std::string text;
    for (const SectionReference& section : key_reference()) {
        text += std::string("\n[") + section.section + "]\n" + comments(section.purpose);
        for (const KeyReference& key : section.keys) {
            const std::string initial =
                (key.is_in_etc && key.needs_full_path ? folder : "") + key.initial.value_or("");
            text += (key.purpose ? "\n" + comments(key.purpose) : "\n") + "# " +
                    capitalised(sentence(key.accepted)) + (key.initial ? "" : ". Not set.") +
                    "\n#" + key.key + " =" + (initial.empty() ? "" : " " + initial) + "\n";
        }
    }
    return text;
}

// Shell variables: the keys of each section, the directories of the role commands, what they can
// be asked for and what they can assign.
std::string completion_data() {
    const std::vector<SectionReference> sections = key_reference();
    std::string text = shell_list("_ov_conf_sections", sections,
                                  [](const SectionReference& s) { return std::string(s.section); });
    text += keys_of_sections("_ov_conf_keys", [](const KeyReference&) { return true; });
    text += keys_of_sections("_ov_conf_checked_keys",
                             [](const KeyReference& key) { return key.checked.has_value(); });
    text += keys_of_sections("_ov_conf_shown_keys",
                             [](const KeyReference& key) { return key.shown.has_value(); });
    text += offers("_ov_conf_values", &KeyReference::offered);
    text += offers("_ov_conf_checked_values", &KeyReference::offered_to_check);
    text += "declare -gA _ov_conf_directories=(\n";
    for (const Role& role : AllRoles) {
        text += std::string("    [") + role.command + "]=" + key_of(directory_of(role)) + "\n";
    }
    text += std::string(")\n_ov_conf_groups=") + key_of(directory("Group_Dir")) + "\n";
    text += shell_list("_ov_conf_queries", combined_queries(),
                       [](const CombinedQuery& query) { return std::string(query.name); });
    text += shell_list("_ov_conf_rights", rights(), [](const RightRow& right) {
        return right.query == RightQuery::None ? "" : std::string(key_of(right));
    });
    text += assignable("_ov_conf_boolean_rights", "boolean");
    text += assignable("_ov_conf_digit_rights", "digits");
    text += assignable("_ov_conf_text_rights", "anything");
    text += shell_list("_ov_conf_group_rights", rights(), [](const RightRow& right) {
        return accepted_text(right).kind == "names" && right.check != NotChecked
                   ? std::string(key_of(right))
                   : "";
    });
    return text;
}

// All keys of the main file, those of rights included, a line each: section, key, kind, what -c
// accepts, how -a shows it, default, whether it is secret, with a tab between them and "-" for
// none.
std::string key_list() {
    std::string text;
    for (const SectionReference& section : key_reference()) {
        for (const KeyReference& key : section.keys) {
            text += tabbed({section.section, key.key, sentence(key.accepted),
                            key.checked.value_or("-"), key.shown.value_or("-"),
                            key.initial.value_or("-"), key.secret ? "secret" : "-"});
        }
    }
    // The rights that stand in the main file change the defaults of the first two roles.
    for (const auto& [section, rank] : {std::pair{AdminSection, 0}, {ManagerSection, 1}}) {
        for (const RightRow& right : rights()) {
            text += tabbed({section, key_of(right), sentence(accepted_text(right)), "-", "-",
                            written(right, rank), "-"});
        }
        text += tabbed({section, OldExcludeGroup, "names", "-", "-", "-", "-"});
    }
    return text;
}

struct Generated {
    const char* name;
    std::string (*text)();
};
constexpr Generated texts[] = {
    {"manual_keys", manual_keys},
    {"manual_kinds", manual_kinds},
    {"manual_unchecked", manual_unchecked},
    {"manual_queries", manual_queries},
    {"manual_rights", manual_rights},
    {"sample_keys", sample_keys},
    {"completion_data", completion_data},
    {"key_list", key_list},
    {"manual_right_kinds", manual_right_kinds},
};

} // namespace

std::string generated(std::string_view name) {
    const auto* found = std::find_if(std::begin(texts), std::end(texts),
                                     [name](const Generated& text) { return text.name == name; });
    if (found == std::end(texts)) {
        throw std::invalid_argument("unknown name in a template: " + std::string(name));
    }
    return found->text();
}

} // namespace ov
