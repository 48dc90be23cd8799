#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""A simulated fleet: N `qdsh serve` exporters on loopback, each on a
scenario of its own (rates and faults differ, one switch has a pause storm),
one Prometheus scraping them all with the shipped rules, and what it costs.

    scripts/fleet.py [--switches 50] [--minutes 8] [--interval 5] [--qdsh PATH] [--json FILE]

Everything listens on 127.0.0.1 and stops by itself when the run is over
(or on Ctrl-C). The run must last long enough for the pause-storm alert
(rate over 2 minutes, held for 5): 8 minutes by default. It prints the
series per switch, the scrape duration (median and p99), the exporters' CPU
and memory, Prometheus' ingestion and the alerts that fired, and exits 1
when the storm's alert did not fire on its switch alone.

Needs Debian's prometheus and a build of qdsh (scripts/qdsh.sh builds one;
the default --qdsh runs it first).
"""
import argparse
import json
import os
import random
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path.insert(0, os.path.join(ROOT, "tests", "support"))
from qdsh_test import prometheus as start_prometheus, query, serve, stop, write_json  # noqa: E402

COMMANDS = ["show queuing interface", "show vaq no-credit-drops", "show logging onboard flow-control pause-count"]
CLK_TCK = os.sysconf("SC_CLK_TCK")
STORM_SWITCH = 7  # the switch whose Ethernet1/1 gets the pause storm


def scenario(number, rng):
    """The default switch, with rates scaled per interface, a few faults on
    some switches, and a pause storm on one."""
    interfaces = {}
    for port in rng.sample(range(1, 48), 6):
        scale = rng.choice([0.25, 0.5, 2, 4, 8])
        interfaces[f"Ethernet1/{port}"] = {"rates": {"queuing": {"qos_groups": {"counters": {
            "rx_port_pkts": int(8000 * scale), "tx_port_pkts": int(8500 * scale),
            "ingress_discards32": rng.choice([0, 0, 5, 200])}}}}}
    faults = []
    if number % 10 == 3:  # a flaky line card: one interface's reply never comes back whole
        faults.append({"target": "daemon", "interface": f"Ethernet2/{1 + number % 40}", "kind": "recv_failure",
                       "count": 1000000})
    if number == STORM_SWITCH:
        interfaces["Ethernet1/1"] = {"rates": {"pause": {"counters": {"events": 50}}}}
    return {"extends": "default", "description": f"fleet switch {number}", "interfaces": interfaces,
            "faults": faults}


def proc_usage(pid):
    """CPU seconds and resident bytes of a process, from /proc."""
    try:
        with open(f"/proc/{pid}/stat") as f:
            fields = f.read().rsplit(")", 1)[1].split()
        cpu = (int(fields[11]) + int(fields[12])) / CLK_TCK
        with open(f"/proc/{pid}/status") as f:
            rss = next(int(l.split()[1]) * 1024 for l in f if l.startswith("VmRSS:"))
        return cpu, rss
    except (OSError, StopIteration, IndexError, ValueError):
        return 0.0, 0


def scalar(port, expression):
    result = query(port, expression)
    return float(result[0]["value"][1]) if result else float("nan")


def percentile(values, p):
    ordered = sorted(values)
    return ordered[min(len(ordered) - 1, int(round(p / 100 * (len(ordered) - 1))))] if ordered else float("nan")


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--switches", type=int, default=50, help="exporters to start (1 to 200)")
    parser.add_argument("--minutes", type=float, default=8, help="length of the run (1 to 60)")
    parser.add_argument("--interval", type=float, default=5, help="scrape interval in seconds (1 to 60)")
    parser.add_argument("--qdsh", help="qdsh to run (default: scripts/qdsh.sh builds and runs build/shell/qdsh)")
    parser.add_argument("--json", help="write the measurements to this file as well")
    parser.add_argument("--seed", type=int, default=21)
    args = parser.parse_args()
    if not (1 <= args.switches <= 200 and 1 <= args.minutes <= 60 and 1 <= args.interval <= 60):
        parser.error("--switches 1 to 200, --minutes 1 to 60, --interval 1 to 60")
    prometheus = shutil.which("prometheus")
    if prometheus is None:
        sys.exit("fleet: prometheus is not installed (apt-get install prometheus)")
    qdsh = args.qdsh
    if qdsh is None:
        subprocess.run([os.path.join(ROOT, "scripts", "qdsh.sh"), "--version"], check=True, stdout=subprocess.DEVNULL)
        qdsh = os.path.join(ROOT, "build", "shell", "qdsh")
    rng = random.Random(args.seed)
    exporters, server = [], None
    with tempfile.TemporaryDirectory(prefix="qdcli-fleet-") as tmp:
        try:
            config = write_json(tmp, "serve.json", {"commands": COMMANDS,
                                                    "timeout_seconds": max(1.0, args.interval - 1)})
            targets = []
            for number in range(args.switches):
                path = write_json(tmp, f"switch{number}.json", scenario(number, rng))
                try:
                    p, port = serve(qdsh, "--config", config, options=("--scenario", path))
                except RuntimeError as e:
                    sys.exit(f"fleet: exporter {number}: {e}")
                exporters.append(p)
                targets.append(port)
            server, web = start_prometheus(prometheus, tmp, targets, args.interval, "{fleet: simulated}")
            began = time.monotonic()
            cpu_start = {p.pid: proc_usage(p.pid)[0] for p in exporters + [server]}
            storm = f"127.0.0.1:{targets[STORM_SWITCH % len(targets)]}"
            fired = []
            rss_peak = {}
            print(f"fleet: {len(targets)} exporters, Prometheus on 127.0.0.1:{web}, {args.minutes:g} minutes",
                  file=sys.stderr)
            while time.monotonic() - began < args.minutes * 60:
                time.sleep(min(15, args.interval * 3))
                if server.poll() is not None or any(p.poll() is not None for p in exporters):
                    sys.exit("fleet: a process ended early; " + open(os.path.join(tmp, "prometheus.log")).read()[-2000:])
                for p in exporters + [server]:
                    rss_peak[p.pid] = max(rss_peak.get(p.pid, 0), proc_usage(p.pid)[1])
                try:
                    fired = query(web, 'ALERTS{alertstate="firing"}')
                except OSError:
                    fired = []
                up = scalar(web, 'sum(up{job="qdcli"})')
                print(f"  {time.monotonic() - began:5.0f} s: {up:g} up, "
                      f"{len(fired)} alerts firing: {sorted({a['metric']['alertname'] for a in fired})}", file=sys.stderr)
            seconds = time.monotonic() - began
            cpu = {p.pid: (proc_usage(p.pid)[0] - cpu_start[p.pid]) / seconds for p in exporters + [server]}
            window = f"{int(seconds) - 30}s"
            durations = [float(v[1]) for r in query(web, f'scrape_duration_seconds{{job="qdcli"}}[{window}]', 30)
                         for v in r["values"]]
            series = [float(r["value"][1]) for r in query(web, 'scrape_samples_scraped{job="qdcli"}')]
            storms = [a["metric"] for a in fired if a["metric"]["alertname"] == "QdcliPfcPauseStorm"]
            report = {
                "switches": len(targets),
                "minutes": round(seconds / 60, 1),
                "scrape_interval_seconds": args.interval,
                "series_per_switch": {"median": statistics.median(series), "min": min(series), "max": max(series)},
                "scrape_duration_seconds": {"median": statistics.median(durations),
                                            "p99": percentile(durations, 99), "max": max(durations),
                                            "scrapes": len(durations)},
                "exporter_cpu_cores": {"median": statistics.median(cpu[p.pid] for p in exporters),
                                       "max": max(cpu[p.pid] for p in exporters)},
                "exporter_rss_mib": {"median": statistics.median(rss_peak[p.pid] for p in exporters) / 2**20,
                                     "max": max(rss_peak[p.pid] for p in exporters) / 2**20},
                "prometheus": {
                    "head_series": scalar(web, "prometheus_tsdb_head_series"),
                    "samples_per_second": scalar(web, "rate(prometheus_tsdb_head_samples_appended_total[2m])"),
                    "rss_mib": rss_peak[server.pid] / 2**20,
                    "cpu_cores": cpu[server.pid],
                    "rule_evaluation_seconds_p99": scalar(
                        web, 'max(prometheus_rule_group_duration_seconds{quantile="0.99"})'),
                },
                "fleet_totals": {
                    "rx_packets_per_second": scalar(web, "sum(instance:qdcli_rx_port_pkts:rate5m)"),
                    "ingress_discards_per_second": scalar(web, "sum(instance:qdcli_ingress_discards:rate5m)"),
                    "failing_commands": scalar(web, 'count(qdcli_scrape_command_success == 0) or vector(0)'),
                    "collection_errors": scalar(web, "sum(qdcli_collection_errors_total) or vector(0)"),
                },
                "alerts_firing": {name: len({a["metric"]["instance"] for a in fired if a["metric"]["alertname"] == name})
                                  for name in sorted({a["metric"]["alertname"] for a in fired})},  # switches each
                "pause_storm_alerts": storms,
            }
            print(json.dumps(report, indent=2))
            if args.json:
                with open(args.json, "w") as f:
                    json.dump(report, f, indent=2)
            ok = len(storms) == 1 and storms[0].get("instance") == storm
            if not ok:
                print(f"fleet: the pause-storm alert should fire on {storm} alone: {storms}", file=sys.stderr)
            return 0 if ok else 1
        except KeyboardInterrupt:
            return 130
        finally:
            if server is not None:
                stop(server)
            for p in exporters:
                stop(p)


if __name__ == "__main__":
    sys.exit(main())
