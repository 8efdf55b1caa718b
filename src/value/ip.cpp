#include "value/ip.h"

#include "util/log.h"
#include "util/text.h"

#include <algorithm>
#include <arpa/inet.h>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <new>

namespace ov {

namespace {

constexpr int AddressParts = 4;
constexpr std::size_t LongestPart = 3;
constexpr std::size_t LongestHostName = 255;

// The number that `text`, decimal digits only, stands for when it is at most `highest`.
std::optional<unsigned> number_up_to(std::string_view text, unsigned highest) {
    unsigned value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (!is_alldigit(text) || error != std::errc() || value > highest) {
        return std::nullopt;
    }
    return value;
}

// The length of a mask as it stands behind "/": one to three digits, at most 32.
std::optional<unsigned> mask_length(std::string_view text) {
    return text.size() <= LongestPart ? number_up_to(text, 32) : std::nullopt;
}

// Whether `part` may stand between two dots of an address.
bool is_address_part(std::string_view part, bool wildcard_allowed) {
    if (part.empty() || part.size() > LongestPart) {
        return false;
    }
    if (wildcard_allowed && part.find('*') != part.npos) {
        return std::all_of(part.begin(), part.end(),
                           [](char c) { return c == '*' || is_digit(c); });
    }
    return number_up_to(part, 255).has_value();
}

// Takes the text up to the next dot off the front of `rest`; the dot goes with it.
std::string_view take_part(std::string_view& rest) {
    const std::size_t dot = std::min(rest.find('.'), rest.size());
    const std::string_view part = rest.substr(0, dot);
    rest.remove_prefix(std::min(dot + 1, rest.size()));
    return part;
}

} // namespace

int isvalid_ipaddr(const char* addr, int hostonly) {
    if (!addr) {
        return 0;
    }
    std::string_view rest(addr);
    if (rest.size() > (hostonly ? MaxIpAddress : MaxIpCondition)) {
        return 0;
    }
    if (const std::size_t slash = rest.find('/'); slash != rest.npos) {
        if (hostonly || !mask_length(rest.substr(slash + 1)) ||
            rest.substr(0, slash).ends_with('.')) {
            return 0;
        }
        rest = rest.substr(0, slash);
    }
    const bool trailing_dot = rest.ends_with('.');
    int parts = 0;
    int zeros = 0;     // parts with the value 0
    int broadcast = 0; // parts with the value 255
    for (; !rest.empty(); ++parts) {
        const std::string_view part = take_part(rest);
        if (parts == AddressParts || !is_address_part(part, !hostonly)) {
            return 0;
        }
        const std::optional<unsigned> value = number_up_to(part, 255);
        zeros += value == 0U;
        broadcast += value == 255U;
    }
    if (parts == AddressParts) {
        return !trailing_dot && zeros < AddressParts && broadcast < AddressParts;
    }
    return !hostonly && parts > 0;
}

int isvalid_hostname(const char* name) {
    if (!name) {
        return 0;
    }
    std::string_view rest(name);
    if (rest.size() > LongestHostName) {
        return 0;
    }
    if (std::all_of(rest.begin(), rest.end(), [](char c) { return c == '.' || is_digit(c); })) {
        return isvalid_ipaddr(name, 1);
    }
    while (!rest.empty()) {
        const std::string_view label = take_part(rest);
        if (label.empty() || !std::all_of(label.begin(), label.end(), [](char c) {
                return is_letter_or_digit(c) || c == '-' || c == '_';
            })) {
            return 0;
        }
    }
    return 1;
}

int _makeaddr(const char* text, std::uint32_t* ip, std::uint32_t* mask) {
    if (!text) {
        return -1;
    }
    std::string_view rest(text);
    if (rest.size() > MaxIpCondition) {
        return -1;
    }
    std::uint32_t address = 0; // in host byte order
    unsigned bits = 0;
    if (const std::size_t slash = rest.find('/'); slash != rest.npos) {
        const in_addr_t converted = ::inet_addr(std::string(rest.substr(0, slash)).c_str());
        const std::optional<unsigned> length = mask_length(rest.substr(slash + 1));
        if (converted == INADDR_NONE || !length) {
            return -1;
        }
        address = ntohl(converted);
        bits = *length;
    } else {
        if (rest.size() > MaxIpAddress) {
            return -1;
        }
        if (rest.ends_with('.')) {
            rest.remove_suffix(1);
        }
        if (rest.empty() || rest.ends_with('.')) {
            return -1;
        }
        while (!rest.empty()) {
            const std::string_view part = take_part(rest);
            if (bits == 32 || !is_address_part(part, false)) {
                return -1;
            }
            bits += 8;
            address |= *number_up_to(part, 255) << (32 - bits);
        }
    }
    const std::uint32_t ones = bits == 0 ? 0 : ~std::uint32_t{0} << (32 - bits);
    *mask = htonl(ones);
    *ip = htonl(address & ones);
    return 0;
}

std::optional<IpConditions> ipaddr_makeaddr(std::string_view text, int* err) {
    if (err) {
        *err = 0;
    }
    std::optional<std::vector<std::string>> words = split_str(text, ":");
    IpConditions conditions;
    try {
        conditions.reserve(words ? words->size() : 0);
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "%s: calloc error: sz = %d\n", "ipaddr_makeaddr",
                     static_cast<int>(words->size() * sizeof(IPADDRCOND)));
        words.reset();
    }
    if (!words) {
        if (err) {
            *err = 1;
        }
        return std::nullopt;
    }
    for (const std::string& word : *words) {
        IPADDRCOND condition{};
        condition.cmp = word.find('*') == word.npos;
        if (word.size() > MaxIpCondition ||
            (condition.cmp && _makeaddr(word.c_str(), &condition.ip, &condition.mask) != 0)) {
            syserr("%s: wrong ip address: %s", "ipaddr_makeaddr", word.c_str());
            return std::nullopt;
        }
        word.copy(condition.str.data(), MaxIpCondition);
        conditions.push_back(condition);
    }
    return conditions;
}

int isvalid_hostport(const std::string& text) {
    const std::optional<HostAndPort> server = split_hostport(text);
    return server && isvalid_hostname(server->host.c_str());
}

std::optional<HostAndPort> split_hostport(const std::string& text) {
    constexpr std::int64_t Default = 25;
    constexpr std::int64_t Highest = 60000;
    const std::size_t colon = text.find(':');
    // Of too many digits, the largest number is made.
    const std::int64_t port =
        colon == text.npos ? Default : std::strtoll(&text[colon] + 1, nullptr, 10);
    if (port < 1 || port > Highest) {
        return std::nullopt;
    }
    return HostAndPort{text.substr(0, colon), static_cast<int>(port)};
}

} // namespace ov
