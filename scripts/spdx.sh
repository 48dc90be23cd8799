#!/usr/bin/env bash
# Puts the licence line "SPDX-License-Identifier: MIT" at the top of every
# source file of the tree that lacks it (after a #! line). Safe to run again:
# files that have the line are left alone.
#   scripts/spdx.sh          add the missing lines
#   scripts/spdx.sh --check  list the files without one; exit 1 if any
set -euo pipefail
cd "$(dirname "$0")/.."
tag="SPDX-License-Identifier: MIT"
check=0
[ "${1:-}" = "--check" ] && check=1
missing=0
while IFS= read -r -d '' file; do
  head -n 3 "$file" | grep -q "SPDX-License-Identifier:" && continue
  if ((check)); then
    echo "$file"
    missing=1
    continue
  fi
  case "$file" in
    *.cpp | *.hpp | *.h | *.c) line="// $tag" ;;
    *) line="# $tag" ;;
  esac
  tmp=$(mktemp)
  if head -n 1 "$file" | grep -q '^#!'; then
    { head -n 1 "$file"; echo "$line"; tail -n +2 "$file"; } >"$tmp"
  else
    { echo "$line"; cat "$file"; } >"$tmp"
  fi
  chmod --reference="$file" "$tmp"
  mv "$tmp" "$file"
done < <(git ls-files -z -- '*.cpp' '*.hpp' '*.h' '*.c' '*.sh' '*.cmake' '*.cmake.in' '*CMakeLists.txt' \
           ':!:tests/fuzz-regression/**' ':!:fuzz/corpus/**')
exit "$missing"
