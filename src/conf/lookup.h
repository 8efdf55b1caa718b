// Lookup of one key of a configuration file.
//
// A file is made of "[Section]" headers and "Key = value" entries, a line each. Names that hold
// blanks are quoted; names are compared without regard to case; one to eight bare digits are no
// name. "#" starts a comment where a token would start. A section may stand in several places.
// Lines that are neither are skipped without a word.
#pragma once

#include "conf/scan.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ov {

// One entry as it stands in the file. Its texts live until the next entry is read.
struct Entry {
    std::string_view section;
    int header; // how many headers have been read; the section changes with it
    std::string_view key;
    int line;              // of the key, as the scanner counts
    std::string_view rest; // all that stands behind the "=" on its line
};

// What a file is made of.
enum class Piece : std::uint8_t {
    Entry,
    Header,
    BrokenHeader, // without a name or its "]": the rest of its line is skipped
    EmptyLine,    // nothing, or a comment
    Skipped,      // neither an entry nor a header: the rest of its line is skipped
    End,          // of the file
};

// The entries of a file from its first byte on, in file order.
class EntryScan {
  public:
    explicit EntryScan(Source& source) : source_(source) { source_.rewind(); }
    // The next entry; nothing at the end of the file. A header that lacks its "]" still renames
    // the section that the entries behind it belong to.
    std::optional<Entry> next();

    // The next piece, whatever it is; an entry is given to `entry`.
    Piece next_piece(Entry& entry);
    // The section that the next entry belongs to, and whether there has been a header at all.
    std::string_view section() const { return section_; }
    bool section_seen() const { return section_seen_; }

    // Passes over the other entries of the section of the entry that next has just given: to the
    // next line that begins with a "[".
    void skip_section();

  private:
    bool plain_entry(Entry& entry);

    Source& source_;
    std::string section_;
    int headers_ = 0;
    bool section_seen_ = false;
};

// The two values that an entry can be read as, each at most 8191 bytes long and ended by a NUL.

// Line mode: the rest of the line without the blanks around it and, when it is longer than two
// characters, without the double quotes around it. A "#" is text.
std::string_view line_value(const Entry& entry);
// Token mode: the one token behind the "=", empty when there is none. Nothing when it is a
// bracket or another "=": then the line is no entry.
std::optional<std::string_view> token_value(const Entry& entry);

// The value in one of the modes below.
std::optional<std::string_view> value_in(const Entry& entry, int mode);

// Bit 0 of the mode argument of _getprofile.
inline constexpr int TokenMode = 0;
inline constexpr int LineMode = 1;

// What a lookup does with the entry that it has found for `sec` and `key`: gives its value in the
// mode asked for, cut to `asiz` - 1 characters. Returns whether the entry has a value in that mode.
bool take_value(const Entry& entry, const char* sec, const char* key, std::string& ans,
                std::size_t asiz, int flg);

// Finds the first entry of `sec` and `key` (null is like empty) in the file, and gives its value,
// cut to `asiz` - 1 characters. Returns the entry's line, or 0 with an empty `ans` when there is
// none.
int line_of_entry(Source& source, const char* sec, const char* key, std::string& ans,
                  std::size_t asiz, int flg);

// The same, with the line in scan_linenumber: returns 0, or -1 when there is none.
int _getprofile(Source& fp, const char* sec, const char* key, std::string& ans, std::size_t asiz,
                int flg);

// _getprofile in line mode.
int conf_getprofile(Source& fp, const char* sec, const char* key, std::string& ans,
                    std::size_t asiz);

// conf_getprofile on the file `path`. When that cannot be opened, says so on standard error and
// returns -1.
int conf_fetch(const char* path, const char* sec, const char* key, std::string& ans,
               std::size_t asiz);

// The line of the first header of the section `sec`; 0: there is none. Unlike the lookup it takes a
// "[" inside an entry's value for the start of a header.
int line_of_header(Source& source, std::string_view sec);

// The same, with the line in scan_linenumber: returns 0, or -1 when there is none.
int get_sec(Source& fp, std::string_view sec);

} // namespace ov
