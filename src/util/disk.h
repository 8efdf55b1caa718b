// What stands on the disk: files, programs and directories, and free space.
#pragma once

#include <cstdint>

namespace ov {

// The predicates give 1 or 0.

// Whether `file`, taken in the directory `dir` unless it is absolute, is a regular file.
int isvalid_file(const char* dir, const char* file);

// Whether `path` is the absolute path of a regular file, such as a program is.
int isvalid_program(const char* path);

// Whether `path` is a directory, and whether it is the absolute path of one.
int isvalid_dir(const char* path);
int isvalid_full_dir(const char* path);

// The blocks available to unprivileged users on the file system of `dir`, and through `bsize`,
// when it is given, their size in bytes. -1 when the file system cannot be queried.
std::int64_t freeblocks(const char* dir, std::int64_t* bsize);

} // namespace ov
