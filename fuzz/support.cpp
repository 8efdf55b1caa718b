#include "support.h"

#include "settings/catalogue.h"
#include "settings/loader.h"
#include "settings/rights.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <type_traits>
#include <unistd.h>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);

namespace ov::fuzz {

namespace {

constexpr std::size_t LongestText = 24000;

// The number at the start of `text`, and how many digits it has; no more than five are taken.
std::pair<int, std::size_t> number_at(std::string_view text) {
    int number = 0;
    std::size_t digits = 0;
    for (; digits < std::min<std::size_t>(text.size(), 5); ++digits) {
        if (text[digits] < '0' || text[digits] > '9') {
            break;
        }
        number = number * 10 + (text[digits] - '0');
    }
    return {number, digits};
}

std::string expanded(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto [count, digits] = number_at(text.substr(i + 1));
        const std::size_t colon = i + 1 + digits;
        const std::size_t end = text.find('}', colon);
        if (text[i] != '{' || digits == 0 || end == text.npos || text[colon] != ':') {
            result += text[i];
            continue;
        }
        const std::string_view piece = text.substr(colon + 1, end - colon - 1);
        for (int n = 0; n < count && result.size() + piece.size() <= LongestText; ++n) {
            result += piece;
        }
        i = end;
    }
    return result;
}

std::string quoted(std::string_view text) {
    constexpr char Digits[] = "0123456789abcdef";
    std::string result = "\"";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= ' ' && byte <= '~') {
            result += c;
        } else {
            result += {'\\', 'x', Digits[byte / 16], Digits[byte % 16]};
        }
    }
    return result + '"';
}

[[noreturn]] void fail(const std::string& message) {
    const std::string line = "\n== FAILED: " + message + "\n";
    [[maybe_unused]] const ssize_t ignored = ::write(STDERR_FILENO, line.data(), line.size());
    std::abort();
}

// A directory that lives as long as the process, or that a crash leaves behind.
struct Directory {
    std::string path;

    Directory() {
        const char* given = std::getenv("TMPDIR");
        path = given ? given : ::access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
        path += "/ov_fuzz.XXXXXX";
        require(::mkdtemp(path.data()), "no directory for throwaway files: " + path);
    }
    ~Directory() { std::filesystem::remove_all(path); }
    Directory(const Directory&) = delete;
    Directory& operator=(const Directory&) = delete;
};

// A setting's value, and how it is put back.
std::string shown_value(const Text& text) {
    return shown(text.c_str());
}
std::string shown_value(const WordList& words) {
    return words ? shown(*words) : shown(nullptr);
}
template <std::integral Number>
std::string shown_value(Number number) {
    return shown(static_cast<std::int64_t>(number));
}
template <class Other>
std::string shown_value(const Other&) {
    return {};
}

template <std::integral Number>
void put_back(Number& setting, std::int64_t number, const char*) {
    setting = static_cast<Number>(number);
}
void put_back(Text& setting, std::int64_t, const char* builtin) {
    setting.unset();
    if (builtin) {
        setting.set(builtin);
    }
}
void put_back(ServerList& setting, std::int64_t, const char*) {
    for (SVRLIST& server : setting) {
        server.host.unset();
        server.port = server.flg = 0;
    }
}
template <class List>
void put_back(List& setting, std::int64_t, const char*) {
    setting = {}; // no list has a default
}

// What the settings hold at first.
struct Default {
    std::int64_t number = 0;
    const char* text = nullptr; // built in
};
template <class Setting>
Default default_of(const Setting& setting) {
    if constexpr (std::is_integral_v<Setting>) {
        return {static_cast<std::int64_t>(setting), nullptr};
    } else if constexpr (std::is_same_v<Setting, Text>) {
        return {0, setting.c_str()};
    } else {
        return {};
    }
}

// Calls `visit` with every setting and right in turn.
template <class Visit>
void each_setting(Visit visit) {
    for (const Row& row : catalogue()) {
        if (row.section) {
            std::visit([&](auto* setting) { visit(*setting); }, row.variable);
        }
    }
    for (const RightRow& row : rights()) {
        std::visit(
            [&](auto* setting) {
                for (auto& of_role : *setting) {
                    visit(of_role);
                }
            },
            row.setting);
    }
}

} // namespace

