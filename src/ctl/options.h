// The command line of ov_confctl.
#pragma once

#include "ctl/lock_file.h"

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
    NotOpened = 4, // a file could not be opened, read, locked or written
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
    bool dry_run = false;
    bool diff = false;
    bool backup = false;
    bool create = false;
    bool unknown = false;
    bool exact = false;
    bool prune = false;
    bool purge = false;
    bool locked = false;
    int wait = LongWait; // for locks, in seconds
    std::optional<std::string> lock;
    std::optional<std::string> put_back;
    std::optional<std::string> remove;
    std::optional<std::string> rights; // ROLE:USER, or ROLE for all its users
    std::vector<std::string> deleted;  // names of what is to go
    std::vector<std::string> operands; // behind the command
};

// The commands. Each returns the exit status.
int check(const Options& options);
int show(const Options& options);
int diff(const Options& options);
int explain(const Options& options);
int apply(const Options& options);
int recover(const Options& options);

// Prints what is wrong with a call on standard error, and returns its status.
int wrong_call(const std::string& message);
// The same for a file that cannot be read, with errno; and for anything else.
int not_opened(const std::string& file);
int failed(const std::string& message, int status);

} // namespace ov::ctl
