#include "addr/addr_grp.h"

#include "util/log.h"
#include "util/source.h"
#include "util/text.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <new>
#include <optional>
#include <set>
#include <tuple>

namespace ov {

constinit GroupSettings group_settings;

namespace {

constexpr std::size_t LongestLine = 4094;
constexpr std::size_t ShownOfALine = 64;
constexpr std::string_view Suffix = ".addr";

void report_memory(const char* function, int line) {
    syserr("%s: ERROR: malloc failed (%d): %s %d", function, errno, __FILE_NAME__, line);
}

// The number of hash buckets; a number below 0 is like none.
unsigned buckets() {
    return group_settings.hash_size > 0 ? static_cast<unsigned>(group_settings.hash_size) : 0;
}

unsigned bucket_of(std::string_view entry) {
    if (buckets() <= 1) {
        return 0;
    }
    std::uint32_t hash = 0;
    for (const char c : entry) {
        hash = hash * 33 + static_cast<unsigned char>(c);
    }
    return hash % buckets();
}

std::size_t list_of(char first) {
    const char c = lower(first);
    if (is_digit(c)) {
        return static_cast<std::size_t>(c - '0');
    }
    if (c >= 'a' && c <= 'z') {
        return static_cast<std::size_t>(c - 'a') + 10;
    }
    return PatternLists - 1;
}

// The lines of a file, without their line feeds.
class Lines {
  public:
    explicit Lines(Source& source) : source_(source) {}

    // The next line; nothing at the end of the file.
    std::optional<std::string_view> next() {
        if (at_feed_) {
            source_.move_to(source_.position() + 1);
        }
        if (source_.lookahead() == -1) {
            return std::nullopt;
        }
        const std::string_view rest = source_.window().substr(source_.position());
        const std::string_view line = rest.substr(0, rest.find('\n'));
        source_.move_to(source_.position() + line.size());
        at_feed_ = line.size() < rest.size();
        return line;
    }

  private:
    Source& source_;
    bool at_feed_ = false;
};

// The entry on a line; empty when there is none.
std::string entry_on(std::string_view line) {
    line = c_text(line);
    line = line.substr(0, line.find_first_of("#\r"));
    const std::size_t start = line.find_first_not_of(" \t");
    if (start == line.npos) {
        return {};
    }
    return lowered(std::string(line.substr(start, line.find_last_not_of(" \t") - start + 1)));
}

// The copy of an entry that all groups share. It stays to the end of the process.
std::string_view shared_copy(const std::string& entry) {
    static std::set<std::string> copies;
    return *copies.insert(entry).first;
}

// The loading of one group from several files.
struct GroupLoad {
    ADDRSGROUP& group;
    int addresses = 0; // so far
};

enum class Outcome { Done, Full, NoMemory };

Outcome load_file(GroupLoad& load, const std::string& name) {
    const std::string path =
        std::string(group_settings.directory.view()) + "/" + name + std::string(Suffix);
    std::optional<Source> source = Source::open(path.c_str(), FileKind::Installed);
    if (!source) {
        if (errno == ENOENT) {
            syserr("WARNING: GROUP \"%s\" not found: \"%s\" - ignored", name.c_str(), path.c_str());
        } else {
            syserr("WARNING: GROUP \"%s\" cannot open: \"%s\" (%d) - ignored", name.c_str(),
                   path.c_str(), errno);
        }
        return Outcome::Done;
    }
    Lines lines(*source);
    int number = 0;
    while (const std::optional<std::string_view> line = lines.next()) {
        ++number;
        if (line->size() > LongestLine) {
            syserr("WARNING: GROUP \"%s\" line too long: \"%s\" line=%d - ignored \"%s\"",
                   name.c_str(), path.c_str(), number,
                   shortenstring(c_text(*line), ShownOfALine).c_str());
            continue;
        }
        const std::string entry = entry_on(*line);
        if (entry.empty()) {
            continue;
        }
        if (group_settings.most_addresses > 0 && ++load.addresses > group_settings.most_addresses) {
            syserr("WARNING: GROUP \"%s\" too many addresses: \"%s\" - skip (max. %d)",
                   name.c_str(), path.c_str(), group_settings.most_addresses);
            return Outcome::Full;
        }
        const std::string_view text = load.group.idtab ? shared_copy(entry) : entry;
        if (add_addr(load.group, text) != 0) {
            syserr("ERROR: GROUP \"%s\" out of memory: %s %d", name.c_str(), __FILE_NAME__,
                   __LINE__);
            return Outcome::NoMemory;
        }
    }
    return Outcome::Done;
}

// What two groups that share a text both show.
unsigned identity(const EntryText& text) {
    return static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(text.view().data()));
}

int length_of(const EntryText& text) {
    return static_cast<int>(text.view().size());
}

} // namespace

addrtree_t::~addrtree_t() {
    // Each left subtree is hung under its right neighbour until there is none: no recursion.
    while (left || right) {
        if (!left) {
            std::unique_ptr<addrtree_t> rest = std::move(right);
            left = std::move(rest->left);
            right = std::move(rest->right);
            continue;
        }
        std::unique_ptr<addrtree_t> node = std::move(left);
        left = std::move(node->left);
        if (node->right) {
            addrtree_t* last = node->right.get();
            while (last->right) {
                last = last->right.get();
            }
            last->right = std::move(right);
            right = std::move(node->right);
        }
    }
}

addrlist_t::~addrlist_t() {
    while (next) {
        next = std::move(next->next);
    }
}

bool CaseLess::operator()(std::string_view a, std::string_view b) const {
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
        return static_cast<unsigned char>(lower(x)) < static_cast<unsigned char>(lower(y));
    });
}

