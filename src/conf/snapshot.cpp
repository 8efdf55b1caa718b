#include "conf/snapshot.h"

#include "util/text.h"

#include <fcntl.h>

namespace ov {

std::optional<Snapshot> Snapshot::open(const char* path, const KeyIndex& index, FileKind kind,
                                       const WantedKey& wanted) {
    Fd file = open_file(path, O_RDONLY, kind);
    if (!file) {
        return std::nullopt;
    }
    Source source =
        kind == FileKind::Installed ? Source(std::move(file), TooLong) : Source(std::move(file));
    Snapshot snapshot(source, index, wanted);
    return source.is_whole() ? std::optional(std::move(snapshot)) : std::nullopt;
}

Snapshot::Snapshot(Source& source, const KeyIndex& index, const WantedKey& wanted)
    : found_(index.size() + 1), regular_(source.is_regular_file()) {
    EntryScan entries(source);
    int header = 0;
    int section = -1;
    bool wanted_section = false;
    while (const std::optional<Entry> entry = entries.next()) {
        if (entry->header != header) {
            header = entry->header;
            section = index.find_section(c_text(entry->section));
            wanted_section = wanted.section && same_word(c_text(entry->section), *wanted.section);
        }
        if (section == -1 && !wanted_section) {
            entries.skip_section();
            continue;
        }
        const std::string_view key = c_text(entry->key);
        const int number = section == -1 ? -1 : index.find(section, key);
        if (number != -1) {
            keep(static_cast<std::size_t>(number), *entry);
        }
        if (wanted_section && same_word(key, wanted.key)) {
            keep(this->wanted(), *entry);
        }
    }
}

// Only the first entry of a key counts, and the first one with a token for those who want that: two
// at most are kept, however often the key stands there, and each is looked at once.
void Snapshot::keep(std::size_t number, const Entry& entry) {
    Places& places = found_[number];
    if (places.first == 0) {
        places.first = store(entry);
        return;
    }
    if (!places.repeated) {
        places.repeated = true;
        places.with_token = token_value(entry_at(places.first)) ? places.first : 0;
    }
    if (places.with_token == 0 && token_value(entry)) {
        places.with_token = store(entry);
    }
}

std::uint16_t Snapshot::store(const Entry& entry) {
    kept_.push_back({entry.line, static_cast<std::uint32_t>(entry.rest.size()), rests_.size()});
    rests_ += entry.rest;
    return static_cast<std::uint16_t>(kept_.size());
}

Entry Snapshot::entry_at(std::size_t place) const {
    const Kept& kept = kept_[place - 1];
    return {{}, 0, {}, kept.line, std::string_view(rests_).substr(kept.start, kept.length)};
}

int Snapshot::lookup(std::size_t number, const char* sec, const char* key, std::string& ans,
                     int flg, int& line) const {
    const Places& places = found_[number];
    const std::size_t place =
        places.repeated && !(flg & LineMode) ? places.with_token : places.first;
    ans.clear();
    if (place != 0) {
        const Entry entry = entry_at(place);
        line = entry.line;
        if (take_value(entry, sec, key, ans, MaxText + 1, flg)) {
            return 0;
        }
    }
    line = 0;
    return -1;
}

} // namespace ov
