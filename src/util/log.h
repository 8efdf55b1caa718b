// The gateway's daily log: one file a day in the directory of the services, one line an event.
// Every writer stays silent until log_init has run with a directory, and no failure to log is ever
// shown.
#pragma once

#include <cstdint>
#include <string>

namespace ov {

inline constexpr char Version[] = "7.1.02";
inline constexpr char Build[] = "1214";
inline constexpr char Platform[] = "Linux/intel";

// The name under which the program was started, without its folder. Error lines carry it.
extern const char* ProgName;

// The base path of the log ("<directory>/log"), behind which the date of the day is put, and
// the length of that base path.
extern std::string logfile;
extern std::string::size_type logptr;
extern int log_initialized;

// Starts logging with the settings as they stand; later calls do nothing.
void log_init();

// The host identifier: the alternate one as log_init found it or, when that is 0, the system's. The
// system is asked when the value is first wanted, since asking may wait for a name service.
// 0 before log_init.
std::uint64_t HostID();

// Appends one error line: date, time, "program[pid]: " and the message.
void syserr(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Appends one line without the program's name.
void ov_syslog(const char* format, ...) __attribute__((format(printf, 1, 2)));

// The older writer of the same file: through a stream, without a first line in a new file; gives
// the file LogPerm as well as its owner.
void log_put(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Whether `name` is that of a daily log file: "log.", then eight digits.
int is_oldlogfile(const char* name);

} // namespace ov
