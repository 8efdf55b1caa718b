// The lock file that readers and writers of a configuration file share; see ov_conf(8).
#pragma once

#include "util/handle.h"

#include <chrono>
#include <string>

namespace ov::ctl {

inline constexpr int LongWait = 30; // in seconds, for whom nothing else was said

// How long a command waits, in all, for those who hold what it needs.
class Patience {
  public:
    explicit Patience(int seconds);

    // Waits for a moment. False: the time is over. Once a second has passed, it is said on standard
    // error what is waited for.
    bool lasts(const std::string& what);

  private:
    using Clock = std::chrono::steady_clock;
    Clock::time_point start_ = Clock::now();
    Clock::time_point end_;
    bool told_ = false;
};

// The lock file of a configuration file: ".lock" for ".conf", or behind another name.
std::string lock_file_of(std::string file);

// A lock: it is held as long as the object lives.
struct Held {
    Fd lock = Fd();
    bool is_busy = false;   // another one holds it, and the time is over
    std::string error = {}; // why it cannot be had, as a sentence; empty: it can
};

// The shared lock of a reader, who does not make the file. Without one, or where it cannot be
// opened, nothing is locked, and that is no error.
Held lock_for_reading(const std::string& path, Patience& patience);

// The exclusive lock of a writer. A missing lock file is made, for its owner and the group of the
// configuration file `file`. A link is not followed.
Held lock_for_writing(const std::string& path, const std::string& file, Patience& patience);

} // namespace ov::ctl
