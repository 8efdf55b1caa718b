// The check of the mail submission program.
#pragma once

namespace ov {

// Whether the mail submission program that `file` chooses can be used: its program, its queue
// directory and the program that lists its queue are there (only existence and type are looked
// at). 1 or 0; 0, after a message on standard error, when the file cannot be opened.
int isvalid_msp(const char* file);

} // namespace ov
