// Preloaded into a command: the n-th call of one function that concerns a file fails. A write with
// the error 0 writes one byte less than asked for; with the error -1 nothing fails, but the process
// stops itself in front of the call.
//   OV_FAULT_FILE    the file; with "*" at its end any file whose path begins so
//   OV_FAULT_CALL    fdopen, fwrite, fflush, fdatasync, fsync, fclose, open, fcntl, stat, fstat,
//   read,
//                    write, pwrite, ftruncate, close, fchown, rename, mkdir or unlink; with "<",
//                    ">" or "+" behind it only for a file that is open for reading, for writing or
//                    for both
//   OV_FAULT_NUMBER  which call of it fails, counted from 1
//   OV_FAULT_ERROR   its errno
// Or allocations fail, and OV_FAULT_FILE is made to tell that there was one:
//   OV_FAULT_CALL    malloc: the n-th one; memory: the n-th and all that follow
// And the process is taken for that of another user:
//   OV_FAULT_USER    what getuid answers

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr int Stop = -1;

long number_in(const char* variable) {
    const char* text = std::getenv(variable);
    return text ? std::strtol(text, nullptr, 10) : 0;
}

// Whether `path` is the file that is meant.
bool is_meant(const char* path) {
    const char* file = std::getenv("OV_FAULT_FILE");
    if (!path || !file) {
        return false;
    }
    const std::size_t length = std::strcspn(file, "*");
    return file[length] ? std::strncmp(path, file, length) == 0 : std::strcmp(path, file) == 0;
}

// Whether this call of `name`, for the file `path` opened with `flags`, is the one to fail; sets
// errno then.
bool fails(const char* name, const char* path, int flags = -1) {
    static long calls = 0;
    const char* call = std::getenv("OV_FAULT_CALL");
    const std::size_t length = std::strlen(name);
    if (!call || std::strncmp(call, name, length) != 0 || !is_meant(path)) {
        return false;
    }
    constexpr char modes[] = "<>+"; // in the order of O_RDONLY, O_WRONLY, O_RDWR
    const char* mode = call + length;
    if ((*mode && (flags == -1 || *mode != modes[flags & O_ACCMODE])) ||
        ++calls != number_in("OV_FAULT_NUMBER")) {
        return false;
    }
    const auto error = static_cast<int>(number_in("OV_FAULT_ERROR"));
    if (error == Stop) {
        std::raise(SIGSTOP);
        return false;
    }
    errno = error;
    return true;
}

// The path of an open file.
std::array<char, 4096> path_of(int fd) {
    char link[64];
    std::array<char, 4096> path{};
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", fd);
    [[maybe_unused]] const ssize_t length = ::readlink(link, path.data(), path.size() - 1);
    return path;
}

bool fails(const char* name, int fd) {
    return fails(name, path_of(fd).data(), static_cast<int>(::syscall(SYS_fcntl, fd, F_GETFL)));
}

bool fails(const char* name, FILE* stream) {
    return stream && fails(name, ::fileno(stream));
}

// The whole path of a name in an open directory.
std::array<char, 8192> in_directory(int directory, const char* name) {
    std::array<char, 8192> path{};
    const bool whole = *name == '/';
    std::snprintf(path.data(), path.size(), "%s%s%s", whole ? "" : path_of(directory).data(),
                  whole ? "" : "/", name);
    return path;
}

int refused(int error) {
    errno = error;
    return -1;
}

