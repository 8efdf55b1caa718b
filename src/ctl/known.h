// The keys that are known, by their names.
#pragma once

#include "ctl/rights_file.h"
#include "kinds/types.h"

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace ov {
struct Columns;
}

namespace ov::ctl {

// A key: as it is spelled, how its value is read, and the setting that gets it.
struct KnownKey {
    std::string_view section;
    std::string_view key;
    const Columns* rules;
    Variable variable;

    // How a lookup reads the value.
    int mode() const;
    bool is_secret() const;
};

// Names in one spelling for all that compare equal: of a section, and of a key in it.
std::string folded(std::string_view section, std::string_view key);

// The keys of the main file, or the rights of a role.
class KnownKeys {
  public:
    explicit KnownKeys(const std::optional<RightsOf>& of);

    // The key; null when there is none.
    const KnownKey* find(std::string_view section, std::string_view key) const;
    // The section as it is spelled; empty when there is none.
    std::string_view section(std::string_view name) const;
    // The section that all rights of the role stand in; null for the main file.
    const char* role_section() const { return role_section_; }
    // Why there is no such name.
    std::string no_such(const std::string& section, const std::optional<std::string>& key) const;

  private:
    void add(std::string_view section, std::string_view key, const Columns& rules,
             const Variable& variable);
    void add_rights(std::string_view section, int rank);

    const char* role_section_ = nullptr;
    std::vector<std::string_view> sections_;
    std::unordered_map<std::string, KnownKey> keys_;
};

} // namespace ov::ctl
