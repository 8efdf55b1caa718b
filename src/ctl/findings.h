// What is wrong with a configuration, and what is likely wrong.
#pragma once

#include <string>
#include <vector>

namespace ov::ctl {

// One thing, where it stands. What does not apply is empty, or 0.
struct Finding {
    const char* code = ""; // for programs: it keeps its spelling
    std::string file = {};
    int line = 0;
    std::string section = {};
    std::string key = {};
    std::string value = {};
    std::string message = {};
};

// Errors keep the gateway from loading the configuration; they stand in the order in which loading
// meets them. Warnings do not, and stand in the order of the files and their lines.
struct Findings {
    std::string file;
    std::vector<Finding> errors;
    std::vector<Finding> warnings;
};

// A finding as a line for people.
std::string in_words(const Finding& finding, const char* severity);

// How many errors and warnings there are, as a line for people.
std::string count_of(const Findings& findings);

} // namespace ov::ctl
