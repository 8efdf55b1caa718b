// The command line of ov_confctl.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace ov::ctl {

// How ov_confctl ends.
enum Status {
    Good = 0,
    NotGood = 1,   // a configuration is invalid, or different
    WrongCall = 2, // the call is wrong
    NoSuchName = 3,
    NotOpened = 4, // a file could not be opened, or read
};

struct Options {
    std::string file = "/etc/Tessary.conf";
    bool names_file = false; // by -f
    bool json = false;
    bool strict = false;
    bool changed = false;
    bool defaults = false;
    bool origin = false;
    bool secrets = false;
    std::optional<std::string> rights; // ROLE:USER
    std::vector<std::string> operands; // behind the command
};

// The commands. Each returns the exit status.
int check(const Options& options);
int show(const Options& options);
int diff(const Options& options);
int explain(const Options& options);

// Prints what is wrong with a call on standard error, and returns its status.
int wrong_call(const std::string& message);
// The same for a file that cannot be read, with errno; and why that is.
int not_opened(const std::string& file);
std::string why_not_opened();

} // namespace ov::ctl
