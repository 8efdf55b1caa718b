// Inputs far beyond the usual size: the results are exact, and the memory stays within bounds.
#include "installation.h"

#include <gtest/gtest.h>

namespace ov {
namespace {

using test::Result;
using Words = std::vector<std::string>;

const Result Done{0, "", ""};
const Result NotFound{0, "0: not found\n", ""};

class BigInput : public testing::Test {
  protected:
    // Runs a command on the main file within 32 MiB.
    Result run(Words words) const {
        words[0] = OV_BIN_DIR "/" + words[0];
        words.insert(words.begin() + 1, {"-f", gateway.file});
#ifndef OV_SANITIZE
        words.insert(words.begin(), {"/bin/sh", "-c", "ulimit -v 32768 && exec \"$0\" \"$@\""});
#endif
        return test::run(words);
    }
    Result fetch(const std::string& section, const std::string& key) const {
        return run({"ov_conf", "-s", section, "-k", key});
    }
    // Edits and compares the whole file; `expected` is what follows the common head.
    void edit(Words words, const std::string& expected) const {
        if (!test::is_root()) {
            return; // the rest of the test takes no privilege
        }
        words.insert(words.begin(), "ov_conf");
        EXPECT_EQ(run(words), Done);
        // Comparing by EXPECT_EQ would print megabytes.
        EXPECT_TRUE(test::read_file(gateway.file) == head + expected) << words.back();
    }

