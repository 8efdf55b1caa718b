#include "util/handle.h"

#include <sys/stat.h>

namespace ov {

bool is_regular(const Fd& file) {
    struct stat info = {};
    return ::fstat(file.get(), &info) == 0 && S_ISREG(info.st_mode);
}

int sync_data(int fd) {
    const int result = retried([fd] { return ::fdatasync(fd); });
    return result == -1 && errno == EINVAL ? 0 : result;
}

} // namespace ov
