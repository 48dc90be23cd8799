// SPDX-License-Identifier: MIT
// Keeps exceptions inside the library: every exported entry point runs its
// body through guarded(), so nothing is thrown across the C boundary.
#pragma once

#include <cstdint>
#include <cstdio>
#include <new>
#include <utility>

#include "output/observe.hpp"
#include "qdcli/platform.h"

namespace qdcli {

template <class F>
auto guarded(F &&body, decltype(body()) on_failure) noexcept -> decltype(body()) {
    try {
        return body();
    } catch (const std::bad_alloc &) {
        std::fputs("Failed to allocate memory!\n", stderr);
        observe::failure(QDCLI_FAILURE_MEMORY, "Failed to allocate memory!\n");
    } catch (...) {
        std::fputs("internal error in command handler\n", stderr);
        observe::failure(QDCLI_FAILURE_INTERNAL, "internal error in command handler\n");
    }
    return on_failure;
}

// A handler's body, given the shell's record: a call without one has
// nothing to print to and returns 1.
template <class F>
std::int32_t guarded_command(const cmd_paraminfo *pinfo, F &&body, std::int32_t on_failure) noexcept {
    return pinfo == nullptr ? 1 : guarded(std::forward<F>(body), on_failure);
}

template <class F>
void guarded_void(F &&body) noexcept {
    try {
        body();
    } catch (...) {
        std::fputs("internal error in command handler\n", stderr);
        observe::failure(QDCLI_FAILURE_INTERNAL, "internal error in command handler\n");
    }
}

}  // namespace qdcli
