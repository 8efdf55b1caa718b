#include "ctl/survey.h"

#include "catalogue/reset.h"
#include "catalogue/right_names.h"
#include "catalogue/settings.h"
#include "conf/snapshot.h"
#include "ctl/trial.h"
#include "kinds/kinds.h"
#include "util/disk.h"
#include "util/place.h"
#include "util/source.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

namespace ov::ctl {

namespace {

// The number of the key that sets a right in the file: of one there is an older name, too.
std::size_t number_in(const Snapshot& snapshot, Right right, const char* section) {
    const std::size_t number = number_of(right, section);
    return right == Right::ExcludeGroup && !snapshot.has(number)
               ? number_of_old_exclude_group(section)
               : number;
}

// In the place of making a directory: notes that it would be there now, in a directory that is
// there, or would be by now.
void pretend_to_make(Load& load, const std::string& path) {
    const std::string name = path.substr(0, path.find_last_not_of('/') + 1);
    const std::string parent = name.substr(0, name.rfind('/') + 1);
    const auto& known = load.directories;
    bool can_be_made = std::find(known.begin(), known.end(), parent) != known.end() &&
                       !isvalid_dir(parent.c_str());
    if (!can_be_made) {
        struct stat info = {};
        const auto place = Place::of(name.c_str(), FileKind::Installed);
        can_be_made =
            place && ::fstatat(place->at(), place->name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0 &&
            errno == ENOENT && ::faccessat(place->at(), ".", W_OK | X_OK, AT_EACCESS) == 0;
    }
    if (can_be_made) {
        load.directories.push_back(path);
    }
}

// The load of a configuration, and what is found on the way.
class Surveyor {
  public:
    Surveyor(const Document& document, Host host)
        : document_(document), source_(document.text), main_{Snapshot(source_, key_index()),
                                                             {.file = document.path.c_str(),
                                                              .mask = 0,
                                                              .make = pretend_to_make}},
          mask_(WholeMask | RC_NOTRIALS | (host == Host::MayBeAsked ? 0 : RC_NOHOST)) {}

    Survey run();

  private:
    void note(const Refusal& refusal, const Reading* reading, Load& load);
    void put_default(const Refusal& refusal, const Reading& reading, Load& load, bool is_missing);
    void find_origins(const Configuration& file, unsigned mask, std::uint8_t readers);
    void count_truly();

    const Document& document_;
    Source source_;
    Configuration main_;
    unsigned mask_;
    std::set<std::pair<const char*, std::size_t>> refused_; // keys of a file
    std::size_t missing_ = 0; // directories, of the file that is read, that have been noted
    Survey found_;
};

// Why a directory is none.
std::string why_missing(const std::string& path) {
    struct stat info = {};
    return ::stat(path.substr(0, path.find_last_not_of('/') + 1).c_str(), &info) == 0
               ? path + " is no directory"
           : errno == ENOENT ? "there is no directory " + path
                             : path + " cannot be looked at: " + std::strerror(errno);
}

// What is wrong with a value that has a row.
Finding value_finding(const Refusal& refusal, const std::string& wanted,
                      const std::string& missing) {
    const bool is_missing = !missing.empty();
    if (is_missing) {
        return {.code = "missing-directory",
                .message = why_missing(missing) + "; wanted: " + wanted};
    }
    if (refusal.verdict == Verdict::NotFullPath) {
        return {.code = "not-full-path", .message = "must begin with \"/\"; wanted: " + wanted};
    }
    if (refusal.line == 0) {
        return {.code = "no-default",
                .message = "is not set, and the host's name does not tell it; wanted: " + wanted};
    }
    const bool has_comment = refusal.value.find('#') != std::string::npos;
    return {.code = "invalid-value",
            .message = "invalid value; wanted: " + wanted +
                       (has_comment ? "; a \"#\" behind a value is a part of it" : "")};
}

Finding what_is_wrong(const Refusal& refusal, const Reading* reading, const std::string& missing) {
    const Row* row = reading ? reading->row() : nullptr;
    const RightRow* right = reading ? reading->right() : nullptr;
    if (refusal.error != 0) {
        return {.code = "cannot-open",
                .message = std::string("cannot be opened: ") + std::strerror(refusal.error)};
    }
    if (refusal.verdict == Verdict::MemoryExhausted || (!row && !right)) {
        return {.code = "no-memory", .message = "there is not enough memory"};
    }
    if (row && &kind_of(row->load) == &kinds::Path && refusal.verdict == Verdict::Invalid) {
        return {.code = "missing-path", .message = "does not exist; wanted: " + wanted(*row)};
    }
    return value_finding(refusal, row ? wanted(*row) : wanted(*right), missing);
}

// `missing` is the directory that does not exist; empty: it is something else.
Finding finding_of(const Refusal& refusal, const Reading* reading, const std::string& missing) {
    Finding finding = what_is_wrong(refusal, reading, missing);
    finding.file = refusal.file ? refusal.file : "";
    finding.line = refusal.line;
    finding.section = refusal.section ? refusal.section : "";
    finding.key = refusal.key ? refusal.key : "";
    finding.value = refusal.value;
    return finding;
}

void Surveyor::note(const Refusal& refusal, const Reading* reading, Load& load) {
    const bool is_missing = load.missing.size() > missing_;
    missing_ = load.missing.size();
    Finding finding = finding_of(refusal, reading, is_missing ? load.missing.back() : "");
    // A key of several readers is refused by each.
    if (std::none_of(found_.errors.begin(), found_.errors.end(), [&finding](const Finding& other) {
            return other.line == finding.line && other.key == finding.key &&
                   other.section == finding.section && other.file == finding.file;
        })) {
        found_.errors.push_back(std::move(finding));
    }
    if (refusal.error == 0 && reading) {
        put_default(refusal, *reading, load, is_missing);
    }
}

void Surveyor::put_default(const Refusal& refusal, const Reading& reading, Load& load,
                           bool is_missing) {
    if (const RightRow* right = reading.right()) {
        set_to_default(*right, reading.rank());
        refused_.insert(
            {load.file, number_of(static_cast<Right>(right - rights().data()), refusal.section)});
    } else if (const Row* row = reading.row()) {
        if (is_missing) {
            std::get<Text*>(variable_of(*row))->set(load.missing.back());
        } else {
            set_to_default(*row);
            refused_.insert({load.file, number_of(*row)});
            // What lies under a default that nobody has chosen is not looked at either.
            const Variable setting = variable_of(*row);
            if (const auto* text = std::get_if<Text*>(&setting);
                text && (*text)->view().ends_with('/')) {
                load.missing.emplace_back((*text)->view());
                missing_ = load.missing.size();
            }
        }
    }
}

// Notes where the keys stand that `readers` have taken from the file.
void Surveyor::find_origins(const Configuration& file, unsigned mask, std::uint8_t readers) {
    const bool is_main = &file == &main_;
    const auto origin_of = [&file, is_main, this](std::size_t number, const Columns& row) {
        std::string ignored;
        Origin origin;
        if (!refused_.contains({file.load.file, number}) &&
            file.snapshot.lookup(number, nullptr, nullptr, ignored, manner_of(row.load).mode,
                                 origin.line) == 0) {
            origin.file = is_main ? Origin::File::Main : Origin::File::Supplement;
        }
        return origin;
    };
    for (const Row& row : catalogue()) {
        const std::size_t number = number_of(row);
        bool is_read = false;
        for (const Reader reader : {MainReader, CypherReader, TransferReader, SearchReader}) {
            is_read = is_read || ((readers & reader) && is_open(row.gate, mask, reader));
        }
        if (!file.snapshot.has(number)) {
            continue;
        }
        if (is_main) {
            found_.unread[number] = found_.unread[number] && !is_read;
        }
        if (const Origin origin = is_read ? origin_of(number, row) : Origin()) {
            found_.keys[number] = origin;
        }
    }
    if (!(readers & RightsReader)) {
        return;
    }
    for (const auto& [section, index] : {std::pair{AdminSection, 0U}, {ManagerSection, 1U}}) {
        for (std::size_t i = 0; i < rights().size(); ++i) {
            const std::size_t number = number_in(file.snapshot, static_cast<Right>(i), section);
            if (const Origin origin = origin_of(number, rights()[i])) {
                found_.rights[index][i] = origin;
            }
        }
    }
}

// The line as an editor counts it: the scanner leaves out a line feed that the text begins with.
int true_line(const Document& document, int line) {
    return line + (line != 0 && document.text.starts_with('\n'));
}

void Surveyor::count_truly() {
    const auto& supplement = found_.supplement;
    for (Finding& error : found_.errors) {
        const bool is_main = error.file == document_.path || !supplement;
        error.line = true_line(is_main ? document_ : *supplement, error.line);
    }
    for (auto* origins : {&found_.keys, &found_.rights[0], &found_.rights[1]}) {
        for (Origin& origin : *origins) {
            const bool is_main = origin.file != Origin::File::Supplement || !supplement;
            origin.line = true_line(is_main ? document_ : *supplement, origin.line);
        }
    }
}

Survey Surveyor::run() {
    found_.keys.resize(catalogue().size());
    found_.unread.resize(catalogue().size(), true);
    for (auto& of_section : found_.rights) {
        of_section.resize(rights().size());
    }
    ConfigurationReading whole(main_, mask_);
    while (const std::optional<Refusal> refusal = whole.next()) {
        const auto& reading = whole.reading();
        note(*refusal, reading ? &*reading : nullptr, whole.file().load);
    }
    constexpr std::uint8_t Auxiliary = RightsReader | CypherReader | TransferReader;
    find_origins(main_, mask_, MainReader | Auxiliary);
    if (const auto& supplement = whole.supplement()) {
        // One that has gone by now has been loaded all the same.
        found_.supplement =
            read_installed(supplement->load.file).value_or(Document{supplement->load.file, ""});
        find_origins(*supplement, mask_, Auxiliary);
    }
    main_.load.mask |= RC_NOCHECK; // as for a fetch
    Reading search(main_.load, main_.snapshot, SearchReader);
    while (const std::optional<Refusal> refusal = search.next()) {
        note(*refusal, &search, main_.load);
    }
    find_origins(main_, mask_, SearchReader);
    count_truly();
    return std::move(found_);
}

} // namespace

Survey survey(const Document& document, Host host) {
    reset_settings();
    return Surveyor(document, host).run();
}

void survey_rights(const Document& document, const char* section, int rank,
                   std::vector<std::pair<std::string_view, int>>& origins,
                   std::vector<Finding>& errors) {
    Source source(document.text);
    const Snapshot snapshot(source, key_index());
    Load load{.file = document.path.c_str(), .mask = 0};
    Reading reading(load, snapshot, section, rank);
    while (const std::optional<Refusal> refusal = reading.next()) {
        errors.push_back(finding_of(*refusal, &reading, ""));
        errors.back().line = true_line(document, errors.back().line);
        set_to_default(*reading.right(), rank);
    }
    for (std::size_t i = 0; i < rights().size(); ++i) {
        const std::size_t number = number_in(snapshot, static_cast<Right>(i), section);
        std::string ignored;
        int line = 0;
        if (snapshot.lookup(number, nullptr, nullptr, ignored, manner_of(rights()[i].load).mode,
                            line) == 0) {
            origins[i] = {document.path, true_line(document, line)};
        }
    }
}

} // namespace ov::ctl
