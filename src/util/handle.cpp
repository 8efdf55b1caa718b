#include "util/handle.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace ov {

bool is_regular(const Fd& file) {
    struct stat info = {};
    return ::fstat(file.get(), &info) == 0 && S_ISREG(info.st_mode);
}

Fd open_unwaited(const char* path, int flags, mode_t mode) {
    Fd file(::open(path, flags | O_NONBLOCK | O_CLOEXEC, mode));
    if (!file && errno == EWOULDBLOCK) { // a regular file that another process has leased
        file.reset(::open(path, flags | O_CLOEXEC, mode));
    }
    return file;
}

Fd open_file(const char* path, int flags, FileKind kind) {
    if (kind == FileKind::Any) {
        return Fd(::open(path, flags | O_CLOEXEC));
    }
    Fd file = open_unwaited(path, flags);
    if (file && !is_regular(file)) {
        file.reset();
        errno = EINVAL;
    }
    return file;
}

int sync_data(int fd) {
    const int result = retried([fd] { return ::fdatasync(fd); });
    return result == -1 && errno == EINVAL ? 0 : result;
}

} // namespace ov
