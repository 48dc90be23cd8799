#!/usr/bin/env bash
# Sets up the machine, builds everything with AddressSanitizer and
# UndefinedBehaviorSanitizer, and runs the whole test suite.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh
cmake --preset asan
cmake --build --preset asan -j"$(nproc)"
ctest --preset asan -j"$(nproc)"
