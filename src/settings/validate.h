// One predicate or converter for each kind of value. The predicates give 1 for a valid value and 0
// for any other, and nothing is printed unless it says so here.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ov {

// The longest text of an address condition ("255.255.255.255/32"), and of a host's address.
inline constexpr std::size_t MaxIpCondition = 18;
inline constexpr std::size_t MaxIpAddress = 15;

// One condition of an address list such as AllowIP. Both numbers are in network byte order.
struct IPADDRCOND {
    int cmp;                                  // 1: compare with ip and mask; 0: `str` is a pattern
    std::uint32_t ip;                         // already masked
    std::uint32_t mask;                       //
    std::array<char, MaxIpCondition + 2> str; // the condition as written
};
using IpConditions = std::vector<IPADDRCOND>;

// Whether `addr` is an IPv4 address or, unless `hostonly` is set, a network: one to four parts, a
// trailing dot behind fewer than four, parts with "*", and a mask length of 0 to 32 behind "/".
// 0.0.0.0 and 255.255.255.255 are neither.
int isvalid_ipaddr(const char* addr, int hostonly);

// Whether `name` is a host name of at most 255 characters, or a host's address.
int isvalid_hostname(const char* name);

// The address and mask of a condition without "*": with a mask length behind "/", or as one to
// four parts, eight bits each. Returns 0 or -1.
int _makeaddr(const char* text, std::uint32_t* ip, std::uint32_t* mask);

// The conditions of a list separated by ":". Nothing for a bad word, which is logged, and when
// memory is exhausted: then it says so on standard error and sets `err` (it may be null) to 1.
std::optional<IpConditions> ipaddr_makeaddr(std::string_view text, int* err);

// Whether `file`, taken in the directory `dir` unless it is absolute, is a regular file.
int isvalid_file(const char* dir, const char* file);

// Whether `path` is the absolute path of a regular file, such as a program is.
int isvalid_program(const char* path);

// A server as it is written, "host" or "host:port". Nothing when the text behind the ":" does not
// begin with a decimal number from 1 to 60000.
struct HostAndPort {
    std::string host;
    int port; // 25 when none is written
};
std::optional<HostAndPort> split_hostport(const std::string& text);

// Whether `text` is a host name, or one with the port of a server behind a ":".
int isvalid_hostport(const std::string& text);

// Whether `path` is a directory, and whether it is the absolute path of one.
int isvalid_dir(const char* path);
int isvalid_full_dir(const char* path);

// Reads "true", "yes", "on", "1" as 1 and "false", "no", "off", "0" as 0, in any case. Returns 0,
// or -1 for any other word, which leaves `out` alone.
int truefalse(std::string_view word, int* out);

// The size that a text like "1G512M" stands for, in bytes or in kilobytes: numbers of at most nine
// digits, each with a unit of "BKMG" in either case (1024-based), added up. The last number may
// lack its unit and then has `defunit` (what is none of B, M and G counts as K). The empty text
// is 0; what is no size, or above 2^63 - 2, is -1.
std::int64_t conv_byte(std::string_view text, char defunit);
std::int64_t conv_Kbyte(std::string_view text, char defunit);

// The number that `text`, made of decimal digits only, stands for when it is within the bounds.
std::optional<std::int64_t> decimal_within(const std::string& text, std::int64_t lowest,
                                           std::int64_t highest);

// Whether `text` is a date like "2008/02/31": month 1 to 12, day 1 to 31. Returns 0 and gives the
// fields, or -1. A field that is not asked for (null) is not checked against its range either.
int date_str(const char* text, int* year, int* month, int* day);

// Whether every character is printable ASCII.
int valid_str(std::string_view text);

// Whether a keyword set, or a MIME type set, of that name (letters, digits and "_") can be read.
int isvalid_keywd(std::string_view name);
int isvalid_mtype(std::string_view name);

} // namespace ov
