# SPDX-License-Identifier: MIT
"""What the scripts that drive qdsh from outside share: a list of failed
checks, qdsh run once, `qdsh serve` on a loopback port of its own, a
Prometheus server with the shipped rules scraping exporters, and stopping
each process on every path. Imported through sys.path by tests/operator and
scripts/fleet.py."""
import contextlib
import json
import os
import signal
import socket
import subprocess
import sys
import urllib.parse
import urllib.request

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
RULES = os.path.join(ROOT, "share", "qdcli", "prometheus")
failures = []


def check(ok, what):
    if not ok:
        failures.append(what)
        print("FAIL:", what, flush=True)
    return ok


def finish():
    print(f"{len(failures)} failure(s)")
    sys.exit(1 if failures else 0)


def qdsh(path, *args, status=0):
    """Runs qdsh once; a status other than `status` is a failure."""
    r = subprocess.run([path, *args], capture_output=True, text=True, timeout=120)
    check(r.returncode == status, f"qdsh {' '.join(args)}: exit {r.returncode}, expected {status}: {r.stderr[:2000]}")
    return r


def write_json(directory, name, value):
    path = os.path.join(directory, name)
    with open(path, "w") as f:
        json.dump(value, f)
    return path


def free_port():
    with socket.socket() as s:
        s.bind(("127.0.0.1", 0))
        return s.getsockname()[1]


def stop(process, timeout=10):
    """SIGTERM, then SIGKILL when it does not end in time."""
    if process is None or process.poll() is not None:
        return
    process.send_signal(signal.SIGTERM)
    try:
        process.wait(timeout=timeout)
    except subprocess.TimeoutExpired:
        process.kill()
        process.wait()


def serve(path, *args, options=()):
    """Starts `qdsh [options] serve --listen 127.0.0.1:0 ARGS`: the process
    and the port it says it listens on."""
    p = subprocess.Popen([path, *options, "serve", "--listen", "127.0.0.1:0", *args],
                         stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
    line = p.stderr.readline()
    if not line.startswith("qdsh: serving http://127.0.0.1:"):
        stop(p)
        raise RuntimeError(f"qdsh serve did not start: {line}{p.stderr.read()[:500]}")
    return p, int(line.rsplit(":", 1)[1].split("/")[0])


@contextlib.contextmanager
def serving(path, *args, options=()):
    p, port = serve(path, *args, options=options)
    try:
        yield p, port
    finally:
        stop(p)


def prometheus(binary, tmp, targets, interval=1, labels="{}"):
    """Starts Prometheus on a free loopback port, scraping itself and the
    exporters at `targets` (ports) with the shipped rules: the process and
    its port. Its log is tmp/prometheus.log."""
    port = free_port()
    config = os.path.join(tmp, "prometheus.yml")
    with open(config, "w") as f:
        f.write(f"global:\n  scrape_interval: {interval:g}s\n  scrape_timeout: {interval:g}s\n"
                f"  evaluation_interval: {interval:g}s\n"
                f"rule_files: ['{RULES}/qdcli-rules.yml', '{RULES}/qdcli-alerts.yml']\n"
                "scrape_configs:\n  - job_name: prometheus\n    static_configs:\n"
                f"      - targets: ['127.0.0.1:{port}']\n  - job_name: qdcli\n    static_configs:\n"
                "      - targets: [" + ", ".join(f"'127.0.0.1:{t}'" for t in targets) + "]\n"
                f"        labels: {labels}\n")
    server = subprocess.Popen(
        [binary, "--config.file=" + config, "--storage.tsdb.path=" + os.path.join(tmp, "data"),
         f"--web.listen-address=127.0.0.1:{port}", "--log.level=warn"],
        stdout=subprocess.DEVNULL, stderr=open(os.path.join(tmp, "prometheus.log"), "w"))
    return server, port


def query(port, expression, timeout=10):
    """The result of a PromQL query (empty when Prometheus refuses it)."""
    url = f"http://127.0.0.1:{port}/api/v1/query?" + urllib.parse.urlencode({"query": expression})
    with urllib.request.urlopen(url, timeout=timeout) as response:
        answer = json.load(response)
    return answer["data"]["result"] if answer.get("status") == "success" else []
