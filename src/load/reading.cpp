#include "load/reading.h"

#include "catalogue/catalogue.h"
#include "catalogue/right_names.h"
#include "load/steps.h"

#include <cstdio>
#include <new>

namespace ov {

bool is_open(const Gate& gate, unsigned mask, Reader reader) {
    if (!(gate.readers & reader)) {
        return false;
    }
    return (gate.any == 0 || (mask & gate.any) != 0) && (mask & gate.unless) == 0 &&
           (gate.program == 0 || is_chosen(gate.program));
}

namespace {

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

// Whether the file lacks the key with that number, and nothing is done then, as for most keys.
inline bool Reading::leaves_default(const Columns& row, std::size_t number) {
    if (snapshot_->has(number) || kind_of(row.load).absent != keep_default) {
        return false;
    }
    line_ = 0;
    return true;
}

std::optional<Refusal> Reading::outcome(Verdict verdict) {
    if (verdict == Verdict::Taken) {
        return std::nullopt;
    }
    return Refusal{verdict, reader_, load_->file, line_, section_, key_, std::move(text_)};
}

// Loads the value of the key with that number into the setting of a row, or does what is done
// without one. Inline, since it runs for every value of a file.
inline Verdict Reading::load_value(const Columns& row, const Variable& setting,
                                   std::size_t number) {
    const Kind& kind = kind_of(row.load);
    const Manner& manner = manner_of(row.load);
    row_ = &row;
    text_.clear();
    bool looked_up = false;
    Verdict verdict = Verdict::MemoryExhausted;
    try {
        const bool found =
            snapshot_->lookup(number, section_, key_, text_, manner.mode, line_) == 0;
        looked_up = true;
        const Loading loading{{manner, setting, text_}, *load_, reader_, section_, line_};
        verdict = found ? kind.load(loading) : kind.absent(loading);
    } catch (const std::bad_alloc&) {
        if (reader_ == RightsReader && !looked_up) {
            throw; // there is no value of a right yet that something could be said of
        }
    }
    return verdict;
}

Verdict Reading::take(const Step& step) {
    if (!is_open(step.gate, load_->mask, reader_) ||
        (step.makes_files && (load_->mask & RC_NOTRIALS))) {
        return Verdict::Taken;
    }
    try {
        step.take(*load_);
        return Verdict::Taken;
    } catch (const std::bad_alloc&) {
        section_ = key_ = nullptr;
        row_ = nullptr;
        text_.clear();
        return Verdict::MemoryExhausted;
    }
}

// The same for the rows up to that of `end`.
Verdict Reading::load_rows(std::size_t end) {
    const std::span<const Row> rows = catalogue();
    const unsigned mask = load_->mask;
    for (std::size_t number = at_; number < end; ++number) {
        const Row& row = rows[number];
        if (!is_open(row.gate, mask, reader_) || leaves_default(row, number)) {
            continue;
        }
        section_ = section_of(row);
        key_ = key_of(row);
        const Verdict verdict = load_value(row, variable_of(row), number);
        if (verdict != Verdict::Taken) {
            at_ = number + 1;
            return verdict;
        }
    }
    at_ = end;
    return Verdict::Taken;
}

Verdict Reading::next_row() {
    const std::span<const Step> all = steps();
    Verdict verdict = Verdict::Taken;
    while (verdict == Verdict::Taken && step_ < all.size()) {
        verdict = at_ < all[step_].before ? load_rows(all[step_].before) : take(all[step_++]);
    }
    return verdict == Verdict::Taken ? load_rows(catalogue().size()) : verdict;
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

Verdict Reading::next_right() {
    Verdict verdict = Verdict::Taken;
    while (verdict == Verdict::Taken && at_ < rights().size()) {
        const auto right = static_cast<Right>(at_);
        const RightRow& row = rights()[at_++];
        if (!is_read(right, rank_)) {
            continue;
        }
        std::size_t number = number_of(right, section_);
        key_ = key_of(row);
        if (right == Right::ExcludeGroup && !snapshot_->has(number)) {
            number = number_of_old_exclude_group(section_);
            key_ = OldExcludeGroup;
        }
        if (!leaves_default(row, number)) {
            verdict = load_value(row, variable_of(row, rank_), number);
        }
    }
    return verdict;
}

} // namespace ov
