// What is found out about a main file: the first error is what loading refuses, what is shown loads
// to what is shown, nothing is made, and every finding is one line about a line of the file.
//
// Input: the file, with "ROOT/" for the throwaway installation.
#include "catalogue/reset.h"
#include "ctl/json.h"
#include "ctl/warnings.h"
#include "load/configuration.h"
#include "support.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <sys/stat.h>

using namespace ov;
using namespace ov::ctl;
using namespace ov::fuzz;

namespace {

int directories_wanted = 0; // to be made

template <class Fault>
std::string words_of(int line, const Fault& fault) {
    return std::to_string(line) + " [" + fault.section + "] " + fault.key + " = " + fault.value;
}

// What loading refuses first.
std::string refused(const Document& document) {
    reset_settings();
    std::optional<Configuration> file = Configuration::open(document.path.c_str());
    const auto refusal = load_settings(file.value(), 0xff | RC_NOTRIALS);
    const bool is_later = document.text.starts_with('\n') && refusal && refusal->line != 0;
    return refusal ? words_of(refusal->line + is_later, *refusal) : "";
}

std::string shown(const Document& document, const Survey& found) {
    std::string text;
    for (const ShownKey& key : shown_keys(document, found, key_names(), For::People)) {
        text += "[" + std::string(key.section) + "]\n" + line_of(key, true);
    }
    return text;
}

bool is_one_line(const std::string& text) {
    return text.find('\n') == text.size() - 1;
}

void look_at(const std::vector<Finding>& findings, const std::string& text) {
    const auto lines = std::count(text.begin(), text.end(), '\n') + 1;
    for (const Finding& finding : findings) {
        require(finding.line >= 0 && finding.line <= lines, "the line of a finding");
        const std::string words = in_words(finding, "error");
        require(is_one_line(words) && words.find('\x1b') == words.npos, words);
    }
}

} // namespace

extern "C" int __wrap_mkdirat(int, const char*, mode_t) {
    ++directories_wanted;
    errno = EACCES;
    return -1;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string text = Input(data, size).rest();
    for (std::size_t at = 0; (at = text.find("ROOT/", at)) != text.npos;) {
        text.replace(at, 5, scratch());
    }
    for (const char* name : {"etc/group", "admin", "logs", "mqueue", "template", "history"}) {
        std::filesystem::create_directories(scratch(name));
    }
    const Document document{scratch("main.conf"), text};
    write_file(document.path, text);

    directories_wanted = 0;
    const Survey found = survey(document);
    require(directories_wanted == 0, "a directory is made");
    if (found.supplement) {
        return -1; // a file of the machine
    }
    const std::vector<std::string> loaded = shown_settings();
    const std::string once = shown(document, found);
    require(shown_settings() == loaded, "a setting has changed when it was shown");
    Findings all{document.path, found.errors, warnings(document, found)};
    look_at(all.errors, text);
    look_at(all.warnings, text);
    require(is_one_line(json_of(all)), "findings for programs");

    const Document again{scratch("shown.conf"), once};
    require_equal(shown(again, survey(again)), once, "what is shown loads to something else");

    const std::string first = refused(document);
    const Finding error = found.errors.empty() ? Finding{} : found.errors[0];
    const bool is_of_search = error.section == "Search" || error.key.starts_with("SRCH_");
    if (directories_wanted == 0 && !(first.empty() && is_of_search)) {
        require_equal(found.errors.empty() ? "" : words_of(error.line, error), first,
                      "first error");
    }
    return 0;
}
