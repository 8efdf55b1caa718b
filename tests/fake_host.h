// The host that this process runs on, as the test wants it: no test asks the real one's name. Its
// identifier is 4711.
#pragma once

namespace ov::test {

struct FakeHost {
    const char* own = "mx1";        // null: it has no name
    const char* official = nullptr; // null: it cannot be resolved
    const char* alias = nullptr;
};
extern FakeHost host;

} // namespace ov::test
