// The file that a command changes.
#pragma once

#include "ctl/document.h"
#include "ctl/options.h"
#include "ctl/rights_file.h"
#include "ctl/target.h"

#include <optional>

namespace ov::ctl {

// What the options say of it: the main file, or the rights file of a user.
struct Subject {
    Wish wish = {};
    std::optional<RightsOf> whose = {};
    std::optional<Document> main = {}; // which says where the rights file is
    int status = Good;                 // else why there is none has been told on standard error
};
// With `whose` the main file is read, and loaded.
Subject subject_of(const Options& options);

} // namespace ov::ctl
