#!/usr/bin/env python3
"""Mutation check: how many realistic faults the tests catch.

Every list scripts/mutants/<part>.txt names the targets to rebuild after a
mutant (%build TARGET...), the tests that judge it (%tests REGEX, a ctest -R
pattern) and its mutants, one a line:

    ID FILE: ORIGINAL ==> REPLACEMENT

FILE is relative to the repository root; ORIGINAL must occur exactly once in
it and is replaced by REPLACEMENT (nothing after "==>" deletes it; "\u23ce"
stands for a line break). IDs are unique across all lists. Blank lines and
lines starting with '#' are skipped, except "# equivalent ID: reason", which
marks a mutant that cannot change behaviour: it is listed, not run.

Each mutant is applied alone, its list's targets are rebuilt (unoptimised,
non-sanitized, in their own build directory, through ccache when installed),
its list's tests run, and the file is restored, also when the run is
interrupted. The score and the mutants no test caught are printed; the log
(BUILD_DIR/mutation.log) names the failing tests of each mutant.

    scripts/mutation.py                          # every list
    scripts/mutation.py scripts/mutants/sim.txt  # one list
    scripts/mutation.py d1 n1 sc3                # only these mutants
    scripts/mutation.py --check                  # only verify that every mutant applies

Exit status: 0 when the score reaches --min-score (default 94), 1 below it,
2 when a list is broken or the unmutated tests fail.
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
LISTS = ROOT / "scripts" / "mutants"
SEPARATOR = " ==> "


class Mutant:
    def __init__(self, ident, path, original, replacement, line, plan):
        self.ident, self.path, self.original, self.replacement = ident, path, original, replacement
        self.line, self.plan, self.equivalent = line, plan, False

    def where(self):
        return self.path.relative_to(ROOT)


class Plan:  # what one list rebuilds and runs
    def __init__(self, name):
        self.name, self.build, self.tests = name, [], None


def unescape(text):
    return text.replace("\u23ce", "\n")  # the lists' line-break mark


def read_list(list_path, seen, errors):
    plan, mutants, equivalent = Plan(list_path.name), [], set()
    for number, raw in enumerate(list_path.read_text().splitlines(), 1):
        where = f"{list_path.name}:{number}"
        marked = re.match(r"# equivalent (\S+): ", raw)
        if marked:
            equivalent.add(marked.group(1))
        if raw.startswith("%"):
            directive, _, value = raw.partition(" ")
            if directive == "%build" and value.split():
                plan.build += value.split()
            elif directive == "%tests" and value.strip():
                plan.tests = value.strip()
            else:
                errors.append(f"{where}: expected '%build TARGET...' or '%tests REGEX'")
            continue
        if not raw.strip() or raw.startswith("#"):
            continue
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
            errors.append(f"{where}: mutant {ident} is also listed at {seen[ident]}")
        seen[ident] = where
        mutants.append(Mutant(ident, ROOT / file_name, unescape(original), unescape(replacement), where, plan))
    if not plan.build or plan.tests is None:
        errors.append(f"{list_path.name}: needs a '%build TARGET...' and a '%tests REGEX' line")
    for m in mutants:
        m.equivalent = m.ident in equivalent
        if not m.path.is_file():
            errors.append(f"{m.line}: {m.ident}: no file {m.where()}")
            continue
        found = m.path.read_text().count(m.original)
        if found != 1:
            errors.append(f"{m.line}: {m.ident}: the original text occurs {found} times in {m.where()}, expected once")
        if m.original == m.replacement:
            errors.append(f"{m.line}: {m.ident}: the replacement is the original")
    for ident in equivalent - {m.ident for m in mutants}:
        errors.append(f"{list_path.name}: {ident} is marked equivalent but not listed")
    return mutants


def run(command, log, timeout=None):
    try:
        return subprocess.run(command, cwd=ROOT, stdout=log, stderr=subprocess.STDOUT, timeout=timeout).returncode
    except subprocess.TimeoutExpired:
        return "timeout"


def interrupted(signum, _frame):
    # Turned into an exception so that the mutated file is restored.
    raise KeyboardInterrupt(f"signal {signum}")


def main():
    for signum in (signal.SIGTERM, signal.SIGHUP):
        signal.signal(signum, interrupted)
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("names", nargs="*", help="list files or mutant IDs (default: every list)")
    parser.add_argument("--build-dir", default=str(ROOT / "build-mutation"))
    parser.add_argument("--min-score", type=float, default=94.0)
    parser.add_argument("--timeout", type=int, default=300, help="seconds for one test run")
    parser.add_argument("--check", action="store_true", help="verify the lists and stop")
    args = parser.parse_args()

    files = [Path(n) for n in args.names if n.endswith(".txt")]
    ids = {n for n in args.names if not n.endswith(".txt")}
    errors, seen, mutants = [], {}, []
    for list_path in sorted(LISTS.glob("*.txt")) if not files or ids else files:
        mutants += read_list(list_path, seen, errors)
    if errors:
        print("\n".join(errors), file=sys.stderr)
        return 2
    if ids:
        unknown = ids - {m.ident for m in mutants}
        if unknown:
            print(f"unknown mutant IDs: {' '.join(sorted(unknown))}", file=sys.stderr)
            return 2
        mutants = [m for m in mutants if m.ident in ids]
    plans = list(dict.fromkeys(m.plan for m in mutants))
    for plan in plans:
        count = sum(m.plan is plan for m in mutants)
        equivalent = sum(m.plan is plan and m.equivalent for m in mutants)
        print(f"{plan.name}: {count} mutants, {equivalent} of them equivalent (not run); "
              f"builds {' '.join(plan.build)}, runs tests /{plan.tests}/")
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
    jobs = str(os.cpu_count() or 2)

    def rebuild(plan):
        return ["cmake", "--build", str(build), "-j", jobs, "--target", *plan.build]

    def tests(plan):
        return ["ctest", "--test-dir", str(build), "-R", plan.tests, "-j", jobs, "--stop-on-failure",
                "--output-on-failure", "--timeout", str(args.timeout), "--no-tests=error"]

    build.mkdir(parents=True, exist_ok=True)
    started = time.monotonic()
    survivors, stillborn, killed = [], [], 0
    with open(log_path, "w") as log:
        if run(configure, log) != 0:
            print(f"the tree does not configure: see {log_path}", file=sys.stderr)
            return 2
        for plan in plans:
            if run(rebuild(plan), log) != 0 or run(tests(plan), log) != 0:
                print(f"{plan.name}: the unmutated tree does not build or its tests fail: see {log_path}",
                      file=sys.stderr)
                return 2
        for index, m in enumerate(mutants, 1):
            pristine = m.path.read_text()
            try:
                m.path.write_text(pristine.replace(m.original, m.replacement, 1))
                log.write(f"\n===== {m.ident} {m.where()}\n")
                log.flush()
                if run(rebuild(m.plan), log) != 0:
                    verdict = "does not build"
                    stillborn.append(m)
                else:
                    rc = run(tests(m.plan), log, args.timeout * 2)
                    if rc == 0:
                        verdict = "SURVIVED"
                        survivors.append(m)
                    else:
                        verdict = "killed" if rc != "timeout" else "killed (timeout)"
                        killed += 1
            finally:
                m.path.write_text(pristine)
            print(f"[{index:3}/{len(mutants)}] {m.ident:5} {verdict:17} {m.where()}", flush=True)
        for plan in plans:  # leave the build directory matching the sources again
            run(rebuild(plan), log)

    elapsed = time.monotonic() - started
    judged = killed + len(survivors)
    score = 100.0 * killed / judged if judged else 0.0
    print(f"\nkilled {killed} of {judged} mutants: score {score:.1f} % "
          f"({len(stillborn)} did not build) in {elapsed / 60:.1f} minutes")
    for plan in plans:
        mine = [m for m in mutants if m.plan is plan and m not in stillborn]
        caught = sum(m not in survivors for m in mine)
        if len(plans) > 1 and mine:
            print(f"  {plan.name}: {caught} of {len(mine)} ({100.0 * caught / len(mine):.1f} %)")
    for m in survivors:
        print(f"  survived: {m.ident} {m.where()}: {m.original.strip()!r} -> {m.replacement.strip()!r}")
    for m in stillborn:
        print(f"  does not build: {m.ident} ({m.line})")
    return 0 if score >= args.min_score else 1


if __name__ == "__main__":
    sys.exit(main())
