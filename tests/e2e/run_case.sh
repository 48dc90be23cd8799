#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Runs one end-to-end case of qdsh and compares what it printed with the
# case's golden files, byte for byte. See README.md.
#
#   run_case.sh QDSH CASE_DIR
#
# With QDSH_E2E_UPDATE=1 the goldens are written from this run instead; read
# every changed golden before committing it.
set -u
qdsh=$(cd "$(dirname "$1")" && pwd)/$(basename "$1")
dir=$(cd "$2" && pwd)
name=$(basename "$dir")

args=()
if [ -f "$dir/options" ]; then
  while IFS= read -r line || [ -n "$line" ]; do
    [ -n "$line" ] && args+=("$line")
  done <"$dir/options"
fi
for f in "$dir"/scenario*; do
  # qdsh runs in a copy of the case directory: the relative name keeps
  # messages portable.
  [ -f "$f" ] && args+=(--scenario "$(basename "$f")")
done
if [ -f "$dir/commands" ]; then
  while IFS= read -r line || [ -n "$line" ]; do
    case "$line" in '' | '#'*) continue ;; esac
    args+=(-c "$line")
  done <"$dir/commands"
fi
stdin=/dev/null
[ -f "$dir/stdin" ] && stdin="$dir/stdin"

tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
# A scratch copy of the case: whatever the simulator creates in its working
# directory (the pause log's key file) stays out of the source tree, and must
# be gone again when qdsh has exited.
mkdir "$tmp/work"
cp -R "$dir"/. "$tmp/work/"
(cd "$tmp/work" && exec "$qdsh" "${args[@]}") <"$stdin" >"$tmp/stdout" 2>"$tmp/stderr"
echo $? >"$tmp/status"
# A case whose golden holds only the lines that matter selects them with a
# filter: a bash command line that reads qdsh's standard output on its
# standard input and prints what `expected` holds.
if [ -f "$dir/filter" ]; then
  mv "$tmp/stdout" "$tmp/stdout.whole"
  if ! bash "$dir/filter" <"$tmp/stdout.whole" >"$tmp/stdout"; then
    echo "$name: the filter failed"
    exit 1
  fi
fi
left_behind=""
[ -e "$tmp/work/vrid" ] && left_behind="the pause log's key directory vrid/"

if [ "${QDSH_E2E_UPDATE:-0}" = 1 ]; then
  cp "$tmp/stdout" "$dir/expected"
  [ -f "$dir/expected-stderr" ] && cp "$tmp/stderr" "$dir/expected-stderr"
  if [ "$(cat "$tmp/status")" = 0 ]; then rm -f "$dir/status"; else cp "$tmp/status" "$dir/status"; fi
  echo "$name: goldens written"
  exit 0
fi

failed=0
compare() {  # golden, actual, what
  if ! cmp -s "$1" "$2"; then
    echo "$name: $3 differs from $(basename "$1"):"
    diff -u "$1" "$2" | sed -n '1,80p'
    failed=1
  fi
}
if [ ! -f "$dir/expected" ]; then
  echo "$name: no golden file 'expected'"
  failed=1
else
  compare "$dir/expected" "$tmp/stdout" "standard output"
fi
[ -f "$dir/expected-stderr" ] && compare "$dir/expected-stderr" "$tmp/stderr" "standard error"
want=0
[ -f "$dir/status" ] && want=$(tr -d '[:space:]' <"$dir/status")
got=$(cat "$tmp/status")
if [ "$got" != "$want" ]; then
  echo "$name: exit status $got, expected $want"
  echo "--- standard error:"
  sed -n '1,20p' "$tmp/stderr"
  failed=1
fi
if [ -n "$left_behind" ]; then
  echo "$name: qdsh left $left_behind in its working directory"
  failed=1
fi
[ $failed = 0 ] && echo "$name: passed"
exit $failed
