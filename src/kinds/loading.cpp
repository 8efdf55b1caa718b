#include "kinds/loading.h"

#include "util/disk.h"
#include "util/place.h"

#include <algorithm>
#include <sys/stat.h>

namespace ov {

void make_directory(Load&, const std::string& path) {
    constexpr mode_t Mode = 0755;
    const std::string name = path.substr(0, path.find_last_not_of('/') + 1);
    if (const auto place = Place::of(name.c_str(), FileKind::Installed)) {
        ::mkdirat(place->at(), place->name.c_str(), Mode);
    }
}

bool Load::knows_directory(const std::string& path) {
    if (std::find(directories.begin(), directories.end(), path) != directories.end()) {
        return true;
    }
    if (lies_under_missing(path) &&
        std::find(missing.begin(), missing.end(), path) == missing.end()) {
        return true;
    }
    if (!isvalid_dir(path.c_str())) {
        missing.push_back(path);
        return false;
    }
    directories.push_back(path);
    return true;
}

bool Load::lies_under_missing(std::string_view path) const {
    return std::any_of(missing.begin(), missing.end(),
                       [path](const std::string& base) { return path.starts_with(base); });
}

} // namespace ov
