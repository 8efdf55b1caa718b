#include "ctl/document.h"
#include "ctl/options.h"
#include "reference/text.h"
#include "util/log.h"
#include "value/convert.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <getopt.h>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <unistd.h>
#include <variant>
#include <vector>

namespace ov::ctl {

namespace {

constexpr const char* Usage =
    "usage: ov_confctl [-f FILE] COMMAND [ARGUMENT...]\n"
    "\n"
    "Looks at whole configurations of the gateway, and changes many entries at once.\n"
    "\n"
    "commands:\n"
    "  check [FILE...]   reports all that is wrong, and what is likely wrong\n"
    "  show [NAME...]    shows what is in force, by Section, Section.Key or a pattern\n"
    "  diff OTHER        shows what differs in force between two files\n"
    "  explain [NAME...] says what a key, a section, a kind or a right is\n"
    "  apply NAME=VALUE  makes all changes at once, or none of them\n"
    "  recover           looks after what a killed change has left\n"
    "\n"
    "options:\n"
    "  -f, --file FILE   the configuration file (/etc/Tessary.conf)\n"
    "      --json        answers for programs\n"
    "  -h, --help        this text; after a command: help for that command\n"
    "      --version     the version\n"
    "\n"
    "status: 0 good, 1 invalid, different or refused, 2 wrong call, 3 no such name,\n"
    "        4 not opened, locked or not written\n";

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
     "       ov_confctl [-f FILE] show --rights ROLE[:USER] [--changed] [--origin] [--json]\n"
     "\n"
     "Shows all keys, or those that are named: SMTP, SMTP.SmtpPort, '*.DirectoryLimitSize'. What "
     "a\n"
     "file sets is an entry, what holds by default a comment.\n"
     "\n"
     "  --changed    only what differs from the defaults\n"
     "  --defaults   the defaults\n"
     "  --origin     the file and the line of each value\n"
     "  --secrets    passwords, too\n"
     "  --rights     the rights of a user, or of all who have a rights file; ROLE is admin,\n"
     "               manager, sysadm, search_admin, search_manager or search_sysadm\n"},
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
    {"apply", apply, "nDbCuePUrXlwL",
     "usage: ov_confctl [-f FILE] apply [OPTION...] [NAME=VALUE|FRAGMENT|-]... [--delete NAME]...\n"
     "       ov_confctl [-f FILE] --rights ROLE[:USER] apply [OPTION...] ...\n"
     "\n"
     "Makes all changes at once, or none of them. NAME is Section.Key; FRAGMENT is a file that "
     "has\n"
     "the entries to be set, and \"-\" the same on standard input. With --json it is a list:\n"
     "[{\"section\": \"SMTP\", \"key\": \"SmtpPort\", \"value\": 25}]; null deletes.\n"
     "\n"
     "  --delete NAME  deletes the entries of Section.Key, or a whole Section\n"
     "  --dry-run      does all but write\n"
     "  --diff         shows what changes, key by key\n"
     "  --backup       keeps the old text beside the file\n"
     "  --create       makes the file when it is missing\n"
     "  --unknown      takes names that the gateway does not know\n"
     "  --exact        deletes what is not named from each section that is\n"
     "  --prune        deletes a section that has no entry left\n"
     "  --rights       changes the rights of a user; names are keys alone. Without a USER,\n"
     "                 those of many users: NAME is User.Right, and a User is like a section\n"
     "  --purge        removes the users of the role who are not named\n"
     "  --lock FILE    the lock file (FILE with .lock for .conf)\n"
     "  --wait SECONDS waits so long for locks (30)\n"
     "  --locked       the caller holds the lock file\n"
     "  --json         answers for programs, and reads fragments as JSON\n"},
    {"recover", recover, "rlwLpR",
     "usage: ov_confctl [-f FILE] recover [--put-back NAME | --remove NAME] [--json]\n"
     "       ov_confctl [-f FILE] --rights ROLE:USER recover ...\n"
     "\n"
     "Lists what changes that were killed have left beside the file.\n"
     "\n"
     "  --put-back NAME puts the text of such a file into the configuration file again\n"
     "  --remove NAME   removes such a file\n"
     "  --lock, --wait, --locked: as apply has them\n"},
};

