// The lines of the daily log, whatever stands in a message and however long it is.
//
// Input: "m" for milliseconds, "n" for a program without a name, each on its line, and the message.
#include "util/log.h"
#include "support.h"
#include "util/services.h"

#include <algorithm>
#include <filesystem>

using namespace ov;
using namespace ov::fuzz;

namespace {

constexpr std::size_t LongestLine = 65536; // with its line feed

// The log's last line; the log goes.
std::string logged() {
    std::vector<std::string> lines;
    for (const auto& file : std::filesystem::directory_iterator(scratch())) {
        const std::string name = file.path().filename().string();
        require(is_oldlogfile(name.c_str()), "a file of another name: " + name);
        lines = lines_of(read_file(file.path().string()));
        std::filesystem::remove(file.path());
    }
    require(!lines.empty(), "nothing is logged");
    return lines.back();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    services.log_option = input.line() == "m" ? 0x10000 : 0;
    ProgName = input.line() == "n" ? "" : "ov_conf";
    const std::string rest = input.rest();
    const std::string message(c_text(rest));
    services.log_directory.set(scratch());
    log_init();

    // The older writer has another buffer, and cuts nothing.
    log_put(": %s", message.c_str());
    const std::string whole = logged().substr(sizeof "2026/11/15 08:30:00 :");
    require(whole.size() == message.size() + 1, "the size of a message");
    require(std::none_of(whole.begin(), whole.end() - 1,
                         [](char c) { return (c >= 0 && c < ' ' && c != '\t') || c == 127; }),
            "a control character");
    syserr(": %s", message.c_str());
    const std::string line = logged();
    require(line.ends_with(": " + whole) ||
                (line.size() == LongestLine && line.ends_with("...\n") &&
                 whole.find(line.substr(LongestLine - 999, 995)) != whole.npos),
            "a line");
    return 0;
}
