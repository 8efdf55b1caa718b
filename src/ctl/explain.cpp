#include "catalogue/reset.h"
#include "ctl/json.h"
#include "ctl/options.h"
#include "kinds/written.h"
#include "reference/key_reference.h"
#include "reference/names.h"
#include "reference/text.h"

#include <algorithm>
#include <cstdio>
#include <functional>

namespace ov::ctl {

namespace {

std::string default_of(const KeyReference& key) {
    if (!key.initial) {
        return "not set";
    }
    return key.initial->empty() ? "empty"
                                : *key.initial + (key.is_in_etc ? " in EtcDirectory" : "");
}

Explanation explain_key(const std::string& section, const KeyReference& key) {
    Explanation about{{"section", section}, {"key", key.key}};
    const auto add = [&about](const char* term, const std::string& text) {
        if (!text.empty()) {
            about.emplace_back(term, text);
        }
    };
    add("purpose", key.purpose ? key.purpose : "");
    add("kind", sentence(key.accepted));
    add("meaning", meanings().at(key.accepted.kind));
    add("default", default_of(key));
    add("secret", key.secret ? "answers mask its value unless --secrets is given" : "");
    add("read", key.only.empty() ? "" : "with " + key.only + " only");
    add("check", key.checked.value_or("ov_conf -c cannot check it"));
    add("show", key.shown.value_or("ov_conf -a cannot show it"));
    return about;
}

Explanation explain_section(const SectionReference& section) {
    std::vector<std::string> keys;
    for (const KeyReference& key : section.keys) {
        keys.emplace_back(key.key);
    }
    return {{"section", section.section}, {"purpose", section.purpose}, {"keys", keys}};
}

// Of the six roles; one when they have the same.
std::string defaults_of(const RightRow& right) {
    std::string all;
    std::string first;
    bool same = true;
    for (int rank = 0; rank < Roles; ++rank) {
        const Value value{manner_of(right.load), variable_of(right, rank), ""};
        const std::string text = kinds::written(kind_of(right.load), value).value_or("not set");
        first = rank == 0 ? text : first;
        same = same && text == first;
        all += (rank == 0 ? "" : " ") + text;
    }
    return same ? first : all;
}

Explanation explain_right(const RightRow& right) {
    const ValueText accepted = accepted_text(right);
    return {{"right", key_of(right)},
            {"kind", sentence(accepted)},
            {"meaning", meanings_of_rights().at(accepted.kind)},
            {"default", defaults_of(right)},
            {"query", right.query == RightQuery::None ? "no" : "yes"},
            {"change", changed_text(right)}};
}

// All that a name stands for, whatever that is.
std::vector<Explanation> explained(std::string_view name) {
    std::vector<Explanation> found;
    const std::vector<KeyName> keys = keys_named(name);
    const bool has_dot = name.find('.') != name.npos;
    for (const SectionReference& section : key_reference()) {
        if (!has_dot && same_word(section.section, name)) {
            found.push_back(explain_section(section));
        }
        for (const KeyReference& key : section.keys) {
            const bool is_named = has_dot
                                      ? std::any_of(keys.begin(), keys.end(),
                                                    [&](const KeyName& known) {
                                                        return known.section == section.section &&
                                                               known.key == key.key;
                                                    })
                                      : same_word(key.key, name);
            if (is_named) {
                found.push_back(explain_key(section.section, key));
            }
        }
    }
    const bool names_right = std::any_of(keys.begin(), keys.end(), std::mem_fn(&KeyName::is_right));
    const std::string_view last = has_dot ? name.substr(name.find('.') + 1) : name;
    if (const RightRow* right = !has_dot || names_right ? find_right(last) : nullptr) {
        found.push_back(explain_right(*right));
    }
    for (const Meanings& kinds : {meanings(), meanings_of_rights()}) {
        const auto kind = std::find_if(kinds.begin(), kinds.end(), [name](const auto& each) {
            return same_word(each.first, name);
        });
        if (kind != kinds.end() && (found.empty() || found.back().front().first != "kind")) {
            found.push_back({{"kind", kind->first}, {"meaning", kind->second}});
        }
    }
    return found;
}

// The sections with what they are about.
std::vector<Explanation> overview() {
    std::vector<Explanation> all;
    for (const SectionReference& section : key_reference()) {
        all.push_back({{"section", section.section}, {"purpose", section.purpose}});
    }
    return all;
}

// A term and its text, in lines of a terminal.
void print(const std::string& term, std::string_view text) {
    constexpr std::size_t Width = 78;
    constexpr std::size_t Indent = 10;
    std::string line = term + ":";
    line.resize(std::max(line.size() + 1, Indent), ' ');
    while (line.size() + text.size() > Width) {
        const std::size_t blank = text.rfind(' ', Width - line.size());
        if (blank == text.npos) {
            break;
        }
        std::printf("%s%.*s\n", line.c_str(), static_cast<int>(blank), text.data());
        text.remove_prefix(blank + 1);
        line.assign(Indent, ' ');
    }
    std::printf("%s%.*s\n", line.c_str(), static_cast<int>(text.size()), text.data());
}

void print(const Explanation& about) {
    for (const auto& [term, text] : about) {
        if (const auto* words = std::get_if<std::vector<std::string>>(&text)) {
            std::string all;
            for (const std::string& word : *words) {
                all += (all.empty() ? "" : ", ") + word;
            }
            print(term, all);
        } else {
            print(term, std::get<std::string>(text));
        }
    }
}

} // namespace

int explain(const Options& options) {
    reset_settings();
    std::vector<Explanation> all =
        options.operands.empty() ? overview() : std::vector<Explanation>();
    int status = Good;
    for (const std::string& name : options.operands) {
        std::vector<Explanation> found = explained(name);
        if (found.empty()) {
            std::fprintf(stderr, "ov_confctl: %s\n", printable(no_such_name(name)).c_str());
            status = NoSuchName;
        }
        std::move(found.begin(), found.end(), std::back_inserter(all));
    }
    if (options.json) {
        std::fputs(json_of(all).c_str(), stdout);
        return status;
    }
    for (const Explanation& about : all) {
        if (&about != &all.front()) {
            std::puts("");
        }
        print(about);
    }
    return status;
}

} // namespace ov::ctl
