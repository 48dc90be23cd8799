// SPDX-License-Identifier: MIT
#include "daemon/daemon.hpp"

#include <chrono>
#include <cstring>
#include <thread>

#include "core/diagnostics.hpp"
#include "core/errors.hpp"
#include "core/lock.hpp"
#include "core/registry.hpp"
#include "mts/router.hpp"
#include "qdcli/wire.h"

namespace qdsim::daemon {

Reply Reply::bytes(std::vector<std::uint8_t> payload) { return {true, std::move(payload)}; }

Reply Reply::status(std::uint32_t status) {
    std::vector<std::uint8_t> payload(4);
    std::memcpy(payload.data(), &status, 4);
    return {true, std::move(payload)};
}

Reply Reply::none() { return {false, {}}; }

std::vector<std::uint8_t> refusal(std::uint32_t status) {
    std::vector<std::uint8_t> payload(8);
    std::memcpy(payload.data(), &status, 4);
    std::memcpy(payload.data() + 4, &status, 4);
    return payload;
}

const Json *served_section(const Interface *i, std::string_view pointer) {
    if (i == nullptr || i->kind != InterfaceKind::ethernet || i->sub_intf || i->data == nullptr) return nullptr;
    const Json *section = find(*i->data, pointer);
    if (section == nullptr || !section->is_object() || !get_bool(*section, "/supported", true)) return nullptr;
    return section;
}

namespace {

CodeRegistry<Command> &commands() {
    static CodeRegistry<Command> registry("daemon command");
    return registry;
}

mts::Delivery deliver(const Reply &reply) {
    return reply.has_payload ? mts::Delivery::reply(reply.payload) : mts::Delivery::no_payload();
}

mts::Delivery serve(const mts::Request &r) {
    if (r.length != sizeof(qd_cli_req)) return mts::Delivery::reply(refusal(kErrBadRequest));
    qd_cli_req wire;
    std::memcpy(&wire, r.data, sizeof wire);
    if (wire.reserved[0] || wire.reserved[1] || wire.reserved[2]) return mts::Delivery::reply(refusal(kErrBadRequest));

    const Request request{r.handle, wire.command, wire.if_index, wire.arg};
    Model &model = current_model();
    const Command *command = find_command(request.command);
    const auto fault = model.take_fault(
        {FaultTarget::daemon, request.command, request.if_index, std::nullopt, std::nullopt, std::nullopt});

    if (fault && fault->kind == FaultKind::send_failure) return mts::Delivery::send_failed(fault->error);
    if (fault && fault->kind == FaultKind::unsupported) {
        if (command && command->unsupported) return deliver(command->unsupported(request, model));
        return mts::Delivery::reply(refusal(QD_STATUS_UNSUPPORTED));
    }
    // The request reaches the daemon on every other path: the command runs
    // (and changes what it changes) even when its reply is then lost.
    Reply reply = command ? command->handle(request, model) : Reply::bytes(refusal(QD_STATUS_UNSUPPORTED));
    if (!fault) return deliver(reply);
    switch (fault->kind) {
    case FaultKind::recv_failure: return mts::Delivery::recv_failed(fault->error);
    case FaultKind::empty_payload: return mts::Delivery::no_payload();
    case FaultKind::short_payload:
        if (reply.payload.size() > fault->bytes) reply.payload.resize(fault->bytes);
        return deliver(reply);
    case FaultKind::slow_reply:
        std::this_thread::sleep_for(std::chrono::milliseconds(fault->milliseconds));
        return deliver(reply);
    default: return deliver(reply);
    }
}

const mts::ServiceRegistrar daemon_service{{"queuing daemon", MTS_NODE_LOCAL, QD_MTS_SAP, QD_CLI_OPC, 0, serve}};

}  // namespace

bool register_command(Command command) { return commands().add(std::move(command)); }
bool unregister_command(std::uint8_t code) { return commands().remove(code); }
const Command *find_command(std::uint8_t code) { return commands().find(code); }

}  // namespace qdsim::daemon
