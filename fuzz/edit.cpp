// Replacing, adding and deleting an entry of any file, in memory and in the file itself. One line
// goes or comes, and every other byte stays. Where the scanner and the editor count lines alike, it
// is the line that the lookup finds.
//
// Input: "d" to delete, section, key and value, each on its line, and the file.
#include "conf/edit.h"
#include "conf/lookup.h"
#include "conf/rewrite.h"
#include "support.h"

#include <algorithm>
#include <filesystem>

using namespace ov;
using namespace ov::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const bool deletes = input.line() == "d";
    const std::string section = input.line();
    const std::string key = input.line();
    const std::string value = input.line();
    const std::string text = input.rest();

    const char* sec = section.c_str();
    const std::optional<Edit> edit =
        deletes ? deleted(text, sec, key.c_str()) : modified(text, sec, key.c_str(), value);
    const std::string path = scratch("edited");
    write_file(path, text);
    require_equal(deletes ? conf_delete(path.c_str(), sec, key.c_str())
                          : conf_modify(path.c_str(), sec, key.c_str(), value.c_str()),
                  edit ? 0 : -1, "result");
    for (const auto& file : std::filesystem::directory_iterator(scratch())) {
        require_equal(file.path().string(), path, "left behind");
    }
    require_equal(read_file(path),
                  edit ? std::string(edit->head) + edit->insertion + std::string(edit->tail) : text,
                  "the file");

    Source source{std::string_view(text)};
    std::string old;
    const bool found = conf_getprofile(source, sec, key.c_str(), old, MaxText + 1) == 0;
    require(edit.has_value() == (found || !deletes), "what is not there was deleted");
    if (!edit) {
        return 0;
    }
    const bool has_header = found || get_sec(source, section) == 0;
    const std::string line = key + " = " + value.substr(0, MaxText) + "\n";
    require_equal(edit->insertion,
                  deletes      ? ""
                  : has_header ? line
                               : "[" + section + "]\n" + line,
                  "what has come");
    const std::size_t begin = edit->head.size();
    const std::string gone = text.substr(begin, text.size() - begin - edit->tail.size());
    require(text.starts_with(edit->head) && text.ends_with(edit->tail), "another byte has changed");
    require(gone.size() <= MaxText && std::min(gone.find('\n'), gone.size()) + 1 >= gone.size(),
            "more than a line is gone");
    const std::vector<std::string> lines = lines_of(text);
    if (text.starts_with('\n') || std::any_of(lines.begin(), lines.end(), [](const auto& one) {
            return one.size() > MaxText;
        })) {
        return 0; // lines are counted otherwise
    }
    const auto before = std::count(edit->head.begin(), edit->head.end(), '\n');
    const bool open = has_header && !found && !edit->head.ends_with('\n');
    require(!has_header || before + found + open == scan_linenumber, "another line");
    require(!gone.empty() == found && (has_header || edit->tail.empty()), "another place");
    return 0;
}
