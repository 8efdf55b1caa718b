#include "ctl/audit.h"
#include "ctl/json.h"
#include "ctl/options.h"
#include "ctl/plan.h"
#include "ctl/replace.h"
#include "ctl/request.h"
#include "ctl/shown.h"
#include "ctl/subject.h"
#include "ctl/widened.h"
#include "reference/text.h"
#include "util/process.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <map>
#include <utility>

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
            std::printf("%s[%s]\n",
                        change.key     ? ""
                        : change.after ? "+"
                                       : "-",
                        printable(section).c_str());
        }
        if (!change.key) {
            continue;
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
    if (applied.how == "removed") {
        std::printf("%s: removed\n", file.c_str());
    } else if (count == 0) {
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

// The same where nothing is done. `user`: of many.
int refuse(const Options& options, std::vector<Finding> errors, int status, const std::string& file,
           const std::string& user = "") {
    print(options, {.user = user, .file = file, .errors = std::move(errors)});
    return status;
}

// What is wrong with a file, of a sentence that names it, or its lock file.
Finding because(const char* code, const std::string& file, const std::string& sentence) {
    const std::string front = file + ": ";
    return {.code = code,
            .file = file,
            .message = sentence.starts_with(front) ? sentence.substr(front.size()) : sentence};
}

// Whether the file of one of many users is to go.
bool is_removal(const std::vector<Asked>& asked) {
    return asked.size() == 1 && !asked[0].key && !asked[0].user.empty() && !asked[0].file_only;
}

// What becomes of the file.
Plan plan_of(const Target& target, std::vector<Asked> asked, const Subject& subject,
             const Options& options) {
    if (is_removal(asked)) {
        Plan plan = planned({target.path, target.text},
                            {{.section = asked[0].section, .key = std::nullopt, .value = {}}},
                            subject.whose, subject.main);
        plan.errors.clear(); // the defaults are never wrong
        plan.text.clear();
        if (plan.changed.empty() && target.exists) {
            plan.changed.push_back({.section = asked[0].section});
        }
        return plan;
    }
    const KnownKeys known(subject.whose);
    if (options.exact) {
        add_others(asked, target.text, known);
    }
    const bool is_wanted =
        std::erase_if(asked, [](const Asked& one) { return one.file_only; }) != 0;
    if (options.prune) {
        widen_to_sections(asked, target.text);
    }
    Plan plan = planned({target.path, target.text}, asked, subject.whose, subject.main);
    if (is_wanted && !target.exists && plan.errors.empty() && plan.text.empty()) {
        plan.text = std::string("[") + known.role_section() + "]\n";
        plan.changed = {{.section = known.role_section(), .after = ""}};
    }
    return plan;
}

// Does what is planned, unless it is only to be told.
int carry_out(Target& target, const std::vector<Asked>& asked, const Subject& subject,
              const Options& options) {
    Plan plan = plan_of(target, asked, subject, options);
    const bool goes = is_removal(asked);
    const bool is_new = plan.errors.empty() && (goes ? target.exists : plan.text != target.text);
    Applied applied{.user = asked.empty() ? "" : asked[0].user,
                    .file = target.path,
                    .changed = std::move(plan.changed),
                    .errors = std::move(plan.errors),
                    .warnings = std::move(plan.warnings)};
    const HeldSignals held; // what has been done is logged and told
    if (is_new && !options.dry_run) {
        constexpr const char* ways[] = {"renamed", "in-place", "created", "removed"};
        const Replaced done =
            goes ? remove(target, options.backup) : replace(target, plan.text, options.backup);
        if (!done.error.empty()) {
            return refuse(options, {because("cannot-write", target.path, done.error)}, NotOpened,
                          target.path, applied.user);
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

// Opens the file, and does what is asked for.
int apply_to(const Subject& subject, const std::vector<Asked>& asked, const Options& options) {
    const std::string& path = subject.wish.path;
    Opened opened = open_target(subject.wish);
    if (!opened.target) {
        const char* code = opened.is_locked ? "locked" : "cannot-open";
        return refuse(options, {because(code, path, opened.error)}, NotOpened, path,
                      asked.empty() ? "" : asked[0].user);
    }
    return carry_out(*opened.target, asked, subject, options);
}

// Users with what is asked for of each, in the order of the call. With --purge those who are not
// named are to go.
std::vector<std::vector<Asked>> by_user(const std::vector<Asked>& all, int rank,
                                        const std::vector<std::string>& present) {
    std::vector<std::vector<Asked>> users;
    std::map<std::string, std::size_t> places;
    for (const Asked& asked : all) {
        const auto [place, is_new] = places.insert({asked.user, users.size()});
        if (is_new) {
            users.emplace_back();
        }
        users[place->second].push_back(asked);
    }
    const std::string section = rights_file({rank, "_"}).section;
    for (const std::string& user : present) {
        if (!places.contains(user)) {
            users.push_back({{.section = section, .key = std::nullopt, .value = {}, .user = user}});
        }
    }
    return users;
}

// The same for many users of a role, under one lock.
int apply_to_users(const Options& options, const RightsOf& role, const Request& request) {
    Subject subject = subject_of(options, true);
    if (subject.status == WrongCall) {
        return subject.status;
    }
    if (subject.status != Good) {
        return refuse(options, subject.errors, subject.status, options.file);
    }
    Patience patience(options.wait);
    Held lock;
    if (subject.wish.lock) {
        lock = options.dry_run ? lock_for_reading(*subject.wish.lock, patience)
                               : lock_for_writing(*subject.wish.lock, options.file, patience);
        if (!lock.error.empty()) {
            return refuse(options, {because("locked", options.file, lock.error)}, NotOpened,
                          options.file);
        }
        subject.wish.lock.reset();
    }
    std::optional<std::vector<std::string>> present(std::in_place);
    if (options.purge && !(present = users_of(role.rank))) {
        const std::string files = rights_file({role.rank, "*"}).path;
        return refuse(options, {because("cannot-open", files, std::strerror(errno))}, NotOpened,
                      files);
    }
    subject.wish.create = true;
    subject.wish.only_look = options.dry_run;
    const std::string pattern = rights_file({role.rank, "*"}).path;
    int status = Good;
    for (const std::vector<Asked>& asked : by_user(request.asked, role.rank, *present)) {
        subject.whose = RightsOf{role.rank, asked[0].user};
        subject.wish.path = std::string(pattern).replace(pattern.rfind('*'), 1, asked[0].user);
        status = std::max(status, apply_to(subject, asked, options));
    }
    return status;
}

} // namespace

int apply(const Options& options) {
    const bool has_file_alone = options.rights && (options.create || options.purge);
    if (options.operands.empty() && options.deleted.empty() && !has_file_alone) {
        return wrong_call("apply takes NAME=VALUE, a fragment, or --delete");
    }
    const auto role = options.rights ? role_of(*options.rights) : std::nullopt;
    const auto whose = options.rights && !role ? rights_of(*options.rights) : role;
    if (options.rights && !whose) {
        return wrong_call(WrongRights);
    }
    if (options.purge && !role) {
        return wrong_call("--purge takes --rights ROLE, without a user");
    }
    Request request = read_request(options, whose);
    if (request.status != Good) {
        return refuse(options, request.complaints, request.status, options.file);
    }
    if (role) {
        return apply_to_users(options, *role, request);
    }
    if (options.rights && options.create) {
        request.asked.push_back({.section = KnownKeys(whose).role_section(), .file_only = true});
    }
    Subject subject = subject_of(options);
    if (subject.status == WrongCall) {
        return subject.status;
    }
    if (subject.status != Good) {
        return refuse(options, subject.errors, subject.status, options.file);
    }
    Wish& wish = subject.wish;
    wish.create = options.create || options.rights;
    wish.may_be_empty = options.create;
    wish.only_look = options.dry_run;
    return apply_to(subject, request.asked, options);
}

} // namespace ov::ctl
