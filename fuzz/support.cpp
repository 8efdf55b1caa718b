#include "support.h"

#include "catalogue/rights.h"
#include "catalogue/settings.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <netdb.h>
#include <type_traits>
#include <unistd.h>

namespace ov::fuzz {

namespace {

// More than two windows of the scanner, or one that has grown twice.
constexpr std::size_t LongestText = 140000;

std::string expanded(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned count = 0;
        const std::size_t colon = text.find(':', i);
        const std::size_t end = text[i] == '{' ? text.find('}', colon) : text.npos;
        const char* digits = text.data() + i + 1;
        if (end == text.npos || colon > i + 6 ||
            std::from_chars(digits, text.data() + colon, count).ptr != text.data() + colon) {
            result += text[i];
            continue;
        }
        const std::string_view piece = text.substr(colon + 1, end - colon - 1);
        for (; count > 0 && result.size() + piece.size() <= LongestText; --count) {
            result += piece;
        }
        i = end;
    }
    return result;
}

template <class Type>
std::string text_of(const Type& value) {
    std::string text;
    if constexpr (std::is_integral_v<Type>) {
        text = std::to_string(value);
    } else if constexpr (std::is_same_v<Type, std::string>) {
        text = value;
    } else if constexpr (std::is_pointer_v<Type>) {
        text = text_of(*value);
    } else if constexpr (requires { value.valueless_by_exception(); }) {
        text = std::visit([](const auto& held) { return text_of(held); }, value);
    } else if constexpr (std::is_same_v<Type, Text>) {
        text = value ? '=' + std::string(value.view()) : "unset";
    } else if constexpr (std::is_same_v<Type, IPADDRCOND>) {
        text = text_of(value.ip) + '/' + text_of(value.mask) + value.str.data();
    } else if constexpr (std::is_same_v<Type, SVRLIST>) {
        text = text_of(value.host) + ':' + text_of(value.port) + text_of(value.flg);
    } else if constexpr (std::is_same_v<Type, AddressList>) {
        for (const ADDRS* cell = value.get(); cell; cell = cell->next.get()) {
            text += '|' + cell->str.value_or("unset");
        }
    } else if constexpr (requires { value.has_value(); }) {
        text = value ? "list" + text_of(*value) : "unset";
    } else {
        for (const auto& item : value) {
            text += '|' + text_of(item);
        }
    }
    return text;
}

} // namespace

std::string Input::line() {
    const std::string_view line = left_.substr(0, left_.find('\n'));
    left_.remove_prefix(std::min(line.size() + 1, left_.size()));
    return std::string(c_text(expanded(line)));
}

unsigned Input::number() {
    return static_cast<unsigned>(std::strtoul(line().c_str(), nullptr, 10) % 100000);
}

std::string Input::rest() {
    return expanded(std::exchange(left_, {}));
}

void require(bool holds, std::string_view what) {
    if (!holds) {
        ::dprintf(STDERR_FILENO, "\n== FAILED: %s\n", std::string(what).c_str());
        std::abort();
    }
}

void require_equal(std::string_view found, std::string_view expected, std::string_view what) {
    if (found != expected) {
        require(false, std::string(what) + "\n   found    " + std::string(found) +
                           "\n   expected " + std::string(expected));
    }
}

std::string scratch(std::string_view name) {
    static const std::string directory = [] {
        std::string path = std::filesystem::temp_directory_path() / "ov_fuzz.XXXXXX";
        require(::mkdtemp(path.data()), "no directory for throwaway files: " + path);
        return path;
    }();
    [[maybe_unused]] static const int at_exit =
        std::atexit([] { std::filesystem::remove_all(scratch()); });
    return directory + "/" + std::string(name);
}

std::string read_file(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void write_file(const std::string& path, std::string_view text) {
    std::ofstream file(path, std::ios::binary);
    require((file << text << std::flush).good(), "cannot write " + path);
}

std::vector<std::string> lines_of(std::string_view text) {
    std::vector<std::string> lines;
    while (!text.empty()) {
        const std::size_t size = std::min(text.find('\n'), text.size() - 1) + 1;
        lines.emplace_back(text.substr(0, size));
        text.remove_prefix(size);
    }
    return lines;
}

std::string shown(const Variable& setting) {
    return text_of(setting);
}

std::vector<std::string> shown_settings() {
    std::vector<std::string> values;
    for (const Row& row : catalogue()) {
        values.push_back(shown(variable_of(row)));
    }
    for (const RightRow& row : rights()) {
        values.push_back(
            std::visit([](auto member) { return text_of(settings.*member); }, row.member));
    }
    values.push_back(text_of(SvrList) + text_of(NTF_SvrList) + text_of(ArchiveMinFreeBlocks) +
                     text_of(CoopMinFreeBlocks));
    return values;
}

} // namespace ov::fuzz

// What the code prints goes nowhere; the streams of the fuzzer and of the sanitizers stay.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
    stdout = std::fopen("/dev/null", "w");
    stderr = std::fopen("/dev/null", "w");
    return 0;
}

// In the place of the name service, for the targets that load.
extern "C" hostent* __wrap_gethostbyname(const char*) {
    static char name[] = "mail.example.com";
    static hostent host{name, nullptr, 0, 0, nullptr};
    return &host;
}
