// All that one scan of a configuration file tells of the keys in the catalogue, and of the rights.
#pragma once

#include "conf/catalogue.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ov {

class Snapshot {
  public:
    // Reads and scans the file `path`; nothing, with errno set, when it cannot be opened.
    static std::optional<Snapshot> open(const char* path, FileKind kind = FileKind::Any);
    explicit Snapshot(Source source);

    // What _getprofile finds for the key of `row`: the same value, line number and result. `sec`
    // and `key` are the names as they were asked for.
    int lookup(const Row& row, const char* sec, const char* key, std::string& ans, int flg) const;
    int lookup(const Row& row, std::string& ans, int flg) const {
        return lookup(row, row.section, row.key, ans, flg);
    }

    // The same for a right: a key of the section "Admin" or "Manager".
    int lookup(const char* section, const char* key, std::string& ans, int flg) const;

  private:
    // The first entry of a key: its line, and where its rest stands in `rests_`.
    struct First {
        int line = 0; // 0: there is none
        std::size_t start = 0;
        std::size_t length = 0;
    };
    First keep(const Entry& entry);
    Entry entry_of(const First& first) const;

    std::vector<First> found_; // by row of the catalogue
    // The first entries that have a token as value, of the keys whose first entry has none.
    std::vector<std::pair<std::size_t, First>> with_token_;
    // The entries of the sections that rights stand in.
    struct RightEntry {
        const char* section;
        std::string key;
        First first;
    };
    std::vector<RightEntry> rights_;
    std::string rests_;
};

} // namespace ov
