// Texts of others, as they are shown to people.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace ov {

// The text with "?" for what a terminal would obey.
std::string printable(std::string_view text);

// A value of which the beginning is enough.
std::string shortened(std::string_view text);

// The name among `names` that is most like `name`, in any case; empty when none is like it.
template <class Names>
std::string_view nearest(std::string_view name, const Names& names);
// How many letters have to be left out, put in, changed or exchanged with their neighbour to make
// `b` of `a`, in any case.
std::size_t distance(std::string_view a, std::string_view b);

template <class Names>
std::string_view nearest(std::string_view name, const Names& names) {
    std::string_view best;
    std::size_t least = name.size() < 4 ? 2 : name.size() / 3 + 1; // what is still alike is less
    for (const std::string_view candidate : names) {
        const auto [shorter, longer] = std::minmax({name.size(), candidate.size()});
        if (longer - shorter >= least) {
            continue; // they are as far apart at least
        }
        if (const std::size_t far = distance(name, candidate); far < least) {
            least = far;
            best = candidate;
        }
    }
    return best;
}

} // namespace ov
