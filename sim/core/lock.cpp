// SPDX-License-Identifier: MIT
#include "core/lock.hpp"

namespace qdsim {

std::recursive_mutex &switch_mutex() {
    static std::recursive_mutex mutex;
    return mutex;
}

}  // namespace qdsim
