// A configuration read once and loaded whole, whatever is wrong with it: nothing is made, tried or
// printed.
#pragma once

#include "catalogue/catalogue.h"
#include "catalogue/rights.h"
#include "ctl/document.h"
#include "ctl/findings.h"
#include "load/configuration.h"

#include <array>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace ov::ctl {

// Where the value of a key stands: in neither file when it is the default.
struct Origin {
    enum class File : std::uint8_t { None, Main, Supplement } file = File::None;
    int line = 0;

    explicit operator bool() const { return file != File::None; }
};

// What has been loaded. The values are in the settings.
struct Survey {
    std::vector<Finding> errors;               // in the order in which loading meets them
    std::vector<Origin> keys;                  // of the rows, by their numbers
    std::array<std::vector<Origin>, 2> rights; // in [Admin] and [Manager], by the right's number
    std::vector<bool> unread;                  // rows of the main file that no reader wants
    std::optional<Document> supplement;        // that has been read, too
};

// What may be asked while a configuration is loaded.
enum class Host { MayBeAsked, IsLeftAlone };

// Sets all settings to their defaults and loads the configuration, as "ov_conf -m" reads it and
// then the section that a fetch reads. A value that is refused counts as its default for what
// follows, and a directory that is missing stays in force: what lies under it is not looked at. The
// document must outlive the survey.
Survey survey(const Document& document, Host host = Host::MayBeAsked);

// Loads the rights in `section` of the file over those of the role `rank`, likewise: `origins`
// gets the places where they stand, by the right's number, and `errors` what is refused.
void survey_rights(const Document& document, const char* section, int rank,
                   std::vector<std::pair<std::string_view, int>>& origins,
                   std::vector<Finding>& errors);

} // namespace ov::ctl
