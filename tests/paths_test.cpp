#include "util/paths.h"

#include <gtest/gtest.h>
#include <tuple>

namespace ov {
namespace {

using Path = std::optional<std::string>;

TEST(Paths, PathsEndAt4095Characters) {
    const std::string bare = "/" + std::string(2000, 'r'); // 2001 characters
    const std::string root = bare + "/";
    const auto name = [](std::size_t size) { return std::string(size, 'n'); };
    // A base, a name, and the directory made of them, and the file; empty: refused.
    const std::tuple<std::string, std::string, std::string, std::string> cases[] = {
        {root, name(2092), root + name(2092) + "/", root + name(2092)},
        {root, name(2093), "", root + name(2093)},
        {root, name(2094), "", ""},
        {root, name(2092) + "/", root + name(2092) + "/", root + name(2092) + "/"},
        {root, name(2093) + "/", "", ""},
        // The "/" between the two does not count.
        {bare, name(2094), "", root + name(2094)},
        {bare, name(2095), "", ""},
        // An absolute path is taken as it is, while no "/" has to be added.
        {"/x", "/" + name(4999), "", "/" + name(4999)},
        {"/x", "/" + name(4999) + "/", "/" + name(4999) + "/", "/" + name(4999) + "/"},
        {"/x/", "", "/x/", "/x/"},
        {"/opt/x", "etc/", "/opt/xetc/", "/opt/x/etc/"},
    };
    for (const auto& [base, end, dir, file] : cases) {
        EXPECT_EQ(mk_dirpath(base.c_str(), end.c_str()).value_or(""), dir) << end.size();
        EXPECT_EQ(mk_filepath(base.c_str(), end.c_str()).value_or(""), file) << end.size();
    }
    EXPECT_EQ(mk_dirpath(nullptr, "/y"), Path("/y/"));
    EXPECT_EQ(mk_filepath(nullptr, "/c/f"), Path("/c/f"));
    EXPECT_FALSE(mk_dirpath(nullptr, "y") || mk_filepath(nullptr, "y"));
    EXPECT_FALSE(mk_dirpath("/x/", nullptr) || mk_filepath("/x/", nullptr));
}

} // namespace
} // namespace ov
