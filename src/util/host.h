// The host's name, and the mail domain that a name belongs to.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace ov {

// What the host is called when it cannot be resolved.
inline constexpr char unknown[] = "unknown";

// The names that these functions give are cut to `siz` - 1 characters. Each returns 0, or -1.

// The host's fully qualified name; "unknown" with -1 when the name cannot be resolved.
int getmyhostname(std::string& hostname, std::size_t siz);

// The registrable domain of a mail address (the part behind its first "@") or of a host name: two
// labels under the generic top-level domains, under ".to" and directly under ".jp", otherwise
// three. -1 when the name has no dot.
int get_domain(std::string_view addr, std::string& dom, std::size_t siz);

// The registrable domain of this host. -1 when the host has no name with a dot.
int get_internaldomain(std::string& dom, std::size_t siz);

} // namespace ov
