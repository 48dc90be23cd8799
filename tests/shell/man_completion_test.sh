#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# The generated man page and bash completion of qdsh: the page renders
# without warnings, lexgrog reads its NAME, its SYNOPSIS shows every form of
# --help on a line of its own (tests/term loads the completion and drives it
# in bash).
# Usage: man_completion_test.sh QDSH MAN_PAGE
set -uo pipefail
qdsh=$1 page=$2
failures=0
fail() { echo "FAIL: $*" >&2; failures=$((failures + 1)); }

warnings=$(MANWIDTH=200 man --warnings -l "$page" 2>&1 >/dev/null)
[ -z "$warnings" ] || fail "man reports: $warnings"
lexgrog "$page" >/dev/null 2>&1 || fail "lexgrog finds no NAME section: $(lexgrog "$page" 2>&1)"
synopsis=$(MANWIDTH=200 man -l "$page" 2>/dev/null | sed 's/‐/-/g' | sed -n '/^SYNOPSIS/,/^[A-Z]/p')
# Every usage line of --help is a line of the SYNOPSIS.
while IFS= read -r form; do
  grep -qxF "       qdsh $form" <<<"$synopsis" || fail "the SYNOPSIS lacks \"qdsh $form\""
done < <("$qdsh" --help | sed -n 's/^\(Usage:\| \{6\}\) qdsh \(.*\)$/\2/p')
[ "$(grep -c '^       qdsh ' <<<"$synopsis")" -ge 7 ] || fail "the SYNOPSIS lists fewer than 7 forms"

[ "$failures" -eq 0 ] && echo "man page and completion agree with qdsh"
exit $((failures != 0))
