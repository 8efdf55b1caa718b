#include "ctl/trial.h"

#include "catalogue/settings.h"
#include "kinds/loading.h"
#include "reference/vocabulary.h"

namespace ov::ctl {

namespace {

// A kind with what is special about the key, or else with what it means.
std::string explained(const ValueText& text, const Meanings& meanings) {
    if (!text.details.empty()) {
        return text.kind + " (" + text.details + ")";
    }
    std::string meaning = meanings.at(text.kind);
    meaning.front() = lower(meaning.front());
    return text.kind + ": " + meaning.substr(0, meaning.find_last_not_of('.') + 1);
}

} // namespace

std::string wanted(const Row& row) {
    return explained(accepted_text(row), meanings());
}

std::string wanted(const RightRow& right) {
    return explained(accepted_text(right), meanings_of_rights());
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
