// How the commands answer and end.
#pragma once

namespace ov {

// Says on standard error what is wrong and ends the process with status 1.
[[noreturn]] void refuse(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Refuses the option that getopt has answered with "?", for a command with the options `known`.
[[noreturn]] void refuse_option(const char* known);

// Ends a command that has answered, with `status`. An answer that cannot be delivered is a failure.
[[noreturn]] void finish(int status = 0);

// Prints the version, that of the search side for its commands, and ends the process.
[[noreturn]] void print_version(bool is_search);

} // namespace ov
