#include "load/steps.h"

#include "catalogue/settings.h"
#include "util/log.h"
#include "util/place.h"

#include <algorithm>
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
int link_over(const Place& source, const Place& target) {
    const auto link = [&] {
        return ::linkat(source.at(), source.name.c_str(), target.at(), target.name.c_str(), 0);
    };
    int result = link();
    if (result != 0 && errno == EEXIST) {
        target.remove();
        result = link();
        errno = result != 0 && errno == ENOENT ? EEXIST : errno;
    }
    return result;
}
int move_over(const Place& source, const Place& target) {
    return ::renameat(source.at(), source.name.c_str(), target.at(), target.name.c_str());
}

// Makes a test file, in the place of one that an earlier trial has left.
Fd make_test_file(const Place& place) {
    constexpr mode_t Mode = 0644;
    Fd file = place.create(O_WRONLY, Mode);
    if (!file && errno == EEXIST) {
        place.remove();
        file = place.create(O_WRONLY, Mode);
    }
    return file;
}

// Where the test file of a queue is.
std::optional<Place> test_file_of(const Text& queue) {
    return Place::of((std::string(queue.view()) + ".qxtest").c_str(), FileKind::Installed);
}

// Tries to bring a file from one queue directory into another with `bring`, and clears `flag` when
// that fails. It is gone from both afterwards.
void try_queues(int& flag, const char* name, const Text& from, const Text& to,
                int (*bring)(const Place&, const Place&)) {
    constexpr unsigned LogWarnings = 0x2; // in LogFacility
    if (!flag) {
        return;
    }
    if (!from || !to) {
        flag = 0;
        return;
    }
    const std::optional<Place> source = test_file_of(from);
    const Fd file = source ? make_test_file(*source) : Fd();
    const std::optional<Place> target = test_file_of(to);
    if (file && (!target || bring(*source, *target) != 0)) {
        flag = 0;
        if ((LogFacility & LogWarnings) != 0 && LogLevel > 1) {
            syserr("WARNING: %s disabled. (errno=%d)", name, errno);
        }
    }
    if (target) {
        target->remove();
    }
    if (file && (bring != move_over || !flag)) {
        source->remove();
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
        load.tell("WARNING No address specified, ForwardMode = none\n");
        ForwardMode = 0;
    }
}

// Tries whether messages can be linked from queue to queue, and moved into quarantine. Where they
// cannot, the setting is switched off.
void try_archive_hard_link(const Load&) {
    try_queues(ArchiveHardLink, "ArchiveHardLink", MessageQueue, ArchiveQueue, link_over);
}
void try_quarantine_hard_link(const Load&) {
    try_queues(QuarantineHardLink, "QuarantineHardLink", MessageQueue, QuarantineQueue, move_over);
}

constexpr std::size_t number_of(RowOf setting) {
    return static_cast<std::size_t>(setting);
}

constexpr Gate Receive{.any = RC_RECEIVE};
constexpr Step all_steps[] = {
    {number_of(RowOf::TransmissionMode), {}, false, choose_program},
    {number_of(RowOf::QuarantineHardLink), Receive, true, try_archive_hard_link},
    {number_of(RowOf::SRCH_Admin_Dir), Receive, true, try_quarantine_hard_link},
    {number_of(RowOf::AppendMode), Receive, false, settle_forward_mode},
};
static_assert(std::is_sorted(std::begin(all_steps), std::end(all_steps),
                             [](const Step& a, const Step& b) { return a.before < b.before; }),
              "the steps stand in the order of the rows that they come before");

} // namespace

std::span<const Step> steps() {
    return all_steps;
}

} // namespace ov
