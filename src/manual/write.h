// The generated parts of the manual pages, the sample configuration, the completion and the list of
// keys.
#pragma once

#include <string>
#include <string_view>

namespace ov {

// The list of all sections and keys for a manual page (mdoc).
std::string manual_keys();

// The lists of the kinds of values, and of those of rights, for a manual page (mdoc).
std::string manual_kinds();
std::string manual_right_kinds();

// How many of the keys have no check, as the beginning of a sentence.
std::string manual_unchecked();

// The list of the queries for several rights for a manual page (mdoc).
std::string manual_queries();

// The list of all rights for a manual page (mdoc).
std::string manual_rights();

// All keys at their defaults, each commented out, as a configuration file.
std::string sample_keys();

// Shell variables: the keys of each section, the directories of the role commands, what they can
// be asked for and what they can assign.
std::string completion_data();

// All keys of the main file, those of rights included, a line each: section, key, kind, what -c
// accepts, how -a shows it, default, with a tab between them and "-" for none.
std::string key_list();

// The text that stands for a line "@NAME@" of a template. An unknown name throws.
std::string generated(std::string_view name);

} // namespace ov
