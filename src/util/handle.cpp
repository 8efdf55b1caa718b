#include "util/handle.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace ov {

Fd open_file(const char* path, int flags, FileKind kind) {
    const bool regular = kind == FileKind::Regular;
    Fd file(::open(path, flags | (regular ? O_NONBLOCK : 0) | O_CLOEXEC));
    struct stat info {};
    if (file && regular && (::fstat(file.get(), &info) != 0 || !S_ISREG(info.st_mode))) {
        file.reset();
        errno = EINVAL;
    }
    return file;
}

int sync_data(int fd) {
    const int result = retried([fd] { return ::fdatasync(fd); });
    return result == -1 && (errno == EINVAL || errno == EROFS) ? 0 : result;
}

} // namespace ov
