// Files of lines, read window by window.
#pragma once

#include "util/place.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace ov {

// No line is as long as this, and no file that is edited as large: a file without an end, or
// without a line feed, must not take all memory.
inline constexpr std::size_t TooLong = std::size_t{64} << 20;

// The whole file from where it stands; nothing, with errno set, when it cannot be read to its end,
// or has TooLong bytes and more (EFBIG).
std::optional<std::string> read_whole(int file);

// An open file of lines and how far it has been read. A window of whole lines is held at a time;
// what is given out points into it and lives until the window moves on.
class Source {
  public:
    // Reads the open file `file`. A read error, a line that is too long, and more than `most` bytes
    // look like its end.
    explicit Source(Fd file, std::uint64_t most = std::numeric_limits<std::uint64_t>::max());
    // Reads `text`, which must outlive the source.
    explicit Source(std::string_view text) : window_(text) {}
    // The file `path`; nothing, with errno set, when it cannot be opened, or a line of it is too
    // long (EFBIG). In a pipe, such a line is met only when it is read.
    static std::optional<Source> open(const char* path, FileKind kind = FileKind::Any);

    // Goes back to the first byte, on line 1.
    void rewind();

    // Whether it can be read again from the start with the same outcome.
    bool is_regular_file() const { return regular_; }

    // Whether nothing is known to be missing behind the end of the text. Else errno says why: EFBIG
    // where a line or all of it is too long, or the error of a file whose kind is unknown.
    bool is_whole() const;

    // The window: it ends behind a line feed or with the file.
    std::string_view window() const { return window_; }
    std::size_t position() const { return position_; }
    // The character at the position, or -1 at the end of the file.
    int lookahead() const {
        return position_ < window_.size() ? static_cast<unsigned char>(window_[position_]) : -1;
    }
    // Goes on to `position` in the window; at its end, to the start of the next one.
    void move_to(std::size_t position) {
        position_ = position;
        if (position_ == window_.size()) {
            next_window();
        }
    }

    // The current line, as far as whoever moves on counts.
    int line() const { return line_; }
    void add_lines(int lines) { line_ += lines; }

  private:
    void next_window();

    Fd file_;
    bool regular_ = false;
    bool may_be_too_long_ = false; // a line of it
    int error_ = 0;
    bool at_end_ = true;   // nothing more can be read
    bool at_start_ = true; // the window is the first one
    std::unique_ptr<char[]> buffer_;
    std::size_t capacity_ = 0;
    std::uint64_t most_ = 0; // bytes that may be read
    std::uint64_t read_ = 0; // bytes that have been
    std::size_t used_ = 0;   // bytes in the buffer, those behind the window included
    std::string_view window_;
    std::size_t position_ = 0;
    int line_ = 1;
};

} // namespace ov
