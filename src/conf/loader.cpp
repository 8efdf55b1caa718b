#include "conf/loader.h"

#include "conf/settings.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <list>
#include <new>
#include <sys/stat.h>

namespace ov {

namespace {

// A file that has been scanned, and what it looked like then.
struct Scan {
    std::string path;
    struct stat seen;
    Snapshot snapshot;
};
std::list<Scan> scans; // the main file, the local supplement, a rights file

bool same_time(const timespec& a, const timespec& b) {
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

bool unchanged(const struct stat& then, const struct stat& now) {
    return then.st_dev == now.st_dev && then.st_ino == now.st_ino && then.st_size == now.st_size &&
           same_time(then.st_mtim, now.st_mtim) && same_time(then.st_ctim, now.st_ctim);
}

// Whether the caller of a reader with the load mask `mask` wants what stands behind `gate`.
bool is_open(const Gate& gate, unsigned mask, Reader reader) {
    if (!(gate.readers & reader)) {
        return false;
    }
    return (gate.any == 0 || (mask & gate.any) != 0) && (mask & gate.unless) == 0 &&
           (gate.program == 0 || gate.program == MailSubmissionProgram);
}

const char* shown(const char* text) {
    return text ? text : "<null>";
}

// Prints what the readers report of a value: file, line, section, key and value, and then `what`.
void print_value(const Loading& loading, const char* what) {
    // A step has no key.
    const char* key = loading.row.section ? loading.row.key : nullptr;
    std::fprintf(stderr, "%s:%d: [%s] %s: \"%s\" %s\n", shown(loading.file), scan_linenumber,
                 shown(loading.row.section), shown(key), loading.value.c_str(), what);
}

void print_invalid(const Loading& loading) {
    switch (loading.reader) {
    case MainReader:
        print_value(loading, "invalid value ");
        break;
    case SearchReader:
        print_value(loading, "invalid value");
        break;
    default:
        std::fprintf(stderr, "%s:%d: invalid value, [%s] %s: %s\n", shown(loading.file),
                     scan_linenumber, shown(loading.row.section), shown(loading.row.key),
                     loading.value.c_str());
    }
}

// Reports a value that has been refused and ends the process.
[[noreturn]] void refuse(const Loading& loading, Verdict verdict) {
    const bool tells_more = loading.reader == MainReader || loading.reader == SearchReader;
    if (verdict == Verdict::NotFullPath && tells_more) {
        print_value(loading, "must be specified full pathname.");
    } else if (verdict == Verdict::NotConfigured) {
        print_value(loading, "cannnot configuration ");
    } else {
        if (verdict == Verdict::MemoryExhausted) {
            std::fputs("Out of memory!\n", stderr);
        }
        print_invalid(loading);
    }
    std::exit(EXIT_FAILURE);
}

// Loads one row. Its value, when the file has one, goes to `value`.
Verdict load_row(const Snapshot& snapshot, const Loading& loading, std::string& value) {
    const Row& row = loading.row;
    try {
        const bool is_step = !row.section;
        value.clear();
        const bool found = !is_step && snapshot.lookup(row, value, row.rule.mode) == 0;
        const LoadRule::Function function = found || is_step ? row.rule.load : row.rule.absent;
        return function ? function(loading) : Verdict::Taken;
    } catch (const std::bad_alloc&) {
        return Verdict::MemoryExhausted;
    }
}

} // namespace

const Snapshot* scan(const char* path, FileKind kind) {
    struct stat now {};
    const bool there = ::stat(path, &now) == 0;
    for (auto last = scans.begin(); last != scans.end(); ++last) {
        if (last->path == path) {
            if (there && unchanged(last->seen, now)) {
                return &last->snapshot;
            }
            scans.erase(last);
            break;
        }
    }
    std::optional<Snapshot> snapshot = Snapshot::open(path, kind);
    if (!snapshot) {
        return nullptr;
    }
    return &scans.emplace_back(Scan{path, now, std::move(*snapshot)}).snapshot;
}

const Snapshot* scan_for_loading(const char* path) {
    const Snapshot* snapshot = scan(path);
    if (!snapshot) {
        std::fprintf(stderr, "cannot open configfile \"%s\" (%d)\n", path, errno);
    }
    return snapshot;
}

int fetch_scanned(const char* path, const char* sec, const char* key, std::string& ans) {
    const int section = find_section(sec);
    const int row = section == -1 ? -1 : find_row(section, key);
    struct stat info {};
    const bool regular = ::stat(path, &info) == 0 && S_ISREG(info.st_mode);
    const Snapshot* snapshot = row != -1 && regular ? scan(path) : nullptr;
    return snapshot ? snapshot->lookup(catalogue()[static_cast<std::size_t>(row)], sec, key, ans,
                                       LineMode)
                    : conf_fetch(path, sec, key, ans, MaxText + 1);
}

void forget_scans() {
    scans.clear();
}

void load_rows(const Snapshot& snapshot, const char* file, unsigned mask, Reader reader) {
    std::string value;
    for (const Row& row : catalogue()) {
        if (!is_open(row.gate, mask, reader)) {
            continue;
        }
        const Loading loading{row, value, file, mask, reader};
        const Verdict verdict = load_row(snapshot, loading, value);
        if (verdict != Verdict::Taken) {
            refuse(loading, verdict);
        }
    }
}

} // namespace ov
