#include "conf/amend.h"

#include "conf/edit.h"
#include "conf/layout.h"
#include "util/text.h"

#include <algorithm>
#include <unordered_map>

namespace ov {

namespace {

// What the changes say of one section.
struct NamedSection {
    std::size_t change;                                // the first one that names it
    bool goes = false;                                 // as a whole
    std::unordered_map<std::string, std::size_t> keys; // with the change of each
    std::optional<std::size_t> place = {};             // of a new entry, in the text
    std::string header = {};                           // of the first new entry
    std::string new_entries = {};
};

// The changes by what they name.
class Plan {
  public:
    explicit Plan(const std::vector<Change>& changes) : changes_(changes) {}

    // Takes the change with that number up. Whether it names something new.
    bool add(std::size_t number) {
        const Change& change = changes_[number];
        const auto [at, is_new] = numbers_.emplace(lowered(change.section), sections_.size());
        if (is_new) {
            sections_.push_back({.change = number, .goes = !change.key, .keys = {}});
        }
        NamedSection& section = sections_[at->second];
        return change.key
                   ? !section.goes && section.keys.emplace(lowered(*change.key), number).second
                   : is_new;
    }

    const std::vector<Change>& changes() const { return changes_; }

    // What is said of a section and of its entry, named as in a file; null: nothing.
    NamedSection* section(std::string_view name) {
        const auto found = numbers_.find(lowered(std::string(c_text(name))));
        return found == numbers_.end() ? nullptr : &sections_[found->second];
    }
    const Change* entry(const NamedSection* section, std::string_view key) const {
        if (!section) {
            return nullptr;
        }
        const auto found = section->keys.find(lowered(std::string(c_text(key))));
        return found == section->keys.end() ? nullptr : &changes_[found->second];
    }
    std::size_t number(const Change& change) const {
        return static_cast<std::size_t>(&change - changes_.data());
    }

  private:
    const std::vector<Change>& changes_;
    std::vector<NamedSection> sections_;
    std::unordered_map<std::string, std::size_t> numbers_; // of the sections
};

// A piece of the text on its line.
struct Standing {
    LaidOut what;
    bool is_behind_header; // on the same line
    std::size_t from;      // the end of that header, else the beginning of the line
    std::size_t line_end;
    std::size_t next_line;

    bool is_header() const {
        return what.piece == Piece::Header || what.piece == Piece::BrokenHeader;
    }
};

class Lines {
  public:
    explicit Lines(std::string_view text) : text_(text), layout_(text) {}

    std::optional<Standing> next() {
        std::optional<LaidOut> piece = layout_.next();
        if (!piece) {
            return std::nullopt;
        }
        const bool is_behind_header = piece->begin < line_end_;
        if (!is_behind_header) {
            last_end_ = text_.substr(0, piece->begin).find_last_not_of(" \t") + 1;
            line_end_ = std::min(text_.find('\n', piece->begin), text_.size());
        }
        const std::size_t from = std::exchange(last_end_, piece->end);
        return Standing{std::move(*piece), is_behind_header, from, line_end_,
                        std::min(line_end_ + 1, text_.size())};
    }

  private:
    std::string_view text_;
    Layout layout_;
    std::size_t last_end_ = 0;
    std::size_t line_end_ = 0;
};

// A part of the text and what comes in its place.
struct Splice {
    std::size_t begin;
    std::size_t end;
    std::string text = {};
};

std::string spliced(std::string_view text, std::vector<Splice> splices) {
    std::sort(splices.begin(), splices.end(),
              [](const Splice& a, const Splice& b) { return a.begin < b.begin; });
    std::string result;
    std::size_t done = 0;
    for (const Splice& splice : splices) {
        result.append(text, done, splice.begin - done) += splice.text;
        done = splice.end;
    }
    return result.append(text, done);
}

// The parts that go.
class Cuts {
  public:
    void at_header(const Standing& header, bool goes) {
        if (!header.is_behind_header) {
            header_in_front_ = false;
        } else if (is_open_) {
            cuts_.back().end = header_in_front_ ? header.from : header.what.begin;
        }
        if (goes) {
            const bool joins = header.is_behind_header && is_open_;
            cuts_.push_back({joins ? cuts_.back().end : header.from, end_of(header)});
        } else {
            header_in_front_ = true;
        }
        is_open_ = goes;
    }
    // An entry of the section whose header has gone.
    void extend_to(const Standing& entry) { cuts_.back().end = end_of(entry); }
    void at_entry(const Standing& entry) {
        cuts_.push_back({entry.from, entry.is_behind_header ? entry.line_end : entry.next_line});
    }
    std::vector<Splice> all() { return std::move(cuts_); }

  private:
    // The line feed belongs to the header that stays in front.
    std::size_t end_of(const Standing& piece) const {
        return header_in_front_ ? piece.line_end : piece.next_line;
    }

