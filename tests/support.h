// What the tests share: throwaway files, and the commands run as a user runs them.
#pragma once

#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace ov::test {

// A directory that lives as long as the object. Anybody may enter it.
class TempDir {
  public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    std::string path(std::string_view name = "") const;
    // Writes the file `name` and returns its path.
    std::string file(std::string_view name, std::string_view text) const;
    // The names in the directory, sorted.
    std::vector<std::string> names() const;

  private:
    std::filesystem::path path_;
};

std::string read_file(const std::string& path);
void write_file(const std::string& path, std::string_view text);
std::vector<std::string> lines_of(const std::string& text);

// What stands behind "program[pid]: " on the error lines of the daily log in `directory`.
std::string logged_errors(const std::string& directory);

struct Result {
    int status = -1; // the exit status, or 256 plus the number of the signal that ended it
    std::string out;
    std::string err;

    bool operator==(const Result&) const = default;
};
void PrintTo(const Result& result, std::ostream* stream);

// How a command is run.
struct Setting {
    std::map<std::string, std::string> environment = {}; // added to ours
    bool unprivileged = false;                           // as nobody, for a test that runs as root
    bool traced = false; // and stops in front of its first instruction
};

// Runs a command, by its path or by its name in the build's bin folder, with its arguments.
Result run(const std::vector<std::string>& words, const Setting& setting = {});

// A command that runs beside the test.
class Running {
  public:
    explicit Running(const std::vector<std::string>& words, const Setting& setting = {});
    ~Running();
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;

    // Waits until the command stops itself. Returns false when it ends instead.
    bool stops();
    void go_on() const;
    int process() const { return process_; }
    // Waits for the end of the command.
    Result result();
    // Says that it has ended so, to those who have waited for it themselves.
    void ended(int status);

  private:
    struct Output;
    std::unique_ptr<Output> output_;
    int process_ = -1;
    int status_ = 0; // as waitpid gives it, once the command has ended
    bool ended_ = false;
};

constexpr int Stop = -1; // as an error: the process stops itself in front of the call

// The environment in which a command takes us for the super-user.
Setting as_root();

// That, and the `number`-th call of the function `call` for `file` fails with `error`; faults.cpp
// has the functions.
Setting failing(const std::string& file, std::string_view call, int number, int error);

// Sends `signal` to a command in front of its `number`-th system call behind the first one of
// fcntl. Returns how it ended; nothing when it ended before.
std::optional<int> interrupt(const std::vector<std::string>& words, int number, int signal);

constexpr unsigned Nobody = 65534;

// The owner, the group and the mode of a file; and giving it others.
std::string possession_of(const std::string& path);
void give(const std::string& path, mode_t mode);

bool is_root();

// The path of the file `name` in tests/golden.
std::string golden_path(const std::string& name);

// Compares a text with that file, and tells the first lines that differ. The text that does is left
// in the build folder, under tests/actual, to be looked through and copied over the file when it is
// right.
void expect_golden(const std::string& name, const std::string& text);

// How a value is written on one line: "x{16}" for sixteen or more of a character, "\n", "\xe9".
std::string escaped(std::string_view text);
std::string unescaped(std::string_view text);

std::string replaced(std::string text, std::string_view what, std::string_view with);

} // namespace ov::test
