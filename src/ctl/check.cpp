#include "ctl/json.h"
#include "ctl/options.h"
#include "ctl/warnings.h"

#include <cstdio>

namespace ov::ctl {

namespace {

// Checks one file; returns the status.
int check_file(const Options& options, const std::string& file) {
    const std::optional<Document> document = read_document(file);
    if (!document) {
        const std::string reason = why_not_opened();
        const int status = not_opened(file);
        if (options.json) {
            const Finding error{.code = "cannot-open", .file = file, .message = reason};
            const Findings all{.file = file, .errors = {error}, .warnings = {}};
            std::fputs(json_of(all).c_str(), stdout);
        }
        return status;
    }
    const Survey found = survey(*document);
    const Findings findings{
        .file = file, .errors = found.errors, .warnings = warnings(*document, found)};
    if (options.json) {
        std::fputs(json_of(findings).c_str(), stdout);
    } else {
        for (const Finding& error : findings.errors) {
            std::fputs(in_words(error, "error").c_str(), stdout);
        }
        for (const Finding& warning : findings.warnings) {
            std::fputs(in_words(warning, "warning").c_str(), stdout);
        }
        std::fputs(count_of(findings).c_str(), stdout);
    }
    const bool is_good = findings.errors.empty() && !(options.strict && !findings.warnings.empty());
    return is_good ? Good : NotGood;
}

} // namespace

int check(const Options& options) {
    if (options.operands.empty()) {
        return check_file(options, options.file);
    }
    if (options.names_file) {
        return wrong_call("check takes -f or other files, not both");
    }
    int worst = Good;
    for (const std::string& file : options.operands) {
        worst = std::max<int>(worst, check_file(options, file));
    }
    return worst;
}

} // namespace ov::ctl
