#include "ctl/subject.h"

#include "ctl/survey.h"

namespace ov::ctl {

Subject subject_of(const Options& options, bool takes_role) {
    Subject subject;
    if (options.lock && options.locked) {
        subject.status = wrong_call("--lock and --locked exclude each other");
        return subject;
    }
    Wish& wish = subject.wish;
    wish.path = options.file;
    wish.main = options.file;
    wish.wait = options.wait;
    if (!options.locked) {
        wish.lock = options.lock.value_or(lock_file_of(options.file));
    }
    if (!options.rights) {
        return subject;
    }
    const auto role = takes_role ? role_of(*options.rights) : std::nullopt;
    subject.whose = role ? role : rights_of(*options.rights);
    if (!subject.whose) {
        subject.status = wrong_call(WrongRights);
        return subject;
    }
    subject.main = read_document(options.file, wish.lock, wish.wait);
    if (!subject.main) {
        subject.status = NotOpened;
        subject.errors.push_back(
            {.code = "cannot-open", .file = options.file, .message = why_not_opened()});
        return subject;
    }
    subject.errors = survey(*subject.main, Host::IsLeftAlone).errors;
    std::erase_if(subject.errors,
                  [](const Finding& error) { return error.section != "Directories"; });
    if (!subject.errors.empty()) {
        subject.status = NotGood;
        return subject;
    }
    if (!role) {
        wish.path = rights_file(*subject.whose).path;
    }
    wish.kind = FileKind::Installed;
    return subject;
}

} // namespace ov::ctl
