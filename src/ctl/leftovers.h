// What killed runs have left beside a file.
#pragma once

#include "util/place.h"

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <vector>

namespace ov::ctl {

// A file beside another one, which has been taken for a leftover by its name.
struct Leftover {
    enum class Of : std::uint8_t {
        Conf,  // NAME.tmp.XXXXXX of ov_conf: the whole text, unless the file is untouched
        Draft, // .NAME.apply.XXXXXX: a new text that has not been put into the file
        Whole, // .NAME.whole.XXXXXX: the whole text that was being written into the file
    };
    enum class What : std::uint8_t {
        Foreign, // not to be touched: see `reason`
        Equal,   // to the file
        Rest,    // the file is empty, or its beginning: the write was interrupted
        Part,    // a beginning of the file
        Other,
    };

    std::string name; // in the directory of the file
    Of of = Of::Conf;
    What what = What::Foreign;
    off_t size = 0;
    std::time_t time = 0;    // of its last change
    bool is_in_use = false;  // by one who is still writing it
    std::string reason = {}; // why it is not touched; empty: it may be removed
    bool may_be_put_back() const { return what == What::Rest && of != Of::Draft && reason.empty(); }
};

// The leftovers beside the file, which is `file` and has the text `text`, by their names. None
// where the directory cannot be listed: see can_list.
bool can_list(const Place& place);
std::vector<Leftover> leftovers(const Place& place, const struct stat& file, std::string_view text);

// Who has left it, and what it is, for people.
const char* origin_of(const Leftover& leftover);
std::string in_words(const Leftover& leftover);

// The text of a leftover that may be touched; nothing, with errno set, when it is not so any more.
std::optional<std::string> text_of(const Leftover& leftover, const Place& place,
                                   const struct stat& file);

} // namespace ov::ctl
