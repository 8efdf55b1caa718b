// What the fuzz targets share: taking an input apart, failing on it, throwaway files, and settings
// as text. What the code under test prints is seen by those only who ask for it.
#pragma once

#include "catalogue/catalogue.h"

#include <concepts>
#include <cstdint>
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

    // The next line, without its line feed, up to its first NUL.
    std::string line();
    // The number that the next line begins with, of which the last five digits count; 0 when there
    // is none.
    unsigned number();
    // All that is left.
    std::string rest();

  private:
    std::string_view left_;
};

// End the run, with the input as its reproducer, unless all is as it should be.
void require(bool holds, std::string_view what);
void require_equal(std::string_view found, std::string_view expected, std::string_view what);
template <std::integral Number>
void require_equal(Number found, Number expected, std::string_view what) {
    require_equal(std::to_string(found), std::to_string(expected), what);
}

// The path of a file in the directory of this process.
std::string scratch(std::string_view name = "");
std::string read_file(const std::string& path);
void write_file(const std::string& path, std::string_view text);

// The lines of a text, each with its line feed.
std::vector<std::string> lines_of(std::string_view text);

// A setting as text, and those of all rows, of all rights, and that keys share.
std::string shown(const Variable& setting);
std::vector<std::string> shown_settings();

} // namespace ov::fuzz