    std::vector<Splice> cuts_;
    bool is_open_ = false; // the last header goes
    bool header_in_front_ = false;
};

// The text without what is deleted; nothing when an entry that stays would be the first one and
// have no header, with the change that takes it in `refused`.
std::optional<std::string> with_deletions(std::string_view text, Plan& plan, std::size_t& refused) {
    Lines lines(text);
    Cuts cuts;
    const NamedSection* section = nullptr;
    bool header_stays = false;
    while (const std::optional<Standing> piece = lines.next()) {
        if (piece->is_header()) {
            section = plan.section(piece->what.section);
            const bool goes = section && section->goes && piece->what.has_section;
            cuts.at_header(*piece, goes);
            header_stays |= !goes && piece->what.piece == Piece::Header;
            refused = goes ? section->change : refused;
        } else if (piece->what.piece != Piece::Entry) {
            continue;
        } else if (section && section->goes) {
            cuts.extend_to(*piece);
        } else if (const Change* change = plan.entry(section, piece->what.key);
                   change && !change->value) {
            cuts.at_entry(*piece);
        } else if (!header_stays) {
            return std::nullopt;
        }
    }
    return spliced(text, cuts.all());
}

bool has_value(const Entry& entry, std::string_view value, int mode) {
    return line_value(entry) == value && ((mode & LineMode) || token_value(entry) == value);
}

// The entry as the change wants it.
std::string replaced(std::string_view text, const LaidOut& entry, const Change& change) {
    if (has_value({{}, 0, {}, 0, entry.rest}, *change.value, change.mode)) {
        return std::string(text.substr(entry.begin, entry.end - entry.begin));
    }
    const std::size_t equal = entry.end - entry.rest.size() - 1;
    const std::string_view key = text.substr(entry.begin, equal - entry.begin);
    return written_entry(key.substr(0, key.find_last_not_of(" \t") + 1),
                         *written_value(*change.value, change.mode));
}

// The entries that are there, as they are to be. Gives the place of new ones to their sections.
std::vector<Splice> replacements(std::string_view text, Plan& plan, std::vector<bool>& done) {
    std::vector<Splice> splices;
    Lines lines(text);
    NamedSection* section = nullptr;
    NamedSection* open = nullptr; // its place is in the piece of text that is being read
    while (const std::optional<Standing> piece = lines.next()) {
        const LaidOut& what = piece->what;
        if (piece->is_header()) {
            if (open && piece->is_behind_header) {
                open->place.reset();
            }
            section = plan.section(what.section);
            open = what.piece == Piece::Header && section && !section->place ? section : nullptr;
        } else if (what.piece != Piece::Entry) {
            continue;
        }
        if (open) {
            open->place = piece->next_line;
        }
        const Change* change = piece->is_header() ? nullptr : plan.entry(section, what.key);
        if (change && change->value && !done[plan.number(*change)]) {
            done[plan.number(*change)] = true;
            splices.push_back({what.begin, what.end, replaced(text, what, *change)});
        }
    }
    return splices;
}

void append_section(std::string& text, const std::string& header, const std::string& entries) {
    const auto end_line = [&text] { text += text.empty() || text.back() == '\n' ? "" : "\n"; };
    end_line();
    const std::size_t last = text.find_last_not_of(" \t", text.size() - std::min(text.size(), {2}));
    const bool is_apart = text.empty() || last == text.npos || text[last] == '\n';
    text.append(is_apart ? "" : "\n").append(header).append("\n").append(entries);
}

// The entries that are not there yet go to their sections, which come in the order of these.
std::vector<NamedSection*> growing(Plan& plan, const std::vector<bool>& done) {
    std::vector<NamedSection*> sections;
    for (const Change& change : plan.changes()) {
        if (!change.value || done[plan.number(change)]) {
            continue;
        }
        NamedSection& section = *plan.section(change.section);
        if (section.new_entries.empty()) {
            section.header = *written_header(change.section);
            sections.push_back(&section);
        }
        section.new_entries +=
            written_entry(*written_key(*change.key), *written_value(*change.value, change.mode)) +
            '\n';
    }
    return sections;
}

// The text with the entries that are set.
std::string with_entries(std::string_view text, Plan& plan) {
    std::vector<bool> done(plan.changes().size());
    std::vector<Splice> splices = replacements(text, plan, done);
    const std::vector<NamedSection*> sections = growing(plan, done);
    for (const NamedSection* section : sections) {
        if (const auto place = section->place) {
            const bool is_ended = text[*place - 1] == '\n';
            splices.push_back({*place, *place, (is_ended ? "" : "\n") + section->new_entries});
        }
    }
    std::string result = spliced(text, std::move(splices));
    for (const NamedSection* section : sections) {
        if (!section->place) {
            append_section(result, section->header, section->new_entries);
        }
    }
    return result;
}

// The entries that the changes leave alone, and on the way whether those that they set read back.
class Others {
  public:
    enum class Text : bool { Old, New };
    Others(std::string_view text, Plan& plan, Text which)
        : source_(text), entries_(source_), plan_(plan), is_new_(which == Text::New),
          set_(plan.changes().size()) {}

