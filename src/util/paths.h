// The joining of paths.
//
// A relative directory lies under the installation root, a relative file under its own directory.
// Two pieces that are longer than 4095 characters together are not joined.
#pragma once

#include <optional>
#include <string>

namespace ov {

// Whether `path` is given and begins with "/".
int isfullpath(const char* path);

// The path of a directory, with a "/" at its end: `dir` itself when it is absolute, otherwise
// `root` directly followed by `dir` (a root ends in "/"). Nothing, with errno set, when either is
// missing, when they are too long, when a "/" would be the 4096th character or, after a message on
// standard error, when memory is exhausted (ENOMEM).
std::optional<std::string> mk_dirpath(const char* root, const char* dir);

// The path of a file: `file` itself when it is absolute, otherwise `file` in the directory `dir`,
// with a "/" between them where `dir` lacks it. Nothing as for mk_dirpath.
std::optional<std::string> mk_filepath(const char* dir, const char* file);

} // namespace ov
