#include "ctl/findings.h"

#include "reference/text.h"

namespace ov::ctl {

namespace {

std::string number_of(std::size_t count, const char* what) {
    return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

} // namespace

std::string in_words(const Finding& finding, const char* severity) {
    std::string text = finding.file.empty() ? "ov_confctl:" : printable(finding.file) + ':';
    if (finding.line != 0) {
        text += std::to_string(finding.line) + ':';
    }
    text += std::string(" ") + severity + ": ";
    if (!finding.section.empty()) {
        text += '[' + printable(finding.section) + "] ";
    }
    if (!finding.key.empty()) {
        text += printable(finding.key) +
                (finding.value.empty() ? "" : " = " + printable(shortened(finding.value))) + ": ";
    }
    if (finding.key.empty() && !finding.value.empty()) { // a line that is no entry
        text += '"' + printable(shortened(finding.value)) + "\" ";
    }
    return text + printable(finding.message) + '\n';
}

std::string count_of(const Findings& findings) {
    std::size_t warnings = findings.warnings.size();
    for (const Finding& warning : findings.warnings) {
        if (warning.code == std::string_view("more-warnings")) {
            warnings += std::stoul(warning.value) - 1;
        }
    }
    return printable(findings.file) + ": " + number_of(findings.errors.size(), "error") + ", " +
           number_of(warnings, "warning") + '\n';
}

} // namespace ov::ctl
