// Files as they are read: once, and whole.
#pragma once

#include "ctl/lock_file.h"

#include <optional>
#include <string>

namespace ov::ctl {

// A configuration file as it was read.
struct Document {
    std::string path;
    std::string text;
};
// Reads the file once, under a shared lock on its lock file when there is one. Nothing, with errno
// set, when it cannot be read, is larger than 64 MiB, or stays locked.
std::optional<Document> read_document(const std::string& path);
// The same with the lock file `lock`, waiting `wait` seconds; without one nothing is locked, for a
// caller who holds it.
std::optional<Document> read_document(const std::string& path,
                                      const std::optional<std::string>& lock, int wait);

// A rights file, or the supplement: links on the way to it are followed as the load does. Nothing,
// with errno set, when it cannot be read.
std::optional<Document> read_installed(const std::string& path);

// Why a file has not been read, by errno.
std::string why_not_opened();

} // namespace ov::ctl
