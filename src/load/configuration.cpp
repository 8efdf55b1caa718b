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

std::optional<Refusal> load_settings(Configuration& configuration, unsigned mask) {
    auto& [snapshot, load] = configuration;
    load.mask = mask;
    std::optional<Refusal> refusal;
    if (!(mask & (RC_LOCALPASS | RC_AUXONLY))) {
        refusal = load_rows(load, snapshot, MainReader);
    }
    if (!refusal && (mask & (RC_MANAGE | RC_BROWSE))) {
        refusal = load_rights(load, snapshot, AdminSection, 0);
        if (!refusal) {
            refusal = load_rights(load, snapshot, ManagerSection, 1);
        }
    }
    if (!refusal && (mask & (RC_RECEIVE | RC_MANAGE))) {
        refusal = load_rows(load, snapshot, CypherReader);
    }
    if (!refusal && (mask & (RC_RECEIVE | RC_TRANSFER))) {
        refusal = load_rows(load, snapshot, TransferReader);
    }
    // A relative supplement has not been looked for: what has its name in the working directory is
    // another file.
    const char* supplement = LocalConfFile.c_str();
    if (refusal || (mask & RC_LOCALPASS) || !isfullpath(supplement) ||
        ::access(supplement, R_OK) != 0) {
        return refusal;
    }
    auto local = Configuration::open(supplement, FileKind::Installed);
    if (!local) { // no regular file is none
        return errno == EINVAL ? refusal : cannot_open(supplement);
    }
    local->load.tell = load.tell;
    std::swap(local->load.directories, load.directories);
    refusal = load_settings(*local, mask | RC_LOCALPASS);
    std::swap(local->load.directories, load.directories);
    return refusal;
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
