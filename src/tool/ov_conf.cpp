#include "answer/check_config.h"
#include "answer/get_vals.h"
#include "answer/isvalid_msp.h"
#include "catalogue/config_file.h"
#include "conf/lookup.h"
#include "conf/rewrite.h"
#include "load/configuration.h"
#include "load/setdir.h"
#include "tool/commands.h"
#include "tool/reply.h"
#include "util/process.h"
#include "util/text.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace ov {

namespace {

constexpr std::size_t LongestNewValue = 1000;

// What is loaded to validate the file: all groups. To work on one entry, nothing need exist but
// the directories.
constexpr unsigned MaskToValidate = 0x00FF;
constexpr unsigned MaskToEdit = MaskToValidate | RC_NOCHECK;

// What the command line asks for.
struct Options {
    std::optional<std::string> section;
    std::optional<std::string> key;
    bool replace = false;
    bool remove = false;
    bool show = false;   // -l and -a
    int show_loaded = 0; // 1 for -a: the loaded value in its printed form
    bool check = false;
    bool check_msp = false;
    bool load = false;
};

void refuse_combination(bool combined, char named) {
    if (combined) {
        refuse("510 Illegal combined options: -%c ...\n", named);
    }
}

Options parse_options(int argc, char** argv) {
    Options options;
    constexpr const char* Known = "f:vs:k:drlacmp";
    opterr = 0;
    for (int c; (c = ::getopt(argc, argv, Known)) != -1;) {
        switch (c) {
        case 'f':
            ConfigFile.set(optarg);
            break;
        case 's':
            options.section = optarg;
            break;
        case 'k':
            options.key = optarg;
            break;
        case 'v':
            print_version(false);
        case 'l':
        case 'a':
            refuse_combination(options.remove || options.replace || options.check, 'l');
            options.show = true;
            options.show_loaded = c == 'a';
            break;
        case 'c':
            refuse_combination(options.remove || options.replace || options.show, 'c');
            options.check = true;
            break;
        case 'd':
            refuse_combination(options.replace || options.show || options.check, 'd');
            options.remove = true;
            break;
        case 'r':
            refuse_combination(options.remove || options.show || options.check, 'r');
            options.replace = true;
            break;
        // Both are refused in the name of -c. Scripts know these replies.
        case 'm':
            refuse_combination(options.remove || options.replace || options.show, 'c');
            options.load = true;
            break;
        case 'p':
            refuse_combination(options.remove || options.replace || options.show, 'c');
            options.check_msp = true;
            break;
        default:
            refuse_option(Known);
        }
    }
    return options;
}

[[noreturn]] void check(const Options& options, int arguments, char** argument) {
    if (arguments != 1) {
        refuse("510 value required\n");
    }
    if (std::strlen(argument[0]) > MaxText) {
        refuse("ERROR: too long value\n");
    }
    if (setdir(ConfigFile.c_str()) != 0) {
        refuse("ERROR: fatal\n");
    }
    if (check_config(options.section->c_str(), options.key->c_str(), argument[0]) != 0) {
        refuse("ERROR: invalid value\n");
    }
    finish();
}

[[noreturn]] void show(const Options& options, const char* file) {
    const std::optional<std::string> text =
        get_vals(file, options.section->c_str(), options.key->c_str(), options.show_loaded);
    if (!text) {
        refuse("501 ??? default value get failed\n");
    }
    std::printf("%1d: %s\n", options.show_loaded, text->c_str());
    finish();
}

// What the load has scanned holds the value. Of a pipe the load has left nothing to be found.
[[noreturn]] void fetch(const Options& options, const Snapshot& snapshot) {
    const char* file = ConfigFile.c_str();
    const char* section = options.section->c_str();
    const char* key = options.key->c_str();
    std::string value;
    int line = 0;
    const int result = snapshot.is_of_regular_file()
                           ? snapshot.lookup(snapshot.wanted(), section, key, value, LineMode, line)
                           : conf_fetch(file, section, key, value, MaxText + 1);
    if (result == 0) {
        std::printf("1: %s\n", value.c_str());
    } else {
        std::puts("0: not found");
    }
    finish();
}

[[noreturn]] void replace(const Options& options, int arguments, char** argument) {
    if (arguments != 1) {
        refuse("513 value required\n");
    }
    if (std::strlen(argument[0]) > LongestNewValue) {
        refuse("ERROR: too long value\n");
    }
    ::umask(0);
    if (conf_modify(ConfigFile.c_str(), options.section->c_str(), options.key->c_str(),
                    argument[0]) != 0) {
        refuse("553 entry replace failed\n");
    }
    finish();
}

[[noreturn]] void remove(const Options& options, int arguments, char** argument) {
    if (arguments != 0) {
        refuse("512 invalid arguments: %s\n", argument[0]);
    }
    if (conf_delete(ConfigFile.c_str(), options.section->c_str(), options.key->c_str()) != 0) {
        refuse("552 entry delete failed\n");
    }
    finish();
}

} // namespace

void ov_conf(int argc, char** argv) {
    const Options options = parse_options(argc, argv);
    const int arguments = argc - optind;
    char** argument = argv + optind;

    if (options.load) {
        setconfig(ConfigFile.c_str(), MaskToValidate, NoRole, nullptr);
        finish();
    }
    if (options.check_msp) {
        std::exit(isvalid_msp(ConfigFile.c_str()) ? EXIT_SUCCESS : EXIT_FAILURE);
    }
    if (!options.section) {
        refuse("510 section name required: -s <Section> \n");
    }
    if (!options.key) {
        refuse("510 key name required:  -k <Key> \n");
    }
    if (options.check) {
        check(options, arguments, argument);
    }
    if ((options.replace || options.remove) && ::getuid() != 0) {
        refuse("530 Permission denied\n");
    }
    Configuration configuration = open_config(ConfigFile.c_str(), {*options.section, *options.key});
    setconfig(configuration, MaskToEdit, NoRole, nullptr);
    read_config_search(configuration, MaskToEdit);
    resetlimits();
    if (options.show) {
        show(options, arguments > 0 ? argument[0] : ConfigFile.c_str());
    }
    if (options.replace) {
        replace(options, arguments, argument);
    }
    if (options.remove) {
        remove(options, arguments, argument);
    }
    fetch(options, configuration.snapshot);
}

} // namespace ov
