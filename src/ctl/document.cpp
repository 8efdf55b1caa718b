#include "ctl/document.h"

#include "util/place.h"
#include "util/source.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>

namespace ov::ctl {

std::optional<Document> read_document(const std::string& path) {
    return read_document(path, lock_file_of(path), LongWait);
}

std::optional<Document> read_document(const std::string& path,
                                      const std::optional<std::string>& lock, int wait) {
    Patience patience(wait);
    const Held held = lock ? lock_for_reading(*lock, patience) : Held();
    if (held.is_busy) {
        errno = EWOULDBLOCK;
        return std::nullopt;
    }
    const Fd file = open_file(path.c_str(), O_RDONLY);
    std::optional<std::string> text = file ? read_whole(file.get()) : std::nullopt;
    return text ? std::optional(Document{path, std::move(*text)}) : std::nullopt;
}

std::optional<Document> read_installed(const std::string& path) {
    const Fd file = open_file(path.c_str(), O_RDONLY, FileKind::Installed);
    std::optional<std::string> text = file ? read_whole(file.get()) : std::nullopt;
    return text ? std::optional(Document{path, std::move(*text)}) : std::nullopt;
}

std::string why_not_opened() {
    return errno == EWOULDBLOCK ? "somebody who changes it has locked it"
           : errno == EFBIG     ? "64 MiB or larger"
                                : std::strerror(errno);
}

} // namespace ov::ctl
