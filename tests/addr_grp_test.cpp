#include "addr/addr_grp.h"
#include "conf/settings.h"
#include "support.h"
#include "util/log.h"
#include "util/util_settings.h"

#include <gtest/gtest.h>
#include <random>
#include <regex>
#include <strings.h>

namespace ov {
namespace {

class AddrGrp : public testing::Test {
  protected:
    AddrGrp() {
        std::filesystem::create_directory(dir.path("logs"));
        LogDirectory.set(dir.path("logs"));
        log_initialized = 0;
        log_init();
        ProgName = "tool";
        Group_Dir.set(dir.path());
        GroupMaxAddresses = 1024;
        GroupAddressHashSize = 64;
    }

    // What print_addrsgrp prints of the named groups, without the identities of the strings.
    std::string printed(const std::vector<std::string>& names) const {
        testing::internal::CaptureStdout();
        AddressGroup group = read_addrsgrp(names);
        const int count = print_addrsgrp(group.get());
        free_addrsgrp(std::move(group));
        const std::string text = testing::internal::GetCapturedStdout();
        const auto lines = std::count(text.begin(), text.end(), '\n');
        EXPECT_EQ(count, std::max<long>(lines - 1, 0));
        return std::regex_replace(text, std::regex(" STR=0x[0-9a-f]{8}\n"), "\n");
    }
    std::string logged() const { return test::logged_errors(dir.path("logs")); }

