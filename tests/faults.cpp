// Preloaded into a command: the n-th call of one system call fails. For write, the fault "short"
// (error 0) writes one byte less than asked for.
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

// Whether this call of `name` is the one to fail; sets errno then.
bool fails(const char* name) {
    static long calls = 0;
    const char* call = std::getenv("OV_FAULT_CALL");
    if (!call || std::strcmp(call, name) != 0 || ++calls != number_in("OV_FAULT_NUMBER")) {
        return false;
    }
    errno = static_cast<int>(number_in("OV_FAULT_ERROR"));
    return true;
}

template <class Function>
Function* real(const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" {

int mkstemp(char* name) {
    return fails("mkstemp") ? -1 : real<int(char*)>("mkstemp")(name);
}

FILE* fdopen(int fd, const char* mode) {
    return fails("fdopen") ? nullptr : real<FILE*(int, const char*)>("fdopen")(fd, mode);
}

int open(const char* path, int flags, ...) {
    std::va_list args;
    va_start(args, flags);
    const int mode = va_arg(args, int);
    va_end(args);
    return fails("open") ? -1 : real<int(const char*, int, ...)>("open")(path, flags, mode);
}

int fcntl64(int fd, int command, ...) {
    std::va_list args;
    va_start(args, command);
    void* argument = va_arg(args, void*);
    va_end(args);
    return fails("fcntl") ? -1 : real<int(int, int, ...)>("fcntl64")(fd, command, argument);
}

int fcntl(int fd, int command, ...) {
    std::va_list args;
    va_start(args, command);
    void* argument = va_arg(args, void*);
    va_end(args);
    return fails("fcntl") ? -1 : real<int(int, int, ...)>("fcntl")(fd, command, argument);
}

ssize_t read(int fd, void* buffer, size_t size) {
    return fails("read") ? -1 : real<ssize_t(int, void*, size_t)>("read")(fd, buffer, size);
}

ssize_t write(int fd, const void* buffer, size_t size) {
    auto* real_write = real<ssize_t(int, const void*, size_t)>("write");
    if (!fails("write")) {
        return real_write(fd, buffer, size);
    }
    return errno == 0 ? real_write(fd, buffer, size - 1) : -1;
}

} // extern "C"
