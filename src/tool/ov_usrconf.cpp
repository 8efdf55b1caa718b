#include "addr/addr_grp.h"
#include "catalogue/defaults.h"
#include "load/configuration.h"
#include "load/rights.h"
#include "tool/cf_mod.h"
#include "tool/commands.h"
#include "tool/reply.h"
#include "util/text.h"
#include "util/util.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <unistd.h>

namespace ov {

namespace {

// What a role command loads: the groups of the management and the browsing side.
constexpr unsigned MaskForRoles = RC_MANAGE | RC_BROWSE;

// What the command line asks for.
struct Options {
    std::optional<std::string> user;
    bool groups = false;
    bool modify = false;
};

// A user's name becomes part of a path.
bool isvalid_username(std::string_view name) {
    const auto may_end = [](char c) { return c != '-' && c != '.'; };
    return !name.empty() && may_end(name.front()) && may_end(name.back()) &&
           std::all_of(name.begin(), name.end(), is_name_character);
}

Options parse_options(int argc, char** argv, bool is_search) {
    Options options;
    constexpr const char* Known = "f:u:gmv";
    opterr = 0;
    for (int c; (c = ::getopt(argc, argv, Known)) != -1;) {
        switch (c) {
        case 'f':
            ConfigFile.set(optarg);
            break;
        case 'u':
            options.user = optarg;
            if (!isvalid_username(*options.user)) {
                std::fprintf(stderr, "500 invalid user name: \"%s\"\n", optarg);
                conf_free();
                std::exit(EXIT_FAILURE);
            }
            break;
        case 'g':
            options.groups = true;
            break;
        case 'm':
            options.modify = true;
            break;
        case 'v':
            print_version(is_search);
        default:
            refuse_option(Known);
        }
    }
    return options;
}

// The rights of one role as they are shown.
struct User {
    int rank;

    bool flag(Right right) const { return setting_of<int>(right, rank) != 0; }
    const WordList& names(Right right) const { return setting_of<WordList>(right, rank); }
    // In the form of its row.
    std::string shown(Right right) const {
        const RightRow& row = row_of(right);
        const std::string nothing;
        return form_of(row.show)
            .text_of({manner_of(row.show), variable_of(row, rank), nothing})
            .value_or("");
    }
};

// The right to choose the set that goes with an access level, where there is one.
std::optional<Right> set_of(Right right) {
    switch (right) {
    case Right::PolicyAttachment:
        return Right::PolicyAttachmentSet;
    case Right::PolicyKeyword:
        return Right::PolicyKeywordSet;
    default:
        return std::nullopt;
    }
}

const char* answer_of(bool granted) {
    return granted ? "1" : "0";
}

// A right as the listing has it: with its key in front, and with the set behind.
void print_right(const User& user, Right right) {
    const std::optional<Right> set = set_of(right);
    std::printf("%s: %s%s%s\n", key_of(row_of(right)), user.shown(right).c_str(), set ? "\t" : "",
                set ? answer_of(user.flag(*set)) : "");
}

void print_listing(const User& user, const Options& options, int rank, bool has_file) {
    std::printf("#user: [%s](%d)\n", options.user ? options.user->c_str() : "not specified", rank);
    std::printf("#conf: [%d]\n", has_file ? 1 : 0);
    std::puts("--");
    for (const Right right : listed_rights()) {
        print_right(user, right);
    }
}

void print_groups(const User& user) {
    for (const Right right : {Right::Group, Right::ExcludeGroup, Right::SelectGroup}) {
        const WordList& names = user.names(right);
        if (names) {
            std::printf("--\n%s addresses: ", key_of(row_of(right)));
            AddressGroup group = read_addrsgrp(*names);
            print_addrsgrp(group.get());
            free_addrsgrp(std::move(group));
        }
    }
}

// Answers a query for several rights. Returns whether there is one of that name.
bool answer_several(const User& user, std::string_view key) {
    for (const CombinedQuery& query : combined_queries()) {
        if (same_word(query.name, key)) {
            for (const Right right : query.rights) {
                std::puts(answer_of(user.flag(right)));
            }
            if (query.tells_freezing) {
                std::puts(answer_of(can_freeze(user.rank)));
            }
            return true;
        }
    }
    return false;
}

void answer_names(const WordList& names) {
    if (names) {
        for (const std::string& name : *names) {
            std::printf("%s\n", name.c_str());
        }
    }
}

void answer_selectable(const User& user) {
    if (!user.flag(Right::SelectGroupList)) {
        return;
    }
    if (user.names(Right::SelectGroup)) {
        answer_names(user.names(Right::SelectGroup));
    } else {
        print_group_list();
    }
}

// A user for whom sets are configured does not choose them himself.
void answer_with_set(const User& user, Right right) {
    const bool keyword = right == Right::PolicyKeyword;
    const WordList& sets = user.names(keyword ? Right::SetKEYWD : Right::SetMTYPE);
    std::printf("%s\t%s\n", user.shown(right).c_str(),
                answer_of(!sets && user.flag(*set_of(right))));
}

// Answers a query for one right. Returns whether it can be asked for.
bool answer_one(const User& user, std::string_view key) {
    const RightRow* row = find_right(key);
    if (!row) {
        return false;
    }
    const auto right = static_cast<Right>(row - rights().data());
    switch (row->query) {
    case RightQuery::None:
        return false;
    case RightQuery::Alone:
        std::puts(user.shown(right).c_str());
        break;
    case RightQuery::Named:
        print_right(user, right);
        break;
    case RightQuery::WithSet:
        answer_with_set(user, right);
        break;
    case RightQuery::Lines:
        answer_names(user.names(right));
        break;
    case RightQuery::Selectable:
        answer_selectable(user);
        break;
    }
    return true;
}

[[noreturn]] void answer(const User& user, std::string_view key) {
    if (!answer_several(user, key) && !answer_one(user, key)) {
        std::puts("0");
        finish(EXIT_FAILURE);
    }
    finish();
}

} // namespace

void ov_usrconf(int argc, char** argv, int rank, int is_search) {
    const Options options = parse_options(argc, argv, is_search != 0);
    const char* user = options.user ? options.user->c_str() : nullptr;
    setconfig(ConfigFile.c_str(), MaskForRoles, rank, user);
    resetlimits();

    bool has_file = false;
    if (user) {
        std::string path;
        if (access_cffile(rank, user, path, nullptr) != 0) {
            return;
        }
        has_file = ::access(path.c_str(), R_OK) == 0;
        if (options.modify) {
            finish(cf_mod(rank, user, argc - optind, argv + optind) == 0 ? EXIT_SUCCESS
                                                                         : EXIT_FAILURE);
        }
    }
    const User shown{rank};
    if (optind < argc) {
        answer(shown, argv[optind]);
    }
    print_listing(shown, options, rank, has_file);
    if (options.groups) {
        print_groups(shown);
    }
    finish();
}

} // namespace ov
