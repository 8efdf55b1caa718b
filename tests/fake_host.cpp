#include "fake_host.h"

#include <array>
#include <cstring>
#include <netdb.h>
#include <unistd.h>

namespace ov::test {

FakeHost host;

} // namespace ov::test

using ov::test::host;

extern "C" int gethostname(char* name, size_t size) noexcept {
    if (!host.own) {
        return -1;
    }
    std::strncpy(name, host.own, size);
    return 0;
}

extern "C" hostent* gethostbyname(const char* name) {
    static std::array<char*, 3> aliases{};
    static std::array<char, 16> plain{"plain"};
    static hostent answer{};
    if (!host.official || std::strcmp(name, host.own ? host.own : "localhost") != 0) {
        return nullptr;
    }
    aliases = {plain.data(), const_cast<char*>(host.alias), nullptr};
    answer.h_name = const_cast<char*>(host.official);
    answer.h_aliases = aliases.data();
    return &answer;
}

extern "C" long gethostid() {
    return 4711;
}
