#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Prints how large the test code is against the code it tests, in non-blank
# lines of C++, shell, Python and CMake files, and fails when the tests pass
# the limit (default 39 %; the aim is 35 %). Test code is tests/ and the
# fuzz harnesses of fuzz/; golden outputs, corpora and data files are not
# counted.
#
#   scripts/test-ratio.sh [SOURCE_DIR] [LIMIT_PERCENT]
set -euo pipefail
root=${1:-$(dirname "$0")/..}
limit=${2:-39}
cd "$root"

count() {  # non-blank lines of the counted files under the given folders
  local dirs=()
  for d in "$@"; do [ -d "$d" ] && dirs+=("$d"); done
  [ ${#dirs[@]} -gt 0 ] || { echo 0; return; }
  find "${dirs[@]}" -type f \( -name '*.cpp' -o -name '*.hpp' -o -name '*.h' -o -name '*.sh' \
       -o -name '*.py' -o -name CMakeLists.txt \) -exec cat {} + | grep -c '[^[:space:]]' || true
}

tests=$(count tests fuzz)
code=$(count src include common sim shell tools examples)
if [ "$code" -eq 0 ]; then
  echo "test-ratio: no code found under $(pwd)" >&2
  exit 2
fi
percent=$(awk -v t="$tests" -v c="$code" 'BEGIN { printf "%.1f", 100 * t / c }')
echo "test code: $tests lines, code: $code lines, ratio $percent % (limit $limit %)"
if awk -v p="$percent" -v l="$limit" 'BEGIN { exit !(p > l) }'; then
  echo "test-ratio: the tests are $percent % of the code, more than $limit %: make them leaner" >&2
  for d in tests/*/ fuzz/*/; do echo "  $(count "$d") ${d%/}"; done | sort -rn >&2
  exit 1
fi