std::string Input::line() {
    const std::string_view line = left_.substr(0, left_.find('\n'));
    left_.remove_prefix(std::min(line.size() + 1, left_.size()));
    return expanded(line);
}

int Input::number() {
    return number_at(line()).first;
}

std::string Input::rest() {
    return expanded(std::exchange(left_, {}));
}

std::string c_string(const std::string& text) {
    return text.substr(0, text.find('\0'));
}

void require(bool holds, std::string_view what) {
    if (!holds) {
        fail(std::string(what));
    }
}

void require_equal(std::string_view found, std::string_view expected, std::string_view what) {
    if (found != expected) {
        fail(std::string(what) + "\n   found    " + quoted(found) + "\n   expected " +
             quoted(expected));
    }
}

Captured::Captured(std::FILE*& stream)
    : stream_(stream), before_(std::exchange(stream, ::open_memstream(&text_, &size_))) {}

Captured::~Captured() {
    std::fclose(std::exchange(stream_, before_));
    std::free(text_);
}

std::string Captured::text() {
    std::fflush(stream_);
    return {text_, size_};
}

std::string scratch(std::string_view name) {
    static const Directory directory;
    return directory.path + "/" + std::string(name);
}

std::string read_file(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

void write_file(const std::string& path, std::string_view text) {
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    require(file.good(), "cannot write " + path);
}

bool same_name(std::string_view a, std::string_view b) {
    const auto folded = [](char c) { return c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : int{c}; };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [&](char x, char y) { return folded(x) == folded(y); });
}

std::size_t with_entry(std::uint8_t* data, std::size_t size, std::size_t most, unsigned seed,
                       std::string_view section, std::string_view key, std::string value) {
    constexpr const char* values[] = {
        "yes",      "off",  "0",          "000000025",  "9999",       "10000",
        "-1",       "none", "999999999G", "2147483647", "2147483648", "4294967295",
        "20M",      "x",    "\"a # b\"",  "[x]",        "/x",         "9223372036854775808",
        "0x10",     "010",  "10.1.:*",    "2008/12/31", "a:b::c",     "mx:25 _MSP_",
        "envelope", "",
    };
    if (value.empty()) {
        value = values[seed % std::size(values)];
    }
    const std::string input(reinterpret_cast<const char*>(data), size);
    const std::size_t first = std::min(input.find('\n'), size);
    std::string result = input.substr(0, first) + "\n[" + std::string(section) + "]\n";
    result += std::string(key) + " = " + value + "\n" + input.substr(std::min(first + 1, size));
    if (seed % 3 == 0 || result.size() > most) {
        return LLVMFuzzerMutate(data, size, most);
    }
    std::copy(result.begin(), result.end(), data);
    return result.size();
}

void restore_settings() {
    static const std::vector<Default> defaults = [] {
        std::vector<Default> found;
        each_setting([&](const auto& setting) { found.push_back(default_of(setting)); });
        return found;
    }();
    auto next = defaults.begin();
    each_setting([&](auto& setting) {
        put_back(setting, next->number, next->text);
        ++next;
    });
    forget_scans();
}

std::vector<std::string> shown_settings() {
    std::vector<std::string> values;
    for (const Row& row : catalogue()) {
        values.push_back(
            row.section
                ? std::visit([](auto* setting) { return shown_value(*setting); }, row.variable)
                : "");
    }
    return values;
}

std::vector<std::string> shown_rights(int rank) {
    std::vector<std::string> values;
    for (const RightRow& row : rights()) {
        values.push_back(std::visit(
            [rank](auto* setting) {
                return shown_value((*setting)[static_cast<std::size_t>(rank)]);
            },
            row.setting));
    }
    return values;
}

std::string shown(std::int64_t number) {
    return std::to_string(number);
}

std::string shown(const char* text) {
    return text ? "=" + std::string(text) : "unset";
}

std::string shown(const std::vector<std::string>& words) {
    std::string result = "list";
    for (const std::string& word : words) {
        result += "|" + word;
    }
    return result;
}

} // namespace ov::fuzz

// What the code prints goes nowhere; the streams of the fuzzer and of the sanitizers stay.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
    stdout = std::fopen("/dev/null", "w");
    stderr = std::fopen("/dev/null", "w");
    return 0;
}
