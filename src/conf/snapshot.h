// All that one scan of a configuration file tells of the wanted keys.
#pragma once

#include "conf/key_index.h"
#include "conf/lookup.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ov {

// A key that is wanted beside those of the index; none by default.
struct WantedKey {
    std::optional<std::string_view> section;
    std::string_view key;
};

class Snapshot {
  public:
    // Reads and scans the file `path`; nothing, with errno set, when it cannot be opened, or when a
    // line of it is too long or, below the installation, all of it.
    static std::optional<Snapshot> open(const char* path, const KeyIndex& index,
                                        FileKind kind = FileKind::Any,
                                        const WantedKey& wanted = {});
    Snapshot(Source& source, const KeyIndex& index, const WantedKey& wanted = {});

    // Whether the file has an entry of the key with that number.
    bool has(std::size_t number) const { return found_[number].first != 0; }

    // What _getprofile finds for the key with that number, called `sec` and `key`: the same value
    // and result; and its line, 0 when there is none, which is given even when memory runs out.
    int lookup(std::size_t number, const char* sec, const char* key, std::string& ans, int flg,
               int& line) const;
    // Whether another scan would have found the same.
    bool is_of_regular_file() const { return regular_; }
    // The number of the key that was wanted beside those of the index.
    std::size_t wanted() const { return found_.size() - 1; }

  private:
    // An entry: its line, and where its rest stands in `rests_`.
    struct Kept {
        int line;
        std::uint32_t length;
        std::size_t start;
    };
    void keep(std::size_t number, const Entry& entry);
    std::uint16_t store(const Entry& entry); // returns its place
    Entry entry_at(std::size_t place) const;

    // The places of a key's entries in `kept_`, counted from 1; 0: there is none. The second one is
    // told from the first only when the key stands in the file more than once.
    struct Places {
        std::uint16_t first = 0;
        std::uint16_t with_token = 0; // the first one that has a token as value
        bool repeated = false;
    };

    std::vector<Places> found_; // of each key; the last one is that wanted beside
    std::vector<Kept> kept_;
    std::string rests_;
    bool regular_;
};

} // namespace ov
