// Whether each row ends. A macro whose call does not takes the rest of the file, and GCC says no
// line of it. Here the rows are attributes that mean nothing: the compiler itself finds their ends.

// clang-format off
#pragma GCC diagnostic ignored "-Wattributes"
[[ov::rows
#define SECTION ]]; [[ov::row
#define PURPOSE SECTION
#define SETTING SECTION
#include "catalogue/keys.def"
#define RIGHT ]]; [[ov::row
#define LISTED RIGHT
#include "catalogue/rights.def"
]];
