// Guards for descriptors and streams, and what is done with open files.
#pragma once

#include <cerrno>
#include <cstdio>
#include <memory>
#include <sys/types.h>
#include <unistd.h>
#include <utility>

namespace ov {

// Owns a file descriptor; -1 owns nothing.
class Fd {
  public:
    explicit Fd(int fd = -1) : fd_(fd) {}
    Fd(Fd&& other) noexcept : fd_(other.release()) {}
    Fd& operator=(Fd&& other) noexcept {
        reset(other.release());
        return *this;
    }
    Fd(const Fd&) = delete;
    Fd& operator=(const Fd&) = delete;
    ~Fd() { reset(); }

    int get() const { return fd_; }
    explicit operator bool() const { return fd_ >= 0; }
    int release() { return std::exchange(fd_, -1); }
    void reset(int fd = -1) {
        if (fd_ >= 0) {
            ::close(fd_);
        }
        fd_ = fd;
    }

  private:
    int fd_;
};

// Calls `call` again for as long as a signal interrupts it.
template <class Call>
auto retried(Call call) {
    auto result = call();
    while (result == -1 && errno == EINTR) {
        result = call();
    }
    return result;
}

// The file when it is a regular one; else an empty guard, with errno set (EINVAL).
Fd if_regular(Fd file);

// Brings what was written to the file onto the disk. Returns 0, for what is on no disk (a pipe,
// a device), too; -1 with errno set.
int sync_data(int fd);

struct StreamCloser {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
};
using Stream = std::unique_ptr<std::FILE, StreamCloser>;

} // namespace ov
