#!/usr/bin/python3
"""Every metrics-producing command on the default switch, every shipped
scenario and the fault scenarios of the end-to-end cases: `promtool check
metrics` reports nothing on the Prometheus format, the OpenMetrics parser
accepts the OpenMetrics format, no command gives two samples of one series
(qdsh names them on stderr), and only _info series carry lists.

    metrics_conventions.py QDSH SOURCE_DIR
"""
import glob
import os
import re
import subprocess
import sys

from prometheus_client.openmetrics.parser import text_string_to_metric_families as parse_openmetrics

QDSH, SOURCE = sys.argv[1], sys.argv[2]
failures = []


def check(ok, what):
    if not ok:
        failures.append(what)
        print("FAIL:", what)


def run(*args, text=None):
    return subprocess.run(args, input=text, capture_output=True, text=True, timeout=120)


def commands(scenario):
    names = [l.split()[0] for l in run(QDSH, *scenario, "-c", "sim interfaces").stdout.splitlines()[1:] if l.strip()]
    some = names[:1] + names[-1:] + [n for n in names if n.count("/") == 2][:1] + [n for n in names if n.endswith("/48")]
    out = ["show queuing interface", "show vaq no-credit-drops", "show logging onboard flow-control pause-count"]
    for name in dict.fromkeys(some):
        out += [f"show queuing interface {name} extended", f"show queuing host-interface {name}",
                f"show system internal qd extender-stats interface {name}"]
    return [a for c in out for a in ("-c", c)]


cases = sorted(glob.glob(os.path.join(SOURCE, "tests/e2e/cases/*/scenario.json")))
scenarios = [[]] + [["--scenario", f] for f in sorted(glob.glob(os.path.join(SOURCE, "scenarios", "*.json")))]
scenarios += [["--scenario", f] for f in cases if '"faults"' in open(f).read()]
for scenario in scenarios:
    where = os.path.relpath(scenario[1], SOURCE) if scenario else "the default switch"
    args = commands(scenario)
    prom = run(QDSH, *scenario, "-o", "prometheus", *args)
    repeats = [l for l in prom.stderr.splitlines() if "repeats within" in l]
    check(not repeats, f"{where}: series repeat:\n  " + "\n  ".join(repeats[:10]))
    check(scenario or prom.stdout.count("# TYPE") > 50, f"{where}: hardly any metrics: {prom.stderr[:500]}")
    r = run("promtool", "check", "metrics", text=prom.stdout)
    check(r.returncode == 0 and not (r.stdout + r.stderr).strip(), f"{where}: promtool: {r.stdout[:2000]}{r.stderr[:2000]}")
    lists = [l for l in prom.stdout.splitlines() if re.search(r'="[^"]*,', l) and "_info{" not in l]
    check(not lists, f"{where}: a list in the labels of a value: {lists[:3]}")
    try:
        families = list(parse_openmetrics(run(QDSH, *scenario, "-o", "openmetrics", *args).stdout))
        check(scenario or any(f.unit == "bytes" for f in families), f"{where}: no UNIT bytes family")
    except Exception as e:  # the parser's own errors name the line
        check(False, f"{where}: the OpenMetrics parser refuses the exposition: {e}")

print(f"{len(scenarios)} scenarios, {len(failures)} failures")
sys.exit(1 if failures else 0)
