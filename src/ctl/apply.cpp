#include "ctl/audit.h"
#include "ctl/json.h"
#include "ctl/options.h"
#include "ctl/plan.h"
#include "ctl/replace.h"
#include "ctl/request.h"
#include "ctl/shown.h"
#include "ctl/subject.h"
#include "ctl/text.h"
#include "util/process.h"

#include <cstdio>

namespace ov::ctl {

namespace {

// A changed key as an entry of a file, for people.
std::string line_of(char mark, const Difference& change, const std::string& value) {
    const std::string key = printable(change.key.value_or(""));
    return mark +
           (change.secret ? "# " + key + " = ********"
                          : key + " =" + (value.empty() ? "" : ' ' + printable(in_quotes(value)))) +
           '\n';
}

void print_diff(const std::vector<Difference>& changed) {
    std::string section;
    for (const Difference& change : changed) {
        if (section != change.section || !change.key) {
            section = change.section;
            std::printf("%s[%s]\n", change.key ? "" : "-", printable(section).c_str());
        }
        if (change.before) {
            std::fputs(line_of('-', change, *change.before).c_str(), stdout);
        }
        if (change.after) {
            std::fputs(line_of('+', change, *change.after).c_str(), stdout);
        }
    }
}

void print_names(const std::vector<Difference>& changed) {
    for (const Difference& change : changed) {
        std::printf("[%s]%s%s: %s\n", printable(change.section).c_str(), change.key ? " " : "",
                    printable(change.key.value_or("")).c_str(),
                    !change.after    ? "deleted"
                    : !change.before ? "added"
                                     : "changed");
    }
}

// What has been done, for people.
void print_done(const Applied& applied, bool by_values) {
    (by_values ? print_diff : print_names)(applied.changed);
    const std::string file = printable(applied.file);
    const std::size_t count = applied.changed.size();
    if (count == 0) {
        std::printf("%s: nothing to change\n", file.c_str());
    } else {
        std::printf("%s: %zu %s%s\n", file.c_str(), count, count == 1 ? "entry" : "entries",
                    applied.written ? " changed" : " would be changed");
    }
    if (!applied.note.empty()) {
        std::printf("%s: %s%s\n", file.c_str(),
                    applied.how == "in-place" ? "rewritten in place: " : "",
                    printable(applied.note).c_str());
    }
    if (!applied.backup.empty()) {
        std::printf("%s: the old text is in %s\n", file.c_str(), printable(applied.backup).c_str());
    }
}

// Gives the answer. Who cannot have it is told so, but the status tells what has become of the
// file.
void print(const Options& options, const Applied& applied) {
    if (options.json) {
        std::fputs(json_of(applied).c_str(), stdout);
    } else {
        for (const Finding& error : applied.errors) {
            std::fputs(in_words(error, "error").c_str(), stderr);
        }
        for (const Finding& warning : applied.warnings) {
            std::fputs(in_words(warning, "warning").c_str(), stderr);
        }
        if (applied.errors.empty()) {
            print_done(applied, options.diff);
        } else {
            failed(applied.file + ": nothing has been changed", NotGood);
        }
    }
    if (applied.written && (std::fflush(stdout) != 0 || std::ferror(stdout))) {
        failed("the change has been made, but the answer cannot be written", Good);
        std::clearerr(stdout);
    }
}

int refuse(const Options& options, const std::string& file, std::vector<Finding> errors,
           int status) {
    print(options, {.file = file, .errors = std::move(errors)});
    return status;
}

// What is wrong with a file, of a sentence that names it, or its lock file.
Finding because(const char* code, const std::string& file, const std::string& sentence) {
    const std::string front = file + ": ";
    return {.code = code,
            .file = file,
            .message = sentence.starts_with(front) ? sentence.substr(front.size()) : sentence};
}

// Does what is planned, unless it is only to be told.
int carry_out(Plan plan, Target& target, const Options& options) {
    const bool is_new = plan.errors.empty() && plan.text != target.text;
    Applied applied{.file = target.path,
                    .changed = std::move(plan.changed),
                    .errors = std::move(plan.errors),
                    .warnings = std::move(plan.warnings)};
    const HeldSignals held; // what has been done is logged and told
    if (is_new && !options.dry_run) {
        constexpr const char* ways[] = {"renamed", "in-place", "created"};
        const Replaced done = replace(target, plan.text, options.backup);
        if (!done.error.empty()) {
            return refuse(options, target.path, {because("cannot-write", target.path, done.error)},
                          NotOpened);
        }
        applied.written = true;
        applied.how = ways[static_cast<std::size_t>(done.how)];
        applied.note = done.note;
        applied.backup = done.backup;
        audit(target.path, applied.changed);
    } else if (!options.dry_run) {
        tidy(target);
    }
    print(options, applied);
    return applied.errors.empty() ? Good : NotGood;
}

} // namespace

int apply(const Options& options) {
    if (options.operands.empty() && options.deleted.empty()) {
        return wrong_call("apply takes NAME=VALUE, a fragment, or --delete");
    }
    const auto whose = options.rights ? rights_of(*options.rights) : std::nullopt;
    if (options.rights && !whose) {
        return wrong_call(WrongRights);
    }
    const Request request = read_request(options, whose);
    if (request.status != Good) {
        return refuse(options, options.file, request.complaints, request.status);
    }
    Subject subject = subject_of(options);
    if (subject.status == WrongCall) {
        return subject.status;
    }
    if (subject.status != Good) {
        return refuse(options, options.file, subject.errors, subject.status);
    }
    Wish& wish = subject.wish;
    wish.create = options.create || options.rights;
    wish.may_be_empty = options.create;
    wish.only_look = options.dry_run;
    Opened opened = open_target(wish);
    if (!opened.target) {
        const char* code = opened.is_locked ? "locked" : "cannot-open";
        return refuse(options, wish.path, {because(code, wish.path, opened.error)}, NotOpened);
    }
    Target& target = *opened.target;
    return carry_out(
        planned({target.path, target.text}, request.asked, subject.whose, subject.main), target,
        options);
}

} // namespace ov::ctl
