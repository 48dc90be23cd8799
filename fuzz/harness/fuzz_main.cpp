// SPDX-License-Identifier: MIT
// libFuzzer entry of one target: QDFUZZ_TARGET names the entry function
// (qdfuzz_<name>, defined in fuzz/entries/<name>.cpp).
#include <cstddef>
#include <cstdint>

extern "C" int QDFUZZ_TARGET(const std::uint8_t *data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    return QDFUZZ_TARGET(data, size);
}
