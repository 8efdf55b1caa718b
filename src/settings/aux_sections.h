// The readers of the auxiliary sections. Each opens and scans the file; when that cannot be opened,
// it says so on standard error. An invalid value ends the process with status 1, after a message.
#pragma once

#include "settings/conf.h"

namespace ov {

// [Cooperation]: the transfer of messages to a cooperating audit host.
void read_config_transfer(const char* file, unsigned mask);

// [Cypher]: the message encryption gateway; with the [Directories] that it and the role commands
// need.
void read_config_cypher(const char* file, unsigned mask);

// [Search]: the archive search service; with the same [Directories].
void read_config_search(const char* file, unsigned mask);

// The same from a file that has been opened.
void read_config_search(Configuration& configuration, unsigned mask);

} // namespace ov
