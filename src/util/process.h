// What concerns this process: limits, blocked signals, the clock.
#pragma once

#include <csignal>
#include <ctime>

namespace ov {

// Lifts the limits on CPU time, file size and open files, and forbids core files when the services
// say so. What the process may not change stays as it is. Clears errno.
void resetlimits();

// Adds `sig` to, or removes it from, the process's signal mask. Returns 1 when the signal was
// blocked before the call, 0 when it was not, -1 on failure. Release only what was not blocked.
int blocksignal(int sig);
int releasesignal(int sig);

// Holds back every signal that would end the process while the object lives, save those of a fault
// and SIGKILL; what came meanwhile is delivered at its end.
class HeldSignals {
  public:
    HeldSignals();
    ~HeldSignals();
    HeldSignals(const HeldSignals&) = delete;
    HeldSignals& operator=(const HeldSignals&) = delete;

  private:
    sigset_t before_{};
};

// The current time in seconds.
std::time_t curtime();

} // namespace ov
