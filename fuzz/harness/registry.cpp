// SPDX-License-Identifier: MIT
#include "harness/registry.hpp"

#include "entries/targets.hpp"

namespace qdfuzz {
namespace {

template <void (*Entry)(Session &, Input &)>
int run(const std::uint8_t *data, std::size_t size) {
    Session session;
    Input in(data, size);
    Entry(session, in);
    session.check();
    return 0;
}

}  // namespace

#define QDFUZZ_ROW(name) {#name, run<qdfuzz_##name>, qdfuzz_seeds_##name},
const Target kTargets[] = {QDFUZZ_TARGETS(QDFUZZ_ROW)};
#undef QDFUZZ_ROW
const std::size_t kTargetCount = sizeof kTargets / sizeof kTargets[0];

const Target *find_target(std::string_view name) {
    for (std::size_t i = 0; i < kTargetCount; ++i)
        if (name == kTargets[i].name) return &kTargets[i];
    return nullptr;
}

}  // namespace qdfuzz
