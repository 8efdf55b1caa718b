// Changing one entry of a configuration file, in place.
//
// The file is locked without waiting and must exist. The edited text goes to a temporary file
// beside it, readable by its owner only, and from there back into the file itself, which so keeps
// its owner, mode and links. Between the two the file is unlocked for a moment. Each copy is on the
// disk before the other one is given up, and signals that would end the process wait until the
// temporary file is gone. Another file that has taken the place of either is left alone.
#pragma once

#include "util/place.h"

namespace ov {

// Each returns 0, or -1 after a message on standard error (a failed write to the temporary file
// gives none). Up to the moment in which the file is emptied a failure leaves it as it was; later
// the old text is put back. Only a lock that cannot be had again leaves it empty.

// Gives an entry a value, or adds it: see modified.
int conf_modify(const char* configfile, const char* sec, const char* key, const char* value,
                FileKind kind = FileKind::Any);

// Removes the first entry of that name: see deleted. A missing one is a failure, too.
int conf_delete(const char* configfile, const char* sec, const char* key);

} // namespace ov
