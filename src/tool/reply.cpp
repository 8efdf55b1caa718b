#include "tool/reply.h"

#include "util/log.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace ov {

namespace {

constexpr char SearchVersion[] = "2.0.04";
constexpr char SearchBuild[] = "150";

} // namespace

void refuse(const char* format, ...) {
    std::va_list args;
    va_start(args, format);
    std::vfprintf(stderr, format, args);
    va_end(args);
    std::exit(EXIT_FAILURE);
}

void refuse_option(const char* known) {
    const bool lacks_argument = optopt != ':' && std::strchr(known, optopt);
    const char* what = lacks_argument ? "option requires an argument" : "invalid option";
    refuse("%s: %s -- '%c': see man %s\n510 Unknown option: ?\n", ProgName, what, optopt, ProgName);
}

void finish(int status) {
    if (std::fflush(stdout) != 0) {
        refuse("write error: standard output\n");
    }
    std::exit(status);
}

void print_version(bool is_search) {
    if (is_search) {
        std::printf("ORVANTA/S\nVERSION: %s/S%s (%s/%s)\n", Version, SearchVersion, Build,
                    SearchBuild);
    } else {
        std::printf("ORVANTA\nVERSION: %s (%s)\n", Version, Build);
    }
    std::puts("CMD: configuration tool");
    finish();
}

} // namespace ov
