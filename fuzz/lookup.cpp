// The scanner, the lookup of one key and that of all keys, on any file: from memory, in pieces of
// any size, and from a snapshot, against the slow ones.
//
// Input: the size of the answer, how much a read of the file gives at most (0: all), a section and
// a key, each on its line, and the file.
#include "conf/snapshot.h"
#include "model.h"
#include "support.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>

using namespace ov;
using namespace ov::fuzz;

namespace {

// Large files take long: of their names only the one that is asked for is looked up.
constexpr std::size_t MostNames = 12;
constexpr std::size_t LargeFile = 4000;

// What a read of one descriptor gives.
struct {
    int descriptor = -1;
    std::string_view text;
    std::size_t longest = 0;
    std::size_t position = 0;
    unsigned reads = 0;
} pieces;

Source in_pieces(std::string_view text, std::size_t longest) {
    Fd file(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    pieces = {file.get(), text, longest > 0 ? longest : text.size()};
    return Source(std::move(file));
}

// Every `skipping`-th token is followed by the rest of its line.
void check_tokens(Source& source, std::string_view text, std::size_t skipping) {
    SlowScanner slow{text};
    init_scan(source);
    int after_end = 0;
    for (std::size_t count = 1; after_end < 2; ++count) {
        const int expected = slow.scan();
        after_end += expected == TokenEof;
        require_equal(int{ini_scan(source)}, expected, "token");
        require(expected != TokenNumber || scan_num == slow.number, "number");
        if (skipping > 0 && count % skipping == 0) {
            slow.skip_line();
            skip_eol(source);
        }
        require_equal(scan_str, slow.token, "text of a token");
        require_equal(scan_linenumber, slow.line, "line of a token");
    }
}

// A file, read slowly, and in all the other ways.
struct File {
    std::string text;
    SlowFile slow;
    Snapshot snapshot;
    Source memory;
    Source pieces;
};

// `asked` is the key that the snapshot was made for, beside those of the index.
void check_lookup(File& file, const std::string& section, const std::string& key, std::size_t size,
                  bool asked) {
    const char* sec = section.c_str();
    const char* name = key.c_str();
    const int number = key_index().find(section, key);
    for (const int mode : {LineMode, TokenMode}) {
        const SlowEntry* entry = file.slow.lookup(section, key, mode);
        const std::string whole = entry ? entry->value : "";
        std::string value;
        const auto check = [&](int result, std::size_t room, const char* way, const int& line) {
            require_equal(result, entry ? 0 : -1, way);
            require_equal(line, entry ? entry->line : 0, way);
            require_equal(value, whole.substr(0, room > 0 ? room - 1 : 0), way);
            value = "stale";
        };
        check(_getprofile(file.memory, sec, name, value, size, mode), size, "from memory",
              scan_linenumber);
        check(_getprofile(file.pieces, sec, name, value, size, mode), size, "in pieces",
              scan_linenumber);
        for (const int row : {number, asked ? static_cast<int>(file.snapshot.wanted()) : -1}) {
            if (row != -1) {
                int line = -1;
                check(file.snapshot.lookup(static_cast<std::size_t>(row), sec, name, value, mode,
                                           line),
                      MaxText + 1, "scanned", line);
            }
        }
    }
    const int header = slow_header(file.text, section);
    for (Source* source : {&file.memory, &file.pieces}) {
        require_equal(get_sec(*source, section), header > 0 ? 0 : -1, "header");
        require(header == 0 || header == scan_linenumber, "line of a header");
    }
}

} // namespace

extern "C" off_t __wrap_lseek(int, off_t offset, int) {
    pieces.position = static_cast<std::size_t>(offset);
    return offset;
}

extern "C" ssize_t __real_read(int file, void* buffer, std::size_t size);
extern "C" ssize_t __wrap_read(int file, void* buffer, std::size_t size) {
    if (file != pieces.descriptor) {
        return __real_read(file, buffer, size);
    }
    if (++pieces.reads % 7 == 0) {
        errno = EINTR;
        return -1;
    }
    const std::size_t got = pieces.text.copy(static_cast<char*>(buffer),
                                             std::min(size, pieces.longest), pieces.position);
    pieces.position += got;
    return static_cast<ssize_t>(got);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const std::size_t room = input.number();
    const std::size_t longest = input.number();
    const std::string section = input.line();
    const std::string key = input.line();
    const std::string text = input.rest();

    Source whole = in_pieces(text, longest);
    Snapshot snapshot(whole, key_index(), {section, key});
    File file{text, SlowFile(text), std::move(snapshot), Source(std::string_view(text)),
              in_pieces(text, longest)};
    check_tokens(file.memory, text, room % 5);
    check_tokens(file.pieces, text, room % 5);
    check_lookup(file, section, key, room, true);
    const std::vector<SlowEntry>& entries = file.slow.entries[LineMode];
    const std::size_t names = text.size() > LargeFile ? 0 : std::min(entries.size(), MostNames);
    for (std::size_t i = 0; i < names; ++i) {
        check_lookup(file, entries[i].section, entries[i].key, room, false);
    }
    pieces.descriptor = -1;
    return 0;
}
