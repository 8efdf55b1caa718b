#include "catalogue/catalogue.h"

#include "catalogue/pack.h"
#include "catalogue/right_names.h"

namespace ov {

namespace {

constexpr KeyIndex index{rows::sections, pack::key_of_number, pack::IndexedKeys, pack::buckets};

template <class Number>
constexpr std::size_t at(Number number) {
    return static_cast<std::size_t>(number);
}

// A setting of any type as a variable.
template <class Type>
Variable variable(Type& setting) {
    if constexpr (std::is_integral_v<Type>) {
        return Number(&setting);
    } else {
        return &setting;
    }
}

} // namespace

const Kind& kind_of(KindNumber number) {
    return *pack::distinct_kinds[at(number)];
}

const Check& check_of(CheckNumber number) {
    return *pack::distinct_checks[at(number)];
}

const Form& form_of(FormNumber number) {
    return *pack::distinct_forms[at(number)];
}

const Manner& manner_of(KindNumber number) {
    return pack::kind_manners[at(number)];
}

const Manner& manner_of(CheckNumber number) {
    return pack::check_manners[at(number)];
}

const Manner& manner_of(FormNumber number) {
    return pack::form_manners[at(number)];
}

bool accepts(const Columns& row, const Variable& variable, const std::string& text) {
    if (text.empty() && row.empty != Empty::AsTheKind) {
        return row.empty == Empty::Accepted;
    }
    return check_of(row.check).accepts({manner_of(row.check), variable, text});
}

std::optional<std::string> shown(const Columns& row, const Variable& variable) {
    const std::string no_text;
    return form_of(row.show).text_of({manner_of(row.show), variable, no_text});
}

Variable variable_of(const Row& row) {
    return std::visit([](auto member) { return variable(settings.*member); }, row.member);
}

Variable variable_of(const RightRow& row, int rank) {
    return std::visit(
        [rank](auto member) {
            return variable((settings.*member)[static_cast<std::size_t>(rank)]);
        },
        row.member);
}

bool is_chosen(int program) {
    return program == MailSubmissionProgram;
}

const char* key_of(const Columns& row) {
    return pack::key_names + row.name;
}

const char* section_of(const Row& row) {
    return rows::sections[row.section].data();
}

std::span<const Row> catalogue() {
    return pack::rows;
}

const Row* find_row(std::string_view section, std::string_view key) {
    const int number = index.find(section, key);
    return number == -1 || static_cast<std::size_t>(number) >= pack::Keys
               ? nullptr
               : &pack::rows[static_cast<std::size_t>(number)];
}

std::span<const RightRow> rights() {
    return pack::right_rows;
}

std::span<const Right> listed_rights() {
    static constexpr Right listed[] = {
#define LISTED(right) Right::right,
#include "catalogue/rights.def"
    };
    return listed;
}

const RightRow& row_of(Right right) {
    return pack::right_rows[static_cast<std::size_t>(right)];
}

const RightRow* find_right(std::string_view key) {
    const int found = index.find(AdminSection, key);
    const auto number = static_cast<std::size_t>(found) - pack::Keys;
    return found == -1 || number >= pack::Rights ? nullptr : &pack::right_rows[number];
}

const KeyIndex& key_index() {
    return index;
}

std::size_t number_of(const Row& row) {
    return static_cast<std::size_t>(&row - pack::rows.data());
}

std::size_t number_of(Right right, std::string_view section) {
    return pack::first_right(section) + static_cast<std::size_t>(right);
}

std::size_t number_of_old_exclude_group(std::string_view section) {
    return pack::first_right(section) + pack::Rights;
}

} // namespace ov
