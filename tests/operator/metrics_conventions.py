#!/usr/bin/python3
"""Every metrics-producing command on every shipped scenario, the default
switch and the fault scenarios of the end-to-end cases: `promtool check
metrics` reports nothing on the Prometheus format, the OpenMetrics parser
accepts the OpenMetrics format (UNIT lines included), and no command gives
two samples of one series (qdsh names each repeated series on stderr).

    metrics_conventions.py QDSH SOURCE_DIR
"""
import glob
import os
import re
import shutil
import subprocess
import sys

from prometheus_client.openmetrics.parser import text_string_to_metric_families as parse_openmetrics

QDSH, SOURCE = sys.argv[1], sys.argv[2]
PROMTOOL = shutil.which("promtool")
failures = []


def check(ok, what):
    if not ok:
        failures.append(what)
        print("FAIL:", what)


def run(*args):
    return subprocess.run([QDSH, *args], capture_output=True, text=True, timeout=120)


def interfaces(scenario):
    names = [l.split()[0] for l in run(*scenario, "-c", "sim interfaces").stdout.splitlines()[1:] if l.strip()]
    hosts = [n for n in names if n.count("/") == 2]
    uplinks = sorted({n for n in names if n.endswith("/48") and n.count("/") == 1})
    return names, hosts, uplinks


def commands(scenario):
    names, hosts, uplinks = interfaces(scenario)
    some = names[:1] + names[-1:] + hosts[:1] + uplinks
    out = ["show queuing interface", "show vaq no-credit-drops", "show queuing",
           "show logging onboard flow-control pause-count"]
    for name in dict.fromkeys(some):
        out += [f"show queuing interface {name} extended", f"show queuing host-interface {name}",
                f"show system internal qd extender-stats interface {name}"]
    return out


scenarios = [[]] + [["--scenario", f] for f in sorted(glob.glob(os.path.join(SOURCE, "scenarios", "*.json")))]
scenarios += [["--scenario", f] for f in sorted(glob.glob(os.path.join(SOURCE, "tests/e2e/cases/*/scenario.json")))
              if '"faults"' in open(f).read()]
for scenario in scenarios:
    where = os.path.relpath(scenario[1], SOURCE) if scenario else "the default switch"
    args = [a for c in commands(scenario) for a in ("-c", c)]
    prom = run(*scenario, "-o", "prometheus", *args)
    repeats = [l for l in prom.stderr.splitlines() if "repeats within" in l]
    check(not repeats, f"{where}: series repeat:\n  " + "\n  ".join(repeats[:10]))
    check(prom.stdout.count("# TYPE") > 10 or scenario, f"{where}: hardly any metrics:\n{prom.stdout[:500]}{prom.stderr[:500]}")
    if PROMTOOL:
        r = subprocess.run([PROMTOOL, "check", "metrics"], input=prom.stdout, capture_output=True, text=True)
        check(r.returncode == 0 and not r.stdout.strip() and not r.stderr.strip(),
              f"{where}: promtool check metrics: {r.stdout[:2000]}{r.stderr[:2000]}")
    # Labels of values are identity: no list of configuration values.
    lists_outside_info = [l for l in prom.stdout.splitlines() if re.search(r'="[^"]*,', l) and "_info{" not in l]
    check(not lists_outside_info, f"{where}: a list in the labels of a value: {lists_outside_info[:3]}")
    om = run(*scenario, "-o", "openmetrics", *args).stdout
    try:
        families = list(parse_openmetrics(om))
        check(any(f.unit == "bytes" for f in families) or scenario, f"{where}: no UNIT bytes family")
    except Exception as e:  # the parser's own errors name the line
        check(False, f"{where}: the OpenMetrics parser refuses the exposition: {e}")

print(f"{len(scenarios)} scenarios, {len(failures)} failures")
sys.exit(1 if failures else 0)
