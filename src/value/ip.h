// Addresses of hosts, conditions on them, and names of hosts. The predicates give 1 for a valid
// value and 0 for any other, and nothing is printed unless it says so here.
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
    std::uint32_t mask;                       // of the network
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

// A server as it is written, "host" or "host:port". Nothing when the text behind the ":" does not
// begin with a decimal number from 1 to 60000.
struct HostAndPort {
    std::string host;
    int port; // 25 when none is written
};
std::optional<HostAndPort> split_hostport(const std::string& text);

// Whether `text` is a host name, or one with the port of a server behind a ":".
int isvalid_hostport(const std::string& text);

} // namespace ov
