// Changes of a text as lines, for the tests and the fuzz target of conf/amend.
#pragma once

#include "conf/amend.h"

#include <string>
#include <vector>

namespace ov::test {

// Of "Section.Key=value", in token mode with ":="; without a value it is deleted.
inline std::vector<Change> changes_of(const std::vector<std::string>& lines) {
    std::vector<Change> changes;
    for (const std::string& text : lines) {
        const std::size_t equal = text.find('=');
        const std::string name = text.substr(0, equal);
        const std::size_t dot = name.find('.');
        const bool by_token = name.ends_with(':');
        Change change{.section = name.substr(0, dot), .key = {}, .value = {}};
        if (dot != name.npos) {
            change.key = name.substr(dot + 1, name.size() - dot - 1 - by_token);
        }
        if (equal != text.npos) {
            change.value = text.substr(equal + 1);
        }
        change.mode = by_token ? TokenMode : LineMode;
        changes.push_back(change);
    }
    return changes;
}

} // namespace ov::test
