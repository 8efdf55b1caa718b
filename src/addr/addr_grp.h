// Address groups: named sets of mail addresses and address patterns.
//
// The group NAME is the file "NAME.addr" in the directory of the groups, with one address or
// pattern a line. "#" starts a comment. Lines are read in lower case. An entry with a "*" is a
// pattern.
#pragma once

#include "util/text.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ov {

// The text of an entry: a copy of its own, or one that others share and that outlives the entry.
class EntryText {
  public:
    EntryText() = default;
    EntryText(const EntryText&) = delete;
    EntryText& operator=(const EntryText&) = delete;

    // Takes a copy of `text`; points to it instead when it is shared.
    void set(std::string_view text, bool shared) {
        own_ = shared ? std::string() : std::string(text);
        text_ = shared ? text : std::string_view(own_);
    }
    std::string_view view() const { return text_; }

  private:
    std::string own_;
    std::string_view text_;
};

// One exact address in a search tree. Equal addresses, in any case, are stored once.
struct addrtree_t {
    EntryText addr;
    std::unique_ptr<addrtree_t> left;
    std::unique_ptr<addrtree_t> right;

    addrtree_t() = default;
    addrtree_t(const addrtree_t&) = delete;
    addrtree_t& operator=(const addrtree_t&) = delete;
    ~addrtree_t(); // however deep the tree is
};

// One pattern in a list.
struct addrlist_t {
    EntryText addr;
    std::unique_ptr<addrlist_t> next;

    addrlist_t() = default;
    addrlist_t(const addrlist_t&) = delete;
    addrlist_t& operator=(const addrlist_t&) = delete;
    ~addrlist_t();
};

struct CaseLess {
    bool operator()(std::string_view a, std::string_view b) const;
};

// The tree of one bucket. A new address becomes a leaf below its neighbour in the order of the
// addresses, as a walk from the root would find it; the neighbours are found in `order`, so that
// addresses given in sorted order, which make a tree as deep as it is large, take no longer.
struct AddressTree {
    std::unique_ptr<addrtree_t> root;
    std::map<std::string_view, addrtree_t*, CaseLess> order;
};

// One list for the patterns that begin with each digit and letter, and one for all others.
inline constexpr std::size_t PatternLists = 37;
using PatternTable = std::array<std::unique_ptr<addrlist_t>, PatternLists>;

struct ADDRSGROUP {
    std::map<unsigned, AddressTree> tree; // by hash bucket; empty buckets are left out
    PatternTable list;                    // by first character
    bool comp = false;
    bool idtab = false; // the texts are shared, and not freed with the group; false in this tool
    unsigned hashsize = 1;
};
using AddressGroup = std::unique_ptr<ADDRSGROUP>;

// Where the groups are, and their limits, as whoever has loaded the settings gives them. They stay
// the same as long as there is a group.
struct GroupSettings {
    Text directory = "";
    int most_addresses = 0; // of all groups that are read together; 0 and below: no limit
    int hash_size = 0;      // the number of buckets; 0 and below: one
};
extern GroupSettings group_settings;

// The union of the named groups. Groups that are missing or cannot be read, lines of more than 4094
// characters, and what exceeds the limit are left out, with a warning in the log. Null for
// no name, and, after a line in the log, when memory is exhausted.
AddressGroup read_addrsgrp(const std::vector<std::string>& names);
AddressGroup read_addrsgrp3(const std::vector<std::string>& names, bool idtab);

// Files one entry, as a copy of its own or, with `idtab`, as the shared text that it is given as;
// that has to outlive the group. Returns 0, for a duplicate and for nothing, too; -1 when memory is
// exhausted.
int add_addr(ADDRSGROUP& group, std::string_view entry);
int add_addrtree(AddressTree& tree, std::string_view entry, bool idtab);
int add_addrlist(PatternTable& lists, std::string_view entry, bool idtab);

// Prints the names of all groups in their directory, in its order.
void print_group_list();

// Prints every entry of the group and a line about the group. Returns the number of entries.
int print_addrsgrp(const ADDRSGROUP* group);

// Prints a subtree of the bucket in order. Returns the number of its nodes.
int print_tree(const addrtree_t* subtree, unsigned bucket, int parent_depth);

// Release everything but the texts that are shared. The tree is empty afterwards.
void free_addrsgrp(AddressGroup group);
void free_tree(AddressTree& tree);

} // namespace ov
