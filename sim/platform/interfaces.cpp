// SPDX-License-Identifier: MIT
// Interface indexes: type, sub-interface, name, slot, network order.
#include <arpa/inet.h>

#include <cstdio>

#include "core/errors.hpp"
#include "qdcli/platform.h"
#include "core/lock.hpp"
#include "model/model.hpp"

using namespace qdsim;

extern "C" {

std::int32_t if_index_get_type(std::uint32_t if_index, std::uint8_t *type) {
    SwitchLock lock(switch_mutex());
    if (type == nullptr) return kErrBadArgument;
    const Interface *i = current_model().interface(if_index);
    *type = i ? i->type : 0;  // 0: no interface, which no report takes
    return i ? 0 : kErrNoInterface;
}

std::int32_t if_index_is_sub_intf(std::uint32_t if_index) {
    SwitchLock lock(switch_mutex());
    const Interface *i = current_model().interface(if_index);
    return i && i->sub_intf ? 1 : 0;
}

// The interface's name; an unknown index is written as "unknown-0x........"
// and -1 returned.
std::int32_t snprintf_if_index(char *buffer, std::size_t size, std::uint32_t if_index) {
    SwitchLock lock(switch_mutex());
    if (buffer == nullptr || size == 0) return -1;
    const Interface *i = current_model().interface(if_index);
    if (i == nullptr) {
        std::snprintf(buffer, size, "unknown-0x%08x", if_index);
        return -1;
    }
    return std::snprintf(buffer, size, "%s", i->name.c_str());
}

// Ethernet interfaces are in their line card's slot; host interfaces in
// their extender's.
std::int32_t if_index_get_slot(std::uint32_t if_index, std::uint8_t *slot) {
    SwitchLock lock(switch_mutex());
    if (slot == nullptr) return kErrBadArgument;
    const Interface *i = current_model().interface(if_index);
    if (i == nullptr) {
        *slot = 0;
        return kErrNoInterface;
    }
    *slot = i->slot;
    return i->kind == InterfaceKind::other ? kErrNoModule : 0;
}

std::uint32_t hton_if_index(std::uint32_t if_index) { return htonl(if_index); }

}  // extern "C"
