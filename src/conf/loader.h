// The load driver: one reader going through the rows of the catalogue.
#pragma once

#include "conf/snapshot.h"

namespace ov {

// What a scan of the file `path` has found. A file is scanned once, and again only when it has
// changed since. Null, with errno set, when it cannot be opened.
const Snapshot* scan(const char* path, FileKind kind = FileKind::Any);

// The same, with a message on standard error when it cannot be opened.
const Snapshot* scan_for_loading(const char* path);

// conf_fetch with the longest answer. A regular file is not read again for a key of the catalogue
// when it has been scanned and not been changed since.
int fetch_scanned(const char* path, const char* sec, const char* key, std::string& ans);

// Forgets all scans.
void forget_scans();

// Loads the rows of `reader` that are for callers with the load mask `mask`. An invalid value ends
// the process with status 1, after a message.
void load_rows(const Snapshot& snapshot, const char* file, unsigned mask, Reader reader);

} // namespace ov
