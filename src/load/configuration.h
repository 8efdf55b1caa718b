// Loading of the whole configuration.
#pragma once

#include "conf/snapshot.h"
#include "load/reading.h"

#include <optional>
#include <string>

namespace ov {

// The role number of callers that are in no role.
inline constexpr int NoRole = 10;

// A configuration file that has been opened and scanned once, for all that is loaded or fetched
// from it.
struct Configuration {
    // Nothing, with errno set, when the file cannot be opened. `file` and the names of `wanted`,
    // the key that will be fetched, live on.
    static std::optional<Configuration> open(const char* file, FileKind kind = FileKind::Any,
                                             const WantedKey& wanted = {});

    Snapshot snapshot;
    Load load;
};

// A load of the settings of the groups in `mask`, then of the rights that stand in the file, the
// auxiliary sections, and then those of the local supplement file, when there is one. It can be
// taken up again behind a value that it has refused.
class ConfigurationReading {
  public:
    ConfigurationReading(Configuration& configuration, unsigned mask);

    // Loads on, up to the next value that is refused; nothing: all has been loaded.
    std::optional<Refusal> next();
    // The reader that has refused it; none when that was a supplement that cannot be opened.
    const std::optional<Reading>& reading() const { return reading_; }
    // The file that is read: the main one, or the supplement.
    Configuration& file() const { return *file_; }
    // The supplement, once it has been opened.
    const std::optional<Configuration>& supplement() const { return supplement_; }

  private:
    bool begin_part();
    std::optional<Refusal> open_supplement();
    void exchange_directories();

    Configuration* main_;
    Configuration* file_; // that is read
    std::size_t part_ = 0;
    std::optional<Reading> reading_;
    std::optional<Configuration> supplement_;
    bool supplement_looked_for_ = false;
};

// The same up to the first value that is refused.
std::optional<Refusal> load_settings(Configuration& configuration, unsigned mask);

// load_settings from `file`. Comes back only when all values are valid: at the first one that is
// not, and when the file cannot be opened, it says why on standard error and ends the process with
// status 1.
void read_config(const char* file, unsigned mask);

// read_config, and the start of logging with what has been loaded; then, for a `user` of the role
// `rank`, his rights.
void setconfig(const char* file, unsigned mask, int rank, const char* user);

// The same from a file that has been opened.
void setconfig(Configuration& configuration, unsigned mask, int rank, const char* user);

// The auxiliary sections. Each reader opens and scans the file; when that cannot be opened, it says
// so on standard error. An invalid value ends the process with status 1, after a message.

// [Cooperation]: the transfer of messages to a cooperating audit host.
void read_config_transfer(const char* file, unsigned mask);

// [Cypher]: the message encryption gateway; with the [Directories] that it and the role commands
// need.
void read_config_cypher(const char* file, unsigned mask);

// [Search]: the archive search service; with the same [Directories].
void read_config_search(const char* file, unsigned mask);

// The same from a file that has been opened.
void read_config_search(Configuration& configuration, unsigned mask);

// Reads the rights in `section` of the file `path` into the settings of the role `rank`. A file
// that is missing, or, after a line in the log, cannot be opened or is no regular file, leaves the
// defaults. An invalid value ends the process with status 1, after a message.
void read_config_user(const char* path, const char* section, int rank);

// Prints what loading has refused, and then ends the process.
void end_when_refused(const std::optional<Refusal>& refusal);

// Says on standard error that a configuration file cannot be opened, with errno.
void print_cannot_open(const char* file);

// Configuration::open for a load that prints its warnings; when the file cannot be opened, that
// ends the process with status 1.
Configuration open_config(const char* file, const WantedKey& wanted = {});

// Releases all lists of words and of conditions on IP addresses, those of the rights, too. For the
// end of the process, in which the other settings live on. Returns 0.
int conf_free();

} // namespace ov
