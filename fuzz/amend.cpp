// Many changes of a text: lookups find what was asked for, every other entry and line stays, and it
// makes no difference whether the changes are made at once, one by one, or twice.
//
// Input: the changes, a line each ("Section.Key=value", in token mode with ":="; without a value it
// is deleted), an empty line, and the file.
#include "../tests/changes.h"
#include "conf/layout.h"
#include "support.h"
#include "util/text.h"

#include <algorithm>

using namespace ov;
using namespace ov::fuzz;

static std::vector<Change> changes_of(Input& input) {
    std::vector<std::string> lines;
    for (std::string line = input.line(); !line.empty(); line = input.line()) {
        lines.push_back(line);
    }
    return test::changes_of(lines);
}

static bool is_named(const std::vector<Change>& changes, const LaidOut& piece) {
    return std::any_of(changes.begin(), changes.end(), [&piece](const Change& change) {
        return same_word(c_text(piece.section), change.section) &&
               (change.key
                    ? piece.piece == Piece::Entry && same_word(c_text(piece.key), *change.key)
                    : piece.has_section);
    });
}

// The entries that are not named, and the lines without those that are.
struct Others {
    std::vector<std::string> entries;
    std::vector<std::string> lines;
};

static Others others(std::string text, const std::vector<Change>& changes) {
    text += text.ends_with('\n') || text.empty() ? "" : "\n";
    Others found{{}, lines_of(text)};
    Layout layout(text);
    while (const std::optional<LaidOut> piece = layout.next()) {
        if (is_named(changes, *piece)) {
            found.lines[static_cast<std::size_t>(piece->line) - 1].clear();
        } else if (piece->piece == Piece::Entry) {
            found.entries.push_back(piece->section + '\n' + std::string(piece->key) + '\n' +
                                    std::string(piece->rest));
        }
    }
    std::erase(found.lines, "");
    return found;
}

static void require_done(const std::string& text, const Change& change) {
    Source source{std::string_view(text)};
    std::string value;
    for (const int mode : {LineMode, change.mode}) {
        const int result = _getprofile(source, change.section.c_str(),
                                       change.key.value_or("").c_str(), value, MaxText + 1, mode);
        require_equal(result, change.value ? 0 : -1, "what a lookup finds");
        require_equal(value, change.value.value_or(""), "the value");
    }
    Layout layout(text);
    while (const std::optional<LaidOut> piece = layout.next()) {
        require(change.key || !is_named({change}, *piece), "there is more of a section");
    }
}

static std::string must_amend(std::string_view text, const std::vector<Change>& changes) {
    const Amended result = amended(text, changes);
    require_equal(result.refusal, "", "refused");
    return result.text;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    std::vector<Change> changes = changes_of(input);
    const std::string text = input.rest();
    const Amended result = amended(text, changes);
    if (!result.refusal.empty()) {
        require_equal(result.text, text, "refused, and yet");
        require(result.refused < changes.size(), "no such change");
        return 0;
    }
    for (const Change& change : changes) {
        require_done(result.text, change);
    }
    require_equal(must_amend(result.text, changes), result.text, "twice");

    const Others before = others(text, changes);
    const Others after = others(result.text, changes);
    require(before.entries == after.entries, "another entry has changed");
    const bool whole = std::all_of(changes.begin(), changes.end(), [](auto& c) { return c.key; });
    auto line = after.lines.begin();
    for (const std::string& old : whole ? before.lines : std::vector<std::string>()) {
        line = std::find(line, after.lines.end(), old);
        require(line++ != after.lines.end(), "another line has changed");
    }
    if (text.size() * changes.size() > MaxText * 8) {
        return 0; // takes long
    }
    const auto sets = std::stable_partition(changes.begin(), changes.end(),
                                            [](const Change& change) { return !change.value; });
    std::string one_by_one = must_amend(text, {changes.begin(), sets});
    std::for_each(sets, changes.end(), [&one_by_one](const Change& change) {
        one_by_one = must_amend(one_by_one, {change});
    });
    require_equal(one_by_one, result.text, "one by one");
    return 0;
}
