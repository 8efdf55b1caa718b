#include "answer/get_vals.h"

#include "catalogue/catalogue.h"
#include "conf/lookup.h"
#include "util/text.h"

#include <cstdio>

namespace ov {

std::optional<std::string> get_vals(const char* file, const char* section, const char* key,
                                    int all) {
    std::optional<Source> source = Source::open(file);
    std::string written;
    const bool found = source && conf_getprofile(*source, section, key, written, MaxText + 1) == 0;
    if (!source || !source->is_whole()) {
        std::fprintf(stderr, "cannot open: %s\n", file);
        return std::nullopt;
    }
    if (found && all == 0) {
        return written;
    }
    const Row* row = find_row(section, key);
    return row ? shown(*row, variable_of(*row)) : std::nullopt;
}

} // namespace ov
