// The scanner, the lookup of one key and that of all keys, on any file: from memory, in pieces of
// any size, with the keys in quotes, and from a snapshot, each against the entries one by one.
//
// Input: the size of the answer, how much a read of the file gives at most (0: all), a section and
// a key, each on its line, and the file.
#include "conf/snapshot.h"
#include "support.h"
#include "util/text.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>

using namespace ov;
using namespace ov::fuzz;

namespace {

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

// The tokens with their lines. Every `skipping`-th one is followed by the rest of its line.
std::string tokens_of(Source& source, int skipping) {
    std::string tokens;
    scan_num = 0;
    init_scan(source);
    for (int token = 0, count = 1; token != TokenEof; ++count) {
        token = ini_scan(source);
        if (skipping > 0 && count % skipping == 0) {
            skip_eol(source);
        }
        tokens += std::to_string(token) + ' ' + std::string(scan_str) + ' ' +
                  std::to_string(scan_num) + ' ' + std::to_string(scan_linenumber) + '\n';
    }
    return tokens;
}

// The text with its keys in quotes, where one stands at the beginning of a line.
std::string with_quotes(std::string_view text) {
    std::string quoted;
    for (const std::string& line : lines_of(text)) {
        const std::size_t start = blanks_end(line, 0);
        const std::size_t end = word_end(line, start);
        const std::string key = line.substr(start, end - start);
        const bool is_key = line[blanks_end(line, end)] == '=' && !is_number(key);
        quoted += is_key && !key.empty() && key.find('"') == key.npos
                      ? '"' + key + '"' + line.substr(end)
                      : line;
    }
    return quoted;
}

// The file in memory, and read in the other ways.
void check_lookup(std::vector<Source>& sources, const std::string& section, const std::string& key,
                  std::size_t size) {
    const char* sec = section.c_str();
    const char* name = key.c_str();
    for (const int mode : {LineMode, TokenMode}) {
        std::string whole;
        int at = 0;
        EntryScan entries(sources[0]);
        for (auto entry = entries.next(); entry && at == 0; entry = entries.next()) {
            const bool found = same_word(c_text(entry->section), section) &&
                               same_word(c_text(entry->key), key) &&
                               take_value(*entry, sec, name, whole, MaxText + 1, mode);
            at = found ? entry->line : 0;
        }
        std::string value;
        const auto check = [&](int result, std::size_t room, const char* way, const int& line) {
            require_equal(result, at > 0 ? 0 : -1, way);
            require_equal(line, at, way);
            require_equal(value, whole.substr(0, room > 0 ? room - 1 : 0), way);
            value = "stale";
        };
        for (Source& source : sources) {
            check(_getprofile(source, sec, name, value, size, mode), size, "one", scan_linenumber);
            const Snapshot snapshot(source, key_index(), {section, key});
            for (const int number :
                 {key_index().find(section, key), static_cast<int>(snapshot.wanted())}) {
                const auto of_key = static_cast<std::size_t>(number);
                int line = -1;
                if (number != -1) {
                    check(snapshot.lookup(of_key, sec, name, value, mode, line), MaxText + 1, "all",
                          line);
                }
            }
        }
    }
    const int header = get_sec(sources[0], section) == 0 ? scan_linenumber : -1;
    require_equal(get_sec(sources[1], section) == 0 ? scan_linenumber : -1, header, "header");
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

    const std::string quoted = with_quotes(text);
    std::vector<Source> sources;
    sources.emplace_back(std::string_view(text));
    sources.push_back(in_pieces(text, longest));
    sources.emplace_back(std::string_view(quoted));
    const int skipping = static_cast<int>(room % 5);
    const std::string tokens = tokens_of(sources[0], skipping);
    require_equal(tokens_of(sources[1], skipping), tokens, "tokens");
    // A line feed at the very start is not counted.
    const auto feeds = std::count(text.begin(), text.end(), '\n') - text.starts_with('\n');
    require_equal(scan_linenumber, static_cast<int>(feeds) + 1, "the last line");

    // Large files take long: of their names only the one that is asked for is looked up.
    std::vector<std::pair<std::string, std::string>> names{{section, key}};
    EntryScan entries(sources[0]);
    const std::size_t most = text.size() > LargeFile ? 1 : MostNames;
    for (auto entry = entries.next(); entry && names.size() < most; entry = entries.next()) {
        names.emplace_back(c_text(entry->section), c_text(entry->key));
    }
    for (const auto& [of_section, name] : names) {
        check_lookup(sources, of_section, name, room);
    }
    pieces.descriptor = -1;
    return 0;
}
