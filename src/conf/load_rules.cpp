#include "conf/load_rules.h"

#include "conf/conf.h"
#include "conf/layout.h"
#include "util/handle.h"
#include "util/host.h"
#include "util/log.h"
#include "util/util.h"
#include "util/util_settings.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <type_traits>
#include <unistd.h>

namespace ov::load_rules {

namespace {

constexpr int DefaultPort = 25;
constexpr std::size_t LongestDomainList = 4096;
constexpr mode_t LogDirectoryMode = 0755;
constexpr mode_t TestFileMode = 0644;
constexpr unsigned LogWarnings = 0x2; // in LogFacility

Verdict valid_if(bool valid) {
    return valid ? Verdict::Taken : Verdict::Invalid;
}

template <class Type>
Type& setting(const Loading& loading) {
    return *std::get<Type*>(loading.row.variable);
}

// Stores a number in a setting of any integer type. Returns whether it fits.
bool store(const Variable& variable, std::int64_t number) {
    if (!fits(variable, number)) {
        return false;
    }
    std::visit(
        [number](auto* setting) {
            using Type = std::remove_reference_t<decltype(*setting)>;
            if constexpr (std::is_integral_v<Type>) {
                *setting = static_cast<Type>(number);
            }
        },
        variable);
    return true;
}

// What the rule of the row works on.
Text& directory_of(const Loading& loading) {
    return *std::get<Text*>(loading.row.rule.first);
}
const char* text_of(const Loading& loading) {
    return std::get<const char*>(loading.row.rule.first);
}

// The number at the start of `text`, 0 without one; nothing when it is too large for any setting.
std::optional<long> number_at(const std::string& text) {
    errno = 0;
    const long value = std::strtol(text.c_str(), nullptr, 10);
    return errno == ERANGE ? std::nullopt : std::optional(value);
}

Verdict take_number(const Loading& loading, std::int64_t lowest, std::int64_t highest) {
    const std::optional<long> value = number_at(loading.value);
    return valid_if(value && *value >= lowest && *value <= highest &&
                    store(loading.row.variable, *value));
}

Verdict take_digits(const Loading& loading, std::int64_t lowest, std::int64_t highest) {
    const std::optional<std::int64_t> value = decimal_within(loading.value, lowest, highest);
    return valid_if(value && loading.value.size() <= loading.row.rule.longest &&
                    store(loading.row.variable, *value));
}

// A directory setting as an absolute path: nothing may have made it one yet.
std::optional<std::string> absolute(const Text& directory) {
    return mk_dirpath(RootDirectory.c_str(), directory.c_str());
}

// What became of a path that should be stored: nothing was made of it, or it was.
Verdict take_path(const Loading& loading, std::optional<std::string> path) {
    if (!path) {
        return loading.reader == SearchReader ? Verdict::NotConfigured : Verdict::Invalid;
    }
    setting<Text>(loading).set(std::move(*path));
    return Verdict::Taken;
}

// Puts a default in its place. One for which the place is too deep stays as it is: a key that is
// absent is never refused.
Verdict take_default(const Loading& loading, std::optional<std::string> path) {
    Text& target = setting<Text>(loading);
    const std::size_t length =
        RootDirectory.view().size() + directory_of(loading).view().size() + target.view().size();
    if (path) {
        target.set(std::move(*path));
    } else if (target && length < MaxPath) {
        return Verdict::MemoryExhausted;
    }
    return Verdict::Taken;
}

std::optional<std::string> directory_under_base(const Loading& loading, const char* name) {
    const std::optional<std::string> base = absolute(directory_of(loading));
    return base ? mk_dirpath(base->c_str(), name) : std::nullopt;
}

// Another load may be making it at the same time.
bool make_directory(const std::string& path) {
    return isvalid_dir(path.c_str()) || ::mkdir(path.c_str(), LogDirectoryMode) == 0 ||
           isvalid_dir(path.c_str());
}

// Stores the path of a directory that stands in the file, when it exists.
Verdict take_directory(const Loading& loading, std::optional<std::string> path) {
    if (path && !(loading.mask & RC_NODIRCHECK)) {
        const bool exists = loading.row.rule.option == Created ? make_directory(*path)
                                                               : isvalid_dir(path->c_str()) != 0;
        if (!exists) {
            return Verdict::Invalid;
        }
    }
    return take_path(loading, std::move(path));
}

bool are_domains(const std::vector<std::string>& words) {
    for (const std::string& word : words) {
        if (word.find_first_of("@?#$%&:;[]!<>()~{}/+^|,=\"") != word.npos) {
            std::fprintf(stderr, "invalid domain name\"%s\"\n", word.c_str());
            return false;
        }
    }
    return true;
}

// Clears the list and gives each word of `text` to `read`, which says whether it is valid, with a
// record of its own. More words than there are records are invalid.
template <class Read>
Verdict fill(ServerList& list, const std::string& text, const char* separators, Read read) {
    for (SVRLIST& record : list) {
        record.host.unset();
        record.port = 0;
        record.flg = 0;
    }
    const WordList words = split_str(text, separators);
    if (!words) {
        return Verdict::MemoryExhausted;
    }
    if (words->size() > list.size()) {
        return Verdict::Invalid;
    }
    auto record = list.begin();
    for (const std::string& word : *words) {
        if (!read(word, *record++)) {
            return Verdict::Invalid;
        }
    }
    return Verdict::Taken;
}

// Reads "host" or "host:port", or a marker where it may stand. Returns whether the port is one.
bool read_server(const std::string& word, bool markers_allowed, SVRLIST& server) {
    const std::size_t colon = word.find(':');
    const std::string host = word.substr(0, colon);
    const std::optional<int> port =
        colon == word.npos ? DefaultPort : server_port(word.substr(colon + 1));
    if (!port) {
        return false;
    }
    if (markers_allowed && same_word(host, "_MSP_")) {
        server.host.set("_MSP_");
        server.flg = 1;
    } else if (markers_allowed && same_word(host, "_CMD_")) {
        server.host.set("_CMD_");
        server.flg = 2;
    } else {
        server.host.set(host);
        server.port = *port;
    }
    return true;
}

void copy(Text& to, const Text& from) {
    if (from) {
        to.set(std::string(from.view()));
    } else {
        to.unset();
    }
}

// Tries to bring a file from one queue directory into another with `bring` (link or rename), and
// clears `flag` when that fails.
void try_queues(int& flag, const char* name, const Text& from, const Text& to,
                int (*bring)(const char*, const char*)) {
    if (!flag) {
        return;
    }
    if (!from || !to) {
        flag = 0;
        return;
    }
    const std::string source = std::string(from.view()) + ".qxtest";
    const std::string target = std::string(to.view()) + ".qxtest";
    ::unlink(source.c_str());
    ::unlink(target.c_str());
    const Fd file(::open(source.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, TestFileMode));
    if (!file) {
        return;
    }
    if (bring(source.c_str(), target.c_str()) != 0) {
        flag = 0;
        if ((LogFacility & LogWarnings) != 0 && LogLevel > 1) {
            syserr("WARNING: %s disabled. (errno=%d)", name, errno);
        }
    }
    ::unlink(source.c_str());
    ::unlink(target.c_str());
}

std::int64_t limit_in(const Operand& operand) {
    if (auto* const* number = std::get_if<int*>(&operand)) {
        return **number;
    }
    return *std::get<long*>(operand);
}

} // namespace

std::int64_t lower_limit(const LoadRule& rule) {
    return std::max<std::int64_t>(limit_in(rule.first), 0);
}

std::int64_t upper_limit(const LoadRule& rule) {
    return limit_in(rule.second);
}

Verdict load_boolean(const Loading& loading) {
    int value = 0;
    return valid_if(truefalse(loading.value, &value) == 0 && store(loading.row.variable, value));
}

Verdict load_integer(const Loading& loading) {
    return take_number(loading, loading.row.rule.lowest, loading.row.rule.highest);
}

Verdict load_integer64(const Loading& loading) {
    const std::optional<long> value = number_at(loading.value);
    auto* const* unsigned_setting = std::get_if<unsigned long*>(&loading.row.variable);
    if (value || !unsigned_setting) {
        return valid_if(value && store(loading.row.variable, *value));
    }
    // Beyond what has a sign.
    errno = 0;
    const unsigned long large = std::strtoul(loading.value.c_str(), nullptr, 10);
    if (errno == ERANGE || loading.value.find('-') != loading.value.npos) {
        return Verdict::Invalid;
    }
    **unsigned_setting = large;
    return Verdict::Taken;
}

Verdict load_digits(const Loading& loading) {
    return take_digits(loading, loading.row.rule.lowest, loading.row.rule.highest);
}

Verdict load_within(const Loading& loading) {
    const LoadRule& rule = loading.row.rule;
    return take_digits(loading, lower_limit(rule), upper_limit(rule));
}

Verdict load_word(const Loading& loading) {
    const int value = val_vtab(loading.row.rule.table, loading.value);
    return valid_if(value != -1 && store(loading.row.variable, value));
}

Verdict load_level(const Loading& loading) {
    return load_word(loading) == Verdict::Taken ? Verdict::Taken : load_integer(loading);
}

Verdict load_bytes(const Loading& loading) {
    const std::int64_t size = loading.value.empty() ? -1 : conv_byte(loading.value, 'K');
    return valid_if(size >= 0 && store(loading.row.variable, size));
}

Verdict load_kilobytes(const Loading& loading) {
    const std::int64_t size = loading.value.empty() ? -1 : conv_Kbyte(loading.value, 'M');
    return valid_if(size >= 0 && store(loading.row.variable, size));
}

Verdict load_min_free(const Loading& loading) {
    const Verdict verdict = load_kilobytes(loading);
    const std::int64_t size = number_in(loading.row.variable);
    if (verdict != Verdict::Taken || size <= 0) {
        return verdict;
    }
    const char* directory = directory_of(loading).c_str();
    long& blocks = *std::get<long*>(loading.row.rule.second);
    long block = 0;
    if (directory && freeblocks(directory, &block) >= 0 && block > 0) {
        blocks = std::max<long>(size / block + 1, 1);
        return verdict;
    }
    const char* shown = directory ? directory : "<null>";
    if (loading.reader == MainReader) {
        std::fprintf(stderr, "WARNING cannot get block size %s; [%s] MinFree set 0\n", shown,
                     loading.row.section);
    } else {
        std::fprintf(stderr, "%s:%d: cannot get block size %s; [%s] MinFree set 0\n", loading.file,
                     scan_linenumber, shown, loading.row.section);
    }
    store(loading.row.variable, 0);
    blocks = 0;
    return verdict;
}

Verdict load_text(const Loading& loading) {
    setting<Text>(loading).set(loading.value);
    return Verdict::Taken;
}

Verdict load_signature(const Loading& loading) {
    if (loading.value.size() > loading.row.rule.longest) {
        std::fprintf(stderr, "Signature too long: %s\n", loading.value.c_str());
        return Verdict::Invalid;
    }
    if (loading.value.empty()) {
        setting<Text>(loading).unset();
        return Verdict::Taken;
    }
    return load_text(loading);
}

Verdict load_path(const Loading& loading) {
    if (!isfullpath(loading.value.c_str())) {
        return Verdict::NotFullPath;
    }
    struct stat info {};
    if (!(loading.mask & RC_NOCHECK) &&
        (loading.value.size() > MaxPath || ::stat(loading.value.c_str(), &info) != 0)) {
        return Verdict::Invalid;
    }
    return load_text(loading);
}

Verdict load_file(const Loading& loading) {
    if (loading.row.rule.option == FullPath && !isfullpath(loading.value.c_str())) {
        return Verdict::NotFullPath;
    }
    const std::optional<std::string> base = absolute(directory_of(loading));
    return take_path(loading, mk_filepath(base ? base->c_str() : nullptr, loading.value.c_str()));
}

Verdict default_file(const Loading& loading) {
    const std::optional<std::string> base = absolute(directory_of(loading));
    return take_default(
        loading, mk_filepath(base ? base->c_str() : nullptr, setting<Text>(loading).c_str()));
}

Verdict load_directory(const Loading& loading) {
    if (loading.value.empty()) {
        return Verdict::Invalid;
    }
    return take_directory(loading, directory_under_base(loading, loading.value.c_str()));
}

Verdict load_full_directory(const Loading& loading) {
    if (loading.value.empty()) {
        return Verdict::Invalid;
    }
    if (!isfullpath(loading.value.c_str())) {
        return Verdict::NotFullPath;
    }
    return take_directory(loading, mk_dirpath(nullptr, loading.value.c_str()));
}

Verdict default_directory(const Loading& loading) {
    return take_default(loading, directory_under_base(loading, setting<Text>(loading).c_str()));
}

Verdict load_template_directory(const Loading& loading) {
    if (loading.value.empty()) {
        setting<Text>(loading).unset();
        return Verdict::Taken;
    }
    std::optional<std::string> path = directory_under_base(loading, loading.value.c_str());
    return loading.reader == MainReader ? take_path(loading, std::move(path))
                                        : take_directory(loading, std::move(path));
}

Verdict load_words(const Loading& loading) {
    WordList words = split_str(loading.value, text_of(loading));
    if (!words) {
        return Verdict::MemoryExhausted;
    }
    setting<WordList>(loading) = std::move(words);
    return Verdict::Taken;
}

Verdict load_internal_domains(const Loading& loading) {
    std::string domains = loading.value;
    const bool given = !domains.empty();
    if (!given) {
        if (loading.mask & RC_NOCHECK) {
            return Verdict::Taken;
        }
        if (get_internaldomain(domains, LongestDomainList) != 0) {
            std::fputs("cannot set default internal domain\n", stderr);
            return Verdict::Invalid;
        }
    }
    WordList words = split_str(domains, text_of(loading));
    if (!words) {
        return Verdict::MemoryExhausted;
    }
    if (!given && !are_domains(*words)) {
        return Verdict::Invalid;
    }
    setting<WordList>(loading) = std::move(words);
    return Verdict::Taken;
}

Verdict load_ip_conditions(const Loading& loading) {
    int no_memory = 0;
    IpList conditions = ipaddr_makeaddr(loading.value, &no_memory);
    if (!conditions) {
        return no_memory ? Verdict::MemoryExhausted : Verdict::Invalid;
    }
    setting<IpList>(loading) = std::move(conditions);
    return Verdict::Taken;
}

Verdict load_addresses(const Loading& loading) {
    const WordList words = split_str(loading.value, ";,");
    if (!words) {
        return Verdict::MemoryExhausted;
    }
    if (!(loading.mask & RC_NOCHECK)) {
        if (std::cmp_greater(words->size(), MaxAddressList)) {
            std::fprintf(stderr, "Too much mail addresses. \"%s\"\n", loading.value.c_str());
            return Verdict::Invalid;
        }
        for (const std::string& word : *words) {
            if (!isvalid_address(word.c_str(), AddressPlain)) {
                std::fprintf(stderr, "Invalid mail address%s \"%s\"\n", text_of(loading),
                             word.c_str());
                return Verdict::Invalid;
            }
        }
    }
    AddressList list;
    for (const std::string& word : *words) {
        if (!append_addresses(&list, word)) {
            free_ADDRS(std::move(list));
            return Verdict::MemoryExhausted;
        }
    }
    free_ADDRS(std::exchange(setting<AddressList>(loading), std::move(list)));
    return Verdict::Taken;
}

Verdict load_servers(const Loading& loading) {
    const bool markers_allowed = loading.row.rule.option == MarkersAllowed;
    const Verdict verdict = fill(*std::get<ServerList*>(loading.row.rule.first), loading.value, " ",
                                 [markers_allowed](const std::string& word, SVRLIST& server) {
                                     return read_server(word, markers_allowed, server);
                                 });
    return verdict == Verdict::Taken ? load_text(loading) : verdict;
}

Verdict load_user_group(const Loading& loading) {
    return fill(setting<ServerList>(loading), loading.value, ":",
                [](const std::string& word, SVRLIST& member) {
                    member.host.set(word);
                    return true;
                });
}

Verdict chosen_program(const Loading&) {
    switch (MailSubmissionProgram) {
    case 2:
        copy(SendmailProgram, PostfixProgram);
        copy(SendmailQueueDirectory, PostfixQueueDirectory);
        copy(SendmailQueueListProgram, PostfixQueueListProgram);
        copy(SendmailNullFrom, PostfixNullFrom);
        break;
    case 3:
        copy(SendmailProgram, QmailProgram);
        copy(SendmailQueueDirectory, QmailQueueDirectory);
        copy(SendmailQueueListProgram, QmailQueueListProgram);
        copy(SendmailNullFrom, QmailNullFrom);
        break;
    default:
        break;
    }
    return Verdict::Taken;
}

Verdict forward_mode(const Loading&) {
    if (!ForwardMailAddress && ForwardMode != 0) {
        std::fputs("WARNING No address specified, ForwardMode = none\n", stderr);
        ForwardMode = 0;
    }
    return Verdict::Taken;
}

Verdict archive_hard_link(const Loading&) {
    try_queues(ArchiveHardLink, "ArchiveHardLink", MessageQueue, ArchiveQueue, ::link);
    return Verdict::Taken;
}

Verdict quarantine_hard_link(const Loading&) {
    try_queues(QuarantineHardLink, "QuarantineHardLink", MessageQueue, QuarantineQueue, ::rename);
    return Verdict::Taken;
}

} // namespace ov::load_rules
