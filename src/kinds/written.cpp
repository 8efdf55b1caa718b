#include "kinds/written.h"

#include "kinds/kinds.h"
#include "kinds/values.h"

#include <algorithm>
#include <utility>

namespace ov::kinds {

namespace {

// A unit of sizes, as a power of two of what a setting counts.
using Unit = std::pair<char, int>;

// So many units, in terms of nine digits each.
std::string terms(std::int64_t count, char unit) {
    constexpr std::int64_t LargestTerm = 999999999;
    std::string text;
    for (; count > LargestTerm; count -= LargestTerm) {
        text += std::to_string(LargestTerm) + unit;
    }
    return text + std::to_string(count) + unit;
}

// In the largest unit that is exact, or in several when that takes more than nine digits.
std::string size(std::int64_t number, std::initializer_list<Unit> units) {
    constexpr std::int64_t OneTerm = 1000000000;
    if (number == 0) {
        return "0";
    }
    for (const auto& [unit, shift] : units) {
        const std::int64_t factor = std::int64_t{1} << shift;
        if (number % factor == 0 && number / factor < OneTerm) {
            return terms(number / factor, unit);
        }
    }
    std::string text;
    for (const auto& [unit, shift] : units) {
        const std::int64_t factor = std::int64_t{1} << shift;
        text += number >= factor ? terms(number / factor, unit) : "";
        number %= factor;
    }
    return text;
}

std::string in_digits(const Value& value) {
    return std::visit([](const auto* setting) { return std::to_string(*setting); },
                      std::get<Number>(value.variable));
}

// A number without a sign that a negative one was wrapped to is written as that.
std::string as_signed(const Value& value) {
    return std::to_string(number_of(value));
}

std::string as_yes_or_no(const Value& value) {
    return number_of(value) != 0 ? "yes" : "no";
}

std::string as_its_word(const Value& value) {
    return show_word(value).value_or("");
}

std::string as_its_level(const Value& value) {
    return show_level(value).value_or("");
}

std::string as_size(const Value& value) {
    return size(number_of(value), {{'G', 30}, {'M', 20}, {'K', 10}, {'B', 0}});
}

std::string as_size_of_kilobytes(const Value& value) {
    return size(number_of(value), {{'G', 20}, {'M', 10}, {'K', 0}});
}

struct Writing {
    const Kind* kind;
    std::string (*written)(const Value&);
};
constexpr Writing writings[] = {
    {&Boolean, as_yes_or_no},
    {&Integer, as_signed},
    {&Word, as_its_word},
    {&Selection, as_its_word},
    {&Level, as_its_level},
    {&Bytes, as_size},
    {&Kilobytes, as_size_of_kilobytes},
    {&MinFree, as_size_of_kilobytes},
};

std::string number_text(const Kind& kind, const Value& value) {
    const auto* found = std::find_if(std::begin(writings), std::end(writings),
                                     [&](const Writing& row) { return row.kind == &kind; });
    return found == std::end(writings) ? in_digits(value) : found->written(value);
}

using Items = std::vector<std::string>;

std::optional<Items> items(const Number&) {
    return std::nullopt;
}
std::optional<Items> items(const Text*) {
    return std::nullopt;
}
std::optional<Items> items(const WordList* words) {
    return *words;
}
std::optional<Items> items(const IpList* conditions) {
    if (!*conditions) {
        return std::nullopt;
    }
    Items all;
    for (const IPADDRCOND& condition : **conditions) {
        all.emplace_back(condition.str.data());
    }
    return all;
}
// An empty list of these is one that is not set.
std::optional<Items> items(const AddressList* addresses) {
    Items all;
    for (const ADDRS* cell = addresses->get(); cell; cell = cell->next.get()) {
        all.emplace_back(cell->str ? std::string_view(*cell->str) : "");
    }
    return all.empty() ? std::nullopt : std::optional(all);
}
std::optional<Items> items(const ServerList* servers) {
    Items all;
    for (const SVRLIST& server : *servers) {
        if (server.host) {
            all.emplace_back(server.host.view());
        }
    }
    return all.empty() ? std::nullopt : std::optional(all);
}

} // namespace

std::optional<std::string> written(const Kind& kind, const Value& value) {
    if (std::holds_alternative<Number>(value.variable)) {
        return number_text(kind, value);
    }
    if (const auto* text = std::get_if<Text*>(&value.variable)) {
        return **text ? std::optional(std::string((*text)->view())) : std::nullopt;
    }
    const std::optional<Items> all = items_of(value.variable);
    return all ? std::optional(joined_items(*all, separator_of(value.manner))) : std::nullopt;
}

char separator_of(const Manner& manner) {
    const char first = manner.separators.front();
    return first == '\0' ? ';' : first; // as mail addresses have it
}

std::string joined_items(const Items& items, char separator) {
    if (items.empty()) {
        return std::string(1, separator);
    }
    std::string text = items.front();
    for (auto item = items.begin() + 1; item != items.end(); ++item) {
        text += separator + *item;
    }
    return text;
}

char unit_held(const Kind& kind) {
    return &kind == &Bytes ? 'B' : &kind == &Kilobytes || &kind == &MinFree ? 'K' : '\0';
}

std::optional<Items> items_of(const Variable& variable) {
    return std::visit([](const auto& setting) { return items(setting); }, variable);
}

bool is_yes_or_no(const Kind& kind) {
    return &kind == &Boolean || &kind == &Flag;
}

} // namespace ov::kinds
