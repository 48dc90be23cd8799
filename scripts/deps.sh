#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs the Debian packages the project needs for a purpose, if any is
# missing:
#   scripts/deps.sh run     build and run qdsh (library, simulator, shell)
#   scripts/deps.sh lib     build libqdcli.so alone (a C++20 compiler, CMake)
#   scripts/deps.sh test    run, plus what the test suite and the docs need
#   scripts/deps.sh bench   run, plus Google Benchmark
#   scripts/deps.sh all     everything (the default)
# Several purposes may be given. One list per purpose: a new dependency goes
# into the list of what needs it.
set -euo pipefail

lib=(cmake g++ make)
# qdsh links libmicrohttpd for its exporter (qdsh serve) and RE2 for its
# output filters (linear-time matching of typed patterns).
run=("${lib[@]}" pkg-config nlohmann-json3-dev libedit-dev libmicrohttpd-dev libre2-dev)
# The tests: GoogleTest, the docs and man page, the validators of structured
# output, the Prometheus server and parser of the exporter's tests, python3
# for the test scripts and the mutation check, tmux for the terminal tests
# and jq for the README's examples.
test=("${run[@]}" libgtest-dev libgmock-dev doxygen groff-base man-db python3 python3-jsonschema libxml2-utils
  prometheus python3-prometheus-client tmux jq)
# Benchmarks, and the plot of docs/PERFORMANCE.md (scripts/perf.sh).
bench=("${run[@]}" libbenchmark-dev python3 gnuplot-nox)

purposes=("$@")
((${#purposes[@]})) || purposes=(all)
packages=()
for purpose in "${purposes[@]}"; do
  case "$purpose" in
    lib) packages+=("${lib[@]}") ;;
    run) packages+=("${run[@]}") ;;
    test) packages+=("${test[@]}") ;;
    bench) packages+=("${bench[@]}") ;;
    all) packages+=("${test[@]}" "${bench[@]}") ;;
    *) echo "deps.sh: unknown purpose \"$purpose\" (lib, run, test, bench or all)" >&2; exit 2 ;;
  esac
done

# One dpkg-query for all of them: this runs before every start of qdsh.
mapfile -t wanted < <(printf '%s\n' "${packages[@]}" | sort -u)
mapfile -t installed < <(dpkg-query -W -f='${Package} ${Status}\n' "${wanted[@]}" 2>/dev/null |
  awk '$NF == "installed" && $(NF-1) == "ok" { print $1 }')
missing=()
for p in "${wanted[@]}"; do
  [[ " ${installed[*]} " == *" $p "* ]] || missing+=("$p")
done
# With QDCLI_DEPS_LOG set, apt's output goes to that file and one line
# says what is installed (the whole log is shown only when apt fails).
if ((${#missing[@]})); then
  sudo_cmd=""
  [ "$(id -u)" -ne 0 ] && sudo_cmd="sudo"
  log=${QDCLI_DEPS_LOG:-/dev/stdout}
  if [ -n "${QDCLI_DEPS_LOG:-}" ]; then
    echo "installing ${#missing[@]} packages (apt's output in $QDCLI_DEPS_LOG): ${missing[*]}"
    : >"$log"
  else
    echo "installing: ${missing[*]}"
  fi
  if ! { $sudo_cmd apt-get update -qq &&
    DEBIAN_FRONTEND=noninteractive $sudo_cmd apt-get install -y -qq --no-install-recommends "${missing[@]}"; } >>"$log" 2>&1; then
    [ -z "${QDCLI_DEPS_LOG:-}" ] || cat "$QDCLI_DEPS_LOG" >&2
    echo "deps.sh: installing ${missing[*]} failed" >&2
    exit 1
  fi
fi
