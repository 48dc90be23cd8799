// SPDX-License-Identifier: MIT
// System services: platform type, onboard services, VDC, card identifiers.
#include <atomic>
#include <cstring>
#include <map>

#include "core/diagnostics.hpp"
#include "core/errors.hpp"
#include "core/lock.hpp"
#include "platform/services.hpp"
#include "qdcli/wire.h"

namespace qdsim::platform {
namespace {

struct Sse2Entry {
    Sse2Service service;
    Sse2Failure on_failure;
};

std::map<std::uint32_t, Sse2Entry> &sse2_services() {
    static std::map<std::uint32_t, Sse2Entry> registry;
    return registry;
}

}  // namespace

bool register_sse2_service(std::uint32_t operation, Sse2Service service, Sse2Failure on_failure) {
    SwitchLock lock(switch_mutex());
    auto [it, inserted] = sse2_services().emplace(operation, Sse2Entry{std::move(service), std::move(on_failure)});
    if (!inserted) diagnostic("sse_call2 operation " + std::to_string(operation) + " registered twice");
    return inserted;
}

std::atomic<std::int32_t> &first_type_told() {
    static std::atomic<std::int32_t> told{0};
    return told;
}

}  // namespace qdsim::platform

namespace qdsim {

std::int32_t platform_type() {
    SwitchLock lock(switch_mutex());
    return current_model().platform_type();
}

std::int32_t platform_type_told() { return platform::first_type_told().load(); }

}  // namespace qdsim

using namespace qdsim;

extern "C" {

std::int32_t sse_call(std::uint32_t op, sse_req *req) {
    SwitchLock lock(switch_mutex());
    Model &model = current_model();
    if (auto fault = model.take_fault({FaultTarget::sse, op, std::nullopt, std::nullopt, std::nullopt, std::nullopt}))
        return fault->error;
    if (op != SSE_OP_PLATFORM_TYPE) return kErrUnsupported;
    if (req == nullptr || req->answer == nullptr || req->length < sizeof(std::int32_t)) return kErrBadArgument;
    const std::int32_t type = model.platform_type();
    std::memcpy(req->answer, &type, sizeof type);
    std::int32_t none = 0;
    if (type != 0) platform::first_type_told().compare_exchange_strong(none, type);
    return 0;
}

std::int32_t sse_call2(std::uint32_t op, void *buffer, std::uint32_t length) {
    SwitchLock lock(switch_mutex());
    Model &model = current_model();
    auto it = platform::sse2_services().find(op);
    const platform::Sse2Entry entry = it == platform::sse2_services().end() ? platform::Sse2Entry{} : it->second;
    try {
        if (model.take_fault({FaultTarget::sse, op, std::nullopt, std::nullopt, std::nullopt, std::nullopt})) {
            if (entry.on_failure) entry.on_failure(buffer, length, model);
            return -1;
        }
        if (!entry.service) return -1;
        return entry.service(buffer, length, model);
    } catch (const std::exception &e) {
        diagnostic("sse_call2 operation " + std::to_string(op) + " failed: " + e.what());
        return -1;
    }
}

std::uint32_t sysmgr_vdc_get(void) {
    SwitchLock lock(switch_mutex());
    return current_model().vdc();
}

// The 6-byte card record: bytes 2-3 the card identifier (host order); the
// other bytes 0.
std::int32_t get_card_module_info(std::uint8_t *card_record) {
    SwitchLock lock(switch_mutex());
    if (card_record == nullptr) return kErrBadArgument;
    Model &model = current_model();
    if (auto fault = model.take_fault({FaultTarget::card, std::nullopt, std::nullopt, std::nullopt,
                                       std::string("card_module_info"), std::nullopt}))
        return fault->error;
    const std::uint16_t id = model.card_id();
    std::memset(card_record, 0, QDCLI_CARD_RECORD_SIZE);
    std::memcpy(card_record + 2, &id, 2);
    return 0;
}

std::uint32_t pfm_get_sw_card_id_from_module(void) {
    SwitchLock lock(switch_mutex());
    return current_model().sw_card_id();
}

}  // extern "C"
