#!/usr/bin/python3
"""A real Prometheus server with the shipped rules scrapes `qdsh serve` on
loopback while a 32-bit queue counter wraps, and reads it back: no reset,
the switch's rate. Both processes are stopped on every path.

    prometheus_e2e.py QDSH      (exit 77: no prometheus installed)
"""
import json
import os
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time
import urllib.parse
import urllib.request

QDSH = sys.argv[1]
DEADLINE = time.monotonic() + 50  # the whole test
RULES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "share", "qdcli", "prometheus")


def free_port():
    with socket.socket() as s:
        s.bind(("127.0.0.1", 0))
        return s.getsockname()[1]


def stop(process):
    if process is None or process.poll() is not None:
        return
    process.send_signal(signal.SIGTERM)
    try:
        process.wait(timeout=5)
    except subprocess.TimeoutExpired:
        process.kill()
        process.wait()


def query(port, expression):
    url = f"http://127.0.0.1:{port}/api/v1/query?" + urllib.parse.urlencode({"query": expression})
    with urllib.request.urlopen(url, timeout=5) as response:
        answer = json.load(response)
    return answer["data"]["result"] if answer.get("status") == "success" else []


def main():
    prometheus = shutil.which("prometheus")
    if prometheus is None:
        print("prometheus is not installed: skipped")
        return 77
    exporter = server = None
    with tempfile.TemporaryDirectory() as tmp:
        try:
            # The default switch, one counter 12 s before its wrap (Prometheus scrapes by then).
            state = json.loads(subprocess.run([QDSH, "-c", "sim show"], capture_output=True, text=True).stdout)
            group = state["interfaces"]["Ethernet1/48"]["queuing"]["qos_groups"][0]
            rate = group["rates"]["counters"]["rx_port_pkts"]
            group["counters"]["rx_port_pkts"] = 2**32 - 12 * rate
            scenario = os.path.join(tmp, "near-wrap.json")
            with open(scenario, "w") as f:
                json.dump(state, f)
            with open(os.path.join(tmp, "serve.json"), "w") as f:
                json.dump({"commands": ["show queuing interface ethernet1/48"]}, f)
            exporter = subprocess.Popen([QDSH, "--scenario", scenario, "serve", "--listen", "127.0.0.1:0", "--config",
                                         f.name], stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
            line = exporter.stderr.readline()
            if not line.startswith("qdsh: serving http://127.0.0.1:"):
                print("the exporter did not start:", line)
                return 1
            exporter_port = int(line.rsplit(":", 1)[1].split("/")[0])
            web_port = free_port()
            config = os.path.join(tmp, "prometheus.yml")
            with open(config, "w") as f:
                f.write("global:\n  scrape_interval: 1s\n  scrape_timeout: 1s\n  evaluation_interval: 1s\n"
                        f"rule_files: ['{RULES}/qdcli-rules.yml', '{RULES}/qdcli-alerts.yml']\n"
                        "scrape_configs:\n  - job_name: qdcli\n    static_configs:\n"
                        f"      - targets: ['127.0.0.1:{exporter_port}']\n")
            server = subprocess.Popen(
                [prometheus, "--config.file=" + config, "--storage.tsdb.path=" + os.path.join(tmp, "data"),
                 f"--web.listen-address=127.0.0.1:{web_port}", "--log.level=warn"],
                stdout=subprocess.DEVNULL, stderr=open(os.path.join(tmp, "prometheus.log"), "w"))
            wanted = 'qdcli_rx_port_pkts_total{interface="Ethernet1/48",qos_group="0"}'
            while time.monotonic() < DEADLINE:
                if server.poll() is not None or exporter.poll() is not None:
                    print("a process ended early; prometheus log:")
                    print(open(os.path.join(tmp, "prometheus.log")).read()[-3000:])
                    return 1
                try:
                    # Past the wrap for 10 seconds or more.
                    past = query(web_port, f"count_over_time(({wanted} > {2**32})[1m:1s])")
                    up = query(web_port, 'up{job="qdcli"}')
                    rules = query(web_port, 'instance:qdcli_rx_port_pkts:rate5m')
                except OSError:
                    past, up, rules = [], [], []
                if past and float(past[0]["value"][1]) >= 10 and up and up[0]["value"][1] == "1":
                    resets = float(query(web_port, f"resets({wanted}[1m])")[0]["value"][1])
                    measured = float(query(web_port, f"rate({wanted}[20s])")[0]["value"][1])
                    # The samples themselves, free of rate()'s extrapolation over a missed scrape.
                    (t0, v0), *_, (t1, v1) = [(float(t), float(v)) for t, v in query(web_port, f"{wanted}[20s]")[0]["values"]]
                    slope = (v1 - v0) / (t1 - t0)
                    print(f"after the wrap: resets() {resets}, rate() {measured:.0f}, samples {slope:.0f}/s "
                          f"(the switch's {rate}), recording rule {rules[0]['value'][1] if rules else None}")
                    return 0 if resets == 0 and abs(slope - rate) < 0.1 * rate and abs(measured - rate) < 0.3 * rate and rules else 1
                time.sleep(0.5)
            print("no answer from prometheus in time:", past, up, rules, "; its log:")
            print(open(os.path.join(tmp, "prometheus.log")).read()[-3000:])
            return 1
        finally:
            stop(server)
            stop(exporter)


sys.exit(main())
