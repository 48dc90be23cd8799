// SPDX-License-Identifier: MIT
#include "core/diagnostics.hpp"

#include <cstdio>
#include <utility>

#include "core/lock.hpp"

namespace qdsim {
namespace {

struct Diagnostics {
    std::vector<std::string> kept;
    bool echo = true;
};

Diagnostics &diagnostics() {
    static Diagnostics d;
    return d;
}

}  // namespace

void diagnostic(const std::string &text) {
    SwitchLock lock(switch_mutex());
    Diagnostics &d = diagnostics();
    if (d.echo) std::fprintf(stderr, "qdsim: %s\n", text.c_str());
    d.kept.push_back(text);
}

std::vector<std::string> take_diagnostics() {
    SwitchLock lock(switch_mutex());
    return std::exchange(diagnostics().kept, {});
}

void set_diagnostics_echo(bool echo) {
    SwitchLock lock(switch_mutex());
    diagnostics().echo = echo;
}

std::string hex32(std::uint32_t v) {
    char buf[16];
    std::snprintf(buf, sizeof buf, "0x%08x", v);
    return buf;
}

std::string hex(std::uint32_t v) {
    char buf[16];
    std::snprintf(buf, sizeof buf, "0x%x", v);
    return buf;
}

}  // namespace qdsim
