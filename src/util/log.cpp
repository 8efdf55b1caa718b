#include "util/log.h"

#include "util/place.h"
#include "util/process.h"
#include "util/services.h"
#include "util/text.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <sys/time.h>

namespace ov {

const char* ProgName = nullptr;
std::string logfile;
std::string::size_type logptr = 0;
int log_initialized = 0;

namespace {

constexpr std::size_t LineBufferSize = 65536;
constexpr std::string_view CutMark = "...\n";
constexpr unsigned LogMilliseconds = 0x10000;

// How a line was stamped: all three parts are of one moment.
struct Stamp {
    std::array<char, 32> suffix; // ".20261115"
    std::array<char, 32> date;   // "2026/11/15"
    std::array<char, 32> time;   // "08:30:00" or "08:30:00.125"
};

std::uint64_t host_id = 0; // 0 until it is known

Stamp stamp_now(bool milliseconds) {
    timeval now{};
    if (milliseconds) {
        ::gettimeofday(&now, nullptr);
    } else {
        now.tv_sec = curtime();
    }
    std::tm local{};
    ::localtime_r(&now.tv_sec, &local);

    Stamp stamp{};
    std::snprintf(stamp.suffix.data(), stamp.suffix.size(), ".%04d%02d%02d", local.tm_year + 1900,
                  local.tm_mon + 1, local.tm_mday);
    std::snprintf(stamp.date.data(), stamp.date.size(), "%04d/%02d/%02d", local.tm_year + 1900,
                  local.tm_mon + 1, local.tm_mday);
    if (milliseconds) {
        std::snprintf(stamp.time.data(), stamp.time.size(), "%02d:%02d:%02d.%03ld", local.tm_hour,
                      local.tm_min, local.tm_sec, static_cast<long>(now.tv_usec / 1000));
    } else {
        std::snprintf(stamp.time.data(), stamp.time.size(), "%02d:%02d:%02d", local.tm_hour,
                      local.tm_min, local.tm_sec);
    }
    return stamp;
}

// Puts the day behind the base path and returns the whole path.
const char* daily_file(const Stamp& stamp) {
    logfile.resize(logptr);
    logfile += stamp.suffix.data();
    return logfile.c_str();
}

// Opens the daily file in its directory for appending. Who may write there could have put a link or
// a pipe in its place, or have leased it: nothing is followed, waited for, or written to then.
Fd open_log(const Fd& directory, const char* path, int flags, mode_t mode) {
    constexpr int Append = O_WRONLY | O_APPEND | O_NOFOLLOW;
    return if_regular(open_unwaited(directory.get(), last_name(path), Append | flags, mode));
}

// A file that has another name may be anybody's: its owner and mode stay.
bool is_our_own(int fd) {
    struct stat info = {};
    return ::fstat(fd, &info) == 0 && info.st_nlink == 1;
}

void give_owner(int fd) {
    if (is_our_own(fd)) {
        // The log belongs to whom it can be given to; an unprivileged process keeps what it wrote.
        [[maybe_unused]] const int ignored = ::fchown(fd, services.log_owner, services.log_group);
    }
}

// Takes what could drive a terminal, or make two lines of one, out of a message made by `format`,
// which may end in a line feed of its own: control characters, and those that UTF-8 has beside
// ASCII's.
void mask_controls(std::string_view format, char* message, std::size_t length) {
    const bool ends_line = format.ends_with('\n') && length > 0;
    for (std::size_t i = 0; i < length - (ends_line ? 1 : 0); ++i) {
        const auto byte = static_cast<unsigned char>(message[i]);
        if ((byte < ' ' && byte != '\t') || byte == 0x7f) {
            message[i] = '?';
        } else if (byte >= 0x80 && byte < 0xa0 && i > 0 && message[i - 1] == '\xc2') {
            message[i - 1] = message[i] = '?';
        }
    }
}

// One write for one line, so that the lines of several processes never interleave. The alarm
// signal is held off, or a timer could interrupt a line half-way.
void write_line(int fd, std::string_view line) {
    const int was_blocked = blocksignal(SIGALRM);
    retried([&] { return ::write(fd, line.data(), line.size()); });
    if (was_blocked == 0) {
        releasesignal(SIGALRM);
    }
}

void write_header(int fd, const Stamp& stamp) {
    std::array<char, 256> line{};
    const int length = std::snprintf(line.data(), line.size(), "%s %s ORVANTA V%s (%s)\n",
                                     stamp.date.data(), stamp.time.data(), Version, Platform);
    write_line(fd, {line.data(), static_cast<std::size_t>(length)});
}

// A line under construction. One that does not fit the buffer is cut, and the cut marked.
class LineBuffer {
  public:
    void clear() { used_ = 0; }

