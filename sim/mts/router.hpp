// SPDX-License-Identifier: MIT
// The in-process message transport.
//
// Services register under an address (node, SAP, opcode); a service may
// take every node of its SAP and opcode and refuse the nodes it does not
// serve. mts_send hands the request to its service at once and queues the
// service's answer under the request's token; mts_recv with that token in
// word 3 of its options takes the answer. Every message a command holds is
// in the ledger of its transport handle, which tells a message released
// twice, one never released, and a reply never received.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "qdcli/platform.h"

namespace qdsim::mts {

struct Address {
    std::uint32_t node = 0;
    std::uint32_t sap = 0;
    std::uint32_t opcode = 0;
};

// A request as a service sees it. The bytes stay valid for the call only.
struct Request {
    std::uint32_t handle = 0;
    Address to;
    const std::uint8_t *data = nullptr;
    std::uint32_t length = 0;
};

// What the transport does with a request once its service has seen it.
struct Delivery {
    enum class Kind {
        reply,         // a reply is queued under the token (with or without payload)
        send_failure,  // mts_send fails with `error`; nothing is queued
        recv_failure,  // mts_send succeeds; mts_recv for the token fails with `error`
        no_route,      // the service does not serve this node: mts_send fails
    };
    Kind kind = Kind::reply;
    std::int32_t error = 0;
    bool has_payload = true;
    std::vector<std::uint8_t> payload;

    static Delivery reply(std::vector<std::uint8_t> bytes);
    static Delivery no_payload();
    static Delivery send_failed(std::int32_t code);
    static Delivery recv_failed(std::int32_t code);
    static Delivery unrouted();
};

struct Service {
    std::string name;
    std::optional<std::uint32_t> node;  // nullopt: every node of the SAP and opcode
    std::uint32_t sap = 0;
    std::uint32_t opcode = 0;
    std::uint32_t recv_word2 = 0;  // word 2 a receiver of this service's replies must give
    std::function<Delivery(const Request &)> handle;
};

using ServiceId = std::uint32_t;

// Returns 0 when the address is taken already (an exact node by another
// exact service, or the every-node slot of a SAP and opcode).
ServiceId register_service(Service service);
bool unregister_service(ServiceId id);

struct ServiceRegistrar {
    explicit ServiceRegistrar(Service service) { register_service(std::move(service)); }
};

// ---- Transport operations ----
std::int32_t send(std::uint32_t handle, const Address &to, const void *payload, std::uint32_t length, mts_msg *msg,
                  std::uint32_t flags, std::uint32_t reserved);
std::uint32_t token_of(const mts_msg *msg);
std::int32_t drop(std::uint32_t handle, mts_msg *msg);
std::int32_t recv(std::uint32_t handle, mts_msg *msg, const mts_recv_opts *opts);
void *payload_of(const mts_msg *msg);
std::uint32_t payload_length_of(const mts_msg *msg);

// ---- Handles and their ledgers ----
std::uint32_t open_handle();
bool handle_open(std::uint32_t handle);
// Problems so far, messages still held and replies not received.
std::vector<std::string> check_handle(std::uint32_t handle);
// The same, then releases whatever the handle still holds and closes it.
std::vector<std::string> close_handle(std::uint32_t handle);
// Messages held (sent or received, not yet released) over all handles.
std::size_t live_messages();
// Replies queued and not yet received, over all handles.
std::size_t pending_replies();

}  // namespace qdsim::mts
