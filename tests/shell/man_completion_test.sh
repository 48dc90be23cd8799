#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# The generated man page and bash completion of qdsh against qdsh itself:
# the page renders without warnings and lists every command "help" lists and
# every option --help lists, its SYNOPSIS every form of --help; the
# completion loads (tests/term drives it in bash).
# Usage: man_completion_test.sh QDSH MAN_PAGE COMPLETION
set -uo pipefail
qdsh=$1 page=$2 completion=$3
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
# The exit statuses stay in their section.
sed -n '/^EXIT STATUS/,/^[A-Z]/p' <<<"$(man -l "$page" 2>/dev/null)" | grep -q 'Type' && fail "EXIT STATUS holds other text"
rendered=$(MANWIDTH=200 man -l "$page" 2>/dev/null | sed 's/‐/-/g')
while IFS= read -r command; do
  # The command at the start of a line, whole (the page may put its help on the same line).
  awk -v c="       $command" '$0 == c || index($0, c " ") == 1 { found = 1 } END { exit !found }' <<<"$rendered" ||
    fail "the man page lacks the command \"$command\""
done < <("$qdsh" -c help | sed -n 's/^  \(.*[^ ]\)  \+.*$/\1/p')
while IFS= read -r option; do
  grep -qF -- "$option" <<<"$rendered" || fail "the man page lacks the option $option"
done < <("$qdsh" --help | sed -n 's/^  \(-[^ ,]*\).*/\1/p')
grep -q '^Options of watch' <<<"$("$qdsh" --help)" || fail "--help lists no options of watch"

# shellcheck source=/dev/null
source "$completion"
complete -p qdsh >/dev/null 2>&1 || fail "the completion does not register itself for qdsh"

[ "$failures" -eq 0 ] && echo "man page and completion agree with qdsh"
exit $((failures != 0))
