#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# qdsh against hostile input, signals, and a second qdsh in the same
# directory. Runs in a scratch directory; every case leaves it clean.
#
#   robustness_test.sh QDSH
set -u
qdsh=$(cd "$(dirname "$1")" && pwd)/$(basename "$1")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1
failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }
pe="show logging onboard flow-control pause-events"

# Segments of process $1 still in the kernel.
segments_of() { ipcs -m -p | awk -v pid="$1" '$3 == pid || $4 == pid' | wc -l; }
wait_for() { for _ in $(seq 400); do eval "$1" && return 0; sleep 0.05; done; return 1; }

# Two qdsh side by side: B runs and exits while A is alive; both list the
# events, B leaves A's key file alone, and the last one out cleans up.
mkfifo a.in
"$qdsh" <a.in >a.out 2>a.err &
a=$!
exec 4>a.in  # A runs until this is closed
echo "$pe" >&4
wait_for '[ -f vrid/tessikusd_intf.h ]' || fail "A published no key file"
"$qdsh" -c "$pe" >b.out 2>b.err || fail "B failed: $(cat b.err)"
[ -f vrid/tessikusd_intf.h ] || fail "B removed A's key file"
echo "$pe" >&4
exec 4>&-
wait $a || fail "A failed: $(cat a.err)"
[ "$(grep -c 'List of Pause Events' a.out)" = 2 ] || fail "A did not list its events twice: $(cat a.out a.err)"
grep -q 'List of Pause Events' b.out || fail "B did not list its events"
[ ! -e vrid ] || fail "the key directory is left after both exited"

# Termination signals (and Ctrl-C without a terminal) end qdsh cleanly:
# no key file, no segment, ended by the signal.
mkfifo commands
for signal in TERM HUP INT; do
  "$qdsh" <commands >/dev/null 2>&1 &
  pid=$!
  exec 3>commands
  echo "$pe" >&3
  wait_for '[ "$(segments_of $pid)" -ge 1 ]' || fail "$signal: no segment published"
  [ -f vrid/tessikusd_intf.h ] || fail "$signal: no key file published"
  kill -s $signal $pid
  wait $pid
  status=$?
  expected=$((128 + $(kill -l $signal)))
  [ $status = $expected ] || fail "$signal: exit status $status, expected $expected"
  [ ! -e vrid ] || fail "$signal: the key directory is left"
  [ "$(segments_of $pid)" = 0 ] || fail "$signal: a segment is left"
  exec 3>&-
done

# Bytes and edges of command lines.
check() {  # check NAME EXPECTED-STATUS STDERR-PATTERN -- qdsh arguments (stdin from $input)
  local name=$1 want=$2 pattern=$3
  shift 4
  "$qdsh" "$@" <"${input:-/dev/null}" >out 2>err
  local got=$?
  [ $got = "$want" ] || fail "$name: exit status $got, expected $want ($(cat err))"
  [ -z "$pattern" ] || grep -qF -- "$pattern" err || fail "$name: stderr lacks \"$pattern\": $(cat err)"
}
printf 'show qu\0euing\n' >nul.in
input=nul.in check "NUL in piped input" 1 'unexpected "qu\x00euing" after "show"' --
input= check "? glued to a value" 1 'the value is not JSON: syntax error while parsing value - invalid literal (line 1, column 2)' -- -c "sim set /platform/type 3?"
check "platform type change" 0 'keeps platform type 2' -- -c "show wrr-queue cos-map" -c "sim set /platform/type 1"
check "% in a message" 1 'unknown command "%s%n"' -- -c "%s%n"

# A name of any length is listed whole, each row on its own line.
long=$(printf 'x%.0s' $(seq 200))
printf '{"ethernet": [{"slot": 1, "ports": 1}], "other_interfaces": [{"name": "%s", "type": 40}]}' "$long" >long.json
"$qdsh" --scenario long.json -c "sim interfaces" >out 2>err || fail "long name: $(cat err)"
[ "$(grep -c "^$long 0x28ff0001  40 other$" out)" = 1 ] || fail "long name row: $(cat out)"

# No byte that drives a terminal gets through raw: controls, C1, not UTF-8.
raw_controls() { LC_ALL=C grep -qP '[\x00-\x08\x0b-\x1f\x7f-\x9f\xf5-\xff]' out err; }
check "C1 byte in a command" 1 'x9b2J' -- -c $'show queuing interface \x9b2J'
raw_controls && fail "a control byte of the command line reached the terminal: $(od -c err | head)"
printf '{"x": \xff\x1b]0;t\x07}' >bytes.json
check "bytes in a scenario" 2 'bytes.json:1:7' -- --scenario bytes.json -c "sim interfaces"
raw_controls && fail "a control byte of the scenario reached the terminal: $(od -c err | head)"
[ $failures = 0 ] && echo "all robustness cases passed"
exit $((failures > 0))