// An option, and where it goes: a flag, a text, a list of texts, or neither of them.
struct KnownOption {
    const char* name;
    char letter;
    std::variant<std::monostate, bool Options::*, std::optional<std::string> Options::*,
                 std::vector<std::string> Options::*>
        member = {};
    bool takes_argument = member.index() > 1;
};
constexpr KnownOption known_options[] = {
    {"file", 'f', {}, true},
    {"json", 'j', &Options::json},
    {"strict", 'S', &Options::strict},
    {"changed", 'c', &Options::changed},
    {"defaults", 'd', &Options::defaults},
    {"origin", 'o', &Options::origin},
    {"secrets", 'x', &Options::secrets},
    {"rights", 'r', &Options::rights},
    {"dry-run", 'n', &Options::dry_run},
    {"diff", 'D', &Options::diff},
    {"backup", 'b', &Options::backup},
    {"create", 'C', &Options::create},
    {"unknown", 'u', &Options::unknown},
    {"exact", 'e', &Options::exact},
    {"prune", 'P', &Options::prune},
    {"purge", 'U', &Options::purge},
    {"delete", 'X', &Options::deleted},
    {"lock", 'l', &Options::lock},
    {"wait", 'w', {}, true},
    {"locked", 'L', &Options::locked},
    {"put-back", 'p', &Options::put_back},
    {"remove", 'R', &Options::remove},
    {"help", 'h'},
    {"version", 'V'},
};

// The same as getopt_long wants it.
constexpr auto getopt_options = [] {
    std::array<option, std::size(known_options) + 1> all{};
    for (std::size_t i = 0; i < std::size(known_options); ++i) {
        const KnownOption& known = known_options[i];
        all[i] = {known.name, known.takes_argument ? required_argument : no_argument, nullptr,
                  known.letter};
    }
    return all;
}();

const Command* find_command(std::string_view name) {
    const auto* found =
        std::find_if(std::begin(commands), std::end(commands),
                     [name](const Command& command) { return command.name == name; });
    return found == std::end(commands) ? nullptr : found;
}

const KnownOption& option_of(int letter) {
    return *std::find_if(std::begin(known_options), std::end(known_options),
                         [letter](const KnownOption& known) { return known.letter == letter; });
}

// Sets an option. Returns whether its argument is of use.
bool set_option(Options& options, const KnownOption& known, const char* argument) {
    constexpr int LongestWait = 86400;
    if (known.letter == 'f') {
        options.file = argument;
        options.names_file = true;
    } else if (known.letter == 'w') {
        const auto seconds = decimal_within(argument, 0, LongestWait);
        options.wait = static_cast<int>(seconds.value_or(0));
        return seconds.has_value();
    } else if (const auto* flag = std::get_if<bool Options::*>(&known.member)) {
        options.*(*flag) = true;
    } else if (const auto* text =
                   std::get_if<std::optional<std::string> Options::*>(&known.member)) {
        options.*(*text) = argument;
    } else if (const auto* list = std::get_if<std::vector<std::string> Options::*>(&known.member)) {
        (options.*(*list)).emplace_back(argument);
    }
    return true;
}

// The command that is run, for what is said of a wrong call.
const char* command_name = "";

int run(int argc, char** argv) {
    static char name[] = "ov_confctl"; // whatever path it was started by
    argv[0] = name;
    Options options;
    std::string given; // the letters of the options
    for (int letter;
         (letter = ::getopt_long(argc, argv, "f:h", getopt_options.data(), nullptr)) != -1;) {
        if (letter == '?') {
            std::fputs("Try: ov_confctl --help\n", stderr);
            return WrongCall;
        }
        given += static_cast<char>(letter);
        if (!set_option(options, option_of(letter), optarg)) {
            return wrong_call("--wait takes seconds, at most a day");
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
            return wrong_call(std::string(command->name) + " does not take --" +
                              option_of(letter).name);
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

int not_opened(const std::string& file) {
    return failed((file.empty() ? "\"\"" : file) + ": " + why_not_opened(), NotOpened);
}

int failed(const std::string& message, int status) {
    std::fprintf(stderr, "ov_confctl: %s\n", printable(message).c_str());
    return status;
}

namespace {

// What the caller has closed is not to become a file that is opened here: messages would go there.
// Nothing is read from it, and writing to it fails.
void hold_descriptors() {
    for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
        if (::fcntl(fd, F_GETFD) == -1) {
            ::open("/dev/null", O_RDONLY | O_CLOEXEC); // gets the lowest number that is free
        }
    }
}

// Leases are asked for, and a limit on the size of files is to be an error.
void ignore_signals() {
    for (const int number : {SIGIO, SIGXFSZ}) {
        ::signal(number, SIG_IGN); // NOLINT(*-no-int-to-ptr,*-cstyle-cast): the system's constant
    }
}

} // namespace

} // namespace ov::ctl

int main(int argc, char** argv) {
    ov::ctl::hold_descriptors();
    ov::ctl::ignore_signals();
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
