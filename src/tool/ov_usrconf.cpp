#include "tool/commands.h"
#include "util/log.h"

#include <cstdio>
#include <cstdlib>

namespace ov {

void ov_usrconf(int, char**, int rank, int) {
    std::fprintf(stderr, "510 Not available in this version: %s (role %d)\n", ProgName, rank);
    std::exit(EXIT_FAILURE);
}

} // namespace ov
