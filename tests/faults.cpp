// Preloaded into a command: the n-th call of one system call that concerns a file fails. A write
// with the error 0 writes one byte less than asked for.
//   OV_FAULT_FILE    the file; one whose path begins with it (a temporary file) counts, too
//   OV_FAULT_CALL    mkstemp, fdopen, open, fcntl, read or write
//   OV_FAULT_NUMBER  which call of it fails, counted from 1
//   OV_FAULT_ERROR   its errno

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

namespace {

long number_in(const char* variable) {
    const char* text = std::getenv(variable);
    return text ? std::strtol(text, nullptr, 10) : 0;
}

bool starts_with(const char* text, const char* start) {
    return text && start && std::strncmp(text, start, std::strlen(start)) == 0;
}

// Whether this call of `name`, for the file `path`, is the one to fail; sets errno then.
bool fails(const char* name, const char* path) {
    static long calls = 0;
    const char* call = std::getenv("OV_FAULT_CALL");
    if (!call || std::strcmp(call, name) != 0 || !starts_with(path, std::getenv("OV_FAULT_FILE")) ||
        ++calls != number_in("OV_FAULT_NUMBER")) {
        return false;
    }
    errno = static_cast<int>(number_in("OV_FAULT_ERROR"));
    return true;
}

bool fails(const char* name, int fd) {
    char link[64];
    char path[4096] = {};
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", fd);
    return ::readlink(link, path, sizeof path - 1) > 0 && fails(name, path);
}

template <class Function>
Function* real(const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" {

int mkstemp(char* name) {
    return fails("mkstemp", name) ? -1 : real<int(char*)>("mkstemp")(name);
}

FILE* fdopen(int fd, const char* mode) {
    return fails("fdopen", fd) ? nullptr : real<FILE*(int, const char*)>("fdopen")(fd, mode);
}

int open(const char* path, int flags, ...) {
    std::va_list args;
    va_start(args, flags);
    const int mode = va_arg(args, int);
    va_end(args);
    return fails("open", path) ? -1 : real<int(const char*, int, ...)>("open")(path, flags, mode);
}

int fcntl64(int fd, int command, ...) {
    std::va_list args;
    va_start(args, command);
    void* argument = va_arg(args, void*);
    va_end(args);
    return fails("fcntl", fd) ? -1 : real<int(int, int, ...)>("fcntl64")(fd, command, argument);
}

int fcntl(int fd, int command, ...) {
    std::va_list args;
    va_start(args, command);
    void* argument = va_arg(args, void*);
    va_end(args);
    return fails("fcntl", fd) ? -1 : real<int(int, int, ...)>("fcntl")(fd, command, argument);
}

ssize_t read(int fd, void* buffer, size_t size) {
    return fails("read", fd) ? -1 : real<ssize_t(int, void*, size_t)>("read")(fd, buffer, size);
}

ssize_t write(int fd, const void* buffer, size_t size) {
    auto* real_write = real<ssize_t(int, const void*, size_t)>("write");
    if (!fails("write", fd)) {
        return real_write(fd, buffer, size);
    }
    return errno == 0 ? real_write(fd, buffer, size - 1) : -1;
}

} // extern "C"
