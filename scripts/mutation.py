#!/usr/bin/env python3
"""Mutation check of the library's tests.

Applies the mutants of scripts/mutants.txt to src/ one at a time, rebuilds
only the library's objects and the unit-test binary (unoptimised and
non-sanitized, in its own build directory, through ccache when it is
installed), runs the unit tests (the fast subset), and prints the score and
the mutants no test caught. Every source file is restored after its mutant,
also when the run is interrupted. The log (BUILD_DIR/mutation.log) names
the tests that failed for each mutant.

    scripts/mutation.py                 # every mutant
    scripts/mutation.py d1 n1 g10       # only these
    scripts/mutation.py --check         # only verify that every mutant applies

Exit status: 0 when the score reaches --min-score (default 94), 1 below it,
2 when the list is broken or the unmutated tests fail.
"""

import argparse
import os
import re
import shutil
import signal
import subprocess
import sys
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
SEPARATOR = " ==> "


class Mutant:
    def __init__(self, ident, path, original, replacement, line):
        self.ident, self.path, self.original, self.replacement, self.line = ident, path, original, replacement, line


def unescape(text):
    return text.replace("\u23ce", "\n")  # the list's line-break mark


def read_mutants(list_path):
    mutants, errors, seen, equivalent = [], [], set(), set()
    for number, raw in enumerate(list_path.read_text().splitlines(), 1):
        marked = re.match(r"# equivalent (\S+): ", raw)
        if marked:
            equivalent.add(marked.group(1))
        if not raw.strip() or raw.startswith("#"):
            continue
        where = f"{list_path.name}:{number}"
        if raw.endswith(SEPARATOR.rstrip()):  # an empty replacement deletes the original
            head, sep, replacement = raw[: -len(SEPARATOR.rstrip())], True, ""
        else:
            head, sep, replacement = raw.partition(SEPARATOR)
        fields = head.split(" ", 1)
        if not sep or len(fields) != 2 or ": " not in fields[1]:
            errors.append(f"{where}: expected 'ID FILE: ORIGINAL ==> REPLACEMENT'")
            continue
        ident = fields[0]
        file_name, _, original = fields[1].partition(": ")
        if ident in seen:
            errors.append(f"{where}: mutant {ident} is listed twice")
        seen.add(ident)
        mutants.append(Mutant(ident, ROOT / "src" / file_name, unescape(original), unescape(replacement), where))
    for m in mutants:
        m.equivalent = m.ident in equivalent
    for ident in equivalent - {m.ident for m in mutants}:
        errors.append(f"{list_path.name}: {ident} is marked equivalent but not listed")
    for m in mutants:
        if not m.path.is_file():
            errors.append(f"{m.line}: {m.ident}: no file src/{m.path.relative_to(ROOT / 'src')}")
            continue
        found = m.path.read_text().count(m.original)
        if found != 1:
            errors.append(f"{m.line}: {m.ident}: the original text occurs {found} times in "
                          f"{m.path.relative_to(ROOT)}, expected once")
        if m.original == m.replacement:
            errors.append(f"{m.line}: {m.ident}: the replacement is the original")
    return mutants, errors


def run(command, log, timeout=None):
    try:
        done = subprocess.run(command, cwd=ROOT, stdout=log, stderr=subprocess.STDOUT, timeout=timeout)
        return done.returncode
    except subprocess.TimeoutExpired:
        return "timeout"


def interrupted(signum, _frame):
    # Turned into an exception so that the mutated file is restored.
    raise KeyboardInterrupt(f"signal {signum}")


