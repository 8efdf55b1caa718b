#include "tool/cf_mod.h"

#include "catalogue/catalogue.h"
#include "catalogue/rights.h"
#include "conf/rewrite.h"
#include "load/roles.h"
#include "util/log.h"
#include "util/place.h"
#include "util/text.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace ov {

namespace {

constexpr mode_t RightsFileMode = 0644;

// Makes an empty rights file, which the gateway can read whatever the caller's mask is. By the
// super-user's hand it belongs to whom its directory belongs to.
Fd make_file(const char* path) {
    const std::optional<Place> place = Place::of(path, FileKind::Installed);
    if (!place) {
        return Fd();
    }
    const mode_t mask = ::umask(0);
    Fd file = place->create(O_RDWR, RightsFileMode);
    ::umask(mask);
    struct stat directory = {};
    if (file && ::geteuid() == 0 && ::fstat(place->directory.get(), &directory) == 0) {
        // Where it cannot be given away, everybody can still read it.
        [[maybe_unused]] const int ignored =
            ::fchown(file.get(), directory.st_uid, directory.st_gid);
    }
    return file;
}

// Makes a rights file where there is none. Returns whether there is one now.
bool ensure_file(const std::string& path) {
    if (::access(path.c_str(), F_OK) == 0) {
        return true;
    }
    if (errno != ENOENT) {
        syserr("access error \"%s\" (%d)", path.c_str(), errno);
        return false;
    }
    Fd file = make_file(path.c_str());
    if (!file) {
        syserr("open error \"%s\" (%d)", path.c_str(), errno);
        return false;
    }
    if (::close(file.release()) != 0) {
        syserr("close error \"%s\" (%d)", path.c_str(), errno);
        return false;
    }
    return true;
}

} // namespace

int cf_mod(int rank, const char* user, int count, char** assignments) {
    std::string path;
    std::string section;
    if (access_cffile(rank, user, path, &section) != 0 || !ensure_file(path)) {
        return -1;
    }
    int result = 0;
    for (int i = 0; i < count; ++i) {
        const std::string assignment = std::string(assignments[i]).substr(0, MaxText);
        const std::size_t equal = assignment.find('=');
        if (equal == assignment.npos) {
            syserr("invalid format \"%s\"", assignments[i]);
            return -1;
        }
        const std::string key = assignment.substr(0, equal);
        const std::string value = assignment.substr(equal + 1);
        const RightRow* right = find_right(key);
        if (!right || !accepts(*right, {}, value) ||
            conf_modify(path.c_str(), section.c_str(), key.c_str(), value.c_str(),
                        FileKind::Installed) != 0) {
            std::fprintf(stderr, "%s\n", key.c_str());
            result = -1;
        }
    }
    return result;
}

} // namespace ov
