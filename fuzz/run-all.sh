#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Runs every fuzz target of a fuzz build one after another, each from its
# committed seeds (fuzz/corpus/<target>) with a working corpus kept in
# <build>/fuzz-corpus/<target>. A finding is written to
# <build>/fuzz-findings/<target>-crash-...; the script goes on with the next
# target and exits non-zero if any target found something.
#
#   fuzz/run-all.sh [build-dir] [libFuzzer options...]
#   fuzz/run-all.sh build-fuzz -runs=20000          (the default)
#   fuzz/run-all.sh build-fuzz -max_total_time=300
set -uo pipefail
cd "$(dirname "$0")/.."
build=${1:-build-fuzz}
shift || true
options=("$@")
((${#options[@]})) || options=(-runs=20000)

mkdir -p "$build/fuzz-findings"
failed=()
for binary in "$build"/fuzz/qdfuzz_*; do
  [ -x "$binary" ] || continue
  target=${binary##*/qdfuzz_}
  mkdir -p "$build/fuzz-corpus/$target"
  if "$binary" "${options[@]}" -artifact_prefix="$build/fuzz-findings/$target-" \
       "$build/fuzz-corpus/$target" "fuzz/corpus/$target" >"$build/fuzz-findings/$target.log" 2>&1; then
    echo "$target: $(grep -E '^Done [0-9]+ runs' "$build/fuzz-findings/$target.log" | tail -1)"
  else
    echo "$target: FINDING, see $build/fuzz-findings/$target.log"
    failed+=("$target")
  fi
done
((${#failed[@]} == 0)) || { echo "targets with findings: ${failed[*]}"; exit 1; }
