// Small services of the operating system: limits, blocked signals, the clock; and helpers for
// texts.
#pragma once

#include <csignal>
#include <cstddef>
#include <ctime>
#include <string_view>

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

// Copies at most `len` - 1 characters and always terminates when `len` is not 0. Returns the
// length of `src`.
std::size_t strlcpy(char* dst, const char* src, std::size_t len);

// Whether the text is not empty and made of decimal digits only (no sign, no blank).
int is_alldigit(std::string_view text);
inline int is_alldigit(const char* text) {
    return text && is_alldigit(std::string_view(text));
}

} // namespace ov
