#include "ctl/known.h"

#include "catalogue/catalogue.h"
#include "catalogue/right_names.h"
#include "catalogue/rights.h"
#include "load/roles.h"
#include "reference/names.h"
#include "reference/text.h"

#include <algorithm>

namespace ov::ctl {

int KnownKey::mode() const {
    return manner_of(rules->load).mode;
}

bool KnownKey::is_secret() const {
    return rules->secret;
}

std::string folded(std::string_view section, std::string_view key) {
    return lowered(std::string(section) + '\n' + std::string(key));
}

KnownKeys::KnownKeys(const std::optional<RightsOf>& of) {
    if (of) {
        role_section_ = AllRoles[static_cast<std::size_t>(of->rank)].section;
        add_rights(role_section_, of->rank);
        return;
    }
    for (const Row& row : catalogue()) {
        add(section_of(row), key_of(row), row, variable_of(row));
    }
    add_rights(AdminSection, 0);
    add_rights(ManagerSection, 1);
}

void KnownKeys::add(std::string_view section, std::string_view key, const Columns& rules,
                    const Variable& variable) {
    if (std::find(sections_.begin(), sections_.end(), section) == sections_.end()) {
        sections_.push_back(section);
    }
    keys_.insert({folded(section, key), KnownKey{section, key, &rules, variable}});
}

void KnownKeys::add_rights(std::string_view section, int rank) {
    for (const RightRow& right : rights()) {
        add(section, key_of(right), right, variable_of(right, rank));
    }
    const RightRow& excluded = row_of(Right::ExcludeGroup);
    add(section, OldExcludeGroup, excluded, variable_of(excluded, rank));
}

const KnownKey* KnownKeys::find(std::string_view section, std::string_view key) const {
    const auto found = keys_.find(folded(section, key));
    return found == keys_.end() ? nullptr : &found->second;
}

std::string_view KnownKeys::section(std::string_view name) const {
    const auto found = std::find_if(sections_.begin(), sections_.end(),
                                    [name](auto known) { return same_word(known, name); });
    return found == sections_.end() ? std::string_view() : *found;
}

std::string KnownKeys::no_such(const std::string& name,
                               const std::optional<std::string>& key) const {
    if (section(name).empty()) {
        return role_section_
                   ? std::string("the rights of this role stand in section [") + role_section_ + "]"
                   : "unknown section" + did_you_mean(nearest(name, sections_));
    }
    if (!role_section_) {
        return "unknown key" + likely_key(name, *key);
    }
    std::vector<std::string_view> keys;
    for (const RightRow& right : rights()) {
        keys.push_back(key_of(right));
    }
    return "there is no such right" + did_you_mean(nearest(*key, keys));
}

} // namespace ov::ctl
