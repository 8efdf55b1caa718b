#include "util/paths.h"

#include "util/text.h"

#include <cerrno>
#include <cstdio>
#include <new>

namespace ov {

int isfullpath(const char* path) {
    return path && path[0] == '/';
}

std::optional<std::string> mk_dirpath(const char* root, const char* dir) {
    if (!dir || (!isfullpath(dir) && !root)) {
        errno = EINVAL;
        return std::nullopt;
    }
    const std::string_view base = isfullpath(dir) ? "" : root;
    const std::string_view name = dir;
    const std::size_t length = base.size() + name.size();
    const bool ends_in_slash = (name.empty() ? base : name).ends_with('/');
    if ((!isfullpath(dir) && length > MaxPath) || (!ends_in_slash && length > MaxPath - 1)) {
        errno = ENAMETOOLONG;
        return std::nullopt;
    }
    try {
        std::string path;
        path.reserve(length + 1);
        path += base;
        path += name;
        if (!ends_in_slash) {
            path += '/';
        }
        return path;
    } catch (const std::bad_alloc&) {
        std::fputs("mk_dirpath: malloc failed\n", stderr);
        errno = ENOMEM;
        return std::nullopt;
    }
}

std::optional<std::string> mk_filepath(const char* dir, const char* file) {
    if (!file || (!isfullpath(file) && !dir)) {
        errno = EINVAL;
        return std::nullopt;
    }
    const std::string_view base = isfullpath(file) ? "" : dir;
    const std::string_view name = file;
    if (!isfullpath(file) && base.size() + name.size() > MaxPath) {
        errno = ENAMETOOLONG;
        return std::nullopt;
    }
    try {
        std::string path;
        path.reserve(base.size() + 1 + name.size());
        path += base;
        if (!isfullpath(file) && !base.ends_with('/')) {
            path += '/';
        }
        path += name;
        return path;
    } catch (const std::bad_alloc&) {
        std::fputs("mk_filepath: malloc failed\n", stderr);
        errno = ENOMEM;
        return std::nullopt;
    }
}

} // namespace ov
