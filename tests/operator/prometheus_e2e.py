#!/usr/bin/python3
"""A real Prometheus server scrapes `qdsh serve` on the default simulated
switch, on loopback, and a queue counter is read back through Prometheus's
HTTP query API. Both processes are stopped on every path.

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
DEADLINE = time.monotonic() + 25  # the whole test


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
            exporter = subprocess.Popen([QDSH, "serve", "--listen", "127.0.0.1:0"], stdout=subprocess.DEVNULL,
                                        stderr=subprocess.PIPE, text=True)
            line = exporter.stderr.readline()
            if not line.startswith("qdsh: serving http://127.0.0.1:"):
                print("the exporter did not start:", line)
                return 1
            exporter_port = int(line.rsplit(":", 1)[1].split("/")[0])
            web_port = free_port()
            config = os.path.join(tmp, "prometheus.yml")
            with open(config, "w") as f:
                f.write("global:\n  scrape_interval: 2s\n  scrape_timeout: 2s\n"
                        "scrape_configs:\n  - job_name: qdsh\n    static_configs:\n"
                        f"      - targets: ['127.0.0.1:{exporter_port}']\n")
            server = subprocess.Popen(
                [prometheus, "--config.file=" + config, "--storage.tsdb.path=" + os.path.join(tmp, "data"),
                 f"--web.listen-address=127.0.0.1:{web_port}", "--log.level=warn"],
                stdout=subprocess.DEVNULL, stderr=open(os.path.join(tmp, "prometheus.log"), "w"))
            wanted = 'qdcli_rx_port_pkts_total{interface="Ethernet1/48",qos_group="0",direction="rx"}'
            while time.monotonic() < DEADLINE:
                if server.poll() is not None or exporter.poll() is not None:
                    print("a process ended early; prometheus log:")
                    print(open(os.path.join(tmp, "prometheus.log")).read()[-3000:])
                    return 1
                try:
                    result = query(web_port, wanted)
                    up = query(web_port, 'up{job="qdsh"}')
                except OSError:
                    result, up = [], []
                if result and up and up[0]["value"][1] == "1":
                    value = float(result[0]["value"][1])
                    print(f"prometheus answered {wanted} = {value:.0f}")
                    return 0 if value > 0 else 1
                time.sleep(0.5)
            print("no answer from prometheus in time; its log:")
            print(open(os.path.join(tmp, "prometheus.log")).read()[-3000:])
            return 1
        finally:
            stop(server)
            stop(exporter)


sys.exit(main())
