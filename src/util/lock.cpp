#include "util/lock.h"

#include "util/log.h"
#include "util/services.h"

#include <cerrno>
#include <fcntl.h>

namespace ov {

namespace {

constexpr int LockAttempts = 9;

} // namespace

int lockfile(int fd, int type) {
    struct flock64 request = {};
    request.l_type = F_RDLCK;
    if (type & LockRelease) {
        request.l_type = F_UNLCK;
    } else if (type & LockExclusive) {
        request.l_type = F_WRLCK;
    }
    request.l_whence = SEEK_SET;
    const int command = type & LockNoWait ? F_SETLK64 : F_SETLKW64;

    int result = ::fcntl(fd, command, &request);
    for (int attempt = 1; result == -1 && errno == EINTR && attempt < LockAttempts; ++attempt) {
        result = ::fcntl(fd, command, &request);
    }
    if (result != -1) {
        return 0;
    }
    if (services.level >= 2) {
        syserr("%s: fcntl failed: l_type = %d, (%d)", "lockfile", type, errno);
    }
    return errno == EINVAL ? 0 : -1;
}

} // namespace ov