    std::optional<Entry> next() {
        for (;;) {
            std::optional<Entry> entry = entries_.next();
            if (!entry || !is_meant(*entry)) {
                return entry;
            }
        }
    }
    // The first change that has not been done.
    std::optional<std::size_t> undone() const {
        for (const Change& change : plan_.changes()) {
            if (change.value && !set_[plan_.number(change)]) {
                return plan_.number(change);
            }
        }
        return std::nullopt;
    }

  private:
    bool is_meant(const Entry& entry) {
        if (entry.header != header_) {
            header_ = entry.header;
            section_ = plan_.section(entry.section);
        }
        const Change* change = plan_.entry(section_, entry.key);
        if (!change || !change->value) {
            return !is_new_ && (change || (section_ && section_->goes));
        }
        // The first one alone is meant.
        const std::size_t number = plan_.number(*change);
        if (set_[number] || (is_new_ && !has_value(entry, *change->value, change->mode))) {
            return false;
        }
        return set_[number] = true;
    }

    Source source_;
    EntryScan entries_;
    Plan& plan_;
    bool is_new_;
    std::vector<bool> set_;
    int header_ = 0;
    const NamedSection* section_ = nullptr;
};

// The first change that has not been done as it should be; the first of all when other entries
// read differently.
std::optional<std::size_t> undone(std::string_view before, std::string_view after, Plan& plan) {
    Others old_ones(before, plan, Others::Text::Old);
    Others new_ones(after, plan, Others::Text::New);
    for (;;) {
        const std::optional<Entry> was = old_ones.next();
        const std::optional<Entry> is = new_ones.next();
        if (!was && !is) {
            return new_ones.undone();
        }
        if (!was || !is || was->section != is->section || was->key != is->key ||
            was->rest != is->rest) {
            return new_ones.undone().value_or(0);
        }
    }
}

// Whether the first entry of the text is as it should be.
template <class Test>
bool has_first_entry(const std::string& text, Test test) {
    Source source{std::string_view(text)};
    EntryScan entries(source);
    const std::optional<Entry> entry = entries.next();
    return entry && test(*entry);
}

// What can stand for the text in a file, in the order of choice.
std::vector<std::string> forms_of(std::string_view text) {
    return {std::string(text), '"' + std::string(text) + '"'};
}

// Why the change cannot be written; empty: it can.
std::string obstacle(const Change& change) {
    if (!written_header(change.section)) {
        return "no header gives a section this name";
    }
    if (!change.key) {
        return change.value ? "a section has no value" : "";
    }
    if (!written_key(*change.key)) {
        return "no entry gives a key this name";
    }
    if (!change.value || written_value(*change.value, change.mode)) {
        return {};
    }
    return change.value->size() > MaxText
               ? "the value is longer than " + std::to_string(MaxText) + " bytes"
               : "the value does not read back, neither bare nor in quotes";
}

} // namespace

std::optional<std::string> written_value(std::string_view value, int mode) {
    for (const std::string& form : forms_of(value)) {
        // The blank counts, too, in what is read of an entry.
        std::string rest = (form.empty() || form.size() >= MaxText ? "" : " ") + form;
        if (has_first_entry("[s]\nk =" + rest + "\n",
                            [&](const Entry& entry) { return has_value(entry, value, mode); })) {
            return rest;
        }
    }
    return std::nullopt;
}

std::optional<std::string> written_key(std::string_view name) {
    for (const std::string& form : forms_of(name)) {
        if (has_first_entry("[s]\n" + form + " =\n",
                            [&](const Entry& entry) { return c_text(entry.key) == name; })) {
            return form;
        }
    }
    return std::nullopt;
}

std::optional<std::string> written_header(std::string_view section) {
    for (const std::string& form : forms_of(section)) {
        const std::string header = "[" + form + "]";
        if (has_first_entry(header + "\nk =\n",
                            [&](const Entry& entry) { return c_text(entry.section) == section; })) {
            return header;
        }
    }
    return std::nullopt;
}

Amended amended(std::string_view text, const std::vector<Change>& changes) {
    const auto refused = [&](std::size_t number, const std::string& refusal) {
        return Amended{std::string(text), refusal, number};
    };
    Plan plan(changes);
    for (std::size_t i = 0; i < changes.size(); ++i) {
        if (const std::string refusal = obstacle(changes[i]); !refusal.empty()) {
            return refused(i, refusal);
        }
        if (!plan.add(i)) {
            return refused(i, "is named twice, or with all of its section");
        }
    }
    std::size_t deletion = 0;
    const std::optional<std::string> rest = with_deletions(text, plan, deletion);
    if (!rest) {
        return refused(deletion, "has the only header in front of entries that stay");
    }
    std::string result = with_entries(*rest, plan);
    if (const std::optional<std::size_t> number = undone(text, result, plan)) {
        return refused(*number, "cannot be changed by itself");
    }
    return {std::move(result), {}};
}

} // namespace ov
