// Answers for programs.
#pragma once

#include "ctl/findings.h"
#include "ctl/shown.h"

namespace ov::ctl {

// Texts that are no UTF-8 are {"base64": "..."}. Each answer ends with a line feed.

std::string json_of(const Findings& findings);
std::string json_of(const std::vector<ShownKey>& keys, bool with_secrets);

// A key that differs. Nothing: a file has no entry of it.
struct Difference {
    std::string section;
    std::string key;
    std::optional<std::string> before;
    std::optional<std::string> after;
    bool secret = false;
};
std::string json_of(const std::vector<Difference>& changed);

// What is known of a name, as pairs of a term and its text, or texts.
using Explanation =
    std::vector<std::pair<std::string, std::variant<std::string, std::vector<std::string>>>>;
std::string json_of(const std::vector<Explanation>& explained);

} // namespace ov::ctl
