// Words, sizes, numbers and dates in texts. Nothing is printed.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ov {

// Reads "true", "yes", "on", "1" as 1 and "false", "no", "off", "0" as 0, in any case. Returns 0,
// or -1 for any other word, which leaves `out` alone.
int truefalse(std::string_view word, int* out);

// The size that a text like "1G512M" stands for, in bytes or in kilobytes: numbers of at most nine
// digits, each with a unit of "BKMG" in either case (1024-based), added up. The last number may
// lack its unit and then has `defunit` (what is none of B, M and G counts as K). The empty text
// is 0; what is no size, or above 2^63 - 2, is -1.
std::int64_t conv_byte(std::string_view text, char defunit);
std::int64_t conv_Kbyte(std::string_view text, char defunit);

// The number that `text`, made of decimal digits only, stands for when it is within the bounds.
std::optional<std::int64_t> decimal_within(const std::string& text, std::int64_t lowest,
                                           std::int64_t highest);

// Whether `text` is a date like "2008/02/31": month 1 to 12, day 1 to 31. Returns 0 and gives the
// fields, or -1. A field that is not asked for (null) is not checked against its range either.
int date_str(const char* text, int* year, int* month, int* day);

// Whether every character is printable ASCII.
int valid_str(std::string_view text);

} // namespace ov
