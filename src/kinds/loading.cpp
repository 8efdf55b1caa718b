#include "kinds/loading.h"

#include "util/disk.h"

#include <algorithm>

namespace ov {

bool Load::knows_directory(const std::string& path) {
    if (std::find(directories.begin(), directories.end(), path) != directories.end()) {
        return true;
    }
    if (!isvalid_dir(path.c_str())) {
        return false;
    }
    directories.push_back(path);
    return true;
}

} // namespace ov
