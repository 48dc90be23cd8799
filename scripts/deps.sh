#!/usr/bin/env bash
# Installs the Debian packages the project needs, if any is missing.
set -euo pipefail
packages=(cmake g++ make pkg-config libgtest-dev libgmock-dev libbenchmark-dev nlohmann-json3-dev libedit-dev)
# Validators of the structured-output tests.
packages+=(python3 python3-jsonschema libxml2-utils)
# Benchmarks and docs/PERFORMANCE.md (scripts/perf.sh): the plot.
packages+=(gnuplot-nox)
# The exporter, and the Prometheus server and parser of its tests.
packages+=(libcpp-httplib-dev prometheus python3-prometheus-client)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if ((${#missing[@]})); then
  echo "installing: ${missing[*]}"
  sudo_cmd=""
  [ "$(id -u)" -ne 0 ] && sudo_cmd="sudo"
  $sudo_cmd apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo_cmd apt-get install -y -qq "${missing[@]}"
fi
