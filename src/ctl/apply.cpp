#include "ctl/audit.h"
#include "ctl/json.h"
#include "ctl/options.h"
#include "ctl/plan.h"
#include "ctl/replace.h"
#include "ctl/request.h"
#include "ctl/shown.h"
#include "ctl/subject.h"
#include "ctl/text.h"

#include <cstdio>

namespace ov::ctl {

namespace {

// A changed key as an entry of a file, for people.
std::string line_of(char mark, const Difference& change, const std::string& value) {
    const std::string key = printable(change.key);
    return mark +
           (change.secret ? "# " + key + " = ********"
                          : key + " =" + (value.empty() ? "" : ' ' + printable(in_quotes(value)))) +
           '\n';
}

void print_diff(const std::vector<Difference>& changed) {
    std::string section;
    for (const Difference& change : changed) {
        if (section != change.section || change.key.empty()) {
            section = change.section;
            std::printf("%s[%s]\n", change.key.empty() ? "-" : "", printable(section).c_str());
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
        std::printf("[%s]%s%s: %s\n", printable(change.section).c_str(),
                    change.key.empty() ? "" : " ", printable(change.key).c_str(),
                    !change.after    ? "deleted"
                    : !change.before ? "added"
                                     : "changed");
    }
}

void print(const Options& options, const Applied& applied, const std::string& note) {
    if (options.json) {
        std::fputs(json_of(applied).c_str(), stdout);
        return;
    }
    for (const Finding& error : applied.errors) {
        std::fputs(in_words(error, "error").c_str(), stderr);
    }
    for (const Finding& warning : applied.warnings) {
        std::fputs(in_words(warning, "warning").c_str(), stderr);
    }
    const std::string file = printable(applied.file);
    if (!applied.errors.empty()) {
        std::fprintf(stderr, "ov_confctl: %s: nothing has been changed\n", file.c_str());
        return;
    }
    (options.diff ? print_diff : print_names)(applied.changed);
    const std::size_t count = applied.changed.size();
    if (count == 0) {
        std::printf("%s: nothing to change\n", file.c_str());
    } else {
        std::printf("%s: %zu %s%s\n", file.c_str(), count, count == 1 ? "entry" : "entries",
                    applied.written ? " changed" : " would be changed");
    }
    if (!note.empty()) {
        std::printf("%s: %s\n", file.c_str(), printable(note).c_str());
    }
    if (!applied.backup.empty()) {
        std::printf("%s: the old text is in %s\n", file.c_str(), printable(applied.backup).c_str());
    }
}

int not_done(const std::string& message) {
    std::fprintf(stderr, "ov_confctl: %s\n", printable(message).c_str());
    return NotOpened;
}

// Does what is planned, unless it is only to be told.
int carry_out(Plan plan, Target& target, const Options& options) {
    const bool is_new = plan.text != target.text;
    Applied applied{.file = target.path,
                    .changed = std::move(plan.changed),
                    .errors = std::move(plan.errors),
                    .warnings = std::move(plan.warnings)};
    std::string note;
    if (applied.errors.empty() && is_new && !options.dry_run) {
        constexpr const char* ways[] = {"renamed", "in-place", "created"};
        const Replaced done = replace(target, plan.text, options.backup);
        if (!done.error.empty()) {
            return not_done(done.error);
        }
        applied.written = true;
        applied.how = ways[static_cast<std::size_t>(done.how)];
        applied.backup = done.backup;
        note = done.how == How::InPlace ? "rewritten in place: " + done.note : done.note;
        audit(target.path, applied.changed);
    }
    print(options, applied, note);
    return applied.errors.empty() ? Good : NotGood;
}

} // namespace

int apply(const Options& options) {
    if (options.operands.empty() && options.deleted.empty()) {
        return wrong_call("apply takes Section.Key=VALUE, a fragment, or --delete");
    }
    const auto whose = options.rights ? rights_of(*options.rights) : std::nullopt;
    if (options.rights && !whose) {
        return wrong_call(WrongRights);
    }
    const Request request = read_request(options, whose);
    for (const std::string& complaint : request.complaints) {
        std::fprintf(stderr, "ov_confctl: %s\n", printable(complaint).c_str());
    }
    if (request.status != Good) {
        return request.status;
    }
    Subject subject = subject_of(options);
    if (subject.status != Good) {
        return subject.status;
    }
    subject.wish.create = options.create || options.rights;
    subject.wish.only_look = options.dry_run;
    Opened opened = open_target(subject.wish);
    if (!opened.target) {
        return not_done(opened.error);
    }
    Target& target = *opened.target;
    return carry_out(
        planned({target.path, target.text}, request.asked, subject.whose, subject.main), target,
        options);
}

} // namespace ov::ctl