AddressGroup read_addrsgrp(const std::vector<std::string>& names) {
    return read_addrsgrp3(names, false);
}

AddressGroup read_addrsgrp3(const std::vector<std::string>& names, bool idtab) {
    if (names.empty()) {
        return nullptr;
    }
    AddressGroup group;
    try {
        group = std::make_unique<ADDRSGROUP>();
    } catch (const std::bad_alloc&) {
        report_memory("read_addrsgrp3", __LINE__);
        return nullptr;
    }
    group->idtab = idtab;
    group->hashsize = std::max(buckets(), 1U);
    GroupLoad load{*group};
    for (const std::string& name : names) {
        if (name.empty()) {
            continue;
        }
        switch (load_file(load, name)) {
        case Outcome::Done:
            break;
        case Outcome::Full:
            return group;
        case Outcome::NoMemory:
            return nullptr;
        }
    }
    return group;
}

int add_addr(ADDRSGROUP& group, std::string_view entry) {
    if (entry.empty()) {
        return 0;
    }
    if (entry.find('*') != entry.npos) {
        return add_addrlist(group.list, entry, group.idtab);
    }
    try {
        return add_addrtree(group.tree[bucket_of(entry)], entry, group.idtab);
    } catch (const std::bad_alloc&) {
        report_memory("add_addrtree", __LINE__);
        return -1;
    }
}

int add_addrtree(AddressTree& tree, std::string_view entry, bool idtab) {
    try {
        const auto next = tree.order.lower_bound(entry);
        if (next != tree.order.end() && !CaseLess()(entry, next->first)) {
            return 0;
        }
        auto node = std::make_unique<addrtree_t>();
        node->addr.set(entry, idtab);
        const auto place = tree.order.emplace_hint(next, node->addr.view(), node.get());
        // The new node hangs below the later of its two neighbours, which is the deeper one.
        addrtree_t* before = place == tree.order.begin() ? nullptr : std::prev(place)->second;
        addrtree_t* after = next == tree.order.end() ? nullptr : next->second;
        if (before && !before->right) {
            before->right = std::move(node);
        } else if (after) {
            after->left = std::move(node);
        } else {
            tree.root = std::move(node);
        }
        return 0;
    } catch (const std::bad_alloc&) {
        report_memory("add_addrtree", __LINE__);
        return -1;
    }
}

int add_addrlist(PatternTable& lists, std::string_view entry, bool idtab) {
    try {
        auto cell = std::make_unique<addrlist_t>();
        cell->addr.set(entry, idtab);
        std::unique_ptr<addrlist_t>& head = lists[list_of(entry.front())];
        cell->next = std::move(head);
        head = std::move(cell);
        return 0;
    } catch (const std::bad_alloc&) {
        report_memory("add_addrlist", __LINE__);
        return -1;
    }
}

void print_group_list() {
    const std::string path = std::string(group_settings.directory.view()) + "/";
    const std::string name = path.substr(0, path.find_last_not_of('/') + 1);
    const std::optional<Place> place = Place::of(name.c_str(), FileKind::Installed);
    const std::optional<Place> target = place ? place->of_file() : std::nullopt;
    Fd file = target ? target->open(O_RDONLY | O_DIRECTORY) : Fd();
    const std::unique_ptr<DIR, int (*)(DIR*)> directory(file ? ::fdopendir(file.get()) : nullptr,
                                                        ::closedir);
    if (!directory) {
        syserr("%s: opendir failed: \"%s\" (%d)", "print_group_list", path.c_str(), errno);
        return;
    }
    file.release(); // the directory owns it now
    while (const dirent* entry = ::readdir(directory.get())) {
        const std::string_view found(entry->d_name);
        if (!found.starts_with('.') && found.size() > Suffix.size() && found.ends_with(Suffix)) {
            const std::string group(found.substr(0, found.size() - Suffix.size()));
            std::printf("%s\n", group.c_str());
        }
    }
}

int print_addrsgrp(const ADDRSGROUP* group) {
    if (!group) {
        return 0;
    }
    int printed = 0;
    for (const std::unique_ptr<addrlist_t>& list : group->list) {
        int depth = 0;
        for (const addrlist_t* cell = list.get(); cell; cell = cell->next.get()) {
            std::printf(" '%.*s' h=* dep=%d STR=0x%08x\n", length_of(cell->addr),
                        cell->addr.view().data(), ++depth, identity(cell->addr));
            ++printed;
        }
    }
    for (const auto& [bucket, tree] : group->tree) {
        if (bucket < buckets()) {
            printed += print_tree(tree.root.get(), bucket, 0);
        }
    }
    std::printf("##Option: comp=%d, idtab=%d, hash size=%d\n", group->comp, group->idtab,
                static_cast<int>(group->hashsize));
    return printed;
}

int print_tree(const addrtree_t* subtree, unsigned bucket, int parent_depth) {
    // The way back up: the nodes whose left subtree is being printed, with their depths.
    std::vector<std::pair<const addrtree_t*, int>> waiting;
    int printed = 0;
    int depth = parent_depth;
    const addrtree_t* node = subtree;
    while (node || !waiting.empty()) {
        while (node) {
            waiting.emplace_back(node, ++depth);
            node = node->left.get();
        }
        std::tie(node, depth) = waiting.back();
        waiting.pop_back();
        std::printf(" '%.*s' h=%d dep=%d STR=0x%08x\n", length_of(node->addr),
                    node->addr.view().data(), static_cast<int>(bucket), depth,
                    identity(node->addr));
        ++printed;
        node = node->right.get();
    }
    return printed;
}

void free_addrsgrp(AddressGroup group) {
    group.reset();
}

void free_tree(AddressTree& tree) {
    tree.order.clear(); // it points into the nodes
    tree.root.reset();
}

} // namespace ov
