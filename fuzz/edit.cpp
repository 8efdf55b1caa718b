// Replacing, adding and deleting an entry of any file. Every byte that is not of the line in
// question stays. Where the scanner and the editor count lines alike, that is the line which the
// slow lookup finds.
//
// Input: "d" to delete, section, key and value, each on its line, and the file.
#include "conf/rewrite.h"
#include "model.h"
#include "support.h"

#include <algorithm>
#include <filesystem>
#include <numeric>

using namespace ov;
using namespace ov::fuzz;

namespace {

constexpr std::size_t LongestPiece = 8191; // longer lines count as several

// Whether all but one line of `before`, and all but `added` bytes of `after`, are the same.
void check_rest(const std::string& before, const std::string& after, std::size_t added) {
    const auto [was, is] = std::mismatch(before.begin(), before.end(), after.begin(), after.end());
    const auto last = std::mismatch(before.rbegin(), std::make_reverse_iterator(was),
                                    after.rbegin(), std::make_reverse_iterator(is));
    const auto same =
        static_cast<std::size_t>((was - before.begin()) + (last.first - before.rbegin()));
    require(before.size() - same <= LongestPiece, "more than a line is gone");
    require(after.size() - same <= added, "more than an entry has come");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const bool deletes = input.line() == "d";
    const std::string section = input.line();
    const std::string key = input.line();
    const std::string value = input.line();
    const std::string text = input.rest();

    const SlowFile slow(text);
    const SlowEntry* found = slow.lookup(section, key, LineMode);
    const int header = slow_header(text, section);
    const std::string line = key + " = " + value.substr(0, MaxText) + "\n";
    const std::string with_header = "[" + section + "]\n" + line;
    const std::string path = scratch("edited");
    write_file(path, text);
    require_equal(deletes ? conf_delete(path.c_str(), section.c_str(), key.c_str())
                          : conf_modify(path.c_str(), section.c_str(), key.c_str(), value.c_str()),
                  deletes && !found ? -1 : 0, "result");
    for (const auto& file : std::filesystem::directory_iterator(scratch())) {
        require_equal(file.path().string(), path, "left behind");
    }
    const std::string result = read_file(path);
    const std::size_t added = found || header > 0 ? line.size() : with_header.size();
    check_rest(text, result, deletes ? 0 : added);

    std::vector<std::string> lines = lines_of(text);
    if (text.starts_with('\n') || (!text.empty() && !text.ends_with('\n')) ||
        std::any_of(lines.begin(), lines.end(),
                    [](const std::string& one) { return one.size() > LongestPiece; })) {
        return 0; // lines are counted otherwise, or the last one is open
    }
    const auto number = static_cast<std::size_t>(found ? found->line : header);
    if (found) {
        lines[number - 1] = deletes ? "" : line;
    } else if (!deletes) {
        lines.insert(number > 0 ? lines.begin() + static_cast<std::ptrdiff_t>(number) : lines.end(),
                     number > 0 ? line : with_header);
    }
    require_equal(result, std::accumulate(lines.begin(), lines.end(), std::string()), "the file");
    return 0;
}
