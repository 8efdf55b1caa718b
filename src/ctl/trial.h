// Values that are not in force: defaults, and what is only tried.
#pragma once

#include "catalogue/catalogue.h"
#include "catalogue/rights.h"

#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace ov::ctl {

// What "ov_conf -m" loads.
inline constexpr unsigned WholeMask = 0x00ff;

// Gives the setting of a row, or of a right, the value that it has while no file sets it: a
// relative directory lies under those that are in force.
void set_to_default(const Row& row);
void set_to_default(const RightRow& right, int rank);

// Keeps the value of a setting for as long as `attempt` gives it another one.
template <class Attempt>
void with_other_value(const Variable& variable, Attempt attempt) {
    const auto keep = [&attempt](auto* setting) {
        std::remove_pointer_t<decltype(setting)> kept{};
        std::swap(kept, *setting);
        attempt();
        *setting = std::move(kept);
    };
    std::visit(
        [&keep](const auto& of_type) {
            if constexpr (std::is_same_v<std::remove_cvref_t<decltype(of_type)>, Number>) {
                std::visit(keep, of_type);
            } else {
                keep(of_type);
            }
        },
        variable);
}

// Why the row would refuse the value; empty: it would not. The setting keeps its value.
std::string refusal_of(const Row& row, std::string_view value);

// Whether a supplement is read for the row at all.
bool is_read_from_supplement(const Row& row);

// What a value of the row has to be, in the words of the manual.
std::string wanted(const Row& row);
std::string wanted(const RightRow& right);

} // namespace ov::ctl