    __attribute__((format(printf, 2, 3))) void print(const char* format, ...) {
        std::va_list args;
        va_start(args, format);
        vprint(format, args);
        va_end(args);
    }

    // A message: all of it is one line.
    void vprint_message(const char* format, std::va_list args) {
        const std::size_t begin = used_;
        vprint(format, args);
        mask_controls(format, bytes_.data() + begin, used_ - begin);
    }

    void vprint(const char* format, std::va_list args) {
        const std::size_t room = LineBufferSize - used_;
        // The byte behind the buffer takes the NUL of a line that fills it.
        const int length = std::vsnprintf(bytes_.data() + used_, room + 1, format, args);
        if (length > 0) {
            used_ += std::min(static_cast<std::size_t>(length), room);
        }
    }

    std::string_view finish() {
        if (used_ == LineBufferSize) { // no room for the line feed
            CutMark.copy(bytes_.data() + used_ - CutMark.size(), CutMark.size());
        } else {
            bytes_[used_++] = '\n';
        }
        return {bytes_.data(), used_};
    }

  private:
    std::array<char, LineBufferSize + 1> bytes_{};
    std::size_t used_ = 0;
};

std::string masked_message(const char* format, std::va_list args) {
    std::va_list again;
    va_copy(again, args);
    const int length = std::vsnprintf(nullptr, 0, format, again);
    va_end(again);
    std::string message(static_cast<std::size_t>(std::max(length, 0)), ' ');
    std::vsnprintf(message.data(), message.size() + 1, format, args);
    mask_controls(format, message.data(), message.size());
    return message;
}

bool is_silent() {
    return !log_initialized || logptr == 0;
}

void append_line(bool with_program, const char* format, std::va_list args) {
    if (is_silent()) {
        return;
    }
    const int error = errno; // logging leaves no trace in the caller's errno
    const Stamp stamp = stamp_now((services.log_option & LogMilliseconds) != 0);
    const char* path = daily_file(stamp);
    const auto mode = static_cast<mode_t>(services.log_mode);
    const Fd directory = open_directory_of(path);
    Fd file = directory ? open_log(directory, path, 0, mode) : Fd();
    if (!file && directory && errno == ENOENT) {
        file = open_log(directory, path, O_CREAT, mode);
        if (file) {
            write_header(file.get(), stamp);
        }
    }
    if (!file) {
        errno = error;
        return;
    }

    static LineBuffer buffer;
    buffer.clear();
    buffer.print("%s %s ", stamp.date.data(), stamp.time.data());
    if (with_program && ProgName && *ProgName) {
        buffer.print("%s[%d]: ", ProgName, static_cast<int>(::getpid()));
    }
    buffer.vprint_message(format, args);
    write_line(file.get(), buffer.finish());
    give_owner(file.get());
    file.reset();
    errno = error;
}

} // namespace

void log_init() {
    if (log_initialized) {
        return;
    }
    host_id = services.alternate_host_id;
    log_initialized = 1;
    logfile = services.log_directory.view();
    if (!logfile.empty()) { // without a directory logging stays silent
        logfile += logfile.back() == '/' ? "log" : "/log";
        logfile.resize(std::min(logfile.size(), MaxPath));
    }
    logptr = logfile.size();
}

std::uint64_t HostID() {
    if (log_initialized && host_id == 0) {
        host_id = static_cast<std::uint64_t>(::gethostid());
    }
    return host_id;
}

void syserr(const char* format, ...) {
    std::va_list args;
    va_start(args, format);
    append_line(true, format, args);
    va_end(args);
}

void ov_syslog(const char* format, ...) {
    std::va_list args;
    va_start(args, format);
    append_line(false, format, args);
    va_end(args);
}

void log_put(const char* format, ...) {
    if (is_silent()) {
        return;
    }
    const Stamp stamp = stamp_now(false);
    const char* path = daily_file(stamp);
    const Fd directory = open_directory_of(path);
    Fd file = directory ? open_log(directory, path, O_CREAT, 0666) : Fd();
    Stream stream(file ? ::fdopen(file.get(), "a") : nullptr);
    if (!stream) {
        return;
    }
    file.release(); // the stream owns it now
    std::va_list args;
    va_start(args, format);
    const std::string message = masked_message(format, args);
    va_end(args);
    std::fprintf(stream.get(), "%s %s %s\n", stamp.date.data(), stamp.time.data(), message.c_str());
    std::fflush(stream.get());
    if (is_our_own(::fileno(stream.get()))) {
        ::fchmod(::fileno(stream.get()), static_cast<mode_t>(services.log_mode));
    }
    give_owner(::fileno(stream.get()));
}

int is_oldlogfile(const char* name) {
    const std::string_view text(name);
    return text.size() == 12 && text.starts_with("log.") && is_alldigit(text.substr(4));
}

} // namespace ov