    test::Installation gateway;
    const std::string head = test::read_file(gateway.file);
};

std::string entry(const std::string& key, const std::string& value) {
    return key + " = " + value + "\n";
}

TEST_F(BigInput, AHundredThousandLines) {
    std::string front;
    std::string back;
    for (int i = 0; i < 50000; ++i) {
        const std::string number = std::to_string(i);
        front += i % 5 == 0 ? "[s" + number + "]\n" : entry("k" + number, "v" + number);
        back += entry("right" + number, number) + (i % 100 == 0 ? "[Manager]\n" : "");
    }
    front += "[Manager]\n";
    const std::string last = "RealName = Taro\n";
    gateway.configure(front + entry("x", "1") + back + last);
    EXPECT_EQ(run({"ov_conf", "-s", "s49995", "-k", "k49999", "-l"}),
              (Result{0, "0: v49999\n", ""}));
    EXPECT_EQ(fetch("manager", "right49999"), (Result{0, "1: 49999\n", ""}));
    EXPECT_EQ(fetch("Manager", "None"), NotFound);
    EXPECT_EQ(run({"ov_mgrconf", "RealName"}), (Result{0, "RealName: Taro\n", ""}));
    edit({"-s", "Manager", "-k", "x", "-r", "2"}, front + entry("x", "2") + back + last);
    edit({"-s", "Manager", "-k", "x", "-d"}, front + back + last);
    edit({"-s", "Manager", "-k", "RealName", "-d"}, front + back);
    edit({"-s", "New", "-k", "x", "-r", "3"}, front + back + "[New]\nx = 3\n");
    gateway.configure(front + back + "[x]\ny = 1\n" + std::string(100000, '\n') +
                      "[SMTP]\nSmtpPort = x\n");
    EXPECT_EQ(fetch("s0", "k1"),
              (Result{1, "",
                      gateway.file + ":" + std::to_string(test::Installation::FirstLine + 200504) +
                          ": [SMTP] SmtpPort: \"x\" invalid value \n"}));
}

TEST_F(BigInput, LinesOfAMegabyte) {
    const std::string word(1 << 20, 'w');
    const std::string kept = word.substr(0, 8191);
    const std::string front = "[s]\nk = 1\n";
    const std::string lines = "# " + word + "\nvalue =" + word + "\nquoted =\"" + word + "\"\n\"" +
                              word + "q\" = in quotes\nafter = 2\n[" + word + "]\n" + word +
                              " = long\n[\"" + word + "\" more]\n[s]\nlast = 3\n";
    gateway.configure(front + lines);
    const std::pair<std::pair<std::string, std::string>, std::string> found[] = {
        {{"s", "k"}, "1"},
        {{"s", "value"}, kept},
        {{"s", kept}, "in quotes"},
        {{"s", "after"}, "2"},
        {{kept, kept}, "long"},
        {{"s", "last"}, "3"},
        {{"s", "quoted"}, '"' + kept.substr(1)}, // the mark behind has been cut off
    };
    for (const auto& [names, value] : found) {
        EXPECT_EQ(fetch(names.first, names.second), (Result{0, "1: " + value + "\n", ""}))
            << names.second.substr(0, 20);
    }
    for (const auto& [section, key] : {std::pair{kept + "w", kept}, {kept, kept + "w"}}) {
        EXPECT_EQ(fetch(section, key), NotFound);
    }
    edit({"-s", "s", "-k", "k", "-r", "2"}, "[s]\nk = 2\n" + lines);
    edit({"-s", "s", "-k", "new", "-r", "3"}, "[s]\nnew = 3\nk = 2\n" + lines);
    edit({"-s", "s", "-k", "k", "-d"}, "[s]\nnew = 3\n" + lines);
    edit({"-s", "New", "-k", "x", "-r", "4"}, "[s]\nnew = 3\n" + lines + "[New]\nx = 4\n");
}

TEST_F(BigInput, ASectionInTenThousandPlaces) {
    const auto places = [](const std::string& first, const std::string& last) {
        std::string text = "[SMTP]\n" + first;
        for (int i = 1; i <= 10000; ++i) {
            text += "[SMTP]\nSmtpPort = " + std::to_string(i) + "\n[x]\n";
        }
        return text + "[smtp]\n" + last;
    };
    gateway.configure(places("", entry("k", "1")));
    EXPECT_EQ(fetch("SMTP", "k"), (Result{0, "1: 1\n", ""}));
    EXPECT_EQ(run({"ov_conf", "-s", "SMTP", "-k", "SmtpPort", "-a"}), (Result{0, "1: 1\n", ""}));
    edit({"-s", "SMTP", "-k", "k", "-r", "2"}, places("", entry("k", "2")));
    edit({"-s", "SMTP", "-k", "k", "-d"}, places("", ""));
    edit({"-s", "SMTP", "-k", "k", "-r", "3"}, places(entry("k", "3"), ""));
}

TEST_F(BigInput, LongestTexts) {
    for (const std::size_t length : {8190U, 8191U, 8192U}) {
        const std::string text(length, 'v');
        const std::string kept = text.substr(0, 8191);
        gateway.configure("[s]\nk =" + text + "\nl = " + text + "\n" + text + " = x\n[" + text +
                          "]\ny = z\n");
        EXPECT_EQ(fetch("s", "k"), (Result{0, "1: " + kept + "\n", ""}));
        // The blank in front counts.
        EXPECT_EQ(fetch("s", "l"), (Result{0, "1: " + text.substr(0, 8190) + "\n", ""}));
        EXPECT_EQ(fetch("s", kept), (Result{0, "1: x\n", ""}));
        EXPECT_EQ(fetch(kept, "y"), (Result{0, "1: z\n", ""}));
    }
    // The editor takes a line as long as this, its line feed included, for one.
    for (const auto& [length, rest] : {std::pair{8190U, ""}, {8191U, "\n"}, {8192U, "v\n"}}) {
        const std::string line = "k=" + std::string(length - 2, 'v') + "\n";
        gateway.configure("[s]\n" + line + "l = 1\n");
        edit({"-s", "s", "-k", "k", "-d"}, "[s]\n" + std::string(rest) + "l = 1\n");
        gateway.configure("[s]\n" + line + "l = 1\n");
        edit({"-s", "s", "-k", "k", "-r", "2"}, "[s]\nk = 2\n" + std::string(rest) + "l = 1\n");
    }
    const std::string value(1000, 'v');
    gateway.configure("[s]\nk = 1\nl = 1\n");
    const std::string before = test::read_file(gateway.file);
    if (test::is_root()) {
        EXPECT_EQ(run({"ov_conf", "-s", "s", "-k", "k", "-r", value + "v"}),
                  (Result{1, "", "ERROR: too long value\n"}));
    }
    EXPECT_EQ(test::read_file(gateway.file), before);
    edit({"-s", "s", "-k", "k", "-r", value}, "[s]\n" + entry("k", value) + "l = 1\n");
}

} // namespace
} // namespace ov
