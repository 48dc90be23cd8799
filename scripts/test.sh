#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Sets up the machine, builds everything with AddressSanitizer and
# UndefinedBehaviorSanitizer (warnings are errors), runs the whole test suite
# and builds the API reference (Doxygen warnings are errors too).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh test
cmake --preset asan
cmake --build --preset asan -j"$(nproc)"
ctest --preset asan -j"$(nproc)"
cmake --build --preset asan --target docs