template <class Function>
Function* real(const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" {

FILE* fdopen(int fd, const char* mode) {
    return fails("fdopen", fd) ? nullptr : real<FILE*(int, const char*)>("fdopen")(fd, mode);
}

// Those that may have one more argument are taken to have it.
int open_as(const char* path, int flags, mode_t mode) __asm__("open");
int openat_as(int directory, const char* path, int flags, mode_t mode) __asm__("openat");
int fcntl_as(int fd, int command, void* argument) __asm__("fcntl");

int open_as(const char* path, int flags, mode_t mode) {
    auto* real_open = real<int(const char*, int, ...)>("open");
    return fails("open", path, flags) ? -1 : real_open(path, flags, mode);
}

int openat_as(int directory, const char* path, int flags, mode_t mode) {
    if (!(flags & O_PATH) && fails("open", in_directory(directory, path).data(), flags)) {
        return -1;
    }
    return real<int(int, const char*, int, ...)>("openat")(directory, path, flags, mode);
}

// What the fortified headers make of one that makes no file.
int __openat_2(int directory, const char* path, int flags) {
    return openat_as(directory, path, flags, 0);
}

int fcntl_as(int fd, int command, void* argument) {
    return fails("fcntl", fd) ? -1 : real<int(int, int, ...)>("fcntl")(fd, command, argument);
}

ssize_t read(int fd, void* buffer, size_t size) {
    const ssize_t got =
        fails("read", fd) ? -1 : real<ssize_t(int, void*, size_t)>("read")(fd, buffer, size);
    errno = got >= 0 ? EDOM : errno; // a call that succeeds may set it, too
    return got;
}

ssize_t write(int fd, const void* buffer, size_t size) {
    const int before = errno;
    const bool chosen = fails("write", fd);
    if (chosen && errno != 0) {
        return -1;
    }
    errno = before;
    return real<ssize_t(int, const void*, size_t)>("write")(fd, buffer, size - (chosen ? 1 : 0));
}

size_t fwrite(const void* data, size_t size, size_t count, FILE* stream) {
    auto* real_write = real<size_t(const void*, size_t, size_t, FILE*)>("fwrite");
    return fails("fwrite", stream) ? 0 : real_write(data, size, count, stream);
}

int fdatasync(int fd) {
    return fails("fdatasync", fd) ? -1 : real<int(int)>("fdatasync")(fd);
}

int fsync(int fd) {
    return fails("fsync", fd) ? -1 : real<int(int)>("fsync")(fd);
}

ssize_t pwrite(int fd, const void* buffer, size_t size, off_t at) {
    auto* real_write = real<ssize_t(int, const void*, size_t, off_t)>("pwrite");
    return fails("pwrite", fd) ? -1 : real_write(fd, buffer, size, at);
}

int fchown(int fd, uid_t owner, gid_t group) noexcept {
    return fails("fchown", fd) ? -1 : real<int(int, uid_t, gid_t)>("fchown")(fd, owner, group);
}

int renameat(int from, const char* path, int to, const char* name) noexcept {
    const bool failing = fails("rename", in_directory(to, name).data());
    auto* real_rename = real<int(int, const char*, int, const char*)>("renameat");
    return failing ? -1 : real_rename(from, path, to, name);
}

int ftruncate(int fd, off_t size) noexcept {
    return fails("ftruncate", fd) ? -1 : real<int(int, off_t)>("ftruncate")(fd, size);
}

int fflush(FILE* stream) {
    return fails("fflush", stream) ? EOF : real<int(FILE*)>("fflush")(stream);
}

// What is not closed without an error is closed all the same.
int fclose(FILE* stream) {
    const int error = fails("fclose", stream) ? errno : 0;
    const int result = real<int(FILE*)>("fclose")(stream);
    return error == 0 ? result : refused(error);
}

int close(int fd) {
    const int error = fails("close", fd) ? errno : 0;
    const int result = real<int(int)>("close")(fd);
    return error == 0 ? result : refused(error);
}

int mkdirat(int directory, const char* path, mode_t mode) noexcept {
    const bool failing = fails("mkdir", in_directory(directory, path).data());
    return failing ? -1 : real<int(int, const char*, mode_t)>("mkdirat")(directory, path, mode);
}

int unlinkat(int directory, const char* path, int flags) noexcept {
    const bool failing = fails("unlink", in_directory(directory, path).data());
    return failing ? -1 : real<int(int, const char*, int)>("unlinkat")(directory, path, flags);
}

int stat(const char* path, struct stat* info) noexcept {
    return fails("stat", path) ? -1 : real<int(const char*, struct stat*)>("stat")(path, info);
}

int fstat(int fd, struct stat* info) noexcept {
    return fails("fstat", fd) ? -1 : real<int(int, struct stat*)>("fstat")(fd, info);
}

// The system's log is the file "syslog", where there is one.
void __vsyslog_chk(int, int, const char* format, va_list arguments) {
    if (FILE* log = std::fopen("syslog", "r+")) {
        std::fseek(log, 0, SEEK_END);
        std::vfprintf(log, format, arguments);
        std::fputc('\n', log);
        std::fclose(log);
    }
}

void __syslog_chk(int priority, int flag, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    __vsyslog_chk(priority, flag, format, arguments);
    va_end(arguments);
}

void syslog(int priority, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    __vsyslog_chk(priority, 0, format, arguments);
    va_end(arguments);
}

uid_t getuid() noexcept {
    return std::getenv("OV_FAULT_USER") ? static_cast<uid_t>(number_in("OV_FAULT_USER"))
                                        : real<uid_t()>("getuid")();
}

} // extern "C"

// The sanitizers have an allocator of their own.
#ifndef OV_SANITIZE

extern "C" void* __libc_malloc(size_t size);
extern "C" void* __libc_realloc(void* old, size_t size);

namespace {

// Allocations count from here on, which is before those of the command.
struct Memory {
    long number = 0; // of the one that fails; 0: none does
    bool all = false;
    long calls = 0;
} memory;

__attribute__((constructor)) void set_up_memory() {
    const char* call = std::getenv("OV_FAULT_CALL");
    memory.all = call && std::strcmp(call, "memory") == 0;
    memory.number =
        call && (memory.all || std::strcmp(call, "malloc") == 0) ? number_in("OV_FAULT_NUMBER") : 0;
}

bool allocation_fails() {
    const long behind = memory.number == 0 ? -1 : ++memory.calls - memory.number;
    if (behind < 0 || (behind > 0 && !memory.all)) {
        return false;
    }
    if (behind == 0) {
        ::syscall(SYS_close, ::syscall(SYS_openat, AT_FDCWD, std::getenv("OV_FAULT_FILE"),
                                       O_WRONLY | O_CREAT | O_TRUNC, 0666));
    }
    errno = ENOMEM;
    return true;
}

} // namespace

extern "C" {

void* malloc(size_t size) {
    return allocation_fails() ? nullptr : __libc_malloc(size);
}

void* realloc(void* old, size_t size) {
    return allocation_fails() ? nullptr : __libc_realloc(old, size);
}

} // extern "C"

#endif
