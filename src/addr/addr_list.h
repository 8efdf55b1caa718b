// Mail address specifications and lists of addresses.
//
// A setting holds its addresses on one line, separated by commas, in the loose form of mail
// headers: "local@domain", "Display Name <local@domain>", quoted strings, (comments).
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace ov {

// One cell of an address list: a bare address, and the cells behind it.
struct ADDRS {
    std::optional<std::string> str;
    std::unique_ptr<ADDRS> next;

    ADDRS() = default;
    ADDRS(const ADDRS&) = delete;
    ADDRS& operator=(const ADDRS&) = delete;
    ~ADDRS() { // a long list is no deep recursion
        while (next) {
            next = std::move(next->next);
        }
    }
};
using AddressList = std::unique_ptr<ADDRS>;

// Cells that wait to be used again, without their addresses.
extern AddressList addrs_freelist;

// A cell holding `text`, if there is one; taken from addrs_freelist while that has any. Null, after
// a line in the log, when memory is exhausted.
AddressList alloc_ADDRS(std::optional<std::string_view> text);

// Puts all cells of the list onto addrs_freelist.
void free_ADDRS(AddressList list);

// Takes the next address specification off `in`, with at most 1022 characters, and gives its bare
// address in `out`, cut to `size` - 1 characters. Returns the rest of the text; nothing when it is
// used up, or when the address is empty or malformed (then `out` is empty).
std::optional<std::string_view> ag_get_addrspec(std::optional<std::string_view> in,
                                                std::string& out, std::size_t size);

// All addresses of the line, at most 9999, in the order written. A malformed one ends the
// list. Null for a line without an address, and when memory is exhausted.
AddressList addr_list(std::optional<std::string_view> line);

// Puts the addresses of the line behind those in `list`. Returns whether there was memory for all.
bool append_addresses(AddressList* list, std::optional<std::string_view> line);

// How strict isvalid_address is.
inline constexpr int AddressPattern = 0; // "*" is allowed in both parts
inline constexpr int AddressPlain = 1;   // no wild card and no special characters
inline constexpr int AddressStrict = 2;  // letters, digits, ".", "-" and "_" only

// Whether the text, of which 1023 characters are looked at, is an acceptable address, with or
// without a domain, with or without "<" and ">" around it. Returns 1 or 0.
int isvalid_address(const char* text, int mode);

} // namespace ov
