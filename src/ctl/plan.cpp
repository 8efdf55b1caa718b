#include "ctl/plan.h"

#include "catalogue/catalogue.h"
#include "catalogue/rights.h"
#include "conf/amend.h"
#include "conf/layout.h"
#include "ctl/shown.h"
#include "ctl/trial.h"
#include "ctl/warnings.h"
#include "kinds/loading.h"
#include "kinds/written.h"

#include <algorithm>
#include <set>
#include <tuple>
#include <unordered_map>

namespace ov::ctl {

namespace {

// What stands in a text for those names that are asked for, as lookups find it; nothing for an
// entry that they pass over.
using Present = std::unordered_map<std::string, std::optional<std::string>>;

struct Examined {
    std::vector<Finding> errors;
    std::vector<Finding> warnings;
};

// What is wrong with a file.
Examined examine(const Document& file, Host host, const std::optional<RightsOf>& whose,
                 const std::optional<Document>& main) {
    if (!whose) {
        const Survey found = survey(file, host);
        return {found.errors, warnings(file, found)};
    }
    survey(*main, Host::IsLeftAlone);
    Examined found;
    std::vector<FileLine> origins(rights().size());
    survey_rights(file, rights_file(*whose).section.c_str(), whose->rank, origins, found.errors);
    return found;
}

bool names(const Asked& asked, const Finding& finding) {
    return same_word(asked.section, finding.section) &&
           (!asked.key || same_word(*asked.key, finding.key));
}
bool is_named(const std::vector<Asked>& asked, const Finding& finding) {
    return std::any_of(asked.begin(), asked.end(),
                       [&finding](const Asked& one) { return names(one, finding); });
}

// Whether only the caller knows that the value is a secret.
bool is_told_secret(const std::vector<Asked>& asked, const Finding& finding) {
    return std::any_of(asked.begin(), asked.end(),
                       [&finding](const Asked& one) { return one.secret && names(one, finding); });
}

// Tells errors from warnings. New lines have no number yet.
Examined weighed(const std::vector<Asked>& asked, const Examined& before, Examined after) {
    const auto id_of = [](const Finding& error) {
        return std::tuple(error.file, lowered(error.section), lowered(error.key));
    };
    std::set<std::tuple<std::string, std::string, std::string>> old;
    for (const Finding& error : before.errors) {
        old.insert(id_of(error));
    }
    Examined weighed;
    for (Finding& error : after.errors) {
        const bool is_old = old.contains(id_of(error)) && !is_named(asked, error);
        error.line = 0;
        if (is_told_secret(asked, error)) {
            error.value.clear();
        }
        (is_old ? weighed.warnings : weighed.errors).push_back(std::move(error));
    }
    for (Finding& warning : after.warnings) {
        // Who names what nobody knows has said so.
        const bool is_unknown = std::string_view(warning.code).starts_with("unknown-");
        if (is_named(asked, warning) && !is_unknown) {
            warning.line = 0;
            weighed.warnings.push_back(std::move(warning));
        }
    }
    return weighed;
}

Present present_values(const std::string& text, const std::vector<Asked>& asked) {
    std::unordered_map<std::string, int> modes;
    for (const Asked& one : asked) {
        if (one.key) {
            modes.insert({folded(one.section, *one.key), one.mode()});
        }
    }
    Present present;
    Layout layout(text);
    while (const std::optional<LaidOut> piece = layout.next()) {
        if (piece->piece != Piece::Entry) {
            continue;
        }
        const auto mode = modes.find(folded(c_text(piece->section), c_text(piece->key)));
        if (mode == modes.end()) {
            continue;
        }
        std::optional<std::string>& found = present[mode->first];
        if (!found) {
            found = value_in(entry_of(*piece), mode->second);
        }
    }
    return present;
}

// Whether the load makes the same of both values, whatever else the file has: a text means itself,
// and a path depends on others.
bool mean_the_same(const KnownKey& known, const std::string& a, const std::string& b) {
    if (std::holds_alternative<Text*>(known.variable)) {
        return a == b;
    }
    const auto meaning = [&known](const std::string& text) {
        std::optional<std::string> written;
        with_other_value(known.variable, [&] {
            Load load{.file = "", .mask = WholeMask | RC_NOTRIALS | RC_NOHOST};
            const Manner& manner = manner_of(known.rules->load);
            const Kind& kind = kind_of(known.rules->load);
            if (kind.load({{manner, known.variable, text}, load, MainReader, "", 1}) ==
                Verdict::Taken) {
                written = kinds::written(kind, {manner, known.variable, text}).value_or("");
            }
        });
        return written;
    };
    const auto of_a = meaning(a);
    return of_a && of_a == meaning(b);
}

// Takes out what the file has already, in the same words or in others.
void drop_what_is_there(std::vector<Asked>& asked, const Present& present) {
    std::erase_if(asked, [&present](const Asked& one) {
        const auto found = one.key ? present.find(folded(one.section, *one.key)) : present.end();
        return one.value && found != present.end() && found->second &&
               (found->second == one.value ||
                (one.known && mean_the_same(*one.known, *found->second, *one.value)));
    });
}

std::vector<Change> changes_of(const std::vector<Asked>& asked) {
    std::vector<Change> changes;
    changes.reserve(asked.size());
    for (const Asked& one : asked) {
        changes.push_back({one.section, one.key, one.value, one.mode()});
    }
    return changes;
}

// What a section that goes as a whole has: each key once.
void add_section(const std::string& text, const std::string& section, const KnownKeys& known,
                 std::vector<Difference>& differences) {
    std::set<std::string> seen;
    bool has_header = false;
    Layout layout(text);
    while (const std::optional<LaidOut> piece = layout.next()) {
        if (!same_word(c_text(piece->section), section)) {
            continue;
        }
        has_header = true;
        if (piece->piece == Piece::Entry && seen.insert(folded("", piece->key)).second) {
            const KnownKey* key = known.find(section, piece->key);
            differences.push_back({.section = section,
                                   .key = key ? std::string(key->key) : std::string(piece->key),
                                   .before = std::string(line_value(entry_of(*piece))),
                                   .secret = !key || key->is_secret()});
        }
    }
    if (has_header && seen.empty()) {
        differences.push_back({.section = section});
    }
}

std::vector<Difference> differences_of(const std::string& text, const std::vector<Asked>& asked,
                                       const Present& present, const KnownKeys& known) {
    std::vector<Difference> differences;
    for (const Asked& one : asked) {
        if (!one.key) {
            add_section(text, one.section, known, differences);
            continue;
        }
        const auto found = present.find(folded(one.section, *one.key));
        Difference difference{
            .section = one.section, .key = *one.key, .after = one.value, .secret = one.is_masked()};
        if (found != present.end()) {
            difference.before = found->second;
        }
        if (found != present.end() || difference.after) {
            differences.push_back(std::move(difference));
        }
    }
    // Section by section, in the order in which they are first named.
    std::unordered_map<std::string, std::size_t> places;
    for (const Difference& difference : differences) {
        places.insert({difference.section, places.size()});
    }
    std::stable_sort(differences.begin(), differences.end(),
                     [&places](const Difference& a, const Difference& b) {
                         return places.at(a.section) < places.at(b.section);
                     });
    return differences;
}

} // namespace

Plan planned(const Document& file, const std::vector<Asked>& asked,
             const std::optional<RightsOf>& whose, const std::optional<Document>& main) {
    Plan plan{.text = file.text};
    // The name service is not waited for unless the answer counts.
    const bool asks_host = std::any_of(asked.begin(), asked.end(), [](const Asked& one) {
        return !one.value && one.key.value_or("InternalDomains") == "InternalDomains";
    });
    const Host host = asks_host ? Host::MayBeAsked : Host::IsLeftAlone;
    const Examined before = examine(file, host, whose, main);
    const Present present = present_values(file.text, asked);
    std::vector<Asked> left = asked;
    Amended amended = ov::amended(file.text, changes_of(left));
    if (amended.refusal.empty()) {
        Examined found =
            weighed(asked, before, examine({file.path, amended.text}, host, whose, main));
        plan.errors = std::move(found.errors);
        plan.warnings = std::move(found.warnings);
        // The settings are those of the new text now: under them values are compared.
        drop_what_is_there(left, present);
        amended = ov::amended(file.text, changes_of(left));
    }
    if (!amended.refusal.empty()) {
        const Asked& refused = left[amended.refused];
        plan.errors.push_back({.code = "cannot-write-entry",
                               .file = file.path,
                               .section = refused.section,
                               .key = refused.key.value_or(""),
                               .message = amended.refusal});
    }
    if (plan.errors.empty() && amended.text != file.text) {
        plan.changed = differences_of(file.text, left, present, KnownKeys(whose));
        plan.text = std::move(amended.text);
    }
    return plan;
}

} // namespace ov::ctl
