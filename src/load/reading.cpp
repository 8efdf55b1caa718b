#include "load/reading.h"

#include "catalogue/catalogue.h"
#include "catalogue/right_names.h"
#include "load/steps.h"

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
           (gate.program == 0 || is_chosen(gate.program));
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

} // namespace

void print_warning(const std::string& lines) {
    std::fputs(lines.c_str(), stderr);
}

void print_refusal(const Refusal& refusal) {
    if (refusal.error != 0) {
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

namespace {

// A reader at work: the key that it reads, with the value and its line; 0 when the file lacks the
// key.
struct Reading {
    Load& load;
    const Snapshot& snapshot;
    Reader reader;
    const char* section = nullptr;
    const char* key = nullptr;
    std::string text = {};
    int line = 0;

    // Whether the file lacks the key with that number, and nothing is done then, as for most keys.
    bool leaves_default(const Columns& row, std::size_t number) {
        if (snapshot.has(number) || kind_of(row.load).absent != keep_default) {
            return false;
        }
        line = 0;
        return true;
    }
    // Loads the value of the key with that number into the setting of a row, or does what is done
    // without one.
    Verdict load_value(const Columns& row, const Variable& setting, std::size_t number);
    // The same for the rows from the number `from` up to that of `end`.
    Verdict load_rows(std::size_t from, std::size_t end);
    Verdict take(const Step& step);
    // What is to be said of the key.
    std::optional<Refusal> outcome(Verdict verdict);
};

std::optional<Refusal> Reading::outcome(Verdict verdict) {
    if (verdict == Verdict::Taken) {
        return std::nullopt;
    }
    return Refusal{verdict, reader, load.file, line, section, key, std::move(text)};
}

// Inline, since it runs for every value of a file.
inline Verdict Reading::load_value(const Columns& row, const Variable& setting,
                                   std::size_t number) {
    const Kind& kind = kind_of(row.load);
    const Manner& manner = manner_of(row.load);
    text.clear();
    bool looked_up = false;
    Verdict verdict = Verdict::MemoryExhausted;
    try {
        const bool found = snapshot.lookup(number, section, key, text, manner.mode, line) == 0;
        looked_up = true;
        const Loading loading{{manner, setting, text}, load, reader, section, line};
        verdict = found ? kind.load(loading) : kind.absent(loading);
    } catch (const std::bad_alloc&) {
        if (reader == RightsReader && !looked_up) {
            throw; // there is no value of a right yet that something could be said of
        }
    }
    return verdict;
}

Verdict Reading::load_rows(std::size_t from, std::size_t end) {
    const std::span<const Row> rows = catalogue();
    for (std::size_t number = from; number < end; ++number) {
        const Row& row = rows[number];
        if (!is_open(row.gate, load.mask, reader) || leaves_default(row, number)) {
            continue;
        }
        section = section_of(row);
        key = key_of(row);
        const Verdict verdict = load_value(row, variable_of(row), number);
        if (verdict != Verdict::Taken) {
            return verdict;
        }
    }
    return Verdict::Taken;
}

Verdict Reading::take(const Step& step) {
    if (!is_open(step.gate, load.mask, reader)) {
        return Verdict::Taken;
    }
    try {
        step.take(load);
        return Verdict::Taken;
    } catch (const std::bad_alloc&) {
        section = key = nullptr;
        text.clear();
        return Verdict::MemoryExhausted;
    }
}

} // namespace

std::optional<Refusal> load_rows(Load& load, const Snapshot& snapshot, Reader reader) {
    Reading reading{load, snapshot, reader};
    std::size_t from = 0;
    for (const Step& step : steps()) {
        Verdict verdict = reading.load_rows(from, step.before);
        if (verdict == Verdict::Taken) {
            verdict = reading.take(step);
        }
        if (verdict != Verdict::Taken) {
            return reading.outcome(verdict);
        }
        from = step.before;
    }
    return reading.outcome(reading.load_rows(from, catalogue().size()));
}

namespace {

// Whether the right is read at all: a user with the right to freeze or confirm follows the system's
// options instead of options of his own.
bool is_read(Right right, int rank) {
    switch (right) {
    case Right::Freeze_Option:
        return !setting_of<int>(Right::HoldFreeze, rank);
    case Right::Confirm_Option:
        return !setting_of<int>(Right::HoldConfirm, rank);
    default:
        return true;
    }
}

} // namespace

std::optional<Refusal> load_rights(Load& load, const Snapshot& snapshot, const char* section,
                                   int rank) {
    Reading reading{load, snapshot, RightsReader, section};
    for (const RightRow& row : rights()) {
        const auto right = static_cast<Right>(&row - rights().data());
        if (!is_read(right, rank)) {
            continue;
        }
        std::size_t number = number_of(right, section);
        reading.key = key_of(row);
        if (right == Right::ExcludeGroup && !snapshot.has(number)) {
            number = number_of_old_exclude_group(section);
            reading.key = OldExcludeGroup;
        }
        if (reading.leaves_default(row, number)) {
            continue;
        }
        const Verdict verdict = reading.load_value(row, variable_of(row, rank), number);
        if (verdict != Verdict::Taken) {
            return reading.outcome(verdict);
        }
    }
    return std::nullopt;
}

} // namespace ov
