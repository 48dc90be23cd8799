#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# The performance suite in one command: builds the benchmarks (Release),
# runs the per-report benchmarks and the chassis benchmarks, measures qdsh
# as a process on the default switch and on generated chassis of 3,072 and
# 12,288 interfaces, prints every report's ratio to its snprintf baseline
# and the targets met or missed, and writes the table and the plot of
# docs/PERFORMANCE.md (docs/perf/).
#
#   scripts/perf.sh            # everything (about 8 minutes on 2 busy cores)
#   scripts/perf.sh --quick    # fewer repetitions
#   QDPERF_OUT=DIR scripts/perf.sh   # results elsewhere than docs/perf
set -euo pipefail
# Whatever fails says so, with the command that failed.
trap 'echo "perf.sh: failed (exit $?) at line $LINENO: $BASH_COMMAND" >&2' ERR
cd "$(dirname "$0")/.."
root=$PWD
quick=0
[ "${1:-}" = "--quick" ] && quick=1
out=${QDPERF_OUT:-$root/docs/perf}
work=$root/build-bench/perf
mkdir -p "$out" "$work"

scripts/deps.sh
export CMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER:-$(command -v ccache || true)}
cmake --preset bench >/dev/null
cmake --build --preset bench -j2 --target qdcli_bench qdsim_bench qdsh

reps=5
[ $quick = 1 ] && reps=2
common=(--benchmark_repetitions=$reps --benchmark_report_aggregates_only=true --benchmark_format=json)

echo "== per-report benchmarks (scripted platform)" >&2
build-bench/bench/qdcli_bench "${common[@]}" --benchmark_out="$work/reports.json" --benchmark_out_format=json >/dev/null
echo "== chassis benchmarks (simulator)" >&2
build-bench/bench/qdsim_bench "${common[@]}" --benchmark_min_time=0.2 \
  --benchmark_out="$work/chassis.json" --benchmark_out_format=json >/dev/null

# qdsh as a process: wall, user CPU, peak resident memory, output bytes;
# the best of `reps` runs each (the machine is shared).
echo "== qdsh runs" >&2
chassis=build-bench/bench/chassis
: > "$work/runs.tsv"
for size in 192 3072 12288; do
  scenario=()
  case $size in
    3072) scenario=(--scenario "$chassis/3072.json") ;;
    12288) scenario=(--scenario "$chassis/12288.json") ;;
  esac
  # load: the chassis and one small command; show: the whole-chassis report
  # as text, json and xml (a command that fails ends the script, saying so).
  for what in load show json xml; do
    cmd="show queuing interface"
    format=()
    case $what in
      load) cmd="show wrr-queue cos-map" ;;
      json | xml) format=(-o "$what") ;;
    esac
    for _ in $(seq $reps); do
      /usr/bin/time -f "%e %U %M" -o "$work/time.txt" build-bench/shell/qdsh "${scenario[@]}" "${format[@]}" -c "$cmd" >"$work/out.txt"
      printf '%s\t%s\t%s\t%s\n' "$size" "$what" "$(cat "$work/time.txt")" "$(wc -c <"$work/out.txt")" >>"$work/runs.tsv"
    done
  done
done

/usr/bin/python3 scripts/perf_report.py "$work" "$out"
if command -v gnuplot >/dev/null; then
  (cd "$out" && gnuplot scale.gp)
  echo "plot: $out/scale.png" >&2
fi
