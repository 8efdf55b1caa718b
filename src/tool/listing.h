// What the role commands print of the rights of a user of the role `rank`, which have been loaded.
#pragma once

#include <string_view>

namespace ov {

// All rights; `user` is null when none was named, and `has_file` says whether he has a rights file
// that can be read.
void print_listing(int rank, const char* user, bool has_file);

// The addresses of the groups that are named in the rights.
void print_groups(int rank);

// What the query `key` asks for: a right, or several at once. Prints "0" and returns false for one
// that there is not.
bool answer_query(int rank, std::string_view key);

} // namespace ov
