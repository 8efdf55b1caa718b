// The scanner, the lookup of one key and that of all keys, on any file, against the slow ones.
//
// Input: the size of the answer, how much a read of the file gives at most (0: all), a section and
// a key, each on its line, and the file.
#include "conf/conf_tool.h"
#include "conf/snapshot.h"
#include "model.h"
#include "support.h"

#include <algorithm>
#include <cstring>
#include <sys/mman.h>
#include <unistd.h>

using namespace ov;
using namespace ov::fuzz;

namespace {

// Large files are read in fewer pieces, and fewer of their names are looked up.
constexpr std::size_t MostReads = 300;
constexpr std::size_t MostNames = 12;
constexpr std::size_t LargeFile = 4000;

std::size_t longest_read = 0; // 0: no limit

Source source_of(std::string_view text) {
    if (longest_read == 0) {
        return Source(text);
    }
    Fd file(::memfd_create("fuzz", MFD_CLOEXEC));
    const ssize_t written = ::write(file.get(), text.data(), text.size());
    require(written == static_cast<ssize_t>(text.size()), "cannot write a file in memory");
    ::lseek(file.get(), 0, SEEK_SET);
    return Source(std::move(file));
}

// Every `skipping`-th token is followed by the rest of its line.
void check_tokens(std::string_view text, int skipping) {
    Source source = source_of(text);
    SlowScanner slow(text);
    init_scan(source);
    int after_end = 0;
    for (int count = 1; after_end < 2; ++count) {
        const int expected = slow.scan();
        require_equal(int{ini_scan(source)}, expected, "token");
        if (expected == TokenNumber) {
            require_equal(scan_num, slow.number, "number");
        }
        if (skipping > 0 && count % skipping == 0) {
            slow.skip_line();
            skip_eol(source);
        }
        require_equal(scan_str, slow.token, "text of a token");
        require_equal(scan_len, static_cast<int>(slow.token.size()), "length of a token");
        require_equal(scan_linenumber, slow.line, "line of a token");
        after_end += expected == TokenEof;
    }
}

// What a lookup gave, held against the slow one.
void check_answer(int result, const std::string& value, std::size_t size, const SlowEntry* expected,
                  const std::string& name) {
    require_equal(result, expected ? 0 : -1, "result for " + name);
    require_equal(scan_linenumber, expected ? expected->line : 0, "line of " + name);
    const std::string whole = expected ? expected->value : "";
    require_equal(value, whole.substr(0, size > 0 ? size - 1 : 0), "value of " + name);
}

// A file, read slowly and at once.
struct File {
    std::string_view text;
    std::vector<SlowEntry> lines = slow_entries(text, LineMode);
    std::vector<SlowEntry> tokens = slow_entries(text, TokenMode);
    Snapshot snapshot = Snapshot(source_of(text));
};

void check_lookup(const File& file, const std::string& section, const std::string& key,
                  std::size_t size) {
    const std::string name = "[" + section + "] " + key;
    const bool of_rights = same_name(section, "Admin") || same_name(section, "Manager");
    Source source = source_of(file.text);
    const auto row =
        std::find_if(catalogue().begin(), catalogue().end(), [&](const Row& candidate) {
            return candidate.section && same_name(candidate.section, section) &&
                   same_name(candidate.key, key);
        });
    for (const int mode : {LineMode, TokenMode}) {
        const SlowEntry* expected =
            slow_lookup(mode == LineMode ? file.lines : file.tokens, section, key);
        std::string value = "stale";
        int result = _getprofile(source, section.c_str(), key.c_str(), value, size, mode);
        check_answer(result, value, size, expected, name);
        if (of_rights) {
            result = file.snapshot.lookup(section.c_str(), key.c_str(), value, mode);
            check_answer(result, value, 8192, expected, name + " among the rights");
        }
        if (row != catalogue().end()) {
            result = file.snapshot.lookup(*row, value, mode);
            check_answer(result, value, 8192, expected, name + " of the catalogue");
        }
    }
    const int header = slow_header(file.text, section);
    require_equal(get_sec(source, section), header > 0 ? 0 : -1, "header of " + section);
    require(header == 0 || header == scan_linenumber, "line of the header of " + section);
}

} // namespace

extern "C" ssize_t __real_read(int file, void* buffer, std::size_t size);
extern "C" ssize_t __wrap_read(int file, void* buffer, std::size_t size) {
    return __real_read(file, buffer, longest_read > 0 ? std::min(longest_read, size) : size);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const auto answer_size = static_cast<std::size_t>(input.number());
    longest_read = static_cast<std::size_t>(input.number());
    const std::string section = c_string(input.line());
    const std::string key = c_string(input.line());
    const std::string text = input.rest();

    if (longest_read > 0) {
        longest_read = std::max(longest_read, text.size() / MostReads);
    }
    check_tokens(text, static_cast<int>(answer_size % 5));
    const File file{text};
    check_lookup(file, section, key, answer_size);
    const std::size_t names = text.size() > LargeFile ? 1 : MostNames;
    for (std::size_t i = 0; i < std::min(file.lines.size(), names); ++i) {
        check_lookup(file, file.lines[i].section, file.lines[i].key, answer_size);
    }
    return 0;
}
