#include "ctl/document.h"

#include "ctl/text.h"
#include "util/place.h"
#include "util/source.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <thread>

namespace ov::ctl {

namespace {

// The shared lock of those who read the file: on the file with ".lock" for ".conf", which they do
// not make. Waits for a writer, but not for ever: then `waited_too_long` is set.
Fd lock_of(std::string path, bool& waited_too_long) {
    constexpr std::string_view Ending = ".conf";
    constexpr int Attempts = 300;
    constexpr int SomeAttempts = 10; // and who has asked wonders
    constexpr std::chrono::milliseconds Pause(100);
    if (path.ends_with(Ending)) {
        path.resize(path.size() - Ending.size());
    }
    path += ".lock";
    Fd lock(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY));
    for (int attempt = 1; lock && ::flock(lock.get(), LOCK_SH | LOCK_NB) != 0; ++attempt) {
        if (errno != EWOULDBLOCK) {
            break;
        }
        if (attempt == SomeAttempts) {
            std::fprintf(stderr, "ov_confctl: waiting for %s\n", printable(path).c_str());
        }
        if (attempt == Attempts) {
            waited_too_long = true;
            break;
        }
        std::this_thread::sleep_for(Pause);
    }
    return lock;
}

} // namespace

std::optional<Document> read_document(const std::string& path) {
    bool waited_too_long = false;
    const Fd lock = lock_of(path, waited_too_long);
    if (waited_too_long) {
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

} // namespace ov::ctl
