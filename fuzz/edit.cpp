// Replacing, adding and deleting an entry of any file, against an editor that goes line by line.
//
// Input: "d" to delete, section, key and value, each on its line ("\n" in the value is a line
// feed), and the file.
#include "conf/conf_tool.h"
#include "model.h"
#include "support.h"

#include <filesystem>
#include <sys/stat.h>

using namespace ov;
using namespace ov::fuzz;

namespace {

constexpr std::size_t LongestValue = 8191;
constexpr std::size_t LongestPiece = 8191; // longer lines count as several
constexpr mode_t Mode = 0640;

// The file as it should be afterwards, what should have been said, and the result.
struct Outcome {
    std::string text;
    std::string errors;
    int result = 0;
};

// The text with a change at the line numbered `target`: the line goes, unless it is kept, and
// `added` comes behind it.
std::string changed(const std::string& text, int target, bool kept, const std::string& added) {
    std::string result;
    std::string piece;
    int number = 1;
    const auto end_piece = [&] {
        if (number != target || kept) {
            result += piece;
        }
        if (number == target) {
            result += added;
        }
        piece.clear();
        ++number;
    };
    for (const char c : text) {
        piece += c;
        if (c == '\n' || piece.size() == LongestPiece) {
            end_piece();
        }
    }
    if (!piece.empty()) {
        end_piece();
    }
    return result;
}

Outcome expected_modify(const std::string& text, const std::string& section, const std::string& key,
                        const std::string& value) {
    const std::vector<SlowEntry> entries = slow_entries(text, LineMode);
    const std::string entry = key + " = " + value.substr(0, LongestValue) + "\n";
    if (const SlowEntry* found = slow_lookup(entries, section, key)) {
        return {changed(text, found->line, false, entry), "", 0};
    }
    if (const int header = slow_header(text, section)) {
        return {changed(text, header, true, entry), "", 0};
    }
    return {text + "[" + section + "]\n" + entry, "", 0};
}

Outcome expected_delete(const std::string& text, const std::string& section,
                        const std::string& key) {
    const std::vector<SlowEntry> entries = slow_entries(text, LineMode);
    if (const SlowEntry* found = slow_lookup(entries, section, key)) {
        return {changed(text, found->line, false, ""), "", 0};
    }
    return {text, "No such entry [" + section + "] " + key + "\n", -1};
}

std::string with_line_feeds(std::string value) {
    for (std::size_t i = value.find("\\n"); i != value.npos; i = value.find("\\n", i + 1)) {
        value.replace(i, 2, "\n");
    }
    return value;
}

struct stat status_of(const std::string& path) {
    struct stat status {};
    require(::stat(path.c_str(), &status) == 0, "the file is gone");
    return status;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const bool deletes = input.line() == "d";
    const std::string section = c_string(input.line());
    const std::string key = c_string(input.line());
    const std::string value = with_line_feeds(c_string(input.line()));
    const std::string text = input.rest();

    const std::string path = scratch("edited");
    write_file(path, text);
    ::chmod(path.c_str(), Mode);
    const struct stat before = status_of(path);
    const Outcome expected =
        deletes ? expected_delete(text, section, key) : expected_modify(text, section, key, value);
    Captured errors(stderr);
    const int result = deletes
                           ? conf_delete(path.c_str(), section.c_str(), key.c_str())
                           : conf_modify(path.c_str(), section.c_str(), key.c_str(), value.c_str());
    require_equal(result, expected.result, "result");
    require_equal(errors.text(), expected.errors, "message");
    require_equal(read_file(path), expected.text, "the file");
    const struct stat after = status_of(path);
    require(before.st_ino == after.st_ino && before.st_mode == after.st_mode,
            "the file is another one");
    for (const auto& file : std::filesystem::directory_iterator(scratch())) {
        require_equal(file.path().string(), path, "left behind");
    }
    return 0;
}
