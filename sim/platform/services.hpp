// SPDX-License-Identifier: MIT
// Platform services that other parts of the simulator provide:
//   - sse_call2 operations (the onboard flow-control log answers 1128);
//   - what statscl_clear_qos_counters clears of a host interface besides
//     its "qos_counters" section (each service that keeps QoS counters of
//     host interfaces adds its own).
#pragma once

#include <cstdint>
#include <functional>

#include "model/model.hpp"

namespace qdsim::platform {

// Returns -1 on failure; any other value means the buffer holds an answer.
using Sse2Service = std::function<std::int32_t(void *buffer, std::uint32_t length, Model &)>;
// What a service still writes into the buffer when an injected fault makes
// the call fail (-1): the part of its answer that it knows before it could
// fail (the onboard log, its event count). Optional.
using Sse2Failure = std::function<void(void *buffer, std::uint32_t length, Model &)>;
bool register_sse2_service(std::uint32_t operation, Sse2Service service, Sse2Failure on_failure = {});

struct Sse2Registrar {
    Sse2Registrar(std::uint32_t operation, Sse2Service service, Sse2Failure on_failure = {}) {
        register_sse2_service(operation, std::move(service), std::move(on_failure));
    }
};

using QosClear = std::function<void(const Interface &host, Model &)>;
void register_qos_clear(QosClear clear);

struct QosClearRegistrar {
    explicit QosClearRegistrar(QosClear clear) { register_qos_clear(std::move(clear)); }
};

}  // namespace qdsim::platform
