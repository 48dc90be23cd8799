// SPDX-License-Identifier: MIT
// sdwrap_debug_dump: delivers a debug request to the named function of the
// daemon, which prints a one-line trace of what it was asked for.
#include <cstdio>
#include <cstring>
#include <map>

#include "core/diagnostics.hpp"
#include "core/errors.hpp"
#include "core/lock.hpp"
#include "daemon/debug.hpp"
#include "mts/router.hpp"
#include "qdcli/wire.h"
#include "printer/output.hpp"

namespace qdsim::daemon {

std::uint32_t DebugRequest::word(unsigned i) const {
    std::uint32_t v = 0;
    if (record.size() >= 4 * (i + 1)) std::memcpy(&v, record.data() + 4 * i, 4);
    return v;
}

namespace {

std::map<std::string, DebugFunction> &functions() {
    static std::map<std::string, DebugFunction> registry;
    return registry;
}

// "qd: qd_debug_eng_print_all selector 9 arg 0x0 if_index 0x1a000000 (Ethernet1/1)"
std::string print_all(const DebugRequest &request, Model &model) {
    const std::uint32_t selector_word = request.word(0);
    std::string line = "qd: " + request.function + " selector " + std::to_string(selector_word >> 24);
    if (selector_word & 0x00ffffffu) line += " (low bits " + hex(selector_word & 0x00ffffffu) + ")";
    if (request.word(1) != 0) line += " word1 " + hex(request.word(1));
    const std::uint32_t if_index = request.word(3);
    line += " arg " + hex(request.word(2)) + " if_index " + hex(if_index);
    if (if_index != 0) {
        const Interface *i = model.interface(if_index);
        line += i ? " (" + i->name + ")" : " (no such interface)";
    }
    return line + "\n";
}

// "qd: mtrack_dump_memstats detail 1 type 5 mask 0xffffffff"
std::string memstats(const DebugRequest &request, Model &) {
    std::string line = "qd: " + request.function + " detail " + std::to_string(request.word(1)) + " type " +
                       std::to_string(request.word(2)) + " mask " + hex(request.word(3));
    if (request.word(0) != 0) line += " word0 " + hex(request.word(0));
    return line + "\n";
}

const DebugRegistrar print_all_function{QD_DEBUG_FUNC_PRINT_ALL, print_all};
const DebugRegistrar memstats_function{QD_DEBUG_FUNC_MEMSTATS, memstats};

}  // namespace

bool register_debug_function(const std::string &name, DebugFunction function) {
    SwitchLock lock(switch_mutex());
    auto [it, inserted] = functions().emplace(name, std::move(function));
    if (!inserted) diagnostic("daemon debug function \"" + name + "\" registered twice");
    return inserted;
}

bool unregister_debug_function(const std::string &name) {
    SwitchLock lock(switch_mutex());
    return functions().erase(name) != 0;
}

}  // namespace qdsim::daemon

extern "C" std::int32_t sdwrap_debug_dump(std::uint32_t handle, std::uint32_t node, std::uint32_t sap,
                                          const void *request, std::uint32_t length, const char *func_name) {
    using namespace qdsim;
    SwitchLock lock(switch_mutex());
    if (!mts::handle_open(handle)) {
        diagnostic("sdwrap_debug_dump with handle " + hex32(handle) + ", which is not open");
        return kErrBadHandle;
    }
    if (node != MTS_NODE_LOCAL || sap != QD_MTS_SAP) return kErrNoRoute;
    if (request == nullptr || length != 16) return kErrBadRequest;
    if (func_name == nullptr) return kErrBadArgument;
    auto it = daemon::functions().find(func_name);
    if (it == daemon::functions().end()) return kErrUnsupported;
    Model &model = current_model();
    if (auto fault = model.take_fault({FaultTarget::debug, std::nullopt, std::nullopt, std::nullopt, std::string(func_name),
                                       std::nullopt}))
        return fault->error;
    daemon::DebugRequest debug;
    debug.mts_handle = handle;
    debug.function = func_name;
    const auto *bytes = static_cast<const std::uint8_t *>(request);
    debug.record.assign(bytes, bytes + length);
    const daemon::DebugFunction function = it->second;
    try {
        printer::deliver(function(debug, model));
    } catch (const std::exception &e) {
        diagnostic(std::string("debug function ") + func_name + " failed: " + e.what());
        return kErrNoService;
    }
    return 0;
}
