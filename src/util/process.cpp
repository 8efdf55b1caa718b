#include "util/process.h"

#include "util/services.h"
#include "util/text.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace ov {

namespace {

void set_limit(__rlimit_resource resource, rlim_t value) {
    const rlimit limit{value, value};
    ::setrlimit(resource, &limit);
}

// Changes the signal mask by `sig`; the result is that of blocksignal.
int change_mask(int how, int sig) {
    sigset_t change;
    sigset_t before;
    ::sigemptyset(&change);
    if (::sigaddset(&change, sig) != 0 || ::sigprocmask(how, &change, &before) != 0) {
        return -1;
    }
    return ::sigismember(&before, sig);
}

} // namespace

void resetlimits() {
    set_limit(RLIMIT_CPU, RLIM_INFINITY);
    set_limit(RLIMIT_FSIZE, RLIM_INFINITY);
    if (services.no_core) {
        set_limit(RLIMIT_CORE, 0);
    }
    set_limit(RLIMIT_NOFILE, RLIM_INFINITY);
    errno = 0;
}

int blocksignal(int sig) {
    return change_mask(SIG_BLOCK, sig);
}

int releasesignal(int sig) {
    return change_mask(SIG_UNBLOCK, sig);
}

HeldSignals::HeldSignals() {
    // The C library's own calls leave out two signals that it keeps for itself.
    sigset_t held;
    std::memset(&held, 0xff, sizeof held);
    for (const int fault : {SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGSEGV, SIGSYS, SIGTRAP}) {
        ::sigdelset(&held, fault);
    }
    ::syscall(SYS_rt_sigprocmask, SIG_BLOCK, &held, &before_, _NSIG / 8);
}

HeldSignals::~HeldSignals() {
    ::syscall(SYS_rt_sigprocmask, SIG_SETMASK, &before_, nullptr, _NSIG / 8);
}

std::time_t curtime() {
    return std::time(nullptr);
}

} // namespace ov
