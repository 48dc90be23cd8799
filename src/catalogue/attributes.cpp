// SPDX-License-Identifier: MIT
// The attribute catalogue: one entry per attribute ID the handlers print,
// request or read from the switch-wide stream. Constant data; the lookups
// keep no state.
//
// 0x30ff0088 (queue_name), 0x30ff0089 (stats_flags) and 0x30ff00a9
// (row_flags) fill the unused numbers of the host-interface range, and the
// numbers from 0x0101 name the values of the reports printed to standard
// output and the values a report prints as part of its text: the handlers
// tell them to a host's observer (qdcli/observer.h), never to the printer.
#include "qdcli/attributes.h"

#include <cstring>
#include <iterator>

#include "attribute_ids.hpp"

namespace {

namespace attr = qdcli::attr;

constexpr unsigned F_ROW = QDCLI_ATTR_FLAG_ROW_START;
constexpr unsigned F_LIST = QDCLI_ATTR_FLAG_LIST;
constexpr unsigned F_STATE = QDCLI_ATTR_FLAG_STATE;
constexpr unsigned F_OPT = QDCLI_ATTR_FLAG_OPTIONAL;

// Report by report, in the order the values are printed.
constexpr qdcli_attr_info kCatalogue[] = {
#define QDCLI_ATTRIBUTE(name, id, ...) {id, #name, __VA_ARGS__},
#include "attribute_rows.hpp"
#undef QDCLI_ATTRIBUTE
};

// The words of each state attribute, as structured output shows them.
struct States {
    std::uint32_t id;
    const char *const *words;
};
constexpr const char *kPriorityWrr[] = {"priority", "wrr", nullptr};
constexpr const char *kDrop[] = {"drop", "no-drop", nullptr};
constexpr const char *kActive[] = {"active", "inactive", nullptr};
constexpr const char *kPortType[] = {"nif", "hif", nullptr};
constexpr const char *kControlQueue[] = {"ctrl-hi", "ctrl-lo", nullptr};
constexpr const char *kPriWrr[] = {"pri", "wrr", nullptr};
constexpr const char *kQueueKind[] = {"ctrl", "data", nullptr};
constexpr const char *kYesNo[] = {"yes", "no", nullptr};
constexpr const char *kPause[] = {"xon", "xoff", nullptr};
constexpr const char *kScheduling[] = {"dwrr", "sp", nullptr};
constexpr const char *kPortClass[] = {"enif", "ihif", "inif", nullptr};
constexpr const char *kCleared[] = {"queuing", "qos", "pause", nullptr};
constexpr States kStates[] = {
    {attr::sched_type, kPriorityWrr}, {attr::drop_type, kDrop}, {attr::pfc_rx_status, kActive},
    {attr::pfc_tx_status, kActive}, {attr::port_type, kPortType}, {attr::ib_drop_type, kDrop},
    {attr::queue_name, kControlQueue}, {attr::queue_priority, kPriWrr}, {attr::stats_flags, kQueueKind},
    {attr::port_mux_ovflow, kActive}, {attr::mux_ovflow, kActive}, {attr::pfc_enabled, kYesNo},
    {attr::rx_pause, kPause}, {attr::tx_pause, kPause}, {attr::masked_rx_pause, kPause},
    {attr::ext_drop_mode, kYesNo}, {attr::row_flags, kQueueKind}, {attr::ext_sched, kScheduling},
    {attr::port_glb_type, kPortClass}, {attr::cleared, kCleared},
};

}  // namespace

extern "C" {

const char *const *qdcli_attr_states(uint32_t id) {
    for (const States &s : kStates)
        if (s.id == id) return s.words;
    return nullptr;
}

const qdcli_attr_info *qdcli_attr_catalogue(size_t *count) {
    if (count != nullptr) *count = std::size(kCatalogue);
    return kCatalogue;
}

const qdcli_attr_info *qdcli_attr_find(uint32_t id) {
    for (const qdcli_attr_info &a : kCatalogue)
        if (a.id == id) return &a;
    return nullptr;
}

const qdcli_attr_info *qdcli_attr_find_name(const char *name) {
    if (name == nullptr) return nullptr;
    for (const qdcli_attr_info &a : kCatalogue)
        if (std::strcmp(a.name, name) == 0) return &a;
    return nullptr;
}

}  // extern "C"
