#!/usr/bin/python3
"""A real Prometheus server with the shipped rules scrapes `qdsh serve` on
loopback while a 32-bit queue counter wraps, and reads it back: no reset,
the switch's rate. Both processes are stopped on every path.

    prometheus_e2e.py QDSH      (exit 77: no prometheus installed)
"""
import json
import os
import shutil
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
from qdsh_test import prometheus, query, serving, stop, write_json  # noqa: E402

QDSH = sys.argv[1]
DEADLINE = time.monotonic() + 50  # the whole test


def main(binary, tmp):
    # The default switch, one counter 12 s before its wrap (Prometheus scrapes by then).
    state = json.loads(subprocess.run([QDSH, "-c", "sim show"], capture_output=True, text=True).stdout)
    group = state["interfaces"]["Ethernet1/48"]["queuing"]["qos_groups"][0]
    rate = group["rates"]["counters"]["rx_port_pkts"]
    group["counters"]["rx_port_pkts"] = 2**32 - 12 * rate
    scenario = write_json(tmp, "near-wrap.json", state)
    config = write_json(tmp, "serve.json", {"commands": ["show queuing interface ethernet1/48"]})
    with serving(QDSH, "--config", config, options=("--scenario", scenario)) as (exporter, exporter_port):
        server, web = prometheus(binary, tmp, [exporter_port])
        try:
            wanted = 'qdcli_rx_port_pkts_total{interface="Ethernet1/48",qos_group="0"}'
            while time.monotonic() < DEADLINE and server.poll() is None and exporter.poll() is None:
                try:
                    # Past the wrap for 10 seconds or more.
                    past = query(web, f"count_over_time(({wanted} > {2**32})[1m:1s])", 5)
                    up = query(web, 'up{job="qdcli"}', 5)
                    rules = query(web, 'instance:qdcli_rx_port_pkts:rate5m', 5)
                except OSError:
                    past, up, rules = [], [], []
                if past and float(past[0]["value"][1]) >= 10 and up and up[0]["value"][1] == "1":
                    resets = float(query(web, f"resets({wanted}[1m])")[0]["value"][1])
                    measured = float(query(web, f"rate({wanted}[20s])")[0]["value"][1])
                    # The samples themselves, free of rate()'s extrapolation over a missed scrape.
                    (t0, v0), *_, (t1, v1) = [(float(t), float(v)) for t, v in query(web, f"{wanted}[20s]")[0]["values"]]
                    slope = (v1 - v0) / (t1 - t0)
                    print(f"after the wrap: resets() {resets}, rate() {measured:.0f}, samples {slope:.0f}/s "
                          f"(the switch's {rate}), recording rule {rules[0]['value'][1] if rules else None}")
                    return 0 if resets == 0 and abs(slope - rate) < 0.1 * rate and abs(measured - rate) < 0.3 * rate and rules else 1
                time.sleep(0.5)
            print("no answer from prometheus in time, or a process ended early; its log:")
            print(open(os.path.join(tmp, "prometheus.log")).read()[-3000:])
            return 1
        finally:
            stop(server, 5)


if shutil.which("prometheus") is None:
    print("prometheus is not installed: skipped")
    sys.exit(77)
with tempfile.TemporaryDirectory() as scratch:
    sys.exit(main(shutil.which("prometheus"), scratch))