    test::TempDir dir;
};

const std::string Option = "##Option: comp=0, idtab=0, hash size=64\n";

TEST_F(AddrGrp, EntriesOfTheFiles) {
    GroupAddressHashSize = 1;
    dir.file("a.addr", "\n# only a comment\nFoo@Dom.COM  # boss\r\n\t b b@x \n*@dom\r\nUser*@x\n"
                       "u*2\n1*\nA@X\na@x\nlast@x");
    dir.file("b.addr", "LAST@X\nm@x\n*@dom\n");
    EXPECT_EQ(printed({"a", "", "b"}),
              " '1*' h=* dep=1\n 'u*2' h=* dep=1\n 'user*@x' h=* dep=2\n '*@dom' h=* dep=1\n"
              " '*@dom' h=* dep=2\n 'a@x' h=0 dep=3\n 'b b@x' h=0 dep=2\n 'foo@dom.com' h=0 dep=1\n"
              " 'last@x' h=0 dep=2\n 'm@x' h=0 dep=3\n##Option: comp=0, idtab=0, hash size=1\n");
    EXPECT_EQ(logged(), "");
    EXPECT_EQ(printed({}), "");
}

TEST_F(AddrGrp, BucketsByTheHashOfTheEntry) {
    dir.file("a.addr", "ab\nba\n");
    // ('a' * 33 + 'b') mod 64 and ('b' * 33 + 'a') mod 64
    EXPECT_EQ(printed({"a"}), " 'ba' h=3 dep=1\n 'ab' h=35 dep=1\n" + Option);
    for (const int size : {0, -5}) { // one bucket, which printing does not reach
        GroupAddressHashSize = size;
        EXPECT_EQ(printed({"a"}), "##Option: comp=0, idtab=0, hash size=1\n");
    }
    GroupAddressHashSize = 2147483647; // no more room than the entries need
    EXPECT_EQ(printed({"a"}), " 'ab' h=3299 dep=1\n 'ba' h=3331 dep=1\n"
                              "##Option: comp=0, idtab=0, hash size=2147483647\n");
}

TEST_F(AddrGrp, WarningsAndLimits) {
    const std::string path = dir.path();
    EXPECT_EQ(printed({"none"}), Option);
    EXPECT_EQ(logged(),
              "WARNING: GROUP \"none\" not found: \"" + path + "/none.addr\" - ignored\n");
    std::filesystem::remove_all(dir.path("logs"));
    std::filesystem::create_directory(dir.path("logs"));

    const std::string longest(4094, 'x');
    dir.file("long.addr", longest + "\n" + longest + "y # z\nb\n" + longest + "y");
    EXPECT_EQ(printed({"long"}), " '" + longest + "' h=" + std::to_string([&] {
                                     std::uint32_t hash = 0;
                                     for (const char c : longest) {
                                         hash = hash * 33 + static_cast<unsigned char>(c);
                                     }
                                     return hash % 64;
                                 }()) +
                                     " dep=1\n 'b' h=34 dep=1\n" + Option);
    const std::string shown = std::string(61, 'x') + "...";
    const std::string warning =
        "WARNING: GROUP \"long\" line too long: \"" + path + "/long.addr\" ";
    EXPECT_EQ(logged(), warning + "line=2 - ignored \"" + shown + "\"\n" + warning +
                            "line=4 - ignored \"" + shown + "\"\n");
    std::filesystem::remove_all(dir.path("logs"));
    std::filesystem::create_directory(dir.path("logs"));

    GroupMaxAddresses = 3;
    dir.file("a.addr", "a\nA\n");
    dir.file("b.addr", "b\nc\nd\n");
    EXPECT_EQ(printed({"a", "b", "none"}), " 'a' h=33 dep=1\n 'b' h=34 dep=1\n" + Option);
    EXPECT_EQ(logged(),
              "WARNING: GROUP \"b\" too many addresses: \"" + path + "/b.addr\" - skip (max. 3)\n");
    for (const int limit : {0, -1}) {
        GroupMaxAddresses = limit;
        EXPECT_NE(printed({"b"}).find("'d'"), std::string::npos);
    }
    GroupMaxAddresses = 1;
    EXPECT_EQ(printed({"b"}), " 'b' h=34 dep=1\n" + Option);
    std::filesystem::create_symlink("loop.addr", dir.path("loop.addr"));
    printed({"loop"});
    EXPECT_NE(logged().find("WARNING: GROUP \"loop\" cannot open: \"" + path +
                            "/loop.addr\" (40) - ignored\n"),
              std::string::npos);
}

// The tree as a walk from the root would build it.
struct Plain {
    std::string addr;
    std::unique_ptr<Plain> left;
    std::unique_ptr<Plain> right;
};
void insert(std::unique_ptr<Plain>& root, const std::string& addr) {
    if (!root) {
        root = std::make_unique<Plain>();
        root->addr = addr;
        return;
    }
    const int order = ::strcasecmp(addr.c_str(), root->addr.c_str());
    if (order != 0) {
        insert(order < 0 ? root->left : root->right, addr);
    }
}
std::string print(const std::unique_ptr<Plain>& root, int depth) {
    if (!root) {
        return "";
    }
    return print(root->left, depth + 1) + " '" + root->addr + "' h=0 dep=" + std::to_string(depth) +
           "\n" + print(root->right, depth + 1);
}

TEST_F(AddrGrp, TreesHaveTheShapeOfPlainInsertion) {
    GroupAddressHashSize = 1;
    std::mt19937 random(7);
    for (int file = 0; file < 20; ++file) {
        std::string text;
        std::unique_ptr<Plain> expected;
        for (int i = 0; i < 200; ++i) {
            const std::string entry = "u" + std::to_string(random() % 150) + "@x";
            text += entry + "\n";
            insert(expected, entry);
        }
        dir.file("r.addr", text);
        EXPECT_EQ(printed({"r"}), print(expected, 1) + "##Option: comp=0, idtab=0, hash size=1\n");
    }
}

TEST_F(AddrGrp, DeepTreesArePrintedAndFreed) {
    GroupAddressHashSize = 1;
    GroupMaxAddresses = 0;
    for (const bool ascending : {true, false}) {
        std::string text;
        for (int i = 0; i < 100000; ++i) {
            text += "u" + std::to_string(ascending ? 100000 + i : 299999 - i) + "@x\n";
        }
        dir.file("s.addr", text);
        const std::string tree = printed({"s"});
        EXPECT_EQ(tree.substr(0, tree.find('\n')),
                  ascending ? " 'u100000@x' h=0 dep=1" : " 'u200000@x' h=0 dep=100000");
        EXPECT_EQ(std::count(tree.begin(), tree.end(), '\n'), 100001);
    }
}

TEST_F(AddrGrp, FilingOneByOne) {
    ADDRSGROUP group;
    EXPECT_EQ(add_addr(group, ""), 0);
    EXPECT_EQ(add_addr(group, "B"), 0);
    EXPECT_EQ(add_addr(group, "*"), 0);
    AddressTree tree;
    EXPECT_EQ(add_addrtree(tree, "m", false), 0);
    EXPECT_EQ(add_addrtree(tree, "M", false), 0);
    EXPECT_EQ(add_addrtree(tree, "a", false), 0);
    EXPECT_EQ(tree.root->addr.view(), "m");
    EXPECT_EQ(tree.root->left->addr.view(), "a");
    testing::internal::CaptureStdout();
    EXPECT_EQ(print_tree(tree.root->left.get(), 9, 4), 1);
    EXPECT_EQ(print_tree(nullptr, 9, 4), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout().substr(0, 14), " 'a' h=9 dep=5");
    free_tree(tree);
    EXPECT_EQ(add_addrtree(tree, "b", false), 0);
    EXPECT_EQ(tree.root->addr.view(), "b");
}

TEST_F(AddrGrp, SharedTextsOutliveTheirGroups) {
    dir.file("a.addr", "one@x\n*@x\n");
    AddressGroup first = read_addrsgrp3({"a"}, true);
    AddressGroup second = read_addrsgrp3({"a"}, true);
    const std::string_view text = first->list.back()->addr.view();
    EXPECT_EQ(second->list.back()->addr.view().data(), text.data());
    free_addrsgrp(std::move(first));
    free_addrsgrp(std::move(second));
    EXPECT_EQ(text, "*@x");
}

} // namespace
} // namespace ov
