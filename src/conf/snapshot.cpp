#include "conf/snapshot.h"

#include "util/text.h"

#include <algorithm>

namespace ov {

namespace {

constexpr const char* RightsSections[] = {"Admin", "Manager"};

// The section that rights stand in with that name, or null.
const char* find_rights_section(std::string_view name) {
    for (const char* section : RightsSections) {
        if (same_word(section, name)) {
            return section;
        }
    }
    return nullptr;
}

} // namespace

std::optional<Snapshot> Snapshot::open(const char* path, FileKind kind) {
    std::optional<Source> source = Source::open(path, kind);
    if (!source) {
        return std::nullopt;
    }
    return Snapshot(std::move(*source));
}

Snapshot::Snapshot(Source source) : found_(catalogue().size()) {
    EntryScan entries(source);
    int header = 0;
    int section = -1;
    const char* rights_section = nullptr;
    while (const std::optional<Entry> entry = entries.next()) {
        if (entry->header != header) {
            header = entry->header;
            section = find_section(c_text(entry->section));
            rights_section = find_rights_section(c_text(entry->section));
        }
        if (section == -1 && !rights_section) {
            entries.skip_section();
            continue;
        }
        if (rights_section) {
            rights_.push_back({rights_section, std::string(c_text(entry->key)), keep(*entry)});
        }
        const int row = section == -1 ? -1 : find_row(section, c_text(entry->key));
        if (row == -1) {
            continue;
        }
        First& first = found_[static_cast<std::size_t>(row)];
        if (first.line == 0) {
            first = keep(*entry);
        } else if (token_value(*entry) && !token_value(entry_of(first))) {
            with_token_.emplace_back(row, keep(*entry));
        }
    }
}

Snapshot::First Snapshot::keep(const Entry& entry) {
    const First first{entry.line, rests_.size(), entry.rest.size()};
    rests_ += entry.rest;
    return first;
}

Entry Snapshot::entry_of(const First& first) const {
    return {{}, 0, {}, first.line, std::string_view(rests_).substr(first.start, first.length)};
}

int Snapshot::lookup(const Row& row, const char* sec, const char* key, std::string& ans,
                     int flg) const {
    const auto number = static_cast<std::size_t>(&row - catalogue().data());
    const auto take = [&](const First& first) {
        return take_value(entry_of(first), sec, key, ans, MaxText + 1, flg);
    };
    ans.clear();
    if (found_[number].line != 0 && take(found_[number])) {
        return 0;
    }
    const auto other = std::find_if(with_token_.begin(), with_token_.end(),
                                    [number](const auto& pair) { return pair.first == number; });
    if (other != with_token_.end() && take(other->second)) {
        return 0;
    }
    scan_linenumber = 0;
    return -1;
}

int Snapshot::lookup(const char* section, const char* key, std::string& ans, int flg) const {
    const char* wanted = find_rights_section(section);
    ans.clear();
    for (const RightEntry& right : rights_) {
        if (right.section == wanted && same_word(right.key, key) &&
            take_value(entry_of(right.first), section, key, ans, MaxText + 1, flg)) {
            return 0;
        }
    }
    scan_linenumber = 0;
    return -1;
}

} // namespace ov
