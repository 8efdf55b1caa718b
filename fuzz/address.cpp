// Address specifications, address lists and the three strictnesses of addresses.
//
// Input: the size of the answer on its line, and the list.
#include "addr/addr_list.h"
#include "support.h"

using namespace ov;
using namespace ov::fuzz;

namespace {

std::vector<std::string> listed(const std::string& text) {
    std::vector<std::string> addresses;
    AddressList list = addr_list(text);
    for (const ADDRS* cell = list.get(); cell; cell = cell->next.get()) {
        addresses.push_back(cell->str.value());
    }
    free_ADDRS(std::move(list)); // and the next list is made of these cells
    return addresses;
}

// Takes the address specifications off the text one by one.
std::vector<std::string> extracted(const std::string& text, std::size_t size) {
    std::vector<std::string> addresses;
    std::optional<std::string_view> rest = text;
    for (int most = 9999; rest && most > 0; --most) {
        std::string address = "stale";
        std::string part = "stale";
        const std::optional<std::string_view> next = ag_get_addrspec(rest, address, 1024);
        require(ag_get_addrspec(rest, part, size) == next, "the rest depends on the size");
        require_equal(part, address.substr(0, size > 0 ? size - 1 : 0), "a part of an address");
        require(!next || (next->size() < rest->size() && next->end() == rest->end()),
                "no progress");
        if (!address.empty()) {
            addresses.push_back(address);
        }
        rest = next;
    }
    return addresses;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const unsigned answer_size = input.number();
    const std::string rest = input.rest();
    const std::string text(c_text(rest));

    const std::vector<std::string> addresses = listed(text);
    require(extracted(text, answer_size) == addresses, "the list is not that of its parts");
    std::string line;
    std::vector<std::string> plain;
    for (const std::string& address : addresses) {
        require(!address.empty() && address.size() <= 1022, "length of an address");
        const int taken[] = {isvalid_address(address.c_str(), AddressPattern),
                             isvalid_address(address.c_str(), AddressPlain),
                             isvalid_address(address.c_str(), AddressStrict)};
        require(taken[0] >= taken[1] && taken[1] >= taken[2], "a stricter rule takes more");
        if (address.find_first_of("\\\"()<>, \t\v\f\r") == address.npos) {
            line += address + (plain.size() % 2 == 0 ? ", " : ",");
            plain.push_back(address);
        }
    }
    require(listed(line) == plain, "listed addresses are not what they are parsed to");
    return 0;
}
