// Replacing a file as a whole, so that every reader sees its old text or its new one.
#pragma once

#include "ctl/target.h"

#include <cstdint>
#include <string_view>

namespace ov::ctl {

// How the text got into the file.
enum class How : std::uint8_t {
    Renamed, // a new file with all that the old one had has taken its name
    InPlace, // the file was written over, because a new one cannot have what it has
    Created, // the file was made: 0640, a rights file 0644 with the owner and group of its
             // directory
    Removed, // there is no such file any more
};

struct Replaced {
    How how = How::Renamed;
    std::string note = {};   // what else there is to know, such as why in place; may be empty
    std::string backup = {}; // the path of the old text; empty: it was not wanted
    std::string error = {};  // a sentence that names the file; empty: the text has been written
};
// Gives the file the new text, on the disk. After an error it has the old one; where even that
// cannot be written back, the sentence says where the new text is. After a kill it has either of
// them or, in place, a beginning of the new one, which is whole beside it; where no file can be
// made beside it, it may have the beginning of the new one and the end of the old one. Signals
// wait. With `backup` the old text stays beside the file as NAME.DATE-TIME.bak. What killed runs
// have left is removed, unless the file is in pieces. To be called once.
Replaced replace(Target& target, std::string_view text, bool backup = false);

// Removes the file, or the link to it. Else as replace.
Replaced remove(Target& target, bool backup = false);

// Removes what killed runs of this program have left beside the file, but for the whole text of one
// that is in pieces.
void tidy(const Target& target);

} // namespace ov::ctl
