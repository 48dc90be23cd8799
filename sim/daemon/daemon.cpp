// SPDX-License-Identifier: MIT
#include "daemon/daemon.hpp"

#include <chrono>
#include <cstring>
#include <map>
#include <thread>

#include "core/diagnostics.hpp"
#include "core/errors.hpp"
#include "core/lock.hpp"
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

namespace {

std::map<std::uint8_t, Command> &commands() {
    static std::map<std::uint8_t, Command> registry;
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

struct DaemonService {
    DaemonService() {
        mts::Service service;
        service.name = "queuing daemon";
        service.node = MTS_NODE_LOCAL;
        service.sap = QD_MTS_SAP;
        service.opcode = QD_CLI_OPC;
        service.recv_word2 = 0;
        service.handle = serve;
        mts::register_service(std::move(service));
    }
} const daemon_service;

}  // namespace

bool register_command(Command command) {
    SwitchLock lock(switch_mutex());
    const std::uint8_t code = command.code;
    auto [it, inserted] = commands().emplace(code, std::move(command));
    if (!inserted)
        diagnostic("daemon command " + std::to_string(code) + " (" + it->second.name + ") registered twice");
    return inserted;
}

bool unregister_command(std::uint8_t code) {
    SwitchLock lock(switch_mutex());
    return commands().erase(code) != 0;
}

const Command *find_command(std::uint8_t code) {
    auto it = commands().find(code);
    return it == commands().end() ? nullptr : &it->second;
}

}  // namespace qdsim::daemon
