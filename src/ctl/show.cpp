#include "catalogue/settings.h"
#include "ctl/json.h"
#include "ctl/options.h"
#include "ctl/rights_file.h"
#include "ctl/shown.h"
#include "ctl/trial.h"
#include "reference/text.h"
#include "reference/vocabulary.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>

namespace ov::ctl {

namespace {

// What was asked for: all keys of the catalogue and the rights that a file sets, or what names
// name.
struct Wanted {
    std::vector<KeyName> keys;
    bool named = false;
    int status = Good;
};
Wanted wanted_keys(const std::vector<std::string>& names) {
    Wanted wanted{.keys = key_names(), .named = !names.empty()};
    if (names.empty()) {
        return wanted;
    }
    std::vector<KeyName> found;
    for (const std::string& name : names) {
        const std::vector<KeyName> keys = keys_named(name);
        if (keys.empty()) {
            std::fprintf(stderr, "ov_confctl: %s\n", printable(no_such_name(name)).c_str());
            wanted.status = NoSuchName;
        }
        found.insert(found.end(), keys.begin(), keys.end());
    }
    // In the order of the manual, each once: rights behind the keys of their section.
    std::vector<bool> is_wanted(key_names().size());
    for (const KeyName& key : found) {
        is_wanted[key.place] = true;
    }
    std::erase_if(wanted.keys, [&is_wanted](const KeyName& key) { return !is_wanted[key.place]; });
    return wanted;
}

void print(const std::vector<ShownKey>& keys, const Options& options) {
    if (options.json) {
        std::fputs(json_of(keys, options.secrets).c_str(), stdout);
        return;
    }
    std::string_view section;
    for (const ShownKey& key : keys) {
        if (key.section != section) {
            std::printf("%s[%s]\n", section.empty() ? "" : "\n", key.section);
            section = key.section;
        }
        if (options.origin) {
            if (key.file.empty()) {
                std::puts("# default");
            } else {
                std::printf("# %s:%d\n", printable(key.file).c_str(), key.line);
            }
        }
        std::fputs(line_of(key, options.secrets).c_str(), stdout);
    }
}

// Says on standard error what keeps the configuration from loading, as check says it.
int tell(const std::vector<Finding>& errors) {
    for (const Finding& error : errors) {
        std::fputs(in_words(error, "error").c_str(), stderr);
    }
    return errors.empty() ? Good : NotGood;
}

// Whether a key needs the one of a finding: its directory, its program, or the supplement.
bool needs(const KeyName& name, const Finding& finding) {
    const auto is = [&finding](std::string_view key) { return same_word(key, finding.key); };
    if (is(name.key) && same_word(name.section, finding.section)) {
        return true;
    }
    if (name.is_right) {
        return is("LocalConfFile");
    }
    const Row& row = catalogue()[name.number];
    const std::string kind = accepted_text(row).kind;
    const bool is_path = kind == "directory" || kind == "file";
    return (is_path && (is("RootDirectory") || is("EtcDirectory") || is("QueueDirectory"))) ||
           (row.gate.program != 0 && is("MailSubmissionProgram")) ||
           (is_read_from_supplement(row) && (is("LocalConfFile") || finding.key.empty()));
}
bool concerns(const Finding& finding, const std::vector<KeyName>& wanted) {
    return std::any_of(wanted.begin(), wanted.end(),
                       [&finding](const KeyName& name) { return needs(name, finding); });
}

For audience(const Options& options) {
    return options.json ? For::Programs : For::People;
}

int show_keys(const Options& options, Wanted wanted) {
    const bool asks_host =
        std::any_of(wanted.keys.begin(), wanted.keys.end(),
                    [](const KeyName& name) { return name.key == "InternalDomains"; });
    const auto document =
        options.defaults ? Document{options.file, ""} : read_document(options.file);
    if (!document) {
        return not_opened(options.file);
    }
    Survey found =
        survey(*document, asks_host && !options.defaults ? Host::MayBeAsked : Host::IsLeftAlone);
    if (!wanted.named) { // of the rights only those that a file sets
        std::erase_if(wanted.keys, [&found](const KeyName& name) {
            return name.is_right && !found.rights[name.section == ManagerSection][name.number];
        });
    }
    std::vector<ShownKey> keys = shown_keys(*document, found, wanted.keys, audience(options));
    std::erase_if(keys, [&](const ShownKey& key) { return options.changed && !key.is_changed(); });
    print(keys, options);
    if (wanted.named) {
        std::erase_if(found.errors,
                      [&](const Finding& finding) { return !concerns(finding, wanted.keys); });
    }
    return std::max(tell(found.errors), wanted.status);
}

// The rights of one user: of his file, of the main file, or the defaults. One of many has a head
// of his own, and the errors of the main file have been told.
int show_user(const Options& options, const RightsOf& whose, const Document& document,
              bool is_one_of_many) {
    const int rank = whose.rank;
    const Survey found = survey(document, Host::IsLeftAlone);
    std::vector<Finding> errors = is_one_of_many ? std::vector<Finding>() : found.errors;
    std::vector<FileLine> origins(rights().size());
    if (rank < 2) {
        const auto& of_section = found.rights[static_cast<std::size_t>(rank)];
        for (std::size_t i = 0; i < origins.size(); ++i) {
            origins[i] = place_of(of_section[i], document, found);
        }
    }
    const auto [path, section] = rights_file(whose);
    const auto file = read_installed(path);
    if (!file && errno != ENOENT) {
        return not_opened(path);
    }
    if (file) {
        survey_rights(*file, section.c_str(), rank, origins, errors);
    }
    std::vector<ShownKey> keys = shown_rights(section.c_str(), rank, origins, audience(options));
    std::erase_if(keys, [&](const ShownKey& key) { return options.changed && !key.is_changed(); });
    if (is_one_of_many && options.json) {
        std::fputs(json_of(UserRights{whose.user, path, keys}).c_str(), stdout);
        return tell(errors);
    }
    if (is_one_of_many) {
        std::printf("# %s: %s\n", whose.user.c_str(), printable(path).c_str());
    }
    print(keys, options);
    return tell(errors);
}

int show_rights(const Options& options) {
    const auto role = role_of(*options.rights);
    const auto whose = role ? role : rights_of(*options.rights);
    if (!whose) {
        return wrong_call(WrongRights);
    }
    const auto document = read_document(options.file);
    if (!document) {
        return not_opened(options.file);
    }
    if (!role) {
        return show_user(options, *whose, *document, false);
    }
    int status = tell(survey(*document, Host::IsLeftAlone).errors);
    const auto users = users_of(role->rank);
    if (!users) {
        return not_opened(rights_file({role->rank, "*"}).path);
    }
    for (const std::string& user : *users) {
        status = std::max(status, show_user(options, {role->rank, user}, *document, true));
    }
    return status;
}

} // namespace

int show(const Options& options) {
    if (options.rights && (options.defaults || options.secrets)) {
        return wrong_call("--rights takes neither --defaults nor --secrets");
    }
    if (options.rights) {
        return options.operands.empty() ? show_rights(options)
                                        : wrong_call("--rights shows all rights of the user");
    }
    Wanted wanted = wanted_keys(options.operands);
    return wanted.keys.empty() ? wanted.status : show_keys(options, std::move(wanted));
}

} // namespace ov::ctl
