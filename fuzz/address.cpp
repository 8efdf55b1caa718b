// Address specifications, address lists and the three strictnesses of addresses, against the rules
// spelled out plainly.
//
// Input: the size of the answer, the strictness, each on its line, and the list.
#include "addr/addr_list.h"
#include "support.h"

#include <algorithm>
#include <cstring>

using namespace ov;
using namespace ov::fuzz;

namespace {

constexpr std::size_t MostStored = 1023;
constexpr std::size_t MostCells = 9999;

bool is_one_of(char c, const char* characters) {
    return c != '\0' && std::strchr(characters, c);
}

// An address in a text without a NUL; where it ends, the character that ends it included; whether
// it is well formed.
struct Address {
    std::string address;
    std::size_t end = 0;
    bool valid = false;
};

Address slow_address(const std::string& in, std::size_t start) {
    std::size_t i = start;
    while (i < in.size() && is_one_of(in[i], ", \t\n\v\f\r_")) {
        ++i;
    }
    std::string kept; // with the character that ends it, and a NUL for each ">"
    int angles = 0;
    int comments = 0;
    bool in_quotes = false;
    bool ended = false;
    bool bad = false;
    while (!ended && !bad && kept.size() < MostStored) {
        const char c = i < in.size() ? in[i] : '\0';
        ++i;
        const bool in_comment = comments > 0;
        if (!in_comment) {
            kept += c;
        }
        if (c == '\0' && (in_comment || in_quotes)) {
            bad = true;
        } else if (c == '\\') {
            if (kept.size() == MostStored) {
                break;
            }
            const char next = i < in.size() ? in[i] : '\0';
            ++i;
            bad = next == '\0' || next == '\n';
            kept += next == '_' ? ' ' : next;
        } else if (in_comment) {
            comments += c == '(' ? 1 : c == ')' ? -1 : 0;
            if (c == '\n' && !kept.empty()) {
                kept.pop_back();
            }
        } else if (in_quotes) {
            in_quotes = c != '"';
            if (c == '\n') {
                kept.pop_back();
            }
        } else if (c == '\0' || c == ',') {
            ended = true;
            bad = angles != 0;
        } else if (c == ' ' || c == '\t' || c == '\n') {
            kept.pop_back();
        } else if (c == '"') {
            in_quotes = true;
        } else if (c == '(') {
            kept.pop_back();
            comments = 1;
        } else if (c == '<') {
            ++angles;
            kept.clear();
        } else if (c == '>') {
            bad = --angles < 0;
            kept.back() = '\0';
        }
    }
    if (!kept.empty()) {
        kept.pop_back();
    }
    std::string address = c_string(kept);
    const bool valid = !bad && !address.empty();
    while (!address.empty() && is_one_of(address.back(), " _")) {
        address.pop_back();
    }
    while (!address.empty() && is_one_of(address.front(), " _")) {
        address.erase(0, 1);
    }
    return {valid ? address : "", i, valid};
}

std::vector<std::string> slow_list(const std::string& line) {
    std::vector<std::string> addresses;
    std::size_t start = 0;
    for (std::size_t n = 0; n < MostCells; ++n) {
        const Address next = slow_address(line, start);
        if (!next.address.empty()) {
            addresses.push_back(next.address);
        }
        if (!next.valid || next.end >= line.size()) {
            break;
        }
        start = next.end;
    }
    return addresses;
}

bool is_host_character(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
           is_one_of(c, ".-_");
}

bool all_host_characters(const std::string& text) {
    return std::all_of(text.begin(), text.end(), is_host_character);
}

bool has_any(const std::string& text, const char* characters) {
    return text.find_first_of(characters) != text.npos;
}

bool slow_is_valid(const std::string& text, int mode) {
    const bool printable =
        std::all_of(text.begin(), text.end(), [](char c) { return c >= 32 && c < 127; });
    if (text.empty() || (mode >= 2 && !printable)) {
        return false;
    }
    std::string address = text.substr(0, MostStored);
    if (address[0] == '<') {
        const std::size_t close = address.rfind('>');
        address = address.substr(1, close == address.npos ? close : close - 1);
    }
    if (address.empty()) {
        return false;
    }
    const std::size_t at = address.rfind('@');
    const std::string local = address.substr(0, at);
    const std::string domain = at == address.npos ? "" : address.substr(at + 1);
    if (mode >= 2) {
        return all_host_characters(local) && all_host_characters(domain);
    }
    if (mode == 1) {
        return !has_any(domain, "*?#$%&@:;[]!") && !has_any(local, "*?#$%&@:;[]");
    }
    return !has_any(domain, "?#$%&@:;[]!") && !has_any(local, "#:");
}

void check_specification(const std::string& text, std::size_t size) {
    const Address expected = slow_address(text, 0);
    std::string address = "stale";
    const std::optional<std::string_view> rest = ag_get_addrspec(text, address, size);
    require_equal(address, expected.address.substr(0, size > 0 ? size - 1 : 0), "address");
    require(address.size() < MostStored, "an address is too long");
    require(address.find('\n') == address.npos, "a line feed in an address");
    const bool more = expected.valid && expected.end < text.size();
    require_equal(int{rest.has_value()}, int{more}, "whether there is a rest");
    if (rest) {
        require(rest->size() < text.size(), "no progress");
        require_equal(*rest, text.substr(expected.end), "rest");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const auto answer_size = static_cast<std::size_t>(input.number());
    const int mode = input.number() % 4;
    const std::string text = input.rest();
    const std::string before_nul = c_string(text);

    check_specification(before_nul, answer_size);
    AddressList list = addr_list(text);
    const std::vector<std::string> expected = slow_list(before_nul);
    const ADDRS* cell = list.get();
    for (const std::string& address : expected) {
        require(cell && cell->str, "too few addresses in the list");
        require_equal(*cell->str, address, "address of the list");
        require_equal(isvalid_address(address.c_str(), mode), int{slow_is_valid(address, mode)},
                      "whether an address of the list is valid");
        cell = cell->next.get();
    }
    require(!cell, "too many addresses in the list");
    free_ADDRS(std::move(list));
    require_equal(isvalid_address(text.c_str(), mode), int{slow_is_valid(before_nul, mode)},
                  "whether the address is valid");
    return 0;
}
