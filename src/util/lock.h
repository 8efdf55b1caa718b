// Locks on whole files.
#pragma once

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

} // namespace ov
