// SPDX-License-Identifier: MIT
// Injected faults.
//
// A scenario lists faults under "faults"; each names what it hits (the
// daemon, a line-card agent, a platform service), optional criteria (a
// command code, an interface, an extender, an operation) and what happens.
// A service asks for the first fault that matches its request; a fault with
// a "count" fires that many times and is spent after.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace qdsim {

enum class FaultTarget { daemon, agent, sse, enumeration, statscl, card, debug };
enum class FaultKind {
    send_failure,   // the transport refuses the request (mts_send fails)
    recv_failure,   // the request goes out; receiving the reply fails
    empty_payload,  // the reply carries no payload
    short_payload,  // the reply is cut to `bytes` bytes
    unsupported,    // the service answers "not supported"
    slow_reply,     // the reply comes as usual, `milliseconds` late
    failure,        // a platform service call fails with `error`
    bad_status,     // the enumeration succeeds but reports a negative status
};


// What a service knows about a request when it asks for a fault.
struct FaultQuery {
    FaultTarget target = FaultTarget::daemon;
    std::optional<std::uint32_t> command;    // daemon command code, agent sub-command, sse operation
    std::optional<std::uint32_t> if_index;   // interface the request is about
    std::optional<std::uint32_t> extender;   // extender the agent serves
    std::optional<std::string> operation;    // statscl "get"/"clear", debug function name
    std::optional<std::uint64_t> mask;       // enumeration type mask
};

struct FaultAction {
    FaultKind kind = FaultKind::failure;
    std::int32_t error = 0;    // code for the failures (never 0)
    std::uint32_t bytes = 0;   // short_payload: payload length kept
    std::uint32_t milliseconds = 0;  // slow_reply: how late the reply comes
};

}  // namespace qdsim
