#include "conf/layout.h"
#include "conf/settings.h"
#include "support.h"

#include <gtest/gtest.h>

namespace ov {
namespace {

using Path = std::optional<std::string>;
using Fields = std::vector<std::string>;

TEST(Layout, JoinsPaths) {
    EXPECT_EQ(mk_dirpath("/opt/x/", "etc"), Path("/opt/x/etc/"));
    EXPECT_EQ(mk_dirpath("/opt/x/", "/var/y"), Path("/var/y/"));
    EXPECT_EQ(mk_dirpath("/opt/x", "etc/"), Path("/opt/xetc/"));
    EXPECT_EQ(mk_dirpath(nullptr, "/y/"), Path("/y/"));
    EXPECT_EQ(mk_dirpath(nullptr, "y"), Path());
    EXPECT_EQ(mk_dirpath("/x/", nullptr), Path());
    EXPECT_EQ(mk_dirpath("/x/", ""), Path("/x/"));

    EXPECT_EQ(mk_filepath("/a/b", "f.txt"), Path("/a/b/f.txt"));
    EXPECT_EQ(mk_filepath("/a/b/", "f.txt"), Path("/a/b/f.txt"));
    EXPECT_EQ(mk_filepath("/a/b", "/c/f"), Path("/c/f"));
    EXPECT_EQ(mk_filepath(nullptr, "/c/f"), Path("/c/f"));
    EXPECT_EQ(mk_filepath(nullptr, "f"), Path());
    EXPECT_EQ(mk_filepath("/a", nullptr), Path());

    EXPECT_TRUE(isfullpath("/"));
    EXPECT_FALSE(isfullpath("a/"));
    EXPECT_FALSE(isfullpath(""));
    EXPECT_FALSE(isfullpath(nullptr));
}

TEST(Layout, PathsEndAt4095Characters) {
    const std::string root = "/" + std::string(2000, 'r') + "/";
    const auto name = [&](std::size_t total) { return std::string(total - root.size(), 'n'); };
    EXPECT_EQ(mk_dirpath(root.c_str(), name(4094).c_str()).value_or("").size(), 4095U);
    EXPECT_EQ(mk_dirpath(root.c_str(), name(4095).c_str()), Path());
    EXPECT_EQ(mk_dirpath(root.c_str(), (name(4094) + "/").c_str()).value_or("").size(), 4095U);
    EXPECT_EQ(mk_dirpath(root.c_str(), (name(4095) + "/").c_str()), Path());
    EXPECT_EQ(mk_filepath(root.c_str(), name(4095).c_str()).value_or("").size(), 4095U);
    EXPECT_EQ(mk_filepath(root.c_str(), name(4096).c_str()), Path());
    // The "/" between the two does not count.
    const std::string bare = root.substr(0, root.size() - 1);
    EXPECT_EQ(mk_filepath(bare.c_str(), name(4096).c_str()).value_or("").size(), 4096U);
    EXPECT_EQ(mk_filepath(bare.c_str(), name(4097).c_str()), Path());
    // An absolute path is taken as it is, while no "/" has to be added.
    const std::string deep = "/" + std::string(4999, 'a');
    EXPECT_EQ(mk_filepath("/x", deep.c_str()), Path(deep));
    EXPECT_EQ(mk_dirpath("/x", (deep + "/").c_str()), Path(deep + "/"));
    EXPECT_EQ(mk_dirpath("/x", deep.c_str()), Path());
}

TEST(Layout, SplitsLists) {
    const std::tuple<const char*, const char*, Fields> cases[] = {
        {"  a, b,,c ", " ,", {"a", "b", "c"}},
        {"", ":", {}},
        {"::", ":", {}},
        {"a b", ":", {"a b"}},
        {"x:y", "&:", {"x", "y"}},
    };
    for (const auto& [text, separators, fields] : cases) {
        EXPECT_EQ(split_str(text, separators), fields) << text;
    }
}

TEST(Layout, SetdirEstablishesTheThreeDirectories) {
    const test::TempDir dir;
    for (const char* name : {"etc", "template", "other"}) {
        std::filesystem::create_directory(dir.path(name));
    }
    const std::string root = dir.path();
    const std::string other = dir.path("other");
    const std::string file = dir.file("file", "");
    struct Case {
        std::string text;
        int result;
        std::string etc;
        std::string templates; // empty: unset
    };
    const Case cases[] = {
        {"RootDirectory = " + root, 0, root + "etc/", root + "template/"},
        {"RootDirectory = " + root + "\nTemplateDirectory =\nEtcDirectory = other", 0,
         root + "other/", ""},
        {"RootDirectory = " + root + "\nTemplateDirectory = " + other, 0, root + "etc/",
         other + "/"},
        {"RootDirectory = " + root.substr(1), -1, "", ""},
        {"RootDirectory =", -1, "", ""},
        {"RootDirectory = " + file, -1, "", ""},
        {"RootDirectory = " + root + "\nEtcDirectory =", -1, "", ""},
        {"RootDirectory = " + root + "\nEtcDirectory = file", -1, "", ""},
        {"RootDirectory = " + root + "\nTemplateDirectory = none", -1, "", ""},
        {"RootDirectory = /" + std::string(4094, 'x'), -1, "", ""},
    };
    for (const Case& c : cases) {
        TemplateDirectory.set("template/");
        EtcDirectory.set("etc/");
        const std::string path = dir.file("conf", "[Directories]\n" + c.text + "\n");
        ASSERT_EQ(setdir(path.c_str()), c.result) << c.text;
        if (c.result == 0) {
            EXPECT_EQ(RootDirectory.view(), root);
            EXPECT_EQ(EtcDirectory.view(), c.etc);
            EXPECT_EQ(TemplateDirectory.view(), c.templates);
            EXPECT_EQ(static_cast<bool>(TemplateDirectory), !c.templates.empty());
        }
    }
    test::CapturedErrors errors;
    EXPECT_EQ(setdir("/no/such"), -1);
    EXPECT_EQ(errors.text(), "cannot open configfile \"/no/such\" (2)\n");
}

} // namespace
} // namespace ov
