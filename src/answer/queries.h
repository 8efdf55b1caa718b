// The queries for several rights at once.
#pragma once

#include "catalogue/rights.h"

#include <span>

namespace ov {

// The rights that a query asks for; they are answered one after the other.
struct CombinedQuery {
    const char* name;
    std::span<const Right> rights;
    bool tells_freezing; // and then whether freezing messages is switched on for the user
};
std::span<const CombinedQuery> combined_queries();

// Whether freezing messages is switched on for the user of the role `rank`: by the system for those
// who may freeze, for others by an option of their own.
bool can_freeze(int rank);

} // namespace ov
