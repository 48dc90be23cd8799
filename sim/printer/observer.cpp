// SPDX-License-Identifier: MIT
// The platform's optional observer operation (qdcli/observer.h): the
// observer a host installed with qdsim::set_observer, or none.
#include <atomic>

#include "qdcli/observer.h"
#include "qdsim/sim.h"

namespace {
std::atomic<const qdcli_observer *> g_observer{nullptr};
}  // namespace

namespace qdsim {

void set_observer(const qdcli_observer *observer) { g_observer.store(observer); }

}  // namespace qdsim

extern "C" const qdcli_observer *qdcli_observer_get(void) { return g_observer.load(); }
