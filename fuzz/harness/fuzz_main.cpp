// SPDX-License-Identifier: MIT
// libFuzzer entry of one target: QDFUZZ_TARGET_NAME names it (a row of
// entries/targets.hpp).
#include <cstdio>
#include <cstdlib>

#include "harness/registry.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static const qdfuzz::Target *const target = [] {
        const qdfuzz::Target *found = qdfuzz::find_target(QDFUZZ_TARGET_NAME);
        if (found == nullptr) {
            std::fprintf(stderr, "no fuzz target %s\n", QDFUZZ_TARGET_NAME);
            std::abort();
        }
        return found;
    }();
    return target->run(data, size);
}
