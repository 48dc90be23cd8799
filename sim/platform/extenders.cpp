// SPDX-License-Identifier: MIT
// Extenders: slot and extender numbers, and the node of an extender's
// statistics agent.
//
// if_index_sat_get_slot_from_sat_mod numbers extenders from one below
// their number: it takes k - 1 for extender k (the numbering the drop
// report uses), and module 0 is an extender's first and only module. A
// failed lookup writes slot 0, where no extender sits.
#include <cstring>

#include "core/errors.hpp"
#include "qdcli/platform.h"
#include "core/lock.hpp"
#include "model/model.hpp"

using namespace qdsim;

extern "C" {

std::int32_t if_index_sat_get_sat_from_slot(std::uint8_t slot, std::uint8_t *sat) {
    SwitchLock lock(switch_mutex());
    if (sat == nullptr) return kErrBadArgument;
    const Extender *e = current_model().extender_at_slot(slot);
    *sat = e ? static_cast<std::uint8_t>(e->number) : 0;
    return e ? 0 : kErrNoModule;
}

std::int32_t if_index_sat_get_slot_from_sat_mod(std::uint32_t sat, std::uint32_t module, std::uint8_t *slot) {
    SwitchLock lock(switch_mutex());
    if (slot == nullptr) return kErrBadArgument;
    const Extender *e = module == 0 && sat < 0xffffu ? current_model().extender(sat + 1) : nullptr;
    *slot = e ? e->slot : 0;
    return e ? 0 : kErrNoModule;
}

// Known only for extender slots: word 0 is the extender's number, word 1
// the node of its statistics agent.
std::int32_t satmgr_get_module_info(std::uint8_t slot, satmgr_module_info *info) {
    SwitchLock lock(switch_mutex());
    if (info == nullptr) return kErrBadArgument;
    std::memset(info, 0, sizeof *info);
    const Extender *e = current_model().extender_at_slot(slot);
    if (e == nullptr) return kErrNoModule;
    info->word0 = e->number;
    info->node = e->node;
    return 0;
}

}  // extern "C"
