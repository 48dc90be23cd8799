// SPDX-License-Identifier: MIT
// The scenario's policy: for every object of the core with fixed members,
// each member's type, range, whether it must be given and its default. The
// loader checks a scenario against these tables and the model takes its
// defaults from them; no other place states them.
#pragma once

#include <cstdint>
#include <limits>
#include <span>
#include <string_view>

#include "core/errors.hpp"
#include "model/faults.hpp"

namespace qdsim::policy {

enum class Type {
    unsigned_int,  // within [min, max]; a "0x..." text is read as hex
    signed32,      // a signed 32-bit integer
    text,
    any,           // free (a description)
};

constexpr std::uint64_t kU32 = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint64_t kU64 = std::numeric_limits<std::uint64_t>::max();

struct Member {
    std::string_view name;
    Type type = Type::unsigned_int;
    std::uint64_t min = 0;
    std::uint64_t max = kU64;
    bool required = false;
    bool has_default = false;
    std::int64_t fallback = 0;  // the default, when it has one
};

constexpr Member required(std::string_view name, std::uint64_t min, std::uint64_t max) {
    return {name, Type::unsigned_int, min, max, true};
}
constexpr Member optional(std::string_view name, std::uint64_t min, std::uint64_t max) {
    return {name, Type::unsigned_int, min, max};
}
constexpr Member with_default(std::string_view name, std::uint64_t min, std::uint64_t max, std::int64_t fallback) {
    return {name, Type::unsigned_int, min, max, false, true, fallback};
}

// "platform"; sw_card_id defaults to card_id.
constexpr Member kPlatform[] = {
    {"type", Type::signed32, 0, 0, false, true, 2},
    with_default("vdc", 0, kU32, 1),
    with_default("card_id", 0, 0xffff, 0),
    optional("sw_card_id", 0, kU32),
};

// "cos_map": the multicast queue of each CoS.
constexpr std::uint8_t kCosMap[8] = {0, 0, 1, 1, 2, 2, 3, 3};
constexpr std::uint64_t kMaxQueue = 3;

constexpr Member kClock[] = {with_default("ticks", 0, kU64, 0)};

// Identity members of the declarations (the rest of a declaration is data).
constexpr Member kLineCard[] = {required("slot", 1, 255)};
constexpr std::uint8_t kEthernetTypes[] = {26, 1};  // the first is the default
constexpr Member kEthernet[] = {required("slot", 1, 255), with_default("type", 0, 255, kEthernetTypes[0])};
constexpr std::uint8_t kHostType = 31;
// "node" defaults to the node of the extender's slot, "ports" to "1-48".
constexpr Member kExtender[] = {required("number", 100, 199), required("slot", 1, 255), optional("node", 1, 0xffff)};
constexpr std::string_view kExtenderPorts = "1-48";
// "if_index" defaults to type << 24 | 0xff << 16 | position.
constexpr Member kOther[] = {{"name", Type::text, 0, 0, true}, required("type", 0, 255), optional("if_index", 1, kU32)};
constexpr std::uint64_t kMaxPort = 256;
constexpr std::uint64_t kMaxSubInterface = 255;

// Every member a fault may have; which of them a target takes is its row of
// kFaultTargets. "error" and "operation" are read by the loader (a name or
// a number, by target).
constexpr Member kFault[] = {
    {"target", Type::text, 0, 0, true},
    {"kind", Type::text, 0, 0, true},
    optional("count", 0, kU32),
    {"description", Type::any},
    optional("command", 0, 255),
    {"interface", Type::text},
    optional("extender", 100, 199),
    optional("mask", 0, kU64),
    optional("bytes", 0, kU32),
    optional("milliseconds", 1, 60000),
    {"error", Type::any},
    {"operation", Type::any},
};

// The members every fault takes.
constexpr std::string_view kFaultCommon[] = {"target", "kind", "count", "description"};

struct FaultTargetPolicy {
    std::string_view name;
    FaultTarget target;
    std::span<const std::string_view> members;  // besides kFaultCommon
    std::span<const std::string_view> kinds;
};

namespace detail {
constexpr std::string_view kMessageMembers[] = {"command", "interface", "error", "bytes", "milliseconds"};
constexpr std::string_view kAgentMembers[] = {"command", "interface", "extender", "error", "bytes", "milliseconds"};
constexpr std::string_view kOperationMembers[] = {"operation", "error"};
constexpr std::string_view kEnumerationMembers[] = {"mask", "error"};
constexpr std::string_view kStatsclMembers[] = {"operation", "interface", "error"};
constexpr std::string_view kMessageKinds[] = {"send_failure", "recv_failure", "empty_payload", "short_payload", "unsupported", "slow_reply"};
constexpr std::string_view kFailure[] = {"failure"};
constexpr std::string_view kEnumerationKinds[] = {"failure", "bad_status"};
}  // namespace detail

constexpr FaultTargetPolicy kFaultTargets[] = {
    {"daemon", FaultTarget::daemon, detail::kMessageMembers, detail::kMessageKinds},
    {"agent", FaultTarget::agent, detail::kAgentMembers, detail::kMessageKinds},
    {"sse", FaultTarget::sse, detail::kOperationMembers, detail::kFailure},
    {"enumeration", FaultTarget::enumeration, detail::kEnumerationMembers, detail::kEnumerationKinds},
    {"statscl", FaultTarget::statscl, detail::kStatsclMembers, detail::kFailure},
    {"card", FaultTarget::card, detail::kOperationMembers, detail::kFailure},
    {"debug", FaultTarget::debug, detail::kOperationMembers, detail::kFailure},
};

// A kind's default error code (0: it takes no "error"), and the member it
// needs, with what that member means.
struct FaultKindPolicy {
    std::string_view name;
    FaultKind kind;
    std::int32_t error = 0;
    std::string_view needs = {};
    std::string_view needs_meaning = {};
};

constexpr FaultKindPolicy kFaultKinds[] = {
    {"send_failure", FaultKind::send_failure, kErrSend},
    {"recv_failure", FaultKind::recv_failure, kErrTimeout},
    {"empty_payload", FaultKind::empty_payload},
    {"short_payload", FaultKind::short_payload, 0, "bytes", "the length kept"},
    {"unsupported", FaultKind::unsupported},
    {"failure", FaultKind::failure, kErrNoService},
    {"bad_status", FaultKind::bad_status},
    {"slow_reply", FaultKind::slow_reply, 0, "milliseconds", "how late the reply comes"},
};

}  // namespace qdsim::policy
