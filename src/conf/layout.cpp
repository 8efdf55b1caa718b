#include "conf/layout.h"

#include "util/text.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <new>

namespace ov {

namespace {

// The bytes that the list of `fields` fields of a text of `length` characters is accounted with.
int list_size(std::size_t length, std::size_t separators) {
    return static_cast<int>(length + 9 + 4 * separators);
}

std::vector<std::string> fields_of(std::string_view str, std::string_view sep) {
    std::vector<std::string> fields;
    std::size_t start = str.find_first_not_of(sep);
    while (start != str.npos) {
        const std::size_t end = std::min(str.find_first_of(sep, start), str.size());
        fields.emplace_back(str.substr(start, end - start));
        start = str.find_first_not_of(sep, end);
    }
    return fields;
}

} // namespace

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

std::optional<std::vector<std::string>> split_str(std::string_view str, std::string_view sep) {
    try {
        return fields_of(str, sep);
    } catch (const std::bad_alloc&) {
        const auto separators = std::count_if(str.begin(), str.end(),
                                              [sep](char c) { return sep.find(c) != sep.npos; });
        std::fprintf(stderr, "%s: calloc error: sz = %d\n", "split_str",
                     list_size(str.size(), static_cast<std::size_t>(separators)));
        return std::nullopt;
    }
}

} // namespace ov
