// The file that a command changes.
#pragma once

#include "ctl/document.h"
#include "ctl/findings.h"
#include "ctl/options.h"
#include "ctl/rights_file.h"
#include "ctl/target.h"

#include <optional>
#include <vector>

namespace ov::ctl {

// What the options say of it: the main file, or the rights file of a user.
struct Subject {
    Wish wish = {};
    std::optional<RightsOf> whose = {};
    std::optional<Document> main = {}; // which says where the rights file is
    int status = Good;
    std::vector<Finding> errors = {}; // why there is none; a wrong call has been told
};
// For a rights file the main file is read and loaded. Where that has an error in a directory, it
// does not say where the rights are. With `takes_role` they may be those of a role, without a user,
// and the file is not known yet.
Subject subject_of(const Options& options, bool takes_role = false);

} // namespace ov::ctl
