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

// The log's lines, taken off it.
std::vector<std::string> logged() {
    std::vector<std::string> lines;
    for (const auto& file : std::filesystem::directory_iterator(scratch())) {
        const std::string name = file.path().filename().string();
        require(is_oldlogfile(name.c_str()), "a file of another name: " + name);
        lines = lines_of(read_file(file.path().string()));
        std::filesystem::remove(file.path());
    }
    return lines;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    services.log_option = input.line() == "m" ? 0x10000 : 0;
    const std::string program = input.line() == "n" ? "" : "ov_conf";
    const std::string message = c_string(input.rest());
    ProgName = program.c_str();
    services.log_directory.set(scratch());
    log_init();

    // Whether an event has become one line, with its message or the beginning of it.
    const auto check = [](std::string text, const char* writer) {
        const auto is_control = [](char c) { return (c >= 0 && c < ' ' && c != '\t') || c == 127; };
        std::replace_if(text.begin(), text.end(), is_control, '?');
        for (std::size_t at = 0; (at = text.find('\xc2', at)) != text.npos; ++at) {
            const auto next = static_cast<unsigned char>((text + ' ')[at + 1]);
            if (next >= 0x80 && next < 0xa0) { // a control character beside ASCII's
                text.replace(at, 2, "??");
            }
        }
        const std::vector<std::string> lines = logged();
        require(lines.size() == 2 && lines[0].find(" ORVANTA V") != std::string::npos, writer);
        const std::string& line = lines[1];
        require(std::none_of(line.begin(), line.end() - 1, is_control), "a control character");
        require(line.ends_with(' ' + text + '\n') ||
                    (line.size() == LongestLine && line.ends_with("...\n") &&
                     text.find(line.substr(LongestLine - 999, 995)) != text.npos),
                writer);
    };
    syserr("%s", message.c_str());
    check(message, "syserr");
    ov_syslog("%s, %d", message.c_str(), 7);
    check(message + ", 7", "ov_syslog");
    return 0;
}
