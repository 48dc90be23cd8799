// SPDX-License-Identifier: MIT
// System resources the switch creates for its services (shared-memory
// segments, files) are given back by qdsim::shutdown through cleanups
// registered when they are created.
#pragma once

#include <functional>
#include <string>

namespace qdsim {

// Cleanups run once, newest first.
void register_cleanup(std::string what, std::function<void()> cleanup);
// Runs and forgets every registered cleanup (qdsim::shutdown).
void run_cleanups();

}  // namespace qdsim