def main():
    for signum in (signal.SIGTERM, signal.SIGHUP):
        signal.signal(signum, interrupted)
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("ids", nargs="*", help="mutant IDs to run (default: all)")
    parser.add_argument("--list", default=str(ROOT / "scripts" / "mutants.txt"))
    parser.add_argument("--build-dir", default=str(ROOT / "build-mutation"))
    parser.add_argument("--min-score", type=float, default=94.0)
    parser.add_argument("--timeout", type=int, default=120, help="seconds for one test run")
    parser.add_argument("--check", action="store_true", help="verify the list and stop")
    args = parser.parse_args()

    mutants, errors = read_mutants(Path(args.list))
    if errors:
        print("\n".join(errors), file=sys.stderr)
        return 2
    if args.ids:
        unknown = set(args.ids) - {m.ident for m in mutants}
        if unknown:
            print(f"unknown mutant IDs: {' '.join(sorted(unknown))}", file=sys.stderr)
            return 2
        mutants = [m for m in mutants if m.ident in args.ids]
    folders = sorted({m.path.relative_to(ROOT / "src").parts[0] for m in mutants})
    equivalent = [m for m in mutants if m.equivalent]
    print(f"{len(mutants)} mutants in src/{{{','.join(folders)}}}, {len(equivalent)} of them equivalent (not run)")
    mutants = [m for m in mutants if not m.equivalent]
    if args.check:
        return 0

    build = Path(args.build_dir)
    log_path = build / "mutation.log"
    # Unoptimised and without debug information: a mutant's rebuild is one
    # quick compile and a link. (Replies end on a page boundary in the tests'
    # platform, so an over-read faults without a sanitizer.)
    configure = ["cmake", "-S", str(ROOT), "-B", str(build), "-DCMAKE_BUILD_TYPE=None",
                 "-DCMAKE_CXX_FLAGS=-O0", "-DCMAKE_C_FLAGS=-O0"]
    if shutil.which("ccache"):
        configure += ["-DCMAKE_CXX_COMPILER_LAUNCHER=ccache", "-DCMAKE_C_COMPILER_LAUNCHER=ccache"]
    rebuild = ["cmake", "--build", str(build), "-j", str(os.cpu_count() or 2), "--target", "qdcli_unit_tests"]
    tests = [str(build / "tests" / "qdcli_unit_tests"), "--gtest_brief=1"]

    build.mkdir(parents=True, exist_ok=True)
    with open(log_path, "w") as log:
        if run(configure, log) != 0 or run(rebuild, log) != 0:
            print(f"the unmutated tree does not build: see {log_path}", file=sys.stderr)
            return 2
        if run(tests, log, args.timeout) != 0:
            print(f"the unmutated unit tests fail: see {log_path}", file=sys.stderr)
            return 2

        started = time.monotonic()
        survivors, stillborn, killed = [], [], 0
        for index, m in enumerate(mutants, 1):
            pristine = m.path.read_text()
            try:
                m.path.write_text(pristine.replace(m.original, m.replacement, 1))
                log.write(f"\n===== {m.ident} {m.path.relative_to(ROOT)}\n")
                log.flush()
                if run(rebuild, log) != 0:
                    verdict = "does not build"
                    stillborn.append(m)
                else:
                    rc = run(tests, log, args.timeout)
                    if rc == 0:
                        verdict = "SURVIVED"
                        survivors.append(m)
                    else:
                        verdict = "killed" if rc != "timeout" else "killed (timeout)"
                        killed += 1
            finally:
                m.path.write_text(pristine)
            print(f"[{index:3}/{len(mutants)}] {m.ident:5} {verdict:17} {m.path.relative_to(ROOT / 'src')}", flush=True)
        # Leave the build directory matching the sources again.
        run(rebuild, log)

    elapsed = time.monotonic() - started
    judged = killed + len(survivors)
    score = 100.0 * killed / judged if judged else 0.0
    print(f"\nkilled {killed} of {judged} mutants: score {score:.1f} % "
          f"({len(stillborn)} did not build) in {elapsed / 60:.1f} minutes")
    for m in survivors:
        print(f"  survived: {m.ident} {m.path.relative_to(ROOT)}: {m.original.strip()!r} -> {m.replacement.strip()!r}")
    for m in stillborn:
        print(f"  does not build: {m.ident} ({m.line})")
    return 0 if score >= args.min_score else 1


if __name__ == "__main__":
    sys.exit(main())
