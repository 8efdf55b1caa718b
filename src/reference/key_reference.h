// What the manual, the sample configuration and the completion say of each key, in words made
// from the key's row in the catalogue.
#pragma once

#include "reference/vocabulary.h"

#include <optional>
#include <string>
#include <vector>

namespace ov {

struct KeyReference {
    const char* key;
    const char* purpose; // a sentence; null: its name says what is known
    ValueText accepted;
    std::optional<std::string> initial; // the default; nothing: it is not set
    bool is_in_etc;                     // the default is a file in EtcDirectory
    bool needs_full_path;               // and cannot be written so into a file
    std::optional<std::string> checked; // what -c accepts; nothing: it cannot be checked
    std::optional<std::string> shown;   // how -a shows it; nothing: it cannot be shown
    std::string offered;                // values to load that can be listed, and those that -c
    std::string offered_to_check;       // accepts; empty: they cannot
    bool secret;                        // shown to who asks for secrets only
    std::string only;                   // when it is read at all; empty: always
};

struct SectionReference {
    const char* section;
    const char* purpose;
    std::vector<KeyReference> keys;
};

// All sections in the order in which they are first read, each with all of its keys. To be called
// before anything is loaded: the settings hold the defaults.
std::vector<SectionReference> key_reference();

} // namespace ov
