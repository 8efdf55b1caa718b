#include "conf/layout.h"
#include "settings/setdir.h"
#include "settings/settings.h"
#include "support.h"

#include <gtest/gtest.h>

namespace ov {
namespace {

using Path = std::optional<std::string>;

TEST(Layout, JoinsPaths) {
    EXPECT_EQ(mk_dirpath("/opt/x", "etc/"), Path("/opt/xetc/"));
    EXPECT_EQ(mk_dirpath("/opt/x/", "etc"), Path("/opt/x/etc/"));
    EXPECT_EQ(mk_dirpath("/opt/x/", "/var/y"), Path("/var/y/"));
    EXPECT_EQ(mk_dirpath(nullptr, "/y/"), Path("/y/"));
    EXPECT_EQ(mk_dirpath("/x/", ""), Path("/x/"));
    for (const char* dir : {"/a/b", "/a/b/"}) {
        EXPECT_EQ(mk_filepath(dir, "f.txt"), Path("/a/b/f.txt"));
    }
    EXPECT_EQ(mk_filepath(nullptr, "/c/f"), Path("/c/f"));
    EXPECT_EQ(mk_dirpath(nullptr, "y"), Path());
    EXPECT_EQ(mk_filepath(nullptr, "f"), Path());
    EXPECT_EQ(mk_dirpath("/x/", nullptr), Path());
    EXPECT_EQ(mk_filepath("/a", nullptr), Path());
    EXPECT_FALSE(isfullpath(nullptr));
}

TEST(Layout, PathsEndAt4095Characters) {
    const std::string bare = "/" + std::string(2000, 'r'); // 2001 characters
    const std::string root = bare + "/";
    const auto name = [](std::size_t size) { return std::string(size, 'n'); };
    // A base, a name, and the size of the directory made of them, and of the file; 0: refused.
    const std::tuple<std::string, std::string, std::size_t, std::size_t> cases[] = {
        {root, name(2092), 4095, 4094},
        {root, name(2093), 0, 4095},
        {root, name(2094), 0, 0},
        {root, name(2092) + "/", 4095, 4095},
        {root, name(2093) + "/", 0, 0},
        // The "/" between the two does not count.
        {bare, name(2094), 0, 4096},
        {bare, name(2095), 0, 0},
        // An absolute path is taken as it is, while no "/" has to be added.
        {"/x", "/" + name(4999), 0, 5000},
        {"/x", "/" + name(4999) + "/", 5001, 5001},
    };
    for (const auto& [base, end, dir, file] : cases) {
        EXPECT_EQ(mk_dirpath(base.c_str(), end.c_str()).value_or("").size(), dir) << end.size();
        EXPECT_EQ(mk_filepath(base.c_str(), end.c_str()).value_or("").size(), file) << end.size();
    }
}

TEST(Layout, SetdirEstablishesTheThreeDirectories) {
    const test::TempDir dir;
    for (const char* name : {"etc", "template", "other"}) {
        std::filesystem::create_directory(dir.path(name));
    }
    const std::string root = dir.path();
    const std::string other = dir.path("other");
    const std::string good = "RootDirectory = " + root + "\n";
    const auto set = [&](const std::string& text) {
        TemplateDirectory.set("template/");
        EtcDirectory.set("etc/");
        return setdir(dir.file("conf", "[Directories]\n" + text + "\n").c_str());
    };
    const std::tuple<std::string, std::string, const std::string> cases[] = {
        {"", root + "etc/", root + "template/"},
        {"TemplateDirectory =\nEtcDirectory = other", root + "other/", ""},
        {"TemplateDirectory = " + other, root + "etc/", other + "/"},
    };
    for (const auto& [text, etc, templates] : cases) {
        ASSERT_EQ(set(good + text), 0) << text;
        EXPECT_EQ(RootDirectory.view(), root);
        EXPECT_EQ(EtcDirectory.view(), etc);
        EXPECT_EQ(TemplateDirectory.view(), templates);
        EXPECT_EQ(static_cast<bool>(TemplateDirectory), !templates.empty());
    }
    for (const std::string& text :
         {"RootDirectory = " + root.substr(1), std::string("RootDirectory ="),
          "RootDirectory = " + root + "conf", "RootDirectory = /" + std::string(4094, 'x'),
          good + "EtcDirectory =", good + "EtcDirectory = conf",
          good + "TemplateDirectory = none"}) {
        EXPECT_EQ(set(text), -1) << text;
    }
}

} // namespace
} // namespace ov
