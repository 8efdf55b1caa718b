#include "support.h"

#include "catalogue/reset.h"
#include "fake_host.h"
#include "util/handle.h"
#include "util/log.h"

#include <array>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ov::test {

namespace {

[[noreturn]] void become(const std::vector<std::string>& words, const Setting& setting, int out,
                         int err) {
    // Opened now: the unprivileged user may not be allowed into the build folder.
    const bool is_path = words[0].starts_with('/');
    int program =
        ::open(((is_path ? "" : OV_BIN_DIR "/") + words[0]).c_str(), O_RDONLY | O_CLOEXEC);
    if (setting.unprivileged) { // nor to run what is in it
        const int copy = ::memfd_create("program", MFD_CLOEXEC);
        while (::sendfile(copy, program, nullptr, INT_MAX) > 0) {
        }
        program = copy;
    }
    ::dup2(::open("/dev/null", O_RDONLY), 0);
    ::dup2(out, 1);
    ::dup2(err, 2);
    for (const auto& [name, value] : setting.environment) {
        ::setenv(name.c_str(), value.c_str(), 1);
    }
    if (setting.traced) {
        ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
    }
    if (setting.unprivileged && is_root() && ::setuid(Nobody) != 0) {
        ::_exit(126);
    }
    std::vector<std::string> own = words;
    std::vector<char*> arguments;
    for (std::string& word : own) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    ::fexecve(program, arguments.data(), environ);
    ::_exit(127);
}

// Each test begins as a process does: nothing has been loaded or logged.
class Beginning : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo&) override {
        reset_settings();
        log_initialized = 0;
        ProgName = nullptr;
        ::umask(022);
        host = {};
    }
};
const bool each_begins = [] {
    testing::UnitTest::GetInstance()->listeners().Append(std::make_unique<Beginning>().release());
    return true;
}();

} // namespace

