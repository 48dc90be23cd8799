// SPDX-License-Identifier: MIT
// libFuzzer entry of a simulator target (QDFUZZ_SIM_TARGET names it).
#include "sim_targets.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    return QDFUZZ_SIM_TARGET(data, size);
}
