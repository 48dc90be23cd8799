#!/usr/bin/env bash
# Sets up the machine, builds the project and starts qdsh on the embedded
# default switch. Arguments are passed to qdsh (e.g. -c "show queuing").
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh >&2
cmake --preset default >/dev/null
cmake --build --preset default -j"$(nproc)" >/dev/null
exec build/shell/qdsh "$@"
