#include "ctl/trial.h"

#include "catalogue/settings.h"
#include "kinds/loading.h"
#include "reference/vocabulary.h"

namespace ov::ctl {

namespace {

std::string in_brackets(const ValueText& text) {
    return text.details.empty() ? text.kind : text.kind + " (" + text.details + ")";
}

} // namespace

std::string wanted(const Row& row) {
    return in_brackets(accepted_text(row));
}

std::string wanted(const RightRow& right) {
    return in_brackets(accepted_text(right));
}

namespace {

template <class Type>
void assign(Type& setting, const Type& initial) {
    if constexpr (std::is_same_v<Type, Text>) {
        if (initial) {
            setting.set(initial.view());
        } else {
            setting.unset();
        }
    } else if constexpr (std::is_same_v<Type, AddressList>) {
        setting.reset(); // there is no other default
    } else if constexpr (std::is_same_v<Type, ServerList>) {
        for (SVRLIST& server : setting) {
            server.host.unset();
            server.port = server.flg = 0;
        }
    } else {
        setting = initial;
    }
}

} // namespace

void set_to_default(const Row& row) {
    std::visit([](auto member) { assign(settings.*member, initial_settings().*member); },
               row.member);
    const std::string nothing;
    Load load{.file = "", .mask = RC_NOCHECK | RC_NODIRCHECK};
    kind_of(row.load).absent(
        {{manner_of(row.load), variable_of(row), nothing}, load, MainReader, section_of(row), 0});
}

void set_to_default(const RightRow& right, int rank) {
    const auto role = static_cast<std::size_t>(rank);
    std::visit(
        [role](auto member) {
            assign((settings.*member)[role], (initial_settings().*member)[role]);
        },
        right.member);
}

std::string refusal_of(const Row& row, std::string_view value) {
    Verdict verdict = Verdict::Taken;
    with_other_value(variable_of(row), [&] {
        const std::string text(value);
        Load load{.file = "", .mask = WholeMask | RC_NOTRIALS | RC_NOHOST};
        verdict = kind_of(row.load).load(
            {{manner_of(row.load), variable_of(row), text}, load, MainReader, section_of(row), 1});
    });
    return verdict == Verdict::Taken         ? ""
           : verdict == Verdict::NotFullPath ? "must begin with \"/\"; wanted: " + wanted(row)
                                             : "wanted: " + wanted(row);
}

bool is_read_from_supplement(const Row& row) {
    return (row.gate.readers & (CypherReader | TransferReader)) != 0;
}

} // namespace ov::ctl
