#include "ctl/rights_file.h"

#include "load/roles.h"

#include <algorithm>
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

RightsFile rights_file(const RightsOf& rights) {
    RightsFile file;
    access_cffile(rights.rank, rights.user.c_str(), file.path, &file.section);
    if (const std::size_t slashes = file.path.find("//"); slashes != std::string::npos) {
        file.path.erase(slashes, 1); // as people write it
    }
    return file;
}

} // namespace ov::ctl
