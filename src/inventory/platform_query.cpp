// SPDX-License-Identifier: MIT
#include "inventory/platform_query.hpp"

#include <atomic>
#include <cstdio>
#include <cstring>

#include "output/observe.hpp"
#include "qdcli/wire.h"

namespace {
// The one piece of state that outlives a command. Two racing first queries
// both store the same answer.
std::atomic<std::int32_t> cached_platform_type{0};
}  // namespace

extern "C" std::int32_t qd_cli_platform_type_get(void) {
    const std::int32_t cached = cached_platform_type.load(std::memory_order_relaxed);
    if (cached != 0) return cached;
    std::int32_t answer = 0;
    sse_req request{};
    request.length = sizeof answer;
    request.answer = &answer;
    if (sse_call(SSE_OP_PLATFORM_TYPE, &request) != 0) return -1;
    // An answer of 0 is stored too, but cannot be told from an empty cache:
    // the platform is asked again next time.
    cached_platform_type.store(answer, std::memory_order_relaxed);
    return answer;
}

namespace qdcli {

void platform_type_cache_reset() { cached_platform_type.store(0, std::memory_order_relaxed); }

bool in_vdc_one() { return (sysmgr_vdc_get() & 0xffffu) == 1; }

const cmd_param_arg *command_arg(const cmd_paraminfo *pinfo, unsigned position) {
    if (pinfo == nullptr || position == 0 || position > pinfo->argc) return nullptr;
    return pinfo->args[position];
}

std::uint32_t arg_u32(const cmd_param_arg *arg) {
    std::uint32_t value = 0;
    if (arg != nullptr && arg->value != nullptr) std::memcpy(&value, arg->value, sizeof value);
    return value;
}

std::uint8_t arg_u8(const cmd_param_arg *arg) {
    if (arg == nullptr || arg->value == nullptr) return 0;
    return *static_cast<const std::uint8_t *>(arg->value);
}

void interface_name(std::uint32_t if_index, char *buffer, std::size_t size) {
    if (size == 0) return;
    std::memset(buffer, 0, size);
    snprintf_if_index(buffer, size, if_index);
    buffer[size - 1] = '\0';
}

CheckedInterface check_interface(std::uint32_t if_index) {
    CheckedInterface checked;
    if (if_index == 0) {
        const qdcli_subject subject = observe::interface(if_index);
        std::puts("Invalid interface");
        observe::failure(QDCLI_FAILURE_INVALID, "Invalid interface\n", 0, &subject);
        return checked;
    }
    if_index_get_type(if_index, &checked.type);
    if (checked.type == IF_TYPE_ETH && if_index_is_sub_intf(if_index) != 0) {
        const qdcli_subject subject = observe::interface(if_index);
        std::puts("Command not allowed on sub-interface! ");
        observe::failure(QDCLI_FAILURE_NOT_ALLOWED, "Command not allowed on sub-interface! \n", 0, &subject);
        return checked;
    }
    interface_name(if_index, checked.name, sizeof checked.name);
    checked.accepted = true;
    return checked;
}

}  // namespace qdcli
