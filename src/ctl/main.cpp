#include "ctl/options.h"
#include "ctl/text.h"
#include "util/log.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <getopt.h>
#include <new>

namespace ov::ctl {

namespace {

constexpr const char* Usage =
    "usage: ov_confctl [-f FILE] COMMAND [ARGUMENT...]\n"
    "\n"
    "Looks at whole configurations of the gateway. Nothing is changed.\n"
    "\n"
    "commands:\n"
    "  check [FILE...]   reports all that is wrong, and what is likely wrong\n"
    "  show [NAME...]    shows what is in force, by Section, Section.Key or a pattern\n"
    "  diff OTHER        shows what differs in force between two files\n"
    "  explain [NAME...] says what a key, a section, a kind or a right is\n"
    "\n"
    "options:\n"
    "  -f, --file FILE   the configuration file (/etc/Tessary.conf)\n"
    "      --json        answers for programs\n"
    "  -h, --help        this text; after a command: help for that command\n"
    "      --version     the version\n"
    "\n"
    "status: 0 good, 1 invalid or different, 2 wrong call, 3 no such name, 4 not opened, or not "
    "written\n";

struct Command {
    const char* name;
    int (*run)(const Options&);
    const char* options; // that it takes beside those of all
    const char* usage;
};
constexpr Command commands[] = {
    {"check", check, "S",
     "usage: ov_confctl [-f FILE] check [--json] [--strict] [FILE...]\n"
     "\n"
     "Reports all that is wrong with a configuration, in the order in which it is loaded, and "
     "what\n"
     "is likely wrong. No directory is made, and no queue tried.\n"
     "\n"
     "  --strict   warnings count as errors\n"
     "  --json     one object a file, a line each: file, errors, warnings\n"},
    {"show", show, "cdoxr",
     "usage: ov_confctl [-f FILE] show [--changed] [--defaults] [--origin] [--secrets] [--json]\n"
     "                  [NAME...]\n"
     "       ov_confctl [-f FILE] show --rights ROLE:USER [--changed] [--origin] [--json]\n"
     "\n"
     "Shows all keys, or those that are named: SMTP, SMTP.SmtpPort, '*.DirectoryLimitSize'. What "
     "a\n"
     "file sets is an entry, what holds by default a comment.\n"
     "\n"
     "  --changed    only what differs from the defaults\n"
     "  --defaults   the defaults\n"
     "  --origin     the file and the line of each value\n"
     "  --secrets    passwords, too\n"
     "  --rights     the rights of a user; ROLE is admin, manager, sysadm, search_admin,\n"
     "               search_manager or search_sysadm\n"},
    {"diff", diff, "dx",
     "usage: ov_confctl [-f FILE] diff [--secrets] [--json] OTHER\n"
     "       ov_confctl [-f FILE] diff [--secrets] [--json] --defaults\n"
     "\n"
     "Shows what differs in force, key by key: \"-\" as FILE has it, \"+\" as OTHER has it. With\n"
     "--defaults: \"-\" the default, \"+\" as FILE has it.\n"},
    {"explain", explain, "",
     "usage: ov_confctl explain [--json] [NAME...]\n"
     "\n"
     "Says what the manual says of a key (SMTP.SmtpPort, SmtpPort), a section, a kind of value or "
     "a\n"
     "right. Without a name: the sections.\n"},
};

constexpr struct option known_options[] = {
    {"file", required_argument, nullptr, 'f'},
    {"json", no_argument, nullptr, 'j'},
    {"strict", no_argument, nullptr, 'S'},
    {"changed", no_argument, nullptr, 'c'},
    {"defaults", no_argument, nullptr, 'd'},
    {"origin", no_argument, nullptr, 'o'},
    {"secrets", no_argument, nullptr, 'x'},
    {"rights", required_argument, nullptr, 'r'},
    {"help", no_argument, nullptr, 'h'},
    {"version", no_argument, nullptr, 'V'},
    {nullptr, 0, nullptr, 0},
};

const Command* find_command(std::string_view name) {
    const auto* found =
        std::find_if(std::begin(commands), std::end(commands),
                     [name](const Command& command) { return command.name == name; });
    return found == std::end(commands) ? nullptr : found;
}

const char* name_of(int letter) {
    const auto* found = std::find_if(std::begin(known_options), std::end(known_options),
                                     [letter](const auto& known) { return known.val == letter; });
    return found->name;
}

void set_option(Options& options, int letter) {
    switch (letter) {
    case 'f':
        options.file = optarg;
        options.names_file = true;
        break;
    case 'j':
        options.json = true;
        break;
    case 'S':
        options.strict = true;
        break;
    case 'c':
        options.changed = true;
        break;
    case 'd':
        options.defaults = true;
        break;
    case 'o':
        options.origin = true;
        break;
    case 'x':
        options.secrets = true;
        break;
    default:
        options.rights = optarg;
    }
}

// The command that is run, for what is said of a wrong call.
const char* command_name = "";

int run(int argc, char** argv) {
    static char name[] = "ov_confctl"; // whatever path it was started by
    argv[0] = name;
    Options options;
    std::string given; // the letters of the options
    for (int letter; (letter = ::getopt_long(argc, argv, "f:h", known_options, nullptr)) != -1;) {
        if (letter == '?') {
            std::fputs("Try: ov_confctl --help\n", stderr);
            return WrongCall;
        }
        given += static_cast<char>(letter);
        if (letter != 'h' && letter != 'V') {
            set_option(options, letter);
        }
    }
    if (optind < argc && std::string_view(argv[optind]) == "help") {
        ++optind;
        given += 'h';
    }
    const Command* command = optind < argc ? find_command(argv[optind]) : nullptr;
    if (given.find('V') != given.npos) {
        std::printf("ov_confctl %s\n", Version);
        return Good;
    }
    if (given.find('h') != given.npos) {
        std::fputs(command ? command->usage : Usage, stdout);
        return Good;
    }
    if (!command) {
        return wrong_call(optind < argc ? std::string("unknown command \"") + argv[optind] + '"'
                                        : "no command given");
    }
    command_name = command->name;
    for (const char letter : given) {
        if (letter != 'f' && letter != 'j' && !std::strchr(command->options, letter)) {
            return wrong_call(std::string(command->name) + " does not take --" + name_of(letter));
        }
    }
    options.operands.assign(argv + optind + 1, argv + argc);
    return command->run(options);
}

} // namespace

int wrong_call(const std::string& message) {
    std::fprintf(stderr, "ov_confctl: %s\nTry: ov_confctl %s%s--help\n", printable(message).c_str(),
                 command_name, *command_name ? " " : "");
    return WrongCall;
}

std::string why_not_opened() {
    return errno == EWOULDBLOCK ? "somebody who changes it has locked it"
           : errno == EFBIG     ? "64 MiB or larger"
                                : std::strerror(errno);
}

int not_opened(const std::string& file) {
    const std::string reason = why_not_opened();
    std::fprintf(stderr, "ov_confctl: %s: %s\n", file.empty() ? "\"\"" : printable(file).c_str(),
                 reason.c_str());
    return NotOpened;
}

} // namespace ov::ctl

int main(int argc, char** argv) {
    try {
        const int status = ov::ctl::run(argc, argv);
        // An answer that cannot be delivered is a failure.
        const bool is_delivered = std::fflush(stdout) == 0 && !std::ferror(stdout);
        if (!is_delivered) {
            std::fputs("ov_confctl: the answer cannot be written\n", stderr);
        }
        return is_delivered ? status : static_cast<int>(ov::ctl::NotOpened);
    } catch (const std::bad_alloc&) {
        std::fputs("ov_confctl: there is not enough memory\n", stderr);
        return ov::ctl::NotOpened;
    }
}
