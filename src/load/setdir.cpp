#include "load/setdir.h"

#include "catalogue/settings.h"
#include "conf/lookup.h"
#include "load/configuration.h"
#include "util/disk.h"
#include "util/paths.h"

#include <cstdio>

namespace ov {

namespace {

// Sets the directory `setting` to its place under `root`. Returns whether it exists.
bool establish(Text& setting, const char* root) {
    std::optional<std::string> path = mk_dirpath(root, setting.c_str());
    if (!path) {
        return false;
    }
    setting.set(*path);
    return isvalid_dir(setting.c_str()) != 0;
}

} // namespace

int setdir(const char* configfile) {
    std::optional<Source> file = Source::open(configfile);
    if (!file) {
        print_cannot_open(configfile);
        return -1;
    }
    std::string value;
    const auto given = [&](const char* key) {
        return conf_getprofile(*file, "Directories", key, value, MaxText + 1) == 0;
    };
    if (given("RootDirectory")) {
        std::optional<std::string> root = mk_dirpath("", value.c_str());
        if (!isfullpath(value.c_str()) || !root) {
            return -1;
        }
        RootDirectory.set(*root);
    }
    if (!isvalid_dir(RootDirectory.c_str())) {
        return -1;
    }
    if (given("TemplateDirectory")) {
        if (value.empty()) {
            TemplateDirectory.unset();
        } else {
            TemplateDirectory.set(value);
        }
    }
    if (TemplateDirectory && !establish(TemplateDirectory, RootDirectory.c_str())) {
        return -1;
    }
    if (given("EtcDirectory")) {
        if (value.empty()) {
            return -1;
        }
        EtcDirectory.set(value);
    }
    if (!file->is_whole()) {
        print_cannot_open(configfile);
        return -1;
    }
    return establish(EtcDirectory, RootDirectory.c_str()) ? 0 : -1;
}

} // namespace ov
