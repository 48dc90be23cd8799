// SPDX-License-Identifier: MIT
#include "agent/agent.hpp"

#include <arpa/inet.h>

#include <chrono>
#include <cstring>
#include <thread>

#include "core/diagnostics.hpp"
#include "core/errors.hpp"
#include "core/lock.hpp"
#include "core/registry.hpp"
#include "core/wire_writer.hpp"
#include "mts/router.hpp"
#include "qdcli/wire.h"

namespace qdsim::agent {

Reply Reply::ok(std::vector<std::uint8_t> body, std::uint8_t count) { return {0, count, std::move(body), true}; }

Reply Reply::failed(std::uint32_t status) { return {status, 0, {}, true}; }

std::vector<std::uint8_t> encode_reply(const Request &request, const Reply &reply) {
    WireWriter out;
    out.u8(request.cmd).u8(request.variant).u8(reply.count).u8(0);
    out.zeros(24);
    out.be32(reply.status);
    out.raw(reply.body.data(), reply.body.size());
    return out.take();
}

namespace {

CodeRegistry<SubCommand> &subcommands() {
    static CodeRegistry<SubCommand> registry("agent sub-command");
    return registry;
}

std::uint32_t be32_at(const std::uint8_t *p) {
    return (std::uint32_t{p[0]} << 24) | (std::uint32_t{p[1]} << 16) | (std::uint32_t{p[2]} << 8) | p[3];
}

std::uint32_t network_index_at(const std::uint8_t *p) {
    std::uint32_t v = 0;
    std::memcpy(&v, p, 4);
    return ntohl(v);
}

mts::Delivery deliver(const Request &request, const Reply &reply) {
    return reply.has_payload ? mts::Delivery::reply(encode_reply(request, reply)) : mts::Delivery::no_payload();
}

mts::Delivery serve(const mts::Request &r) {
    Model &model = current_model();
    Request request;
    request.mts_handle = r.handle;
    request.node = r.to.node;
    request.line_card = model.line_card_at_node(r.to.node);
    request.extender = model.extender_at_node(r.to.node);
    if (request.line_card == nullptr && request.extender == nullptr) return mts::Delivery::unrouted();

    if (r.length != sizeof(lc_stats_req)) {
        request.cmd = r.length > 0 ? r.data[0] : 0;
        request.variant = r.length > 1 ? r.data[1] : 0;
        return deliver(request, Reply::failed(kErrBadRequest));
    }
    const std::uint8_t *p = r.data;
    request.cmd = p[0];
    request.variant = p[1];
    request.count = p[2];
    request.vaq_id = be32_at(p + 4);
    request.slot = be32_at(p + 12);
    request.if_index = network_index_at(p + 20);
    request.target_if_index = network_index_at(p + 32);
    const bool fixed_one = p[24] == 1 && p[25] == 0 && p[26] == 0 && p[27] == 0;
    const SubCommand *command = subcommands().find(request.cmd);
    if (request.count != 1 || !fixed_one || (command && command->variant && *command->variant != request.variant))
        return deliver(request, Reply::failed(kErrBadRequest));

    std::optional<std::uint32_t> about;
    if (request.target_if_index != 0) about = request.target_if_index;
    std::optional<std::uint32_t> extender;
    if (request.extender) extender = request.extender->number;
    const auto fault = model.take_fault({FaultTarget::agent, request.cmd, about, extender, std::nullopt, std::nullopt});

    if (fault && fault->kind == FaultKind::send_failure) return mts::Delivery::send_failed(fault->error);
    if (fault && fault->kind == FaultKind::unsupported) {
        if (command && command->unsupported) return deliver(request, command->unsupported(request, model));
        return deliver(request, Reply::failed(kErrUnsupported));
    }
    Reply reply = command ? command->handle(request, model) : Reply::failed(kErrUnsupported);
    if (!fault) return deliver(request, reply);
    switch (fault->kind) {
    case FaultKind::recv_failure: return mts::Delivery::recv_failed(fault->error);
    case FaultKind::empty_payload: return mts::Delivery::no_payload();
    case FaultKind::short_payload: {
        std::vector<std::uint8_t> payload = encode_reply(request, reply);
        if (payload.size() > fault->bytes) payload.resize(fault->bytes);
        return mts::Delivery::reply(std::move(payload));
    }
    case FaultKind::slow_reply:
        std::this_thread::sleep_for(std::chrono::milliseconds(fault->milliseconds));
        return deliver(request, reply);
    default: return deliver(request, reply);
    }
}

const mts::ServiceRegistrar agent_service{
    {"line-card statistics agents", std::nullopt, LC_STATS_SAP, LC_STATS_OPC, LC_STATS_RECV_WORD2, serve}};

}  // namespace

bool register_subcommand(SubCommand command) { return subcommands().add(std::move(command)); }
bool unregister_subcommand(std::uint8_t code) { return subcommands().remove(code); }

}  // namespace qdsim::agent
