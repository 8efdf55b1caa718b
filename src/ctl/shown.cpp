#include "ctl/shown.h"

#include "catalogue/settings.h"
#include "ctl/trial.h"
#include "kinds/kinds.h"
#include "kinds/written.h"
#include "reference/vocabulary.h"
#include "util/text.h"

#include <algorithm>
#include <tuple>
#include <type_traits>

namespace ov::ctl {

namespace {

bool is_blank(char c) {
    return c == ' ' || c == '\t';
}

template <class Number>
Typed typed_number(Number number) {
    if constexpr (std::is_unsigned_v<Number>) {
        return static_cast<std::uint64_t>(number);
    } else {
        return static_cast<std::int64_t>(number);
    }
}

std::optional<std::string> value_of(const Columns& row, const Variable& variable) {
    const std::string nothing;
    return kinds::written(kind_of(row.load), {manner_of(row.load), variable, nothing});
}

Typed typed_value(const Columns& row, const Variable& variable) {
    if (const auto* number = std::get_if<Number>(&variable)) {
        if (std::string word = value_of(row, variable).value_or("");
            manner_of(row.load).table != -1 && !is_alldigit(word)) {
            return word;
        }
        if (kinds::is_yes_or_no(kind_of(row.load))) {
            return kinds::number_in(*number) != 0;
        }
        return std::visit([](const auto* setting) { return typed_number(*setting); }, *number);
    }
    if (const auto* text = std::get_if<Text*>(&variable)) {
        if (!**text) {
            return {};
        }
        const char* separators = manner_of(row.load).separators.data();
        const WordList words = *separators ? split_str((*text)->view(), separators) : std::nullopt;
        return words ? Typed(*words) : Typed(std::string((*text)->view()));
    }
    const auto items = kinds::items_of(variable);
    return items ? Typed(*items) : Typed();
}

// The text of a typed value.
struct ToText {
    const Columns* row;

    using Result = std::optional<std::string>;
    Result operator()(std::monostate) const { return std::nullopt; }
    Result operator()(const std::string& value) const { return value; }
    Result operator()(bool value) const {
        const bool takes_it = row && kinds::is_yes_or_no(kind_of(row->load));
        return takes_it ? Result(value ? "yes" : "no") : std::nullopt;
    }
    template <class Number>
    Result operator()(Number value) const {
        std::string text = std::to_string(value);
        const char unit = row && value > 0 ? kinds::unit_held(kind_of(row->load)) : '\0';
        return unit != '\0' ? text + unit : text;
    }
    Result operator()(const std::vector<std::string>& values) const {
        const char separator = row ? kinds::separator_of(manner_of(row->load)) : '\0';
        const bool takes_it = row && (manner_of(row->load).separators.front() != '\0' ||
                                      kind_of(row->load).types == AddressLists);
        if (!takes_it || std::any_of(values.begin(), values.end(), [separator](const auto& value) {
                return value.empty() || value.find(separator) != value.npos;
            })) {
            return std::nullopt;
        }
        return kinds::joined_items(values, separator);
    }
};

// A key as it is set. `put_default` gives its setting the default; when it may be copied from
// another one, that is not its default.
template <class PutDefault>
ShownKey shown(const char* section, const Columns& row, const Variable& variable,
               const FileLine& origin, bool is_copied, PutDefault put_default) {
    ShownKey key{.section = section, .key = key_of(row)};
    key.value = value_of(row, variable);
    key.initial = key.value;
    std::tie(key.file, key.line) = origin;
    if (!key.file.empty() || is_copied) {
        with_other_value(variable, [&] {
            put_default();
            key.initial = value_of(row, variable);
        });
    }
    return key;
}

ShownKey shown_row(const Row& row, const FileLine& origin, For whom) {
    const Variable variable = variable_of(row);
    ShownKey key = shown(section_of(row), row, variable, origin, row.gate.program != 0,
                         [&row] { set_to_default(row); });
    key.secret = row.secret;
    if (whom == For::Programs) {
        key.kind = accepted_text(row).kind;
        key.typed = typed_value(row, variable);
    }
    return key;
}

ShownKey shown_right(const char* section, int rank, const RightRow& row, const FileLine& origin,
                     For whom) {
    const Variable variable = variable_of(row, rank);
    ShownKey key =
        shown(section, row, variable, origin, false, [&row, rank] { set_to_default(row, rank); });
    if (whom == For::Programs) {
        key.kind = accepted_text(row).kind;
        key.typed = typed_value(row, variable);
    }
    return key;
}

} // namespace

FileLine place_of(const Origin& origin, const Document& document, const Survey& survey) {
    return {!origin                             ? std::string_view()
            : origin.file == Origin::File::Main ? document.path
                                                : survey.supplement->path,
            origin.line};
}

std::vector<ShownKey> shown_keys(const Document& document, const Survey& survey,
                                 const std::vector<KeyName>& names, For whom) {
    std::vector<ShownKey> shown;
    shown.reserve(names.size());
    for (const KeyName& name : names) {
        if (!name.is_right) {
            shown.push_back(shown_row(catalogue()[name.number],
                                      place_of(survey.keys[name.number], document, survey), whom));
            continue;
        }
        const int rank = name.section == AdminSection ? 0 : 1;
        const Origin& origin = survey.rights[static_cast<std::size_t>(rank)][name.number];
        shown.push_back(shown_right(rank == 0 ? AdminSection : ManagerSection, rank,
                                    rights()[name.number], place_of(origin, document, survey),
                                    whom));
    }
    return shown;
}

std::vector<ShownKey> shown_rights(const char* section, int rank,
                                   const std::vector<FileLine>& origins, For whom) {
    std::vector<ShownKey> shown;
    for (std::size_t i = 0; i < rights().size(); ++i) {
        shown.push_back(shown_right(section, rank, rights()[i], origins[i], whom));
    }
    return shown;
}

std::optional<std::string> text_of(const Columns* row, const Typed& typed) {
    return std::visit(ToText{row}, typed);
}

std::string in_quotes(const std::string& value) {
    const bool has_blanks = !value.empty() && (is_blank(value.front()) || is_blank(value.back()));
    const bool has_quotes = value.size() > 2 && value.front() == '"' && value.back() == '"';
    return has_blanks || has_quotes ? '"' + value + '"' : value;
}

std::string line_of(const ShownKey& key, bool with_secrets) {
    if (key.secret && !with_secrets && key.value) {
        return std::string("# ") + key.key + " = ********\n";
    }
    std::string line = key.file.empty() ? "#" : "";
    line.append(key.key).append(" =");
    if (key.value && !key.value->empty()) {
        // The blank counts, too, in what is read of an entry.
        const std::string text = in_quotes(*key.value);
        line.append(text.size() < MaxText ? " " : "").append(text);
    }
    return line += '\n';
}

} // namespace ov::ctl
