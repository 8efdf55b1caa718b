// Where the wanted keys of a configuration file are found by their names.
#pragma once

#include "util/text.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <string_view>

namespace ov {

// An open hash table of the keys, which are numbered from 0 on. Names are compared without regard
// to case.
class KeyIndex {
  public:
    static constexpr std::uint16_t Free = 0xffff;
    struct Bucket {
        std::uint16_t number = Free;
        std::uint8_t section = 0;
    };

    // The names of the sections; the key of each number; the buckets, a power of two of them and
    // well more than keys.
    constexpr KeyIndex(std::span<const std::string_view> sections,
                       const char* (*key)(std::size_t number), std::size_t keys,
                       std::span<const Bucket> buckets)
        : sections_(sections), key_(key), keys_(keys), buckets_(buckets) {}

    // How many keys there are.
    std::size_t size() const { return keys_; }

    // The number of a section that has wanted keys, and that of one of its keys; -1: there is none.
    int find_section(std::string_view name) const {
        const auto found = std::find_if(sections_.begin(), sections_.end(),
                                        [name](auto section) { return same_word(section, name); });
        return found == sections_.end() ? -1 : static_cast<int>(found - sections_.begin());
    }
    int find(int section, std::string_view key) const {
        const auto wanted = static_cast<std::size_t>(section);
        for (std::size_t at = place(wanted, key, buckets_.size()); buckets_[at].number != Free;
             at = (at + 1) % buckets_.size()) {
            if (buckets_[at].section == section && same_word(key_(buckets_[at].number), key)) {
                return buckets_[at].number;
            }
        }
        return -1;
    }
    int find(std::string_view section, std::string_view key) const {
        const int number = find_section(section);
        return number == -1 ? -1 : find(number, key);
    }

    // Where the search for a key begins. Equal for names that differ in case only. The end of a key
    // tells most: many begin alike.
    static constexpr std::size_t place(std::size_t section, std::string_view key,
                                       std::size_t buckets) {
        constexpr std::size_t Telling = 10;
        auto hash = static_cast<std::uint32_t>(section * 64 + key.size());
        for (const char c : key.substr(key.size() - std::min(key.size(), Telling))) {
            hash = (hash ^ (static_cast<unsigned char>(c) | 0x20U)) * 0x01000193U;
        }
        return (hash ^ (hash >> 15)) % buckets;
    }

  private:
    std::span<const std::string_view> sections_;
    const char* (*key_)(std::size_t number);
    std::size_t keys_;
    std::span<const Bucket> buckets_;
};

} // namespace ov
