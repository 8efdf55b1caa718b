// What takes more than one key: the steps between the rows of the catalogue.
#pragma once

#include "catalogue/catalogue.h"
#include "kinds/loading.h"

#include <span>

namespace ov {

// A step of the main reader, taken before the row with the number `before`, behind its gate.
struct Step {
    std::size_t before;
    Gate gate;
    bool makes_files; // to try something
    void (*take)(const Load& load);
};

// All steps, in the order of their rows.
std::span<const Step> steps();

} // namespace ov
