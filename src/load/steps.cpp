#include "load/steps.h"

#include "catalogue/settings.h"
#include "util/handle.h"
#include "util/log.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace ov {

namespace {

void copy(Text& to, const Text& from) {
    if (from) {
        to.set(from.view());
    } else {
        to.unset();
    }
}

// Links a test file into another queue. What an earlier trial has left there goes out of the way;
// when that was the file itself, both queues are one, and nothing can be linked.
int link_over(const char* source, const char* target) {
    int result = ::link(source, target);
    if (result != 0 && errno == EEXIST) {
        ::unlink(target);
        result = ::link(source, target);
        errno = result != 0 && errno == ENOENT ? EEXIST : errno;
    }
    return result;
}

// Makes a test file, in the place of one that an earlier trial has left.
Fd make_test_file(const char* path) {
    constexpr int Flags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC;
    constexpr mode_t Mode = 0644;
    Fd file(::open(path, Flags, Mode));
    if (!file && errno == EEXIST) {
        ::unlink(path);
        file.reset(::open(path, Flags, Mode));
    }
    return file;
}

// Tries to bring a file from one queue directory into another with `bring`, and clears `flag` when
// that fails. It is gone from both afterwards.
void try_queues(int& flag, const char* name, const Text& from, const Text& to,
                int (*bring)(const char*, const char*)) {
    constexpr unsigned LogWarnings = 0x2; // in LogFacility
    if (!flag) {
        return;
    }
    if (!from || !to) {
        flag = 0;
        return;
    }
    const std::string source = std::string(from.view()) + ".qxtest";
    const std::string target = std::string(to.view()) + ".qxtest";
    const Fd file = make_test_file(source.c_str());
    if (file && bring(source.c_str(), target.c_str()) != 0) {
        flag = 0;
        if ((LogFacility & LogWarnings) != 0 && LogLevel > 1) {
            syserr("WARNING: %s disabled. (errno=%d)", name, errno);
        }
    }
    ::unlink(target.c_str());
    if (file && (bring != ::rename || !flag)) {
        ::unlink(source.c_str());
    }
}

// The keys of the chosen submission program become those of sendmail, which the rest of the gateway
// reads.
void choose_program(const Load&) {
    if (MailSubmissionProgram == 2) {
        copy(SendmailProgram, PostfixProgram);
        copy(SendmailQueueDirectory, PostfixQueueDirectory);
        copy(SendmailQueueListProgram, PostfixQueueListProgram);
        copy(SendmailNullFrom, PostfixNullFrom);
    } else if (MailSubmissionProgram == 3) {
        copy(SendmailProgram, QmailProgram);
        copy(SendmailQueueDirectory, QmailQueueDirectory);
        copy(SendmailQueueListProgram, QmailQueueListProgram);
        copy(SendmailNullFrom, QmailNullFrom);
    }
}

// Forwarding needs an address to forward to: without one its mode becomes "none", with a warning.
void settle_forward_mode(const Load& load) {
    if (!ForwardMailAddress && ForwardMode != 0) {
        load.say("WARNING No address specified, ForwardMode = none\n");
        ForwardMode = 0;
    }
}

// Tries whether messages can be linked from queue to queue, and moved into quarantine. Where they
// cannot, the setting is switched off.
void try_archive_hard_link(const Load&) {
    try_queues(ArchiveHardLink, "ArchiveHardLink", MessageQueue, ArchiveQueue, link_over);
}
void try_quarantine_hard_link(const Load&) {
    try_queues(QuarantineHardLink, "QuarantineHardLink", MessageQueue, QuarantineQueue, ::rename);
}

// The rows by their variables.
enum RowOf : std::uint16_t {
#define SETTING(section, key, variable, ...) Of_##variable,
#include "catalogue/keys.def"
};

constexpr Gate Receive{.any = RC_RECEIVE};
constexpr Step all_steps[] = {
    {Of_TransmissionMode, {}, choose_program},
    {Of_QuarantineHardLink, Receive, try_archive_hard_link},
    {Of_SRCH_Admin_Dir, Receive, try_quarantine_hard_link},
    {Of_AppendMode, Receive, settle_forward_mode},
};

} // namespace

std::span<const Step> steps() {
    return all_steps;
}

} // namespace ov
