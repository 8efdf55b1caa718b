#include "util/disk.h"

#include "util/paths.h"
#include "util/text.h"

#include <limits>
#include <sys/stat.h>
#include <sys/statfs.h>

namespace ov {

namespace {

bool is_regular_file(const char* path) {
    struct stat info = {};
    return ::stat(path, &info) == 0 && S_ISREG(info.st_mode);
}

} // namespace

int isvalid_file(const char* dir, const char* file) {
    const std::optional<std::string> path = mk_filepath(dir, file);
    return path && is_regular_file(path->c_str());
}

int isvalid_program(const char* path) {
    return isfullpath(path) && isvalid_file(nullptr, path);
}

int isvalid_full_dir(const char* path) {
    return isfullpath(path) && isvalid_dir(path);
}

int isvalid_dir(const char* path) {
    struct stat info = {};
    return path && std::string_view(path).size() <= MaxPath && ::stat(path, &info) == 0 &&
           S_ISDIR(info.st_mode);
}

std::int64_t freeblocks(const char* dir, std::int64_t* bsize) {
    struct statfs64 info = {};
    if (::statfs64(dir, &info) != 0) {
        return -1;
    }
    if (bsize) {
        *bsize = static_cast<std::int64_t>(info.f_bsize);
    }
    constexpr auto most = std::numeric_limits<std::int64_t>::max();
    return info.f_bavail > static_cast<std::uint64_t>(most)
               ? most
               : static_cast<std::int64_t>(info.f_bavail);
}

} // namespace ov
