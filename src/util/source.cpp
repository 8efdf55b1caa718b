#include "util/source.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ov {

namespace {

// Grows for a file with a longer line.
constexpr std::size_t BufferSize = 65536;

// No more than is too long: a file may be larger than any memory.
std::size_t size_of(const struct stat& info) {
    return static_cast<std::size_t>(std::clamp<off_t>(info.st_size, 0, TooLong));
}

} // namespace

std::optional<std::string> read_whole(int file) {
    constexpr std::size_t Room = 8192;
    struct stat info = {};
    const bool sized = ::fstat(file, &info) == 0 && S_ISREG(info.st_mode);
    const std::size_t size = sized ? size_of(info) : 0;
    if (size >= TooLong) {
        errno = EFBIG;
        return std::nullopt;
    }
    // A file that does not grow is read at once, with room to see its end.
    std::string text(size + Room, '\0');
    std::size_t used = 0;
    for (;;) {
        if (used == text.size()) {
            text.resize(2 * used);
        }
        const ssize_t got =
            retried([&] { return ::read(file, text.data() + used, text.size() - used); });
        if (got == 0) {
            text.resize(used);
            return text;
        }
        used += got > 0 ? static_cast<std::size_t>(got) : 0;
        if (got < 0 || used >= TooLong) {
            errno = got < 0 ? errno : EFBIG;
            return std::nullopt;
        }
    }
}

Source::Source(Fd file, std::uint64_t most) : file_(std::move(file)), at_end_(false), most_(most) {
    struct stat info = {};
    if (::fstat(file_.get(), &info) != 0) {
        error_ = errno;
    }
    regular_ = S_ISREG(info.st_mode);
    const std::size_t size = size_of(info);
    may_be_too_long_ = regular_ && size >= TooLong;
    // A small file is read at once, with room to see its end.
    capacity_ = regular_ && size > 0 && size < BufferSize ? size + 1 : BufferSize;
    buffer_ = std::make_unique_for_overwrite<char[]>(capacity_);
    next_window();
    at_start_ = true;
}

std::optional<Source> Source::open(const char* path, FileKind kind) {
    Fd file = open_file(path, O_RDONLY, kind);
    if (!file) {
        return std::nullopt;
    }
    Source source(std::move(file));
    while (source.may_be_too_long_ && source.lookahead() != -1) {
        source.move_to(source.window_.size());
    }
    if (!source.is_whole()) {
        return std::nullopt;
    }
    source.rewind();
    return source;
}

bool Source::is_whole() const {
    errno = error_ != 0 ? error_ : errno;
    return error_ == 0;
}

void Source::rewind() {
    position_ = 0;
    line_ = 1;
    if (at_start_) {
        return;
    }
    ::lseek(file_.get(), 0, SEEK_SET);
    at_end_ = false;
    used_ = 0;
    read_ = 0;
    window_ = {};
    next_window();
    at_start_ = true;
}

void Source::next_window() {
    if (at_end_) {
        return;
    }
    // The beginning of a line that has not been read to its end comes to the front.
    const std::size_t begun = used_ - window_.size();
    std::copy_n(buffer_.get() + window_.size(), begun, buffer_.get());
    used_ = begun;
    position_ = 0;
    at_start_ = false;
    for (;;) {
        if (used_ >= TooLong || read_ >= most_) {
            at_end_ = true;
            error_ = EFBIG;
            window_ = {buffer_.get(), used_};
            return;
        }
        if (used_ == capacity_) {
            capacity_ = std::min(capacity_ * 2, TooLong);
            auto larger = std::make_unique_for_overwrite<char[]>(capacity_);
            std::copy_n(buffer_.get(), used_, larger.get());
            buffer_ = std::move(larger);
        }
        const ssize_t got = ::read(file_.get(), buffer_.get() + used_, capacity_ - used_);
        if (got == -1 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            at_end_ = true;
            window_ = {buffer_.get(), used_};
            return;
        }
        const std::string_view read(buffer_.get() + used_, static_cast<std::size_t>(got));
        read_ += read.size();
        const std::size_t feed = read.rfind('\n');
        used_ += read.size();
        if (feed != read.npos) {
            window_ = {buffer_.get(), used_ - read.size() + feed + 1};
            return;
        }
    }
}

} // namespace ov
