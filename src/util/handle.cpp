#include "util/handle.h"

#include <sys/stat.h>

namespace ov {

Fd if_regular(Fd file) {
    struct stat info = {};
    const int error = file && ::fstat(file.get(), &info) == 0 ? EINVAL : errno;
    if (!S_ISREG(info.st_mode)) {
        file.reset();
        errno = error;
    }
    return file;
}

int sync_data(int fd) {
    const int result = retried([fd] { return ::fdatasync(fd); });
    return result == -1 && errno == EINVAL ? 0 : result;
}

} // namespace ov
