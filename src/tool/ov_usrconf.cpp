#include "catalogue/config_file.h"
#include "load/configuration.h"
#include "load/roles.h"
#include "tool/cf_mod.h"
#include "tool/commands.h"
#include "tool/listing.h"
#include "tool/reply.h"
#include "util/process.h"
#include "util/text.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <unistd.h>

namespace ov {

namespace {

// What a role command loads: the groups of the management and the browsing side.
constexpr unsigned MaskForRoles = RC_MANAGE | RC_BROWSE;

// What the command line asks for.
struct Options {
    std::optional<std::string> user;
    bool groups = false;
    bool modify = false;
};

Options parse_options(int argc, char** argv, bool is_search) {
    Options options;
    constexpr const char* Known = "f:u:gmv";
    opterr = 0;
    for (int c; (c = ::getopt(argc, argv, Known)) != -1;) {
        switch (c) {
        case 'f':
            ConfigFile.set(optarg);
            break;
        case 'u':
            options.user = optarg;
            if (!isvalid_username(*options.user)) {
                std::fprintf(stderr, "500 invalid user name: \"%s\"\n", optarg);
                conf_free();
                std::exit(EXIT_FAILURE);
            }
            break;
        case 'g':
            options.groups = true;
            break;
        case 'm':
            options.modify = true;
            break;
        case 'v':
            print_version(is_search);
        default:
            refuse_option(Known);
        }
    }
    return options;
}

} // namespace

void ov_usrconf(int argc, char** argv, int rank, int is_search) {
    const Options options = parse_options(argc, argv, is_search != 0);
    const char* user = options.user ? options.user->c_str() : nullptr;
    setconfig(ConfigFile.c_str(), MaskForRoles, rank, user);
    resetlimits();

    bool has_file = false;
    if (user) {
        std::string path;
        if (access_cffile(rank, user, path, nullptr) != 0) {
            return;
        }
        has_file = ::access(path.c_str(), R_OK) == 0;
        if (options.modify) {
            finish(cf_mod(rank, user, argc - optind, argv + optind) == 0 ? EXIT_SUCCESS
                                                                         : EXIT_FAILURE);
        }
    }
    if (optind < argc) {
        finish(answer_query(rank, argv[optind]) ? EXIT_SUCCESS : EXIT_FAILURE);
    }
    print_listing(rank, user, has_file);
    if (options.groups) {
        print_groups(rank);
    }
    finish();
}

} // namespace ov
