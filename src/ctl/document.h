// Files as they are read: once, and whole.
#pragma once

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

// A rights file, or the supplement: links on the way to it are followed as the load does. Nothing,
// with errno set, when it cannot be read.
std::optional<Document> read_installed(const std::string& path);
} // namespace ov::ctl
