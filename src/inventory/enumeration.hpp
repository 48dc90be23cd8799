// SPDX-License-Identifier: MIT
// The platform's interface enumeration, in its four fixed passes (fibre
// channel, two kinds of port channel... as the platform means them: the
// library only passes the descriptors on). Used by the show-queuing and the
// clear-all handlers with their own per-interface action.
#pragma once

#include <cstdint>

#include "qdcli/platform.h"

namespace qdcli {

constexpr unsigned kEnumerationPasses = 4;

// Builds the descriptor of pass `pass` (0 to 3), zero-filled first.
if_enum_desc enumeration_descriptor(unsigned pass);

using InterfaceVisitor = void (*)(void *context, std::uint32_t if_index);

// Runs the four passes in order; calls visit(context, index) for every
// interface index a successful pass returns, in array order. A pass whose
// call or status is negative is skipped. Every result array is freed.
void for_each_enumerated_interface(cmd_paraminfo *pinfo, InterfaceVisitor visit, void *context);

template <class F>
void for_each_enumerated_interface(cmd_paraminfo *pinfo, F &&visit) {
    for_each_enumerated_interface(
        pinfo, [](void *context, std::uint32_t if_index) { (*static_cast<F *>(context))(if_index); }, &visit);
}

}  // namespace qdcli
