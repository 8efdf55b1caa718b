#include "ctl/rights_file.h"

#include "load/roles.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <iterator>
#include <string_view>

namespace ov::ctl {

namespace {

// The roles, as "--rights" names them, by rank.
constexpr const char* role_names[] = {"admin",        "manager",        "sysadm",
                                      "search_admin", "search_manager", "search_sysadm"};

} // namespace

std::optional<RightsOf> rights_of(const std::string& text) {
    const std::size_t colon = text.find(':');
    const std::string_view role = std::string_view(text).substr(0, colon);
    const auto* name = std::find(std::begin(role_names), std::end(role_names), role);
    std::string user = colon == std::string::npos ? "" : text.substr(colon + 1);
    if (name == std::end(role_names) || !isvalid_username(user)) {
        return std::nullopt;
    }
    return RightsOf{static_cast<int>(name - std::begin(role_names)), std::move(user)};
}

std::optional<RightsOf> role_of(const std::string& text) {
    std::optional<RightsOf> role = rights_of(text + ":_");
    if (role) {
        role->user.clear();
    }
    return role;
}

RightsFile rights_file(const RightsOf& rights) {
    RightsFile file;
    access_cffile(rights.rank, rights.user.c_str(), file.path, &file.section);
    if (const std::size_t slashes = file.path.find("//"); slashes != std::string::npos) {
        file.path.erase(slashes, 1); // as people write it
    }
    return file;
}

std::optional<std::vector<std::string>> users_of(int rank) {
    namespace fs = std::filesystem;
    std::vector<std::string> users;
    std::error_code error;
    const fs::path directory = fs::path(rights_file({rank, "_"}).path).parent_path();
    for (fs::directory_iterator at(directory, error), end; !error && at != end;
         at.increment(error)) {
        const fs::path name = at->path().filename();
        if (name.extension() == ".conf" && isvalid_username(name.stem().string())) {
            users.push_back(name.stem().string());
        }
    }
    if (error) {
        errno = error.value();
        return std::nullopt;
    }
    std::sort(users.begin(), users.end());
    return users;
}

} // namespace ov::ctl
