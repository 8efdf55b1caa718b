// Answers for programs.
#pragma once

#include "ctl/findings.h"
#include "ctl/leftovers.h"
#include "ctl/shown.h"

namespace ov::ctl {

// Texts that are no UTF-8 are {"base64": "..."}. Each answer ends with a line feed.

std::string json_of(const Findings& findings);
std::string json_of(const std::vector<ShownKey>& keys, bool with_secrets);

// A key that differs. Nothing: a file has no entry of it.
struct Difference {
    std::string section;
    std::optional<std::string> key =
        {}; // nothing: the section itself, which is made if `after` is set
    std::optional<std::string> before = {};
    std::optional<std::string> after = {};
    bool secret = false;
};
std::string json_of(const std::vector<Difference>& changed);

// What apply has done, or would do.
struct Applied {
    std::string user = {}; // of a role; empty: there is only one file
    std::string file;
    std::vector<Difference> changed = {};
    bool written = false;
    std::string how = {};    // "renamed", "in-place", "created" or "removed"; empty: not written
    std::string note = {};   // what else there is to know of that
    std::string backup = {}; // where the old text is; empty: nowhere
    std::vector<Finding> errors = {};
    std::vector<Finding> warnings = {};
};
std::string json_of(const Applied& applied);

// What is known of a name, as pairs of a term and its text, or texts.
using Explanation =
    std::vector<std::pair<std::string, std::variant<std::string, std::vector<std::string>>>>;
std::string json_of(const std::vector<Explanation>& explained);

std::string json_of(const std::vector<Leftover>& leftovers);

// An entry that a program asks for. No section: it is null or not there; no key: it is null. With a
// user alone there is nothing else.
struct JsonEntry {
    std::optional<std::string> user = {};
    bool user_alone = false;
    std::optional<std::string> section = {};
    std::optional<std::string> key = {};
    Typed value = {}; // nothing: null
    bool secret = false;
};
// The rights of a user of a role.
struct UserRights {
    std::string user;
    std::string file;
    std::vector<ShownKey> rights;
};
std::string json_of(const UserRights& rights);

// The entries of a list of objects with "section" or "user", "key" and "value", and perhaps
// "secret", or with "user" alone; nothing, with what is wrong
// in `why`, for any other text, for names of fields that are unknown or given twice, and for
// fractions.
std::optional<std::vector<JsonEntry>> entries_of_json(const std::string& text, std::string& why);

} // namespace ov::ctl
