#include "ctl/widened.h"

#include "conf/layout.h"
#include "reference/text.h"

#include <map>
#include <set>

namespace ov::ctl {

namespace {

std::string folded_section(const std::string& section) {
    return folded(section, "");
}

// The folded names of the sections of what is asked for. Of a rights file the section is meant,
// too, where no right is named.
std::set<std::string> sections_of(const std::vector<Asked>& asked) {
    std::set<std::string> sections;
    for (const Asked& one : asked) {
        if (one.key || one.file_only) {
            sections.insert(folded_section(one.section));
        }
    }
    return sections;
}

} // namespace

void add_others(std::vector<Asked>& asked, const std::string& text, const KnownKeys& known) {
    const std::set<std::string> sections = sections_of(asked);
    std::set<std::string> named;
    for (const Asked& one : asked) {
        if (one.key) {
            named.insert(folded(one.section, *one.key));
        }
    }
    Layout layout(text);
    while (const std::optional<LaidOut> piece = layout.next()) {
        const std::string section(c_text(piece->section));
        const std::string key(c_text(piece->key));
        if (piece->piece != Piece::Entry || !sections.contains(folded_section(section)) ||
            !named.insert(folded(section, key)).second) {
            continue;
        }
        Asked other{.section = section, .key = key, .value = {}};
        if (const KnownKey* found = known.find(section, key)) {
            other.section = found->section;
            other.key = found->key;
            other.known = *found;
        }
        asked.push_back(std::move(other));
    }
}

void widen_to_sections(std::vector<Asked>& asked, const std::string& text) {
    std::set<std::string> gone; // keys
    std::set<std::string> kept; // sections
    for (const Asked& one : asked) {
        if (one.key && one.value) {
            kept.insert(folded_section(one.section));
        } else if (one.key) {
            gone.insert(folded(one.section, *one.key));
        }
    }
    const std::set<std::string> touched = sections_of(asked);
    std::map<std::string, std::string> emptied; // sections as they are written, by folded names
    Layout layout(text);
    while (const std::optional<LaidOut> piece = layout.next()) {
        const std::string section(c_text(piece->section));
        const std::string id = folded_section(section);
        if (piece->piece == Piece::Entry && !gone.contains(folded(section, c_text(piece->key)))) {
            kept.insert(id);
        } else if (touched.contains(id)) {
            emptied.insert({id, section});
        }
    }
    for (const auto& section : emptied) {
        const std::string& id = section.first;
        if (kept.contains(id)) {
            continue;
        }
        std::string spelled = section.second;
        std::erase_if(asked, [&](const Asked& one) {
            const bool is_in = one.key && folded_section(one.section) == id;
            if (is_in) {
                spelled = one.section;
            }
            return is_in;
        });
        asked.push_back({.section = spelled, .key = std::nullopt, .value = {}});
    }
}

} // namespace ov::ctl
