// Whether a value would be acceptable for a key of the main configuration file.
#pragma once

namespace ov {

// Judges `value` by the rule of the key; the file is neither read nor changed. Section and key are
// compared without regard to case; a key that cannot be checked accepts nothing. Directories that
// a rule needs are the settings as they stand. Returns 0 when the value is acceptable, else -1.
int check_config(const char* section, const char* key, const char* value);

} // namespace ov
