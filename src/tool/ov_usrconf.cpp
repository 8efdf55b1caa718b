#include "addr/addr_grp.h"
#include "load/configuration.h"
#include "load/rights.h"
#include "tool/cf_mod.h"
#include "tool/commands.h"
#include "tool/reply.h"
#include "util/text.h"
#include "util/util.h"
#include "value/convert.h"

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
class Rights {
  public:
    explicit Rights(int rank) : rank_(static_cast<std::size_t>(rank)) {}

    bool flag(Right right) const { return of<int>(right) != 0; }
    // The value of an access level or a mask.
    unsigned bits(Right right) const { return of<unsigned>(right); }
    int bit(Right right, unsigned number) const {
        return static_cast<int>((bits(right) >> number) & 1U);
    }
    const WordList& names(Right right) const { return of<WordList>(right); }
    const Text& text(Right right) const { return of<Text>(right); }
    int number(Right right) const { return of<int>(right); }
    const char* selection(Right right) const { return str_addrselect(number(right)); }

  private:
    template <class Type>
    const Type& of(Right right) const {
        return (settings.*std::get<PerRole<Type> Settings::*>(row_of(right).member))[rank_];
    }

    std::size_t rank_;
};

const char* key_of(Right right) {
    return key_of(row_of(right));
}

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

void print_named_mask(const Rights& user, Right right) {
    std::printf("%s: 0x%08x\n", key_of(right), user.bits(right));
}

void print_named_text(const Rights& user, Right right) {
    const Text& text = user.text(right);
    std::printf("%s: %s\n", key_of(right), text ? text.c_str() : "");
}

void print_level(const Rights& user, Right right) {
    std::printf("%s: %1d\t%1d", key_of(right), user.bit(right, 0), user.bit(right, 1));
    if (const std::optional<Right> set = set_of(right)) {
        std::printf("\t%1d", user.number(*set));
    }
    std::putchar('\n');
}

void print_names(const Rights& user, Right right) {
    std::printf("%s: ", key_of(right));
    const char* separator = "";
    if (const WordList& names = user.names(right)) {
        for (const std::string& name : *names) {
            std::printf("%s%s", separator, name.c_str());
            separator = ":";
        }
    }
    std::putchar('\n');
}

void print_date(const Rights& user, Right right) {
    const char* text = user.text(right).c_str();
    int year = 0;
    int month = 0;
    int day = 0;
    std::printf("%s: ", key_of(right));
    if (!text) { // the two spellings differ; scripts look for each
        std::puts(right == Right::LogLowerBound ? "***unspecified***" : "*** unspecified ***");
    } else if (date_str(text, &year, &month, &day) == 0) {
        std::printf("%04d/%02d/%02d\n", year, month, day);
    } else {
        std::printf("%s (invalid value)\n", text);
    }
}

// A right as the listing has it.
void print_right(const Rights& user, const ListedRight& listed) {
    const Right right = listed.right;
    switch (listed.form) {
    case ListedAs::Number:
        std::printf("%s: %d\n", key_of(right), user.number(right));
        break;
    case ListedAs::Word:
        std::printf("%s: %s\n", key_of(right), user.selection(right));
        break;
    case ListedAs::Mask:
        print_named_mask(user, right);
        break;
    case ListedAs::Level:
        print_level(user, right);
        break;
    case ListedAs::PlainText:
        print_named_text(user, right);
        break;
    case ListedAs::Date:
        print_date(user, right);
        break;
    case ListedAs::Names:
        print_names(user, right);
        break;
    }
}

void print_listing(const Rights& user, const Options& options, int rank, bool has_file) {
    std::printf("#user: [%s](%d)\n", options.user ? options.user->c_str() : "not specified", rank);
    std::printf("#conf: [%d]\n", has_file ? 1 : 0);
    std::puts("--");
    for (const ListedRight& listed : listed_rights()) {
        print_right(user, listed);
    }
}

void print_groups(const Rights& user) {
    for (const Right right : {Right::Group, Right::ExcludeGroup, Right::SelectGroup}) {
        const WordList& names = user.names(right);
        if (names) {
            std::printf("--\n%s addresses: ", key_of(right));
            AddressGroup group = read_addrsgrp(*names);
            print_addrsgrp(group.get());
            free_addrsgrp(std::move(group));
        }
    }
}

void answer_flag(bool granted) {
    std::puts(granted ? "1" : "0");
}

// Whether freezing is switched on for the user: by the system for those who may freeze, for others
// by an option of their own.
bool can_freeze(const Rights& user) {
    const unsigned option =
        user.flag(Right::HoldFreeze) ? QueueFreeze_Option : user.bits(Right::Freeze_Option);
    return (option & 0xffU) != 0;
}

// Answers a query for several rights. Returns whether there is one of that name.
bool answer_several(const Rights& user, std::string_view key) {
    for (const CombinedQuery& query : combined_queries()) {
        if (same_word(query.name, key)) {
            for (const Right right : query.rights) {
                answer_flag(user.flag(right));
            }
            if (query.tells_freezing) {
                answer_flag(can_freeze(user));
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

void answer_selectable(const Rights& user) {
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
void answer_level_and_set(const Rights& user, Right right) {
    const bool keyword = right == Right::PolicyKeyword;
    const WordList& sets = user.names(keyword ? Right::SetKEYWD : Right::SetMTYPE);
    std::printf("%1d\t%1d\t%1d\n", user.bit(right, 0), user.bit(right, 1),
                sets ? 0 : user.number(*set_of(right)));
}

// Answers a query for one right. Returns whether it can be asked for.
bool answer_one(const Rights& user, std::string_view key) {
    const RightRow* row = find_right(key);
    if (!row) {
        return false;
    }
    const auto right = static_cast<Right>(row - rights().data());
    switch (row->query) {
    case RightQuery::None:
        return false;
    case RightQuery::Flag:
        answer_flag(user.flag(right));
        break;
    case RightQuery::NamedMask:
        print_named_mask(user, right);
        break;
    case RightQuery::NamedText:
        print_named_text(user, right);
        break;
    case RightQuery::Level:
        std::printf("%1d\t%1d\n", user.bit(right, 0), user.bit(right, 1));
        break;
    case RightQuery::LevelAndSet:
        answer_level_and_set(user, right);
        break;
    case RightQuery::Names:
        answer_names(user.names(right));
        break;
    case RightQuery::Selectable:
        answer_selectable(user);
        break;
    case RightQuery::Selection:
        std::printf("%s\n", user.selection(right));
        break;
    }
    return true;
}

[[noreturn]] void answer(const Rights& user, std::string_view key) {
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
    const Rights shown(rank);
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
