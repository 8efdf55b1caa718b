// What loading a configuration file takes, and what it comes to.
#pragma once

#include "catalogue/rights.h"
#include "conf/snapshot.h"
#include "kinds/loading.h"
#include "kinds/rule.h"
#include "load/steps.h"

#include <optional>
#include <string>

namespace ov {

// A value that loading has refused. The texts are those of the file's reader, and live on.
struct Refusal {
    Verdict verdict;
    Reader reader;
    const char* file;
    int line; // 0 for a value that does not stand in the file
    const char* section;
    const char* key; // of a step both are null
    std::string value;
    int error = 0; // of the file, when it is that that cannot be opened; then only its name counts
};

// Say on standard error what is wrong, and what loading has to say on the way.
void print_refusal(const Refusal& refusal);
void print_warning(const std::string& lines);

// Whether `reader` reads what stands behind the gate for callers with the load mask `mask`.
bool is_open(const Gate& gate, unsigned mask, Reader reader);

// A reader at work. It can be taken up again behind a value that it has refused.
class Reading {
  public:
    // Of the rows that are for callers with the load's mask.
    Reading(Load& load, const Snapshot& snapshot, Reader reader)
        : load_(&load), snapshot_(&snapshot), reader_(reader) {}
    // Of the rights in `section`, into the settings of the role `rank`.
    Reading(Load& load, const Snapshot& snapshot, const char* section, int rank)
        : load_(&load), snapshot_(&snapshot), reader_(RightsReader), section_(section),
          rank_(rank) {}

    // Loads on, up to the next value that is refused; nothing: all has been read.
    std::optional<Refusal> next() {
        return outcome(reader_ == RightsReader ? next_right() : next_row());
    }
    // The row of the last value, or of the last right; null: it was none.
    const Row* row() const {
        return reader_ == RightsReader ? nullptr : static_cast<const Row*>(row_);
    }
    const RightRow* right() const {
        return reader_ == RightsReader ? static_cast<const RightRow*>(row_) : nullptr;
    }
    int rank() const { return rank_; }

  private:
    Verdict load_rows(std::size_t end);
    Verdict next_row();
    Verdict next_right();
    bool leaves_default(const Columns& row, std::size_t number);
    Verdict load_value(const Columns& row, const Variable& setting, std::size_t number);
    Verdict take(const Step& step);
    std::optional<Refusal> outcome(Verdict verdict);

    Load* load_;
    const Snapshot* snapshot_;
    Reader reader_;
    const char* section_ = nullptr;
    int rank_ = 0;
    std::size_t at_ = 0; // the row that is next
    std::size_t step_ = 0;
    // The key that is read, with the value and its line; 0 when the file lacks the key.
    const char* key_ = nullptr;
    std::string text_;
    int line_ = 0;
    const Columns* row_ = nullptr;
};

// One reading, up to the first value that is refused.
inline std::optional<Refusal> load_rows(Load& load, const Snapshot& snapshot, Reader reader) {
    return Reading(load, snapshot, reader).next();
}
inline std::optional<Refusal> load_rights(Load& load, const Snapshot& snapshot, const char* section,
                                          int rank) {
    return Reading(load, snapshot, section, rank).next();
}

} // namespace ov
