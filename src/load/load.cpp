#include "load/load.h"

#include "catalogue/catalogue.h"

#include <cstdio>
#include <new>

namespace ov {

namespace {

// Whether the caller of a reader with the load mask `mask` wants what stands behind `gate`.
bool is_open(const Gate& gate, unsigned mask, Reader reader) {
    if (!(gate.readers & reader)) {
        return false;
    }
    return (gate.any == 0 || (mask & gate.any) != 0) && (mask & gate.unless) == 0 &&
           (gate.program == 0 || gate.program == MailSubmissionProgram);
}

const char* or_null(const char* text) {
    return text ? text : "<null>";
}

// Prints what the readers report of a value: file, line, section, key and value, and then `what`.
void print_value(const Refusal& refusal, const char* what) {
    std::fprintf(stderr, "%s:%d: [%s] %s: \"%s\" %s\n", or_null(refusal.file), refusal.line,
                 or_null(refusal.section), or_null(refusal.key), refusal.value.c_str(), what);
}

void print_invalid(const Refusal& refusal) {
    switch (refusal.reader) {
    case MainReader:
        print_value(refusal, "invalid value ");
        break;
    case SearchReader:
        print_value(refusal, "invalid value");
        break;
    default:
        std::fprintf(stderr, "%s:%d: invalid value, [%s] %s: %s\n", or_null(refusal.file),
                     refusal.line, or_null(refusal.section), or_null(refusal.key),
                     refusal.value.c_str());
    }
}

// Loads a value that has been found, or does what is done without one.
Verdict load_value(const Kind& kind, const Loading& loading, bool found) {
    const auto function = found ? kind.load : kind.absent;
    return function ? function(loading) : Verdict::Taken;
}

} // namespace

void print_warning(const std::string& lines) {
    std::fputs(lines.c_str(), stderr);
}

void print_refusal(const Refusal& refusal) {
    if (refusal.verdict == Verdict::CannotOpen) {
        std::fprintf(stderr, "cannot open configfile \"%s\" (%d)\n", refusal.file, refusal.error);
        return;
    }
    const bool tells_more = refusal.reader == MainReader || refusal.reader == SearchReader;
    if (refusal.verdict == Verdict::NotFullPath && tells_more) {
        print_value(refusal, "must be specified full pathname.");
    } else if (refusal.verdict == Verdict::NotConfigured) {
        print_value(refusal, "cannnot configuration ");
    } else {
        if (refusal.verdict == Verdict::MemoryExhausted) {
            std::fputs(refusal.reader == RightsReader ? "malloc error\n" : "Out of memory!\n",
                       stderr);
        }
        print_invalid(refusal);
    }
}

std::optional<Refusal> load_rows(Load& load, const Snapshot& snapshot, Reader reader) {
    std::string value;
    for (const Row& row : catalogue()) {
        if (!is_open(row.gate, load.mask, reader)) {
            continue;
        }
        const Kind& kind = kind_of(row.load);
        const bool step = is_step(row);
        if (!step && !kind.absent && !snapshot.has(number_of(row))) {
            scan_linenumber = 0; // as after a lookup
            continue;
        }
        const Manner& manner = manner_of(row.load);
        const char* section = section_of(row);
        value.clear();
        Verdict verdict = Verdict::Taken;
        try {
            const bool found = step || snapshot.lookup(number_of(row), section, key_of(row), value,
                                                       manner.mode) == 0;
            verdict = load_value(
                kind, {{manner, variable_of(row), value}, load, reader, section, scan_linenumber},
                found);
        } catch (const std::bad_alloc&) {
            verdict = Verdict::MemoryExhausted;
        }
        if (verdict != Verdict::Taken) {
            return Refusal{verdict,         reader,  load.file,
                           scan_linenumber, section, step ? nullptr : key_of(row),
                           std::move(value)};
        }
    }
    return std::nullopt;
}

namespace {

// Whether the right is read at all: a user with the right to freeze or confirm follows the system's
// options instead of options of his own.
bool is_read(Right right, int rank) {
    const auto role = static_cast<std::size_t>(rank);
    switch (right) {
    case Right::Freeze_Option:
        return !CF_HoldFreeze[role];
    case Right::Confirm_Option:
        return !CF_HoldConfirm[role];
    default:
        return true;
    }
}

} // namespace

std::optional<Refusal> load_rights(Load& load, const Snapshot& snapshot, const char* section,
                                   int rank) {
    std::string value;
    for (const RightRow& row : rights()) {
        const auto right = static_cast<Right>(&row - rights().data());
        if (!is_read(right, rank)) {
            continue;
        }
        const Manner& manner = manner_of(row.load);
        const char* key = key_of(row);
        bool found =
            snapshot.lookup(number_of(right, section), section, key, value, manner.mode) == 0;
        if (!found && right == Right::ExcludeGroup) {
            key = OldExcludeGroup;
            found = snapshot.lookup(number_of_old_exclude_group(section), section, key, value,
                                    manner.mode) == 0;
        }
        Verdict verdict = Verdict::Taken;
        try {
            verdict = load_value(kind_of(row.load),
                                 {{manner, variable_of(row, rank), value},
                                  load,
                                  RightsReader,
                                  section,
                                  scan_linenumber},
                                 found);
        } catch (const std::bad_alloc&) {
            verdict = Verdict::MemoryExhausted;
        }
        if (verdict != Verdict::Taken) {
            return Refusal{verdict, RightsReader, load.file,       scan_linenumber,
                           section, key,          std::move(value)};
        }
    }
    return std::nullopt;
}

} // namespace ov
