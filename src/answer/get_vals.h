// A key's value as text.
#pragma once

#include <optional>
#include <string>

namespace ov {

// The value that a key has for the gateway. With `all` 0 that is the text written in `file`, when
// the key is there. Otherwise, and always with `all` 1, it is the setting as it has been loaded, in
// its printed form. Nothing for a key that cannot be shown, for a number without a word, and, after
// a message on standard error, when the file cannot be opened.
std::optional<std::string> get_vals(const char* file, const char* section, const char* key,
                                    int all);

} // namespace ov
