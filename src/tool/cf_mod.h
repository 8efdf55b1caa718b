// Changing of rights from the command line.
#pragma once

namespace ov {

// Applies `count` assignments "key=value" to the rights file of a user, which is created when it is
// missing. Only some rights can be changed, and their values are checked lightly. A key that is
// refused, or cannot be written, is named on standard error, and the next assignment is looked at;
// an argument without "=" ends the work. Returns 0 when all was written, else -1.
int cf_mod(int rank, const char* user, int count, char** assignments);

} // namespace ov
