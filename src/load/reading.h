// What loading a configuration file takes, and what it comes to.
#pragma once

#include "conf/snapshot.h"
#include "kinds/loading.h"
#include "kinds/rule.h"

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

// Loads the rows of `reader` that are for callers with the load's mask, up to the first value that
// is refused.
std::optional<Refusal> load_rows(Load& load, const Snapshot& snapshot, Reader reader);

// Loads the rights in `section` into the settings of the role `rank`, likewise.
std::optional<Refusal> load_rights(Load& load, const Snapshot& snapshot, const char* section,
                                   int rank);

} // namespace ov
