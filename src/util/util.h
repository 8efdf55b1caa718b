// Small services of the operating system: locks, limits, blocked signals, the clock, free disk
// space, and helpers for texts.
#pragma once

#include <csignal>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string_view>

namespace ov {

// Bits of the `type` of lockfile.
inline constexpr int LockExclusive = 0x2; // a write lock; without it a read lock
inline constexpr int LockNoWait = 0x4;    // fail at once when another process holds the lock
inline constexpr int LockRelease = 0x8;   // unlock, whatever the other bits say

// Locks or unlocks the whole file with an advisory record lock. The lock belongs to the process:
// closing any descriptor of the file releases it. An interrupted attempt is repeated, nine
// attempts in all. A file system without locking counts as locked.
// Returns 0, or -1 with errno set; a failure is logged from the level 2 on.
int lockfile(int fd, int type);

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

// The blocks available to unprivileged users on the file system of `dir`, and through `bsize`,
// when it is given, their size in bytes. -1 when the file system cannot be queried.
std::int64_t freeblocks(const char* dir, long* bsize);

// Copies at most `len` - 1 characters and always terminates when `len` is not 0. Returns the
// length of `src`.
std::size_t strlcpy(char* dst, const char* src, std::size_t len);

// Whether the text is not empty and made of decimal digits only (no sign, no blank).
int is_alldigit(std::string_view text);
inline int is_alldigit(const char* text) {
    return text && is_alldigit(std::string_view(text));
}

} // namespace ov
