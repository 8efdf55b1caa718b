// The predicates and converters of single values, against the rules spelled out plainly; and the
// check of a value for any key.
//
// Input: a unit or a set of separators; two bounds; the number of a key; each on its line; and the
// value.
#include "settings/catalogue.h"
#include "settings/check_config.h"
#include "conf/layout.h"
#include "settings/rights.h"
#include "settings/validate.h"
#include "model.h"
#include "support.h"

#include <algorithm>
#include <arpa/inet.h>

using namespace ov;
using namespace ov::fuzz;

namespace {

__extension__ using Wide = __int128;

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

// The number that decimal digits stand for, or one that is too large for everything.
Wide number_of(const std::string& digits) {
    Wide number = 0;
    for (const char c : digits) {
        number = number < (Wide{1} << 70) ? number * 10 + (c - '0') : number;
    }
    return number;
}

// How many bytes a unit stands for; 0 for what is no unit.
Wide unit_of(char c) {
    switch (c) {
    case 'B':
    case 'b':
        return 1;
    case 'K':
    case 'k':
        return Wide{1} << 10;
    case 'M':
    case 'm':
        return Wide{1} << 20;
    case 'G':
    case 'g':
        return Wide{1} << 30;
    default:
        return 0;
    }
}

std::int64_t slow_size(std::string text, char unit, int bytes_each) {
    constexpr Wide Largest = 0x7ffffffffffffffe;
    if (!text.empty() && is_digit(text.back())) {
        text += unit == 'B' || unit == 'M' || unit == 'G' ? unit : 'K';
    }
    Wide sum = 0;
    std::string digits;
    for (const char c : text) {
        if (is_digit(c)) {
            digits += c;
            continue;
        }
        if (unit_of(c) == 0 || digits.size() > 9) {
            return -1;
        }
        sum += number_of(digits) * unit_of(c) / bytes_each;
        if (sum > Largest) {
            return -1;
        }
        digits.clear();
    }
    return static_cast<std::int64_t>(sum);
}

bool is_mask_length(const std::string& text) {
    return all_digits(text) && text.size() <= 3 && number_of(text) <= 32;
}

bool slow_is_address(const std::string& text, bool host_only) {
    if (text.size() > (host_only ? 15 : 18)) {
        return false;
    }
    std::vector<int> parts;
    for (std::size_t i = 0;;) {
        std::string part;
        while (i < text.size() && (is_digit(text[i]) || (text[i] == '*' && !host_only))) {
            part += text[i++];
        }
        if (part.empty() || part.size() > 3 || parts.size() == 4) {
            return false;
        }
        // One with a wild card is none of the numbers that are looked for below.
        parts.push_back(part.find('*') == part.npos ? std::stoi(part) : 1);
        if (parts.back() > 255) {
            return false;
        }
        if (i == text.size()) {
            break;
        }
        if (text[i] == '/') {
            if (host_only || !is_mask_length(text.substr(i + 1))) {
                return false;
            }
            break;
        }
        if (text[i++] != '.' || parts.size() == 4) {
            return false;
        }
        if (i == text.size()) {
            break;
        }
    }
    return parts.size() == 4 ? parts != std::vector<int>(4, 0) && parts != std::vector<int>(4, 255)
                             : !host_only;
}

bool slow_is_host(const std::string& text) {
    if (text.empty() || text.size() >= 256) {
        return false;
    }
    if (text.find_first_not_of("0123456789.") == text.npos) {
        return slow_is_address(text, true);
    }
    char before = '.';
    for (const char c : text) {
        const bool in_label =
            is_digit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '-' || c == '_';
        if (!in_label && (c != '.' || before == '.')) {
            return false;
        }
        before = c;
    }
    return true;
}

// An address and its mask in host byte order.
struct Network {
    std::uint32_t address = 0;
    std::uint32_t mask = 0;
};

std::optional<Network> slow_network(const std::string& text) {
    if (text.size() > 18) {
        return std::nullopt;
    }
    Network network;
    int bits = 0;
    const std::size_t slash = text.find('/');
    if (slash != text.npos) {
        const std::uint32_t address = ::inet_addr(text.substr(0, slash).c_str());
        if (address == INADDR_NONE || !is_mask_length(text.substr(slash + 1))) {
            return std::nullopt;
        }
        network.address = ntohl(address);
        bits = std::stoi(text.substr(slash + 1));
    } else {
        std::string rest = text;
        if (!rest.empty() && rest.back() == '.') {
            rest.pop_back();
        }
        rest += '.';
        std::string part;
        for (const char c : rest) {
            if (c != '.') {
                part += c;
                continue;
            }
            if (!all_digits(part) || part.size() > 3 || std::stoi(part) > 255 || bits == 32) {
                return std::nullopt;
            }
            bits += 8;
            network.address += static_cast<std::uint32_t>(std::stoi(part)) << (32 - bits);
            part.clear();
        }
        if (text.size() > 15) {
            return std::nullopt;
        }
    }
    for (int bit = 0; bit < bits; ++bit) {
        network.mask |= 1U << (31 - bit);
    }
    network.address &= network.mask;
    return network;
}

std::string shown_network(std::uint32_t ip, std::uint32_t mask) {
    return std::to_string(ntohl(ip)) + "/" + std::to_string(ntohl(mask));
}

void check_network(const std::string& text) {
    const std::optional<Network> expected = slow_network(text);
    std::uint32_t ip = 0;
    std::uint32_t mask = 0;
    require_equal(_makeaddr(text.c_str(), &ip, &mask), expected ? 0 : -1, "a network");
    if (expected) {
        require_equal(shown_network(ip, mask),
                      shown_network(htonl(expected->address), htonl(expected->mask)), "network");
    }
}

void check_networks(const std::string& text) {
    const std::vector<std::string> words = slow_split(text, ":");
    const bool valid = std::all_of(words.begin(), words.end(), [](const std::string& word) {
        return word.size() <= 18 && (word.find('*') != word.npos || slow_network(word));
    });
    int error = 9;
    const std::optional<IpConditions> conditions = ipaddr_makeaddr(text, &error);
    require_equal(error, 0, "memory for networks");
    require_equal(int{conditions.has_value()}, int{valid}, "whether networks are valid");
    if (!conditions) {
        return;
    }
    require_equal(conditions->size(), words.size(), "number of networks");
    for (std::size_t i = 0; i < words.size(); ++i) {
        const IPADDRCOND& condition = (*conditions)[i];
        const std::optional<Network> network = slow_network(words[i]);
        const bool pattern = words[i].find('*') != words[i].npos;
        require_equal(std::string_view(condition.str.data()), words[i], "text of a network");
        require_equal(condition.cmp, int{!pattern}, "kind of a network");
        require_equal(shown_network(condition.ip, condition.mask),
                      pattern ? "0/0"
                              : shown_network(htonl(network->address), htonl(network->mask)),
                      "network of the list");
    }
}

void check_numbers(const std::string& text, std::int64_t low, std::int64_t high) {
    const Wide number = number_of(all_digits(text) ? text : "");
    const bool within = all_digits(text) && number >= low && number <= high;
    require_equal(decimal_within(text, low, high).value_or(-1),
                  within ? static_cast<std::int64_t>(number) : -1, "number within bounds");

    std::size_t i = text.find_first_not_of(" \t\n\v\f\r");
    i = i == text.npos ? text.size() : i + (text[i] == '+');
    const std::string digits = text.substr(i, text.find_first_not_of("0123456789", i) - i);
    const Wide port = number_of(digits);
    require_equal(server_port(text).value_or(0), port <= 60000 ? static_cast<int>(port) : 0,
                  "port");
}

void check_date(const std::string& text) {
    int year = 0;
    int month = 0;
    int day = 0;
    require_equal(date_str(text.c_str(), nullptr, nullptr, nullptr),
                  has_form_of_date(text) ? 0 : -1, "form of a date");
    const bool valid = slow_is_date(text);
    require_equal(date_str(text.c_str(), &year, &month, &day), valid ? 0 : -1, "date");
    require(!valid || (year == std::stoi(text) && month == std::stoi(text.substr(5)) &&
                       day == std::stoi(text.substr(8))),
            "fields of a date");
}

void check_paths(const std::string& directory, const std::string& name) {
    constexpr std::size_t Longest = 4095;
    const bool full = name.starts_with('/');
    std::string path = full ? name : directory + name;
    const bool fits = full || path.size() <= Longest;
    path += path.ends_with('/') ? "" : "/";
    const std::string no_path = "none";
    const bool is_path = fits && (path.size() <= Longest || name.ends_with('/'));
    require_equal(mk_dirpath(directory.c_str(), name.c_str()).value_or(no_path),
                  is_path ? path : no_path, "directory");
    const std::string between = directory.ends_with('/') ? "" : "/";
    require_equal(mk_filepath(directory.c_str(), name.c_str()).value_or(no_path),
                  full   ? name
                  : fits ? directory + between + name
                         : no_path,
                  "file");
}

// Keys whose check is one rule, and that rule.
bool slow_check_port(const std::string& text) {
    return all_digits(text) && text.size() <= 5 && number_of(text) >= 1 && number_of(text) <= 65535;
}
bool slow_check_networks(const std::string& text) {
    const std::vector<std::string> words = slow_split(text, ":");
    return std::all_of(words.begin(), words.end(),
                       [](const std::string& word) { return slow_is_address(word, false); });
}
bool slow_check_boolean(const std::string& text) {
    return slow_boolean(text) != -1;
}
bool slow_check_bytes(const std::string& text) {
    return slow_size(text, 'K', 1) != -1;
}
constexpr struct {
    const char* section;
    const char* key;
    bool (*accepts)(const std::string& text);
} known_checks[] = {
    {"SMTP", "SmtpPort", slow_check_port},
    {"smtp", "DENYIP", slow_check_networks},
    {"SMTP", "AddReceivedField", slow_check_boolean},
    {"SMTP", "MaxMessageSize", slow_check_bytes},
};

void check_key(std::size_t number, const std::string& text) {
    const Row& row = catalogue()[number % catalogue().size()];
    const int result = check_config(row.section, row.key, text.c_str());
    require(result == 0 || result == -1, "result of a check");
    for (const auto& [section, key, accepts] : known_checks) {
        require_equal(check_config(section, key, text.c_str()), accepts(text) ? 0 : -1, key);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const std::string other = c_string(input.line());
    const int low = input.number();
    const int high = input.number();
    const int key = input.number();
    const std::string text = c_string(input.rest());

    for (const char unit : {'B', 'K', 'M', 'G', other.empty() ? '\0' : other[0]}) {
        require_equal(conv_byte(text, unit), slow_size(text, unit, 1), "bytes");
        require_equal(conv_Kbyte(text, unit), slow_size(text, unit, 1024), "kilobytes");
    }
    int boolean = -1;
    require_equal(truefalse(text, &boolean), slow_boolean(text) == -1 ? -1 : 0, "boolean");
    require_equal(boolean, slow_boolean(text), "value of a boolean");
    for (const bool host_only : {false, true}) {
        require_equal(isvalid_ipaddr(text.c_str(), host_only),
                      int{slow_is_address(text, host_only)}, "whether an address is valid");
    }
    require_equal(isvalid_hostname(text.c_str()), int{slow_is_host(text)},
                  "whether a host name is valid");
    const std::string separators = other.empty() ? ":" : other;
    const auto fields = split_str(text, separators);
    require(fields.has_value(), "memory for fields");
    require_equal(shown(*fields), shown(slow_split(text, separators)), "fields");
    check_network(text);
    check_networks(text);
    check_numbers(text, low, high);
    check_numbers(text, low, std::int64_t{1} << 62);
    check_date(text);
    check_paths(other, text);
    check_key(static_cast<std::size_t>(key), text);
    return 0;
}
