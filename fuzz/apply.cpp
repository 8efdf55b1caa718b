// What apply plans for a main file: a second time there is nothing to do, lookups find what was
// asked for, what is refused changes nothing, and what show shows is in the file already.
//
// Input: "json" or another word, the lines of what is asked for, a line "--", and the file.
#include "ctl/plan.h"
#include "ctl/shown.h"
#include "ctl/survey.h"
#include "support.h"
#include "util/text.h"

#include <algorithm>
#include <cerrno>
#include <sys/stat.h>

using namespace ov;
using namespace ov::ctl;
using namespace ov::fuzz;

extern "C" int __wrap_mkdirat(int, const char*, mode_t) {
    require(false, "a directory is made");
    return -1;
}

static Request request_of(bool is_json, const std::string& text) {
    RequestReader reader(std::nullopt, true);
    if (is_json) {
        reader.add_json("list", text);
    } else {
        reader.add_fragment("part", text);
    }
    return reader.take();
}

static void require_applied(const std::string& text, const Difference& change) {
    Source source{std::string_view(text)};
    std::string value;
    if (change.key) {
        const int line = line_of_entry(source, change.section.c_str(), change.key->c_str(), value,
                                       MaxText + 1, LineMode);
        require((line != 0) == change.after.has_value(), "an entry is there");
        require_equal(value, change.after.value_or(""), "its value");
    }
}

// Applied to the file, what is shown of it changes nothing.
static void require_shown(const Document& file) {
    const Survey found = survey(file);
    if (!found.errors.empty() || found.supplement) {
        return;
    }
    std::string text;
    for (const ShownKey& key : shown_keys(file, found, key_names(), For::People)) {
        // A mode without an address counts as none, groups may stand under an older name, and an
        // empty list of domains is that of the host.
        const std::string_view name = key.key;
        const bool is_own = !key.file.empty() && name != "ForwardMode" && name != "ExcludeGroup" &&
                            name != "InternalDomains";
        text += !is_own ? "" : "[" + std::string(key.section) + "]\n" + line_of(key, true);
    }
    const Request request = request_of(false, text);
    for (const Finding& complaint : request.complaints) {
        // A file may have what is not taken from a person.
        require(std::string_view(complaint.code) == "control-character", in_words(complaint, ""));
    }
    if (request.status == Good) {
        const Plan plan = planned(file, request.asked);
        require_equal(plan.text, file.text, "what is shown is not what is there");
    }
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const bool is_json = input.line() == "json";
    std::string asked_text;
    for (std::string line = input.line(); !line.empty() && line != "--"; line = input.line()) {
        asked_text += line + '\n';
    }
    const Document file{scratch("main.conf"), input.rest()};
    const Request request = request_of(is_json, asked_text);
    require((request.status == Good) == request.complaints.empty(), "a complaint");
    if (request.status != Good) {
        return 0;
    }
    const Plan plan = planned(file, request.asked);
    require(plan.errors.empty() || (plan.text == file.text && plan.changed.empty()),
            "refused, and yet");
    const std::string answer = json_of(Applied{.file = file.path,
                                               .changed = plan.changed,
                                               .errors = plan.errors,
                                               .warnings = plan.warnings});
    require(answer.find('\n') == answer.size() - 1, "an answer for programs");
    if (!plan.errors.empty()) {
        return 0;
    }
    for (const Difference& change : plan.changed) {
        require_applied(plan.text, change);
    }
    const Plan again = planned({file.path, plan.text}, request.asked);
    require(again.errors.empty() && again.changed.empty(), "a second time");
    require_equal(again.text, plan.text, "the text of a second time");
    require_shown({file.path, plan.text});
    return 0;
}
