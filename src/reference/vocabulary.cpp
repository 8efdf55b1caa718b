#include "reference/vocabulary.h"

#include "kinds/loading.h"
#include "kinds/wording.h"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <type_traits>
#include <utility>

namespace ov {

namespace {

// The key whose setting a row names.
std::string key_of(const Other& setting) {
    const std::span<const Row> rows = catalogue();
    const auto found = std::find_if(rows.begin(), rows.end(),
                                    [&](const Row& row) { return names(setting, row.member); });
    if (found == rows.end()) {
        throw std::logic_error("a row names a setting that has no key");
    }
    return ov::key_of(*found);
}

std::string words_of(int table, const char* separator, const char* last_separator) {
    std::string words;
    for (const VTAB* row = VTable[table]; row->str; ++row) {
        words += words.empty() ? "" : row[1].str ? separator : last_separator;
        words += row->str;
    }
    return words;
}

// The names of the separators that `characters` holds.
std::string separators(const char* characters) {
    std::string text;
    for (; *characters; ++characters) {
        text += (text.empty() ? "" : " or ") + ("\"" + std::string(1, *characters) + "\"");
    }
    return "separated by " + text;
}

// The largest number of so many digits.
std::int64_t largest_of(std::size_t digits) {
    std::int64_t number = 0;
    for (; digits > 0 && number < NoBound / 10; --digits) {
        number = number * 10 + 9;
    }
    return digits > 0 ? NoBound : number;
}

// The bounds of a number: those of its row and those of its setting, of which the one without a
// sign may be larger than any rule.
std::string bounds(const Manner& manner, const Number& variable, bool whole_range) {
    return std::visit(
        [&](const auto* setting) -> std::string {
            using Type = std::remove_cvref_t<decltype(*setting)>;
            using Limits = std::numeric_limits<Type>;
            if (whole_range && std::is_unsigned_v<Type>) {
                return "0 to " + std::to_string(Limits::max());
            }
            const std::int64_t largest = std::cmp_less(NoBound, Limits::max())
                                             ? NoBound
                                             : static_cast<std::int64_t>(Limits::max());
            const std::int64_t least =
                std::max(manner.lowest, static_cast<std::int64_t>(Limits::min()));
            const std::int64_t most =
                std::min({manner.highest, largest_of(manner.longest), largest});
            return std::to_string(least) + " to " + std::to_string(most) +
                   (manner.longest == NoLength
                        ? ""
                        : ", at most " + std::to_string(manner.longest) + " of them");
        },
        variable);
}

// What stands for a name in braces.
std::string filled_in(std::string_view name, const Manner& manner, const Variable& variable) {
    if (name == "bounds" || name == "range") {
        return bounds(manner, std::get<Number>(variable), name == "range");
    }
    if (name == "words") {
        return words_of(manner.table, ", ", " or ");
    }
    if (name == "choices") {
        return words_of(manner.table, " ", " ");
    }
    if (name == "separators") {
        return separators(manner.separators.data());
    }
    if (name == "longest") {
        return std::to_string(manner.longest);
    }
    if (name == "unit") {
        return {manner.unit};
    }
    if (name == "first" || name == "second") {
        return key_of(name == "first" ? manner.first : manner.second);
    }
    throw std::logic_error("the words of a kind have an unknown name: " + std::string(name));
}

// The words of a kind with what the row puts in.
std::string text_of(std::string_view words, const Manner& manner, const Variable& variable) {
    std::string text;
    for (std::size_t open = 0; (open = words.find('{')) != words.npos;) {
        const std::size_t close = words.find('}', open);
        text += words.substr(0, open);
        text += filled_in(words.substr(open + 1, close - open - 1), manner, variable);
        words.remove_prefix(close + 1);
    }
    return text.append(words);
}

ValueText accepted_text(const Columns& row, const Variable& variable) {
    const std::string text =
        text_of(kinds::words_of(kind_of(row.load)), manner_of(row.load), variable);
    const std::size_t bar = text.find('|');
    return {text.substr(0, bar), bar == text.npos ? "" : text.substr(bar + 1)};
}

// A variable of the same type that nobody reads; it lives until the next one is made.
Variable unread(const Variable& variable) {
    static std::variant<std::int64_t, Text, WordList, IpList, AddressList, ServerList> place;
    return std::visit(
        [](const auto& pointer) -> Variable {
            using Type = std::remove_cvref_t<decltype(pointer)>;
            if constexpr (std::is_same_v<Type, Number>) {
                return Number(&place.emplace<std::int64_t>());
            } else {
                return &place.emplace<std::remove_pointer_t<Type>>();
            }
        },
        variable);
}

// Whether the empty value loads.
bool loads_empty(const Row& row) {
    const std::string empty;
    Load load{.file = "", .mask = RC_NOCHECK};
    const Loading loading{{manner_of(row.load), unread(variable_of(row)), empty},
                          load,
                          MainReader,
                          section_of(row),
                          0};
    return kind_of(row.load).load(loading) == Verdict::Taken;
}

const char* emptiness(const Row& row) {
    switch (row.empty) {
    case Empty::Accepted:
        return loads_empty(row) ? "; may be empty" : "; may be empty, but does not load then";
    case Empty::Refused:
        return "; not empty";
    default:
        return "";
    }
}

std::string checked_text(const Columns& row, const Variable& variable) {
    return text_of(kinds::words_of(check_of(row.check)), manner_of(row.check), variable);
}

} // namespace

ValueText accepted_text(const Row& row) {
    return accepted_text(row, variable_of(row));
}

std::string checked_text(const Row& row) {
    return row.check == NotChecked ? "" : checked_text(row, variable_of(row)) + emptiness(row);
}

ValueText accepted_text(const RightRow& right) {
    return accepted_text(right, variable_of(right, 0));
}

std::string changed_text(const RightRow& right) {
    return right.check == NotChecked ? "no" : checked_text(right, variable_of(right, 0));
}

std::string shown_text(const Row& row) {
    return text_of(kinds::words_of(form_of(row.show)), manner_of(row.show), variable_of(row));
}

std::string offered_text(const Row& row) {
    return text_of(kinds::offered_by(kind_of(row.load)), manner_of(row.load), variable_of(row));
}

std::string offered_check_text(const Row& row) {
    return text_of(kinds::offered_by(check_of(row.check)), manner_of(row.check), variable_of(row));
}

namespace {

// Adds what a kind means, as the row has it, under its name.
void add_meaning(Meanings& all, const Columns& row, const Variable& variable) {
    const Kind& kind = kind_of(row.load);
    const std::string meaning = text_of(kinds::meaning_of(kind), manner_of(row.load), variable);
    const auto [place, is_new] = all.emplace(kinds::name_of(kind), meaning);
    if (!is_new && place->second != meaning) {
        throw std::logic_error("a kind has two meanings: " + place->first);
    }
}

} // namespace

Meanings meanings() {
    Meanings all;
    for (const Row& row : catalogue()) {
        add_meaning(all, row, variable_of(row));
    }
    return all;
}

Meanings meanings_of_rights() {
    Meanings all;
    for (const RightRow& right : rights()) {
        add_meaning(all, right, variable_of(right, 0));
    }
    return all;
}

std::string sentence(const ValueText& text) {
    return text.details.empty() ? text.kind : text.kind + ": " + text.details;
}

} // namespace ov
