#include "load/configuration.h"

#include "addr/addr_grp.h"
#include "catalogue/catalogue.h"
#include "catalogue/rights.h"
#include "catalogue/settings.h"
#include "load/roles.h"
#include "util/log.h"
#include "util/paths.h"
#include "util/services.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>
#include <utility>

namespace ov {

namespace {

// Tells logging, the system services and the groups what has been loaded.
void equip_services() {
    services.facility = LogFacility;
    services.level = LogLevel;
    services.log_option = SystemLogOption;
    services.log_mode = LogPerm;
    services.log_owner = Log_uid;
    services.log_group = Log_gid;
    services.log_directory.set(LogDirectory.view());
    services.alternate_host_id = AlternateHostID;
    services.no_core = DBG_NoCore != 0;
    group_settings.directory.set(Group_Dir.view());
    group_settings.most_addresses = GroupMaxAddresses;
    group_settings.hash_size = GroupAddressHashSize;
}

Refusal cannot_open(const char* file) {
    return {.verdict = Verdict::Invalid,
            .reader = MainReader,
            .file = file,
            .line = 0,
            .section = nullptr,
            .key = nullptr,
            .value = {},
            .error = errno};
}

} // namespace

std::optional<Configuration> Configuration::open(const char* file, FileKind kind,
                                                 const WantedKey& wanted) {
    std::optional<Snapshot> snapshot = Snapshot::open(file, key_index(), kind, wanted);
    if (!snapshot) {
        return std::nullopt;
    }
    return Configuration{std::move(*snapshot), {.file = file, .mask = 0}};
}

namespace {

// What is read of a file, in this order, for callers that want one of the groups in `any`.
struct Part {
    Reader reader;
    unsigned any;
    const char* section = nullptr; // of rights; of all others null
    int rank = 0;
};
constexpr unsigned All = ~0U;
constexpr Part parts[] = {
    {MainReader, All},
    {RightsReader, RC_MANAGE | RC_BROWSE, AdminSection, 0},
    {RightsReader, RC_MANAGE | RC_BROWSE, ManagerSection, 1},
    {CypherReader, RC_RECEIVE | RC_MANAGE},
    {TransferReader, RC_RECEIVE | RC_TRANSFER},
};

bool is_wanted(const Part& part, unsigned mask) {
    return part.reader == MainReader ? (mask & (RC_LOCALPASS | RC_AUXONLY)) == 0
                                     : (mask & part.any) != 0;
}

} // namespace

ConfigurationReading::ConfigurationReading(Configuration& configuration, unsigned mask)
    : main_(&configuration), file_(&configuration) {
    configuration.load.mask = mask;
}

// Begins to read the next part that is wanted. Returns whether there is one.
bool ConfigurationReading::begin_part() {
    auto& [snapshot, load] = *file_;
    while (part_ < std::size(parts) && !is_wanted(parts[part_], load.mask)) {
        ++part_;
    }
    if (part_ == std::size(parts)) {
        return false;
    }
    const Part& part = parts[part_++];
    if (part.section) {
        reading_.emplace(load, snapshot, part.section, part.rank);
    } else {
        reading_.emplace(load, snapshot, part.reader);
    }
    return true;
}

// A relative supplement has not been looked for: what has its name in the working directory is
// another file. One that is no regular file is none.
std::optional<Refusal> ConfigurationReading::open_supplement() {
    Load& load = file_->load;
    const char* supplement = LocalConfFile.c_str();
    if ((load.mask & RC_LOCALPASS) || !isfullpath(supplement) || ::access(supplement, R_OK) != 0) {
        return std::nullopt;
    }
    supplement_ = Configuration::open(supplement, FileKind::Installed);
    if (!supplement_) {
        return errno == EINVAL ? std::nullopt : std::optional(cannot_open(supplement));
    }
    supplement_->load.tell = load.tell;
    supplement_->load.make = load.make;
    supplement_->load.mask = load.mask | RC_LOCALPASS;
    exchange_directories();
    file_ = &*supplement_;
    part_ = 0;
    return std::nullopt;
}

// What is known of directories goes from file to file.
void ConfigurationReading::exchange_directories() {
    std::swap(supplement_->load.directories, main_->load.directories);
    std::swap(supplement_->load.missing, main_->load.missing);
}

std::optional<Refusal> ConfigurationReading::next() {
    for (;;) {
        if (reading_) {
            if (std::optional<Refusal> refusal = reading_->next()) {
                return refusal;
            }
            reading_.reset();
        }
        if (begin_part()) {
            continue;
        }
        if (std::exchange(supplement_looked_for_, true)) {
            break;
        }
        if (std::optional<Refusal> refusal = open_supplement()) {
            return refusal;
        }
    }
    if (supplement_) {
        exchange_directories();
    }
    return std::nullopt;
}

std::optional<Refusal> load_settings(Configuration& configuration, unsigned mask) {
    return ConfigurationReading(configuration, mask).next();
}

void end_when_refused(const std::optional<Refusal>& refusal) {
    if (refusal) {
        print_refusal(*refusal);
        std::exit(EXIT_FAILURE);
    }
}

void print_cannot_open(const char* file) {
    print_refusal(cannot_open(file));
}

Configuration open_config(const char* file, const WantedKey& wanted) {
    std::optional<Configuration> configuration = Configuration::open(file, FileKind::Any, wanted);
    if (!configuration) {
        print_cannot_open(file);
        std::exit(EXIT_FAILURE);
    }
    configuration->load.tell = print_warning;
    return std::move(*configuration);
}

void read_config(const char* file, unsigned mask) {
    Configuration configuration = open_config(file);
    end_when_refused(load_settings(configuration, mask));
}

void setconfig(const char* file, unsigned mask, int rank, const char* user) {
    Configuration configuration = open_config(file);
    setconfig(configuration, mask, rank, user);
}

void setconfig(Configuration& configuration, unsigned mask, int rank, const char* user) {
    end_when_refused(load_settings(configuration, mask));
    equip_services();
    log_init();
    std::string path;
    std::string section;
    if (user && rank != NoRole && access_cffile(rank, user, path, &section) == 0 &&
        ::access(path.c_str(), R_OK) == 0) {
        read_config_user(path.c_str(), section.c_str(), rank);
    }
}

namespace {

void read_rows(Configuration& configuration, unsigned mask, Reader reader) {
    auto& [snapshot, load] = configuration;
    load.mask = mask;
    load.tell = print_warning;
    end_when_refused(load_rows(load, snapshot, reader));
}

void read_rows(const char* file, unsigned mask, Reader reader) {
    if (std::optional<Configuration> configuration = Configuration::open(file)) {
        read_rows(*configuration, mask, reader);
    } else {
        print_cannot_open(file);
    }
}

} // namespace

void read_config_transfer(const char* file, unsigned mask) {
    read_rows(file, mask, TransferReader);
}

void read_config_cypher(const char* file, unsigned mask) {
    read_rows(file, mask, CypherReader);
}

void read_config_search(const char* file, unsigned mask) {
    read_rows(file, mask, SearchReader);
}

void read_config_search(Configuration& configuration, unsigned mask) {
    read_rows(configuration, mask, SearchReader);
}

void read_config_user(const char* path, const char* section, int rank) {
    if (std::optional<Configuration> file = Configuration::open(path, FileKind::Installed)) {
        end_when_refused(load_rights(file->load, file->snapshot, section, rank));
    } else if (errno != ENOENT) {
        syserr("cannot open configfile \"%s\" (%d)", path, errno);
    }
}

int conf_free() {
    const auto release = [](auto setting) {
        if constexpr (std::is_same_v<decltype(setting), WordList*> ||
                      std::is_same_v<decltype(setting), IpList*>) {
            setting->reset();
        }
    };
    for (const Row& row : catalogue()) {
        std::visit(release, variable_of(row));
    }
    for (const RightRow& row : rights()) {
        for (int rank = 0; rank < Roles; ++rank) {
            std::visit(release, variable_of(row, rank));
        }
    }
    return 0;
}

} // namespace ov
