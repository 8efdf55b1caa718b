#include "tool/listing.h"

#include "addr/addr_grp.h"
#include "answer/queries.h"
#include "catalogue/catalogue.h"
#include "catalogue/right_names.h"
#include "util/text.h"

#include <cstdio>
#include <optional>
#include <string>

namespace ov {

namespace {

// The rights of one role as they are shown.
struct User {
    int rank;

    bool flag(Right right) const { return setting_of<int>(right, rank) != 0; }
    const WordList& names(Right right) const { return setting_of<WordList>(right, rank); }
    // In the form of its row.
    std::string shown(Right right) const {
        const RightRow& row = row_of(right);
        return ov::shown(row, variable_of(row, rank)).value_or("");
    }
};

// An access level that goes with a set: the right to choose that, and the sets that are configured.
struct Level {
    Right choice;
    Right sets;
};
Level level_of(Right right) {
    return right == Right::PolicyKeyword ? Level{Right::PolicyKeywordSet, Right::SetKEYWD}
                                         : Level{Right::PolicyAttachmentSet, Right::SetMTYPE};
}

const char* answer_of(bool granted) {
    return granted ? "1" : "0";
}

// A right as the listing has it: with its key in front, and with the set behind.
void print_right(const User& user, Right right) {
    const RightRow& row = row_of(right);
    const bool has_set = row.query == RightQuery::WithSet;
    std::printf("%s: %s%s%s\n", key_of(row), user.shown(right).c_str(), has_set ? "\t" : "",
                has_set ? answer_of(user.flag(level_of(right).choice)) : "");
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
    const Level level = level_of(right);
    std::printf("%s\t%s\n", user.shown(right).c_str(),
                answer_of(!user.names(level.sets) && user.flag(level.choice)));
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

} // namespace

void print_listing(int rank, const char* user, bool has_file) {
    std::printf("#user: [%s](%d)\n", user ? user : "not specified", rank);
    std::printf("#conf: [%d]\n", has_file ? 1 : 0);
    std::puts("--");
    for (const Right right : listed_rights()) {
        print_right({rank}, right);
    }
}

void print_groups(int rank) {
    for (const Right right : {Right::Group, Right::ExcludeGroup, Right::SelectGroup}) {
        if (const WordList& names = User{rank}.names(right)) {
            std::printf("--\n%s addresses: ", key_of(row_of(right)));
            AddressGroup group = read_addrsgrp(*names);
            print_addrsgrp(group.get());
            free_addrsgrp(std::move(group));
        }
    }
}

bool answer_query(int rank, std::string_view key) {
    const User user{rank};
    const bool answered = answer_several(user, key) || answer_one(user, key);
    if (!answered) {
        std::puts("0");
    }
    return answered;
}

} // namespace ov
