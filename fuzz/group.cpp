// Two address group files, read as one group and printed: the same again, with shared texts, and
// from the entries that were printed.
//
// Input: the most addresses and the number of buckets, each on its line, and the two files, the
// line
// "--" between them.
#include "addr/addr_grp.h"
#include "catalogue/reset.h"
#include "support.h"

#include <set>

using namespace ov;
using namespace ov::fuzz;

namespace {

// The entries of a group as they are printed, without the addresses in memory.
std::vector<std::string> printed(const AddressGroup& group) {
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* before = std::exchange(stdout, ::open_memstream(&text, &size));
    const int count = print_addrsgrp(group.get());
    std::fclose(std::exchange(stdout, before));
    std::vector<std::string> lines = lines_of({text, size});
    std::free(text);
    require(!lines.empty() && lines.back().starts_with("##Option: comp=0"), "the last line");
    lines.pop_back();
    require(std::cmp_equal(lines.size(), count), "number of entries");
    for (std::string& line : lines) {
        line.erase(line.rfind(" STR="));
    }
    return lines;
}

// The entry on a printed line, and its bucket.
std::pair<std::string, std::string> parts_of(const std::string& line) {
    const std::size_t end = line.rfind("' h=");
    return {line.substr(2, end - 2), line.substr(end, line.rfind(" dep=") - end)};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    reset_settings();
    Input input(data, size);
    group_settings.most_addresses = static_cast<int>(input.number());
    group_settings.hash_size = static_cast<int>(input.number());
    const std::string both = input.rest();
    const std::size_t middle = std::min(both.find("\n--\n"), both.size());
    group_settings.directory.set(scratch());
    write_file(scratch("first.addr"), both.substr(0, middle));
    write_file(scratch("second.addr"), both.substr(std::min(middle + 4, both.size())));

    const std::vector<std::string> lines =
        printed(read_addrsgrp({"first", "", "missing", "second"}));
    require(printed(read_addrsgrp3({"first", "second"}, true)) == lines, "with shared texts");
    require(group_settings.most_addresses <= 0 ||
                std::cmp_less_equal(lines.size(), group_settings.most_addresses),
            "more entries than there may be");
    std::multiset<std::string> entries;
    std::string text;
    std::pair<std::string, std::string> before;
    for (const std::string& line : lines) {
        const auto [entry, bucket] = parts_of(line);
        require(entry.size() <= 4094 && entry.find_first_of("#\r") == entry.npos, "an entry");
        require(bucket != before.second || bucket == "' h=*" || entry > before.first,
                "the order of a tree");
        before = {entry, bucket};
        entries.insert(entry);
        text += entry + '\n';
    }
    write_file(scratch("first.addr"), text);
    for (const std::string& line : printed(read_addrsgrp({"first"}))) {
        const auto entry = entries.find(parts_of(line).first);
        require(entry != entries.end(), "an entry that was not printed: " + line);
        entries.erase(entry);
    }
    require(entries.empty(), "an entry is not read again");
    return 0;
}