TempDir::TempDir() {
    std::string name = (std::filesystem::temp_directory_path() / "ov-test-XXXXXX").string();
    path_ = ::mkdtemp(name.data());
    ::chmod(name.c_str(), 0755);
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string TempDir::path(std::string_view name) const {
    return (path_ / name).string();
}

std::string TempDir::file(std::string_view name, std::string_view text) const {
    write_file(path(name), text);
    return path(name);
}

std::vector<std::string> TempDir::names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path_)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string read_file(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

void write_file(const std::string& path, std::string_view text) {
    std::ofstream(path, std::ios::binary) << text;
}

std::vector<std::string> lines_of(const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::string logged_errors(const std::string& directory) {
    constexpr std::string_view Behind = "]: ";
    std::string errors;
    for (const auto& file : std::filesystem::directory_iterator(directory)) {
        for (const std::string& line : lines_of(read_file(file.path()))) {
            if (const std::size_t at = line.find(Behind); at != line.npos) {
                errors += line.substr(at + Behind.size()) + "\n";
            } else if (line.empty()) { // the message ended in a line feed
                errors += "\n";
            }
        }
    }
    return errors;
}

void PrintTo(const Result& result, std::ostream* stream) {
    *stream << "status " << result.status << ", out \"" << result.out << "\", err \"" << result.err
            << '"';
}

Result run(const std::vector<std::string>& words, const Setting& setting) {
    return Running(words, setting).result();
}

// Files in memory that collect what the command prints.
struct Running::Output {
    Fd out{::memfd_create("out", MFD_CLOEXEC)};
    Fd err{::memfd_create("err", MFD_CLOEXEC)};
};

Running::Running(const std::vector<std::string>& words, const Setting& setting)
    : output_(std::make_unique<Output>()), process_(::fork()) {
    if (process_ == 0) {
        become(words, setting, output_->out.get(), output_->err.get());
    }
}

Running::~Running() {
    if (!ended_) {
        ::kill(process_, SIGKILL);
        ::waitpid(process_, nullptr, 0);
    }
}

bool Running::stops() {
    ::waitpid(process_, &status_, WUNTRACED);
    ended_ = !WIFSTOPPED(status_);
    return !ended_;
}

void Running::go_on() const {
    ::kill(process_, SIGCONT);
}

Result Running::result() {
    if (!ended_) {
        ::waitpid(process_, &status_, 0);
        ended_ = true;
    }
    const auto text = [](const Fd& file) {
        return read_file("/proc/self/fd/" + std::to_string(file.get()));
    };
    return {WIFEXITED(status_) ? WEXITSTATUS(status_) : 256 + WTERMSIG(status_), text(output_->out),
            text(output_->err)};
}

void Running::ended(int status) {
    status_ = status;
    ended_ = true;
}

Setting as_root() {
    return {{{"LD_PRELOAD", OV_FAULTS},
             {"ASAN_OPTIONS", "verify_asan_link_order=0"},
             {"OV_FAULT_USER", "0"}}};
}

Setting failing(const std::string& file, std::string_view call, int number, int error) {
    Setting setting = as_root();
    setting.environment.insert({{"OV_FAULT_FILE", file},
                                {"OV_FAULT_CALL", std::string(call)},
                                {"OV_FAULT_NUMBER", std::to_string(number)},
                                {"OV_FAULT_ERROR", std::to_string(error)}});
    return setting;
}

std::optional<int> interrupt(const std::vector<std::string>& words, int number, int signal) {
    Setting setting = as_root();
    setting.traced = true;
    setting.environment["ASAN_OPTIONS"] += ":detect_leaks=0"; // which traces the process itself
    Running command(words, setting);
    const pid_t process = command.process();
    int status = 0;
    ::waitpid(process, &status, 0);
    ::ptrace(PTRACE_SETOPTIONS, process, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
    bool locked = false;
    while (number > 0) {
        ::ptrace(PTRACE_SYSCALL, process, nullptr, nullptr);
        if (::waitpid(process, &status, 0) != process || !WIFSTOPPED(status)) {
            command.ended(status);
            return std::nullopt;
        }
        __ptrace_syscall_info info{};
        ::ptrace(PTRACE_GET_SYSCALL_INFO, process, sizeof info, &info);
        if (WSTOPSIG(status) == (SIGTRAP | 0x80) && info.op == PTRACE_SYSCALL_INFO_ENTRY) {
            number -= locked;
            locked = locked || info.entry.nr == SYS_fcntl;
        }
    }
    ::kill(process, signal);
    ::ptrace(PTRACE_DETACH, process, nullptr, nullptr);
    return command.result().status;
}

std::string possession_of(const std::string& path) {
    struct stat info = {};
    ::stat(path.c_str(), &info);
    return std::to_string(info.st_uid) + ":" + std::to_string(info.st_gid) + " " +
           std::to_string(info.st_mode);
}

void give(const std::string& path, mode_t mode) {
    ASSERT_EQ(::chmod(path.c_str(), mode), 0);
    ASSERT_TRUE(!is_root() || ::chown(path.c_str(), 12, 34) == 0);
}

bool is_root() {
    return ::getuid() == 0;
}

std::string golden_path(const std::string& name) {
    return OV_GOLDEN_DIR "/" + name;
}

void expect_golden(const std::string& name, const std::string& text) {
    const std::string actual = OV_ACTUAL_DIR "/" + name;
    const std::string golden = read_file(golden_path(name));
    EXPECT_FALSE(text.empty());
    if (text == golden) {
        return;
    }
    std::error_code ignored; // whoever may not write there sees the difference all the same
    std::filesystem::create_directories(std::filesystem::path(actual).parent_path(), ignored);
    write_file(actual, text);
    // No golden line is longer.
    const std::string difference = run({"/bin/sh", "-c", "diff \"$@\" | head -n 30 | cut -c -500",
                                        "sh", golden_path(name), actual})
                                       .out;
    ADD_FAILURE() << "look it through (< golden, > now), and copy it when it is right:\n  cp "
                  << actual << " " << golden_path(name) << "\n"
                  << difference;
}

std::string escaped(std::string_view text) {
    constexpr std::size_t Run = 16;
    std::string result;
    for (std::size_t i = 0; i < text.size();) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const std::size_t run = std::min(text.find_first_not_of(text[i], i), text.size()) - i;
        std::array<char, 8> code{text[i]};
        if (byte == '\n' || byte == '\\') {
            std::snprintf(code.data(), code.size(), "\\%c", byte == '\n' ? 'n' : '\\');
        } else if (byte < ' ' || byte > '~') {
            std::snprintf(code.data(), code.size(), "\\x%02x", byte);
        }
        result += code.data();
        result += run < Run ? "" : "{" + std::to_string(run) + "}";
        i += run < Run ? 1 : run;
    }
    return result;
}

std::string unescaped(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size();) {
        if (text[i] == '\\' && text.substr(i + 1, 1) == "x") {
            result += static_cast<char>(std::stoi(std::string(text.substr(i + 2, 2)), nullptr, 16));
            i += 4;
        } else if (text[i] == '\\') {
            result += text[i + 1] == 'n' ? '\n' : text[i + 1];
            i += 2;
        } else if (text[i] == '{' && !result.empty()) {
            const std::size_t count = std::stoul(std::string(text.substr(i + 1)));
            result.append(count - 1, result.back());
            i = text.find('}', i) + 1;
        } else {
            result += text[i++];
        }
    }
    return result;
}

std::string replaced(std::string text, std::string_view what, std::string_view with) {
    for (std::size_t at = 0; (at = text.find(what, at)) != text.npos; at += with.size()) {
        text.replace(at, what.size(), with);
    }
    return text;
}

} // namespace ov::test
