#include "addr/addr_grp.h"
#include "settings/settings.h"
#include "support.h"
#include "util/log.h"
#include "util/util_settings.h"

#include <gtest/gtest.h>
#include <random>
#include <regex>

namespace ov {
namespace {

class AddrGrp : public testing::Test {
  protected:
    AddrGrp() {
        std::filesystem::create_directory(dir.path("logs"));
        services.log_directory.set(dir.path("logs"));
        log_init();
        ProgName = "tool";
        Group_Dir.set(dir.path());
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
    std::string log = "WARNING: GROUP \"none\" not found: \"" + path + "/none.addr\" - ignored\n";
    EXPECT_EQ(logged(), log);

    const std::string longest(4094, 'x');
    std::uint32_t hash = 0;
    for (const char c : longest) {
        hash = hash * 33 + static_cast<unsigned char>(c);
    }
    dir.file("long.addr", longest + "\n" + longest + "y # z\nb\n" + longest + "y");
    EXPECT_EQ(printed({"long"}), " '" + longest + "' h=" + std::to_string(hash % 64) +
                                     " dep=1\n 'b' h=34 dep=1\n" + Option);
    const std::string shown = std::string(61, 'x') + "...";
    const std::string warning =
        "WARNING: GROUP \"long\" line too long: \"" + path + "/long.addr\" ";
    log += warning + "line=2 - ignored \"" + shown + "\"\n" + warning + "line=4 - ignored \"" +
           shown + "\"\n";
    EXPECT_EQ(logged(), log);

    GroupMaxAddresses = 3;
    dir.file("a.addr", "a\nA\n");
    dir.file("b.addr", "b\nc\nd\n");
    EXPECT_EQ(printed({"a", "b", "none"}), " 'a' h=33 dep=1\n 'b' h=34 dep=1\n" + Option);
    log += "WARNING: GROUP \"b\" too many addresses: \"" + path + "/b.addr\" - skip (max. 3)\n";
    EXPECT_EQ(logged(), log);
    const std::string b = " 'b' h=34 dep=1\n";
    for (const int limit : {0, -1, 1}) {
        GroupMaxAddresses = limit;
        const std::string all = b + " 'c' h=35 dep=1\n 'd' h=36 dep=1\n";
        EXPECT_EQ(printed({"b"}), (limit == 1 ? b : all) + Option);
    }
    std::filesystem::create_symlink("loop.addr", dir.path("loop.addr"));
    printed({"loop"});
    EXPECT_NE(logged().find("WARNING: GROUP \"loop\" cannot open: \"" + path +
                            "/loop.addr\" (40) - ignored\n"),
              std::string::npos);
}

// The tree of the addresses, printed as a walk from the root would have built it.
std::string plain_tree(const std::vector<std::string>& addresses, int depth = 1) {
    if (addresses.empty()) {
        return "";
    }
    const std::string& root = addresses[0];
    std::vector<std::string> left;
    std::vector<std::string> right;
    for (const std::string& address : addresses) {
        if (address != root) {
            (address < root ? left : right).push_back(address);
        }
    }
    return plain_tree(left, depth + 1) + " '" + root + "' h=0 dep=" + std::to_string(depth) + "\n" +
           plain_tree(right, depth + 1);
}

TEST_F(AddrGrp, TreesHaveTheShapeOfPlainInsertion) {
    GroupAddressHashSize = 1;
    std::mt19937 random(7);
    for (int file = 0; file < 20; ++file) {
        std::vector<std::string> entries;
        std::string text;
        for (int i = 0; i < 200; ++i) {
            text += entries.emplace_back("u" + std::to_string(random() % 150) + "@x") + "\n";
        }
        dir.file("r.addr", text);
        EXPECT_EQ(printed({"r"}), plain_tree(entries) + "##Option: comp=0, idtab=0, hash size=1\n");
    }
    // Trees as deep as they are large are built, printed and freed, too.
    GroupMaxAddresses = 0;
    for (const int step : {1, -1}) {
        std::string text;
        for (int i = 0; i < 100000; ++i) {
            text += "u" + std::to_string(500000 + step * i) + "@x\n";
        }
        dir.file("s.addr", text);
        const std::string tree = printed({"s"});
        EXPECT_TRUE(tree.starts_with(step == 1 ? " 'u500000@x' h=0 dep=1\n"
                                               : " 'u400001@x' h=0 dep=100000\n"));
        EXPECT_EQ(std::count(tree.begin(), tree.end(), '\n'), 100001);
    }
}

TEST_F(AddrGrp, FilingOneByOne) {
    GroupAddressHashSize = 1;
    ADDRSGROUP group;
    for (const char* entry : {"", "m", "M", "a", "*"}) {
        EXPECT_EQ(add_addr(group, entry), 0);
    }
    AddressTree& tree = group.tree[0];
    EXPECT_EQ(tree.root->addr.view(), "m");
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
