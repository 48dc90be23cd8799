// SPDX-License-Identifier: MIT
// The statistics client: QoS counters of host interfaces.
//
// A host interface's "qos_counters" section holds them; tx_queue_drops is
// the one the counter block carries (at byte 232). Clearing zeroes the
// section and whatever the services that registered a QoS clear keep.
#include <cstring>
#include <vector>

#include "core/diagnostics.hpp"
#include "core/errors.hpp"
#include "qdcli/platform.h"
#include "core/lock.hpp"
#include "model/sections.hpp"
#include "platform/services.hpp"

namespace qdsim::platform {
namespace {

std::vector<QosClear> &qos_clears() {
    static std::vector<QosClear> list;
    return list;
}

const SectionRegistrar qos_counters_section{Scope::host, "qos_counters", [](const Checker &check) {
    check.object();
    check.counters();
}};

std::int32_t host_or_error(Model &model, std::uint32_t if_index, const char *operation, const Interface *&host) {
    if (auto fault = model.take_fault({FaultTarget::statscl, std::nullopt, if_index, std::nullopt, std::string(operation),
                                       std::nullopt}))
        return fault->error;
    host = model.interface(if_index);
    if (host == nullptr) return kErrNoInterface;
    if (host->kind != InterfaceKind::host) return kErrUnsupported;
    return 0;
}

}  // namespace

void register_qos_clear(QosClear clear) {
    SwitchLock lock(switch_mutex());
    qos_clears().push_back(std::move(clear));
}

}  // namespace qdsim::platform

using namespace qdsim;

extern "C" {

std::int32_t statscl_get_qos_counters(std::uint32_t a, std::uint32_t if_index, std::uint32_t b, qos_counter_block *block) {
    SwitchLock lock(switch_mutex());
    if (block == nullptr || a != 0 || b != 0) return kErrBadArgument;
    Model &model = current_model();
    const Interface *host = nullptr;
    if (const std::int32_t rc = platform::host_or_error(model, if_index, "get", host)) return rc;
    std::memset(block, 0, sizeof *block);
    block->tx_queue_drops = get_u64(*host->data, "/qos_counters/tx_queue_drops", 0);
    return 0;
}

std::int32_t statscl_clear_qos_counters(std::uint32_t a, std::uint32_t if_index, std::uint32_t b, void *c) {
    SwitchLock lock(switch_mutex());
    if (a != 0 || b != 0 || c != nullptr) return kErrBadArgument;
    Model &model = current_model();
    const Interface *host = nullptr;
    if (const std::int32_t rc = platform::host_or_error(model, if_index, "clear", host)) return rc;
    if (Json *counters = host->data.edit("/qos_counters")) zero_counters(*counters);
    model.note_counters_cleared();
    const std::vector<platform::QosClear> clears = platform::qos_clears();
    for (const platform::QosClear &clear : clears) {
        try {
            clear(*host, model);
        } catch (const std::exception &e) {
            diagnostic("a QoS clear of " + host->name + " failed: " + e.what());
            return kErrNoService;
        }
    }
    return 0;
}

}  // extern "C"
