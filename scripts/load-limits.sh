#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# The load targets of the simulator's inputs, measured on a qdsh binary
# (a Release one for the figures of docs/ROBUSTNESS.md):
#   - 1,000 piped "sim set" lines of counters: well under a second;
#   - a scenario of 1,000,000 other_interfaces: refused within a second,
#     without the memory a parse of it would take.
# Prints the time and peak memory of each; exits 1 when a target is missed.
#
#   scripts/load-limits.sh [QDSH]      (default build/shell/qdsh)
set -euo pipefail
qdsh=${1:-$(dirname "$0")/../build/shell/qdsh}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
missed=0

measure() {  # measure NAME LIMIT-SECONDS EXPECTED-STATUS -- command...
  local name=$1 limit=$2 want=$3
  shift 4
  local status=0
  /usr/bin/time -f "%e %M" -o "$work/time" "$@" >"$work/out" 2>"$work/err" || status=$?
  read -r seconds kilobytes < <(tail -1 "$work/time")
  printf '%-44s %6.2f s %8d kB peak (target: under %s s)\n' "$name" "$seconds" "$kilobytes" "$limit"
  [ "$status" = "$want" ] || { echo "  exit status $status, expected $want: $(head -c 300 "$work/err")"; missed=1; }
  awk -v s="$seconds" -v l="$limit" 'BEGIN { exit !(s >= l) }' && missed=1
  return 0
}

for i in $(seq 1000); do
  echo "sim set /interfaces/Ethernet1~1$((1 + i % 40))/queuing/qos_groups/0/counters/rx_port_pkts $i"
done >"$work/sets"
measure "1,000 piped sim set lines" 1 0 -- sh -c "\"$qdsh\" <\"$work/sets\""
python3 -c '
import json, sys
json.dump({"ethernet": [{"slot": 1, "ports": 1}],
           "other_interfaces": [{"name": "o%d" % i, "type": 40} for i in range(1000000)]}, sys.stdout)' >"$work/big.json"
measure "1,000,000 other_interfaces (refused)" 1 2 -- "$qdsh" --scenario "$work/big.json" -c "sim interfaces"
grep -q "holds more than 1000000 values" "$work/err" || { echo "  not refused by its size: $(head -c 300 "$work/err")"; missed=1; }
exit $missed
