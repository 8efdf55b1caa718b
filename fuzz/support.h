// What the fuzz targets share: taking an input apart, failing on it, throwaway files, and the
// settings as they were at the start. The code under test has no standard output and no standard
// error but those that are captured.
#pragma once

#include <concepts>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace ov::fuzz {

// One input: a few lines that say what is to be done, and a text to do it with. Wherever it is
// written "{COUNT:TEXT}" stands for TEXT as often, so that a small input makes a long line.
class Input {
  public:
    Input(const std::uint8_t* data, std::size_t size)
        : left_(reinterpret_cast<const char*>(data), size) {}

    // The next line, without its line feed.
    std::string line();
    // The number that the next line begins with; 0 when there is none.
    int number();
    // All that is left.
    std::string rest();

  private:
    std::string_view left_;
};

// A text as far as those see it who take it for a C string.
std::string c_string(const std::string& text);

// End the run, with the input as its reproducer, unless all is as it should be.
void require(bool holds, std::string_view what);
void require_equal(std::string_view found, std::string_view expected, std::string_view what);
void require_equal(std::integral auto found, std::integral auto expected, std::string_view what) {
    require_equal(std::to_string(found), std::to_string(expected), what);
}

// What is printed to stdout or stderr while the object lives.
class Captured {
  public:
    explicit Captured(std::FILE*& stream);
    ~Captured();
    Captured(const Captured&) = delete;
    Captured& operator=(const Captured&) = delete;
    std::string text();

  private:
    std::FILE*& stream_;
    std::FILE* before_;
    char* text_ = nullptr;
    std::size_t size_ = 0;
};

// The path of a file in the directory of this process, in memory when that can be had.
std::string scratch(std::string_view name = "");
std::string read_file(const std::string& path);
void write_file(const std::string& path, std::string_view text);

// Whether two names are equal without regard to the case of ASCII letters.
bool same_name(std::string_view a, std::string_view b);

// For custom mutators: puts an entry of that section and key behind the first line of the input.
// Its value is `value` or, when that is empty, one that is often a limit; `seed` chooses which.
// Returns the new size. Now and then, or without room for it, the input changes in other ways.
std::size_t with_entry(std::uint8_t* data, std::size_t size, std::size_t most, unsigned seed,
                       std::string_view section, std::string_view key, std::string value = "");

// Gives all settings and rights their defaults again, and forgets the files read.
void restore_settings();

// The settings of all rows of the catalogue, or of all rights (role by role), as text, by number
// of the row. Those that are none of numbers, texts and lists of words are left empty.
std::vector<std::string> shown_settings();
std::vector<std::string> shown_rights(int rank);
std::string shown(std::int64_t number);
std::string shown(const char* text);
std::string shown(const std::vector<std::string>& words);

} // namespace ov::fuzz
