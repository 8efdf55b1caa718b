// The host that this process runs on, as the test wants it: no test asks the real one's name.
#pragma once

namespace ov::test {

struct FakeHost {
    const char* own = "mx1";        // null: it has no name
    const char* official = nullptr; // null: it cannot be resolved
    const char* alias = nullptr;
};
extern FakeHost host;

// How often the host's identifier has been asked for. It is 4711.
extern int host_id_questions;

} // namespace ov::test
