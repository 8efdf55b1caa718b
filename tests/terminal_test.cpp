// The completion as it is met on a terminal, in each shell: what a line comes to that has been
// typed with tabs in it.
#include "support.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ov {
namespace {

// A command that runs on a terminal of its own.
class Terminal {
  public:
    explicit Terminal(const std::string& command)
        : process_(::forkpty(&fd_, nullptr, nullptr, nullptr)) {
        if (process_ == 0) {
            ::execl("/bin/sh", "sh", "-c", ("stty columns 400; exec " + command).c_str(), nullptr);
            ::_exit(127);
        }
    }
    ~Terminal() {
        ::kill(process_, SIGKILL);
        ::close(fd_);
        ::waitpid(process_, nullptr, 0);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    // What is printed when something is typed, until `awaited` has come.
    std::string type(const std::string& typed, std::string_view awaited) const {
        constexpr int Patience = 20000; // milliseconds
        std::string printed;
        EXPECT_EQ(::write(fd_, typed.data(), typed.size()), static_cast<ssize_t>(typed.size()));
        for (pollfd ready{fd_, POLLIN, 0}; printed.find(awaited) == printed.npos;) {
            std::array<char, 4096> bytes{};
            if (::poll(&ready, 1, Patience) != 1 || ::read(fd_, bytes.data(), 4095) <= 0) {
                return printed + "(nothing more)";
            }
            printed += bytes.data();
        }
        return printed;
    }

  private:
    int fd_ = -1;
    pid_t process_;
};

// How a shell is started, and prepared: its commands print their arguments. With
// OV_BASH_COMPLETION, the script that finds what is installed for bash, in the environment it looks
// for the completion itself.
struct Shell {
    const char* name;
    const char* options;
    const char* preparation;
};
const Shell shells[] = {
    {"bash", " --norc --noprofile -i",
     "PS1=rea'dy> '; source ${OV_BASH_COMPLETION:-bash-completion/completions/ov_conf}; "
     "ov_conf() { printf '<%s>' \"$@\"; }; ov_admconf() { ov_conf \"$@\"; }; "
     "ov_confctl() { ov_conf \"$@\"; }\n"},
    {"zsh", " -f -i",
     "PROMPT=rea'dy> '; [ $OV_BASH_COMPLETION ] || fpath=($PWD/zsh/site-functions $fpath); "
     "autoload -U compinit; compinit -u -D; ov_conf() { printf '<%s>' \"$@\"; }; ov_admconf() { "
     "ov_conf \"$@\"; }; "
     "ov_confctl() { ov_conf \"$@\"; }\n"},
    {"fish", " $([ $OV_BASH_COMPLETION ] || echo -N) -i",
     "function fish_prompt; echo -n rea'dy> '; end; for name in ov_conf ov_admconf ov_confctl; "
     "set -q OV_BASH_COMPLETION; or source $PWD/fish/vendor_completions.d/$name.fish; end; "
     "function ov_conf; printf '<%s>' $argv; end; function ov_admconf; ov_conf $argv; end; "
     "function ov_confctl; ov_conf $argv; end\n"},
};

class Completion : public testing::TestWithParam<Shell> {};

TEST_P(Completion, OnATerminal) {
    const auto& [name, options, preparation] = GetParam();
    if (std::system((std::string("command -v >/dev/null ") + name).c_str()) != 0) {
        GTEST_SKIP() << name << " is not installed";
    }
    const test::TempDir dir;
    std::filesystem::create_directories(dir.path("etc/group"));
    std::filesystem::create_directory(dir.path("admin"));
    for (const char* file : {"etc/group/sales.addr", "etc/group/support.addr", "admin/jiro.conf"}) {
        dir.file(file, "");
    }
    const std::string file =
        dir.file("gateway.conf", "[Directories]\nRootDirectory = " + dir.path() + "\n");
    const Terminal shell("env --chdir=" OV_SHARE_DIR " TERM=dumb PATH=" OV_BIN_DIR
                         ":/usr/bin:/bin HOME=" +
                         dir.path() + " " + name + options);
    shell.type(preparation, "ready> ");
    const std::pair<std::string, std::string> cases[] = {
        {"ov_conf -s deb\t-k noc\t", "<-s><Debug><-k><NoCore>"},
        {"ov_conf -f " + dir.path("gate") + "\t-m", "<-f><" + file + "><-m>"},
        {"ov_conf -s Screening -k MIMEngLevel -r w\t", "<-r><weak>"},
        {"ov_conf -s SMTP -k SmtpPort -c \t9", "<-c><9>"},
        {"ov_admconf -f " + file + " -u j\t", "<-u><jiro>"},
        {"ov_admconf -m HoldR\ty\t", "<-m><HoldReason=yes>"},
        {"ov_admconf -f " + file + " -m Group=sales:su\t", "<Group=sales:support>"},
        {"ov_confctl -f " + file + " show --rights admin:\t", "<--rights><admin:jiro>"},
        {"ov_confctl show --rights man\tx", "<--rights><manager:x>"},
        {"ov_confctl show smtp.smtpp\t", "<show><SMTP.SmtpPort>"},
        {"ov_confctl check " + dir.path("gate") + "\t", "<check><" + file + ">"},
    };
    for (const auto& [typed, expected] : cases) {
        const std::string printed = shell.type(typed + "\n", expected);
        EXPECT_NE(printed.find(expected), printed.npos) << printed;
    }
}
INSTANTIATE_TEST_SUITE_P(Shells, Completion, testing::ValuesIn(shells),
                         [](const auto& shell) { return shell.param.name; });

} // namespace
} // namespace ov
