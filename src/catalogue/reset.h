// Back to the start, for processes that load more than once.
#pragma once

namespace ov {

// Sets all settings to their defaults, and those of logging, the system services and the groups.
void reset_settings();

} // namespace ov
