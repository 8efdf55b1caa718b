#include "kinds/written.h"

#include "kinds/kinds.h"
#include "kinds/values.h"

#include <algorithm>
#include <utility>

namespace ov::kinds {

namespace {

// In the shortest form that is exact.
std::string size(std::int64_t bytes) {
    for (const auto& [unit, shift] : {std::pair{'G', 30}, {'M', 20}, {'K', 10}}) {
        if (bytes != 0 && bytes % (std::int64_t{1} << shift) == 0) {
            return std::to_string(bytes >> shift) + unit;
        }
    }
    return bytes == 0 ? "0" : std::to_string(bytes) + 'B';
}

std::string in_digits(const Value& value) {
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
    return size(number_of(value));
}

std::string as_size_of_kilobytes(const Value& value) {
    return size(number_of(value) << 10);
}

struct Writing {
    const Kind* kind;
    std::string (*written)(const Value&);
};
constexpr Writing writings[] = {
    {&Boolean, as_yes_or_no},         {&Word, as_its_word}, {&Selection, as_its_word},
    {&Level, as_its_level},           {&Bytes, as_size},    {&Kilobytes, as_size_of_kilobytes},
    {&MinFree, as_size_of_kilobytes},
};

} // namespace

std::string written(const Kind& kind, const Value& value) {
    const auto* found = std::find_if(std::begin(writings), std::end(writings),
                                     [&](const Writing& row) { return row.kind == &kind; });
    return found == std::end(writings) ? in_digits(value) : found->written(value);
}

} // namespace ov::kinds
