#include "kinds/sets.h"

#include "kinds/types.h"
#include "util/paths.h"
#include "util/text.h"
#include "value/convert.h"

#include <algorithm>
#include <unistd.h>

namespace ov {

namespace {

// Whether the file of the set `name` in the directory `dir` can be read.
int isvalid_set(const Text& dir, std::string_view name, const char* suffix) {
    if (name.empty() || !valid_str(name) || !std::all_of(name.begin(), name.end(), [](char c) {
            return is_letter_or_digit(c) || c == '_';
        })) {
        return 0;
    }
    // No settings may have been loaded yet; then the directory is still a relative one.
    const std::optional<std::string> path = mk_dirpath(installation.root.c_str(), dir.c_str());
    const std::string file = path ? *path + '/' + std::string(name) + suffix : "";
    return file.size() <= MaxPath && ::access(file.c_str(), R_OK) == 0;
}

} // namespace

int isvalid_keywd(std::string_view name) {
    return isvalid_set(installation.keyword_sets, name, ".keywd");
}

int isvalid_mtype(std::string_view name) {
    return isvalid_set(installation.mime_type_sets, name, ".mtype");
}

} // namespace ov
