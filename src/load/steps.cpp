#include "load/steps.h"

#include "catalogue/loading.h"
#include "catalogue/settings.h"
#include "util/handle.h"
#include "util/log.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace ov::steps {

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

} // namespace

Verdict chosen_program(const Loading&) {
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
    return Verdict::Taken;
}

Verdict forward_mode(const Loading& value) {
    if (!ForwardMailAddress && ForwardMode != 0) {
        value.load.say("WARNING No address specified, ForwardMode = none\n");
        ForwardMode = 0;
    }
    return Verdict::Taken;
}

Verdict archive_hard_link(const Loading&) {
    try_queues(ArchiveHardLink, "ArchiveHardLink", MessageQueue, ArchiveQueue, link_over);
    return Verdict::Taken;
}
Verdict quarantine_hard_link(const Loading&) {
    try_queues(QuarantineHardLink, "QuarantineHardLink", MessageQueue, QuarantineQueue, ::rename);
    return Verdict::Taken;
}

} // namespace ov::steps
