// SPDX-License-Identifier: MIT
// One lock for the whole simulated switch. Every platform operation and
// every control call takes it; services run under it, so a service may call
// other operations of the switch (the lock is recursive).
#pragma once

#include <mutex>

namespace qdsim {

std::recursive_mutex &switch_mutex();

using SwitchLock = std::lock_guard<std::recursive_mutex>;

}  // namespace qdsim
