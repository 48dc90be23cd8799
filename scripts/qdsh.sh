#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Sets up the machine, builds what qdsh needs (libqdcli.so, libqdsim.so and
# qdsh with its man page and completion; not the tests) and starts qdsh on
# the embedded default switch.
# Arguments are passed to qdsh (e.g. -c "show queuing").
#
# One line per step: the packages installed (apt's output is kept in
# build/qdsh-setup.log), configuring, the build's progress (its full output
# is kept in build/qdsh-build.log and printed only when the build fails).
set -euo pipefail
cd "$(dirname "$0")/.."

mkdir -p build
QDCLI_DEPS_LOG=build/qdsh-setup.log scripts/deps.sh run | sed 's/^/qdsh: /' >&2
if command -v ccache >/dev/null && [ -z "${CMAKE_CXX_COMPILER_LAUNCHER:-}" ]; then
  export CMAKE_CXX_COMPILER_LAUNCHER=ccache
fi
if [ ! -f build/CMakeCache.txt ]; then
  echo "qdsh: configuring build/" >&2
  configure_log=$(mktemp)
  if ! cmake --preset quickstart >"$configure_log" 2>&1; then
    cat "$configure_log" >&2
    rm -f "$configure_log"
    exit 1
  fi
  rm -f "$configure_log"
fi

# Already built and no source changed since: start at once.
stamp=build/.qdsh-built
if [ -f "$stamp" ] && [ -x build/shell/qdsh ] &&
  [ -z "$(find CMakeLists.txt CMakePresets.json cmake include src sim shell scenarios -newer "$stamp" -print -quit)" ]; then
  exec build/shell/qdsh "$@"
fi

log=build/qdsh-build.log
progress() {
  local line shown=""
  while IFS= read -r line; do
    if [[ $line =~ ^\[\ *([0-9]+)%\] ]] && [ -t 2 ]; then
      printf '\rqdsh: building %3d%%' "${BASH_REMATCH[1]}" >&2
      shown=1
    fi
  done
  [ -z "$shown" ] || printf '\r\033[K' >&2
}
if ! cmake --build build -j"$(nproc)" --target qdsh qdsh_docs 2>&1 | tee "$log" | progress; then
  echo "qdsh: the build failed; its output (also in $log):" >&2
  cat "$log" >&2
  exit 1
fi
touch "$stamp"
exec build/shell/qdsh "$@"
