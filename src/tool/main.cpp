#include "load/configuration.h"
#include "load/roles.h"
#include "tool/commands.h"
#include "util/log.h"
#include "util/text.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fcntl.h>
#include <new>
#include <unistd.h>

namespace ov {

namespace {

constexpr const char* SystemCommand = "ov_conf";

const char* base_name(const char* path) {
    const std::string_view text(path);
    const std::size_t slash = text.rfind('/');
    return slash == text.npos ? path : path + slash + 1;
}

// A closed standard descriptor would be given to the next file that is opened, and messages would
// end up in that file. Where there is no /dev/null, what nobody can write to takes its place.
void open_standard_descriptors() {
    for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(fd, F_GETFD) == -1 && ::open("/dev/null", O_RDWR) == -1 &&
            ::open("/", O_PATH) == -1) {
            std::_Exit(EXIT_FAILURE);
        }
    }
}

// Runs the command whose name is ProgName. Returns the exit status of one that comes back.
int run_command(int argc, char** argv) {
    if (same_word(ProgName, SystemCommand)) {
        ov_conf(argc, argv);
    }
    for (int rank = 0; rank < Roles; ++rank) {
        const Role& role = AllRoles[static_cast<std::size_t>(rank)];
        if (same_word(ProgName, role.command)) {
            ov_usrconf(argc, argv, rank, role.is_search);
            return EXIT_SUCCESS;
        }
    }
    std::fprintf(stderr, "510 Syntax error: unknown command: %s\n", ProgName);
    return EXIT_FAILURE;
}

[[noreturn]] void end_without_memory() {
    std::fputs("550 Out of memory: malloc error\n", stderr);
    std::exit(EXIT_FAILURE);
}

// When memory is exhausted from the very start, there is none to throw an exception with.
[[noreturn]] void on_terminate() {
    if (std::current_exception()) {
        std::abort();
    }
    end_without_memory();
}

} // namespace

void mss_exit(int status) {
    conf_free();
    std::exit(status);
}

} // namespace ov

int main(int argc, char** argv) {
    std::set_terminate(ov::on_terminate);
    try {
        ov::open_standard_descriptors();
        std::signal(SIGXFSZ, SIG_IGN); // a file that may not grow is a write error as any other
        ov::ProgName = ov::base_name(argc > 0 ? argv[0] : "");
        std::exit(ov::run_command(argc, argv));
    } catch (const std::bad_alloc&) {
        ov::end_without_memory();
    }
}
