// SPDX-License-Identifier: MIT
// The transport's platform operations.
#include "mts/router.hpp"

extern "C" {

std::int32_t mts_send(std::uint32_t handle, std::uint32_t node, std::uint32_t sap, std::uint32_t opcode,
                      const void *payload, std::uint32_t length, mts_msg *msg, std::uint32_t flags,
                      std::uint32_t reserved) {
    return qdsim::mts::send(handle, {node, sap, opcode}, payload, length, msg, flags, reserved);
}

std::uint32_t mts_rr_token_get(const mts_msg *msg) { return qdsim::mts::token_of(msg); }

std::int32_t mts_drop(std::uint32_t handle, mts_msg *msg) { return qdsim::mts::drop(handle, msg); }

std::int32_t mts_recv(std::uint32_t handle, mts_msg *msg, const mts_recv_opts *opts) {
    return qdsim::mts::recv(handle, msg, opts);
}

void *mts_payload_get(const mts_msg *msg) { return qdsim::mts::payload_of(msg); }

std::uint32_t mts_payload_length_get(const mts_msg *msg) { return qdsim::mts::payload_length_of(msg); }

}  // extern "C"
