// Two address group files, read as one group and printed, against the printed form of plain lists.
//
// Input: GroupMaxAddresses and GroupAddressHashSize, each on its line, and the two files, the line
// "--" between them.
#include "addr/addr_grp.h"
#include "settings/settings.h"
#include "support.h"

#include <array>
#include <map>

using namespace ov;
using namespace ov::fuzz;

namespace {

constexpr std::size_t LongestLine = 4094;
constexpr std::size_t OtherPatterns = 36;

// A tree as the sequence of its nodes: every address with the number of those above it.
struct SlowTree {
    struct Node {
        std::string address;
        int left = -1;
        int right = -1;
    };
    std::vector<Node> nodes;

    void add(const std::string& address) {
        int* place = nullptr;
        for (int at = nodes.empty() ? -1 : 0; at != -1; at = *place) {
            Node& node = nodes[static_cast<std::size_t>(at)];
            const int order = address.compare(node.address);
            if (order == 0) {
                return;
            }
            place = order < 0 ? &node.left : &node.right;
        }
        if (place) {
            *place = static_cast<int>(nodes.size());
        }
        nodes.push_back({address});
    }

    void print(std::string& out, unsigned bucket, int at, int depth) const {
        if (at == -1 || nodes.empty()) {
            return;
        }
        const Node& node = nodes[static_cast<std::size_t>(at)];
        print(out, bucket, node.left, depth + 1);
        out += " '" + node.address + "' h=" + std::to_string(bucket) +
               " dep=" + std::to_string(depth) + " STR=\n";
        print(out, bucket, node.right, depth + 1);
    }
};

struct SlowGroup {
    std::array<std::vector<std::string>, OtherPatterns + 1> patterns; // in the order of the files
    std::map<unsigned, SlowTree> trees;
    int count = 0; // of the entries met

    void add(const std::string& entry, unsigned buckets) {
        if (entry.find('*') == entry.npos) {
            unsigned hash = 0;
            for (const char c : entry) {
                hash = hash * 33 + static_cast<unsigned char>(c);
            }
            trees[buckets > 1 ? hash % buckets : 0].add(entry);
            return;
        }
        const char c = entry[0];
        const std::string first = "0123456789abcdefghijklmnopqrstuvwxyz";
        patterns[std::min(first.find(c), OtherPatterns)].push_back(entry);
    }

    std::string printed(unsigned buckets, int& entries) const {
        std::string out;
        for (const std::vector<std::string>& list : patterns) {
            for (std::size_t i = list.size(); i > 0; --i) {
                out += " '" + list[i - 1] + "' h=* dep=" + std::to_string(list.size() - i + 1) +
                       " STR=\n";
                ++entries;
            }
        }
        for (const auto& [bucket, tree] : trees) {
            if (buckets == 0) {
                break; // what is printed are the buckets of the setting, here none
            }
            tree.print(out, bucket, 0, 1);
            entries += static_cast<int>(tree.nodes.size());
        }
        return out;
    }
};

std::string entry_on(const std::string& line) {
    std::string entry;
    for (const char c : line) {
        if (c == '\0' || c == '#' || c == '\r') {
            break;
        }
        entry += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    while (!entry.empty() && (entry.back() == ' ' || entry.back() == '\t')) {
        entry.pop_back();
    }
    while (!entry.empty() && (entry.front() == ' ' || entry.front() == '\t')) {
        entry.erase(0, 1);
    }
    return entry;
}

// Adds the entries of one file. Returns whether there is room for more.
bool add_file(SlowGroup& group, const std::string& text, int most, unsigned buckets) {
    std::string line;
    for (std::size_t i = 0; i <= text.size(); ++i) {
        if (i < text.size() && text[i] != '\n') {
            line += text[i];
            continue;
        }
        const std::string entry = line.size() <= LongestLine ? entry_on(line) : "";
        line.clear();
        if (entry.empty()) {
            continue;
        }
        if (++group.count > most && most > 0) {
            return false;
        }
        group.add(entry, buckets);
    }
    return true;
}

// The printed group without the addresses in memory.
std::string without_identities(const std::string& text) {
    constexpr std::string_view Mark = " STR=";
    constexpr std::size_t Identity = 10;
    std::string result;
    std::size_t start = 0;
    for (std::size_t i = text.find(Mark); i != text.npos; i = text.find(Mark, start)) {
        result += text.substr(start, i + Mark.size() - start);
        start = i + Mark.size() + Identity;
    }
    return result + text.substr(start);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    restore_settings();
    Input input(data, size);
    GroupMaxAddresses = input.number();
    GroupAddressHashSize = input.number();
    const std::string both = input.rest();
    const std::size_t middle = both.find("\n--\n");
    const std::string first = both.substr(0, middle);
    const std::string second = middle == both.npos ? "" : both.substr(middle + 4);

    SlowGroup expected;
    const auto buckets = static_cast<unsigned>(GroupAddressHashSize);
    if (add_file(expected, first, GroupMaxAddresses, buckets)) {
        add_file(expected, second, GroupMaxAddresses, buckets);
    }
    int entries = 0;
    const std::string text =
        expected.printed(buckets, entries) +
        "##Option: comp=0, idtab=0, hash size=" + std::to_string(std::max(buckets, 1U)) + "\n";

    Group_Dir.set(scratch());
    write_file(scratch("first.addr"), first);
    write_file(scratch("second.addr"), second);
    AddressGroup group = read_addrsgrp({"first", "", "missing", "second"});
    Captured printed(stdout);
    require_equal(print_addrsgrp(group.get()), entries, "number of entries");
    require_equal(without_identities(printed.text()), text, "the printed group");
    free_addrsgrp(std::move(group));
    return 0;
}
