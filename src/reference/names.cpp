#include "reference/names.h"

#include "catalogue/catalogue.h"
#include "catalogue/rights.h"
#include "reference/text.h"

#include <algorithm>
#include <fnmatch.h>

namespace ov {

namespace {

std::vector<KeyName> all_keys() {
    std::vector<std::vector<KeyName>> of_sections(section_names().size());
    const auto keys_of = [&of_sections](std::string_view section) -> std::vector<KeyName>& {
        const auto& names = section_names();
        const auto found = std::find(names.begin(), names.end(), section);
        return of_sections[static_cast<std::size_t>(found - names.begin())];
    };
    for (const Row& row : catalogue()) {
        keys_of(section_of(row)).push_back({section_of(row), key_of(row), number_of(row), false});
    }
    for (const char* section : {AdminSection, ManagerSection}) {
        for (std::size_t i = 0; i < rights().size(); ++i) {
            keys_of(section).push_back({section, key_of(rights()[i]), i, true});
        }
    }
    std::vector<KeyName> keys;
    for (const auto& of_section : of_sections) {
        keys.insert(keys.end(), of_section.begin(), of_section.end());
    }
    for (std::size_t i = 0; i < keys.size(); ++i) {
        keys[i].place = i;
    }
    return keys;
}

bool fits(std::string_view pattern, std::string_view name) {
    return ::fnmatch(lowered(std::string(pattern)).c_str(), lowered(std::string(name)).c_str(),
                     FNM_NOESCAPE) == 0;
}

} // namespace

const std::vector<std::string_view>& section_names() {
    static const std::vector<std::string_view> names = [] {
        std::vector<std::string_view> found;
        const auto add = [&found](std::string_view name) {
            if (std::find(found.begin(), found.end(), name) == found.end()) {
                found.push_back(name);
            }
        };
        for (const Row& row : catalogue()) {
            add(section_of(row));
        }
        add(ManagerSection);
        return found;
    }();
    return names;
}

bool is_known_section(std::string_view section) {
    const auto& names = section_names();
    return std::any_of(names.begin(), names.end(),
                       [section](auto name) { return same_word(name, section); });
}

const std::vector<KeyName>& key_names() {
    static const std::vector<KeyName> names = all_keys();
    return names;
}

std::string did_you_mean(std::string_view name) {
    return name.empty() ? "" : ": did you mean " + std::string(name) + "?";
}

std::string likely_key(std::string_view section, std::string_view key) {
    std::vector<std::string_view> own;
    std::string elsewhere;
    for (const KeyName& known : key_names()) {
        if (same_word(known.section, section)) {
            own.push_back(known.key);
        } else if (same_word(known.key, key) && !known.is_right) {
            elsewhere += (elsewhere.empty() ? ": it is a key of [" : ", [") +
                         std::string(known.section) + "]";
        }
    }
    return elsewhere.empty() ? did_you_mean(nearest(key, own)) : elsewhere;
}

std::vector<KeyName> keys_named(std::string_view name) {
    const std::size_t dot = name.find('.');
    const std::string_view section = name.substr(0, dot);
    const std::string_view key = dot == name.npos ? "*" : name.substr(dot + 1);
    const bool is_pattern = name.find_first_of("*?[") != name.npos;
    std::vector<KeyName> found;
    for (const KeyName& known : key_names()) {
        if (known.is_right && dot == name.npos && known.section == AdminSection) {
            continue; // in a section of other keys, rights are named with a dot
        }
        const bool fits_key = is_pattern ? fits(section, known.section) && fits(key, known.key)
                                         : same_word(section, known.section) &&
                                               (dot == name.npos || same_word(key, known.key));
        if (fits_key) {
            found.push_back(known);
        }
    }
    return found;
}

std::string no_such_name(std::string_view name) {
    const std::size_t dot = name.find('.');
    const std::string_view section = name.substr(0, dot);
    const std::string_view key = dot == name.npos ? "" : name.substr(dot + 1);
    if (is_known_section(section)) {
        return "section [" + std::string(section) + "] has no key \"" + std::string(key) + '"' +
               likely_key(section, key);
    }
    // A key without its section, or a misspelt one.
    std::vector<std::string_view> likely = section_names();
    for (const KeyName& known : key_names()) {
        if (dot == name.npos && same_word(known.key, name)) {
            return '"' + std::string(name) + "\" is a key: name it as " +
                   std::string(known.section) + "." + std::string(known.key);
        }
        if (dot == name.npos && !known.is_right) {
            likely.push_back(known.key);
        }
    }
    return "there is no section \"" + std::string(section) + '"' +
           did_you_mean(nearest(section, likely));
}

} // namespace ov
