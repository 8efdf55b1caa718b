// The commands as a user runs them: each file in golden/sessions is what a shell in a throwaway
// installation has been given ("$ ", and "> " for more lines) and what it has answered: the output,
// then "! " and the lines on standard error, then the exit status when it is not 0. A "\" stands
// in front of an empty line, and of one that begins like a command.
#include "installation.h"

#include <gtest/gtest.h>

namespace ov {
namespace {

#ifdef OV_SANITIZE // which takes all it can get
#define MEMORY "unlimited"
#else
#define MEMORY "32768"
#endif

// What the commands of a session find defined.
constexpr char Prelude[] = R"(
PATH=.:${OV_COMMANDS:-)" OV_BIN_DIR R"(}:$PATH
umask 022
conf() { ov_conf -f Tessary.conf "$@"; }
check() { conf -c -s "$1" -k "$2" -- "$3"; }
ctl() { ov_confctl -f Tessary.conf "$@"; }
as() { command=$1; shift; $command -f Tessary.conf "$@"; } # a role command
rights() { mkdir -p admin manager; cat >$1/taro.conf; }
configure() { # puts text behind what every main file has
    { printf '[Directories]\nRootDirectory = %s/\nQueueDirectory = %s/\n' "$PWD" "$PWD"
      printf '[Mail]\nInternalDomains = example.com\n'; cat; } >Tessary.conf
}
limited() { (ulimit -v ${OV_MEMORY:-)" MEMORY R"(}; "$@"); } # by kilobytes
many() { head -c "$1" /dev/zero | tr '\0' "$2"; }
addresses() { # of a user's groups, without the places of the texts in memory
    printf '[Admin]\nGroup = %s\n%s\n' "$@" | rights admin
    as ov_admconf -u taro -g | sed '1,/^RcptFilterSelect_Search/d; s/ STR=0x[0-9a-f]\{8\}$//'
}
logged() { # since the last time, without dates and the first line of the file
    cat logs/log.* 2>/dev/null | sed '1d; s|^[0-9/]* [0-9:]* ||; s|^[a-z_]*\[[0-9]*\]: ||'
    rm -f logs/log.*
}
cd ')";

class Session : public testing::TestWithParam<std::string> {};

TEST_P(Session, AnswersAsWritten) {
    const std::string text = test::read_file(test::golden_path("sessions/" + GetParam()));
    const test::Installation gateway;
    const std::string root = gateway.path().substr(0, gateway.path().size() - 1);
    const bool unprivileged = text.starts_with("# As nobody");
    if (unprivileged) { // who may write here, but perhaps not read the build folder
        std::filesystem::copy_file(OV_BIN_DIR "/ov_conf", gateway.path("ov_conf"));
        for (const char* name : {".", "template", "ov_conf"}) {
            std::filesystem::permissions(gateway.path(name), std::filesystem::perms::all);
        }
    }
    std::string actual;
    std::string command;
    const auto run = [&] {
        if (command.empty()) {
            return;
        }
        const test::Setting setting =
            unprivileged ? test::Setting{.unprivileged = true} : test::as_root();
        const test::Result result =
            test::run({"/bin/sh", "-c", Prelude + root + "'\n" + command}, setting);
        const auto lines = [&](const std::string& output, const std::string& mark) {
            for (const std::string& line : test::lines_of(test::replaced(output, root, "ROOT"))) {
                const bool plain =
                    !line.empty() && (line.substr(1, 1) != " " || line.find_first_of("#$>") != 0);
                actual += (plain ? mark : mark + "\\") + test::escaped(line) + "\n";
            }
        };
        lines(result.out, "");
        lines(result.err, "! ");
        actual += result.status == 0 ? "" : "[" + std::to_string(result.status) + "]\n";
        command.clear();
    };
    for (const std::string& line : test::lines_of(text)) {
        if (!line.starts_with("> ")) {
            run();
        }
        if (line.starts_with("$ ") || line.starts_with("> ")) {
            command += line.substr(2) + "\n";
        }
        if (!command.empty() || line.empty() || line.starts_with("# ")) {
            actual += line + "\n";
        }
    }
    run();
    test::expect_golden("sessions/" + GetParam(), actual);
}

std::vector<std::string> sessions() {
    std::vector<std::string> names;
    for (const auto& file : std::filesystem::directory_iterator(test::golden_path("sessions"))) {
        names.push_back(file.path().filename().string());
    }
    return names;
}

INSTANTIATE_TEST_SUITE_P(Files, Session, testing::ValuesIn(sessions()), [](const auto& session) {
    return session.param.substr(0, session.param.find('.'));
});

} // namespace
} // namespace ov
