#!/usr/bin/python3
"""End-to-end checks of qdsh's operator features on the default simulated
switch: watch (rates against the switch's configured rates, a 32-bit wrap),
metrics output (parsed by prometheus_client; on every shipped and fault
scenario, every command's is clean for `promtool check metrics` and gives
each series once), --nonzero, and the serve exporter (scrapes, concurrency,
the timeout, SIGTERM).

    operator_e2e.py QDSH
"""
import glob
import json
import os
import re
import signal
import subprocess
import sys
import tempfile
import time
import urllib.error
import urllib.request

from prometheus_client.openmetrics.parser import text_string_to_metric_families as parse_openmetrics
from prometheus_client.parser import text_string_to_metric_families as parse_prometheus

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
import qdsh_test  # noqa: E402
from qdsh_test import ROOT as SOURCE, check, serving, write_json  # noqa: E402

QDSH = sys.argv[1]
E48 = "/interfaces/Ethernet1~148"


def qdsh(*args, status=0):
    return qdsh_test.qdsh(QDSH, *args, status=status)


def documents(text):
    return [json.loads(line) for line in text.splitlines() if line.strip()]


def configured_rates():
    state = json.loads(qdsh("-c", "sim show " + E48).stdout)
    return [g.get("rates", {}).get("counters", {}) for g in state["queuing"]["qos_groups"]]


def watch_rates_match_the_switch_across_a_32_bit_wrap():
    rates = configured_rates()
    start = 2**32 - rates[0]["rx_port_pkts"] // 2
    docs = documents(qdsh("--simulated-clock", "-o", "json", "--compact",
                          "-c", f"sim set {E48}/queuing/qos_groups/0/counters/rx_port_pkts {start}",
                          "-c", "watch --interval 1 --count 3 show queuing interface ethernet1/48").stdout)[1:]
    check(len(docs) == 3, f"watch --count 3 printed {len(docs)} documents after the one of sim set")
    check("deltas" not in json.dumps(docs[0]), "the first sample has no deltas")
    for doc in docs[1:]:
        check(doc["interval"] == 1 and doc["timestamp"].endswith("Z"), f"sample {doc['sample']}: interval and timestamp")
        for row, configured in zip(doc["interfaces"][0]["rx_queues"], rates):
            check("restarted" not in row, f"qos-group {row['rx_qos_group']} restarted: {row.get('restarted')}")
            for name in ("rx_port_pkts", "ucast_to_xbar", "mcast_to_xbar", "ucast_from_xbar", "tx_port_pkts"):
                want = configured.get(name, 0)
                check(row["deltas"][name] == want and row["rates"][name] == want,
                      f"qos-group {row['rx_qos_group']} {name}: delta {row['deltas'][name]}, rate "
                      f"{row['rates'][name]}, configured {want}")
    wrapped = docs[1]["interfaces"][0]["rx_queues"][0]["rx_port_pkts"]
    rate = rates[0]["rx_port_pkts"]
    check(wrapped == (start + rate) % 2**32, f"the counter wrapped: {wrapped}")
    text = qdsh("--simulated-clock", "-c", f"sim set {E48}/queuing/qos_groups/0/counters/rx_port_pkts {start}",
                "-c", "watch --interval 1 --count 2 --nonzero show queuing interface ethernet1/48").stdout
    check("sample 2 of 2, 1.00 s after the last" in text, "text watch header")
    check(any(l.startswith("* Ethernet1/48") and "rx_port_pkts" in l and l.endswith(f"{rate}  {rate}.00 (wrapped)")
              for l in text.splitlines()), "text watch marks the change and the wrap:\n" + text[:2000])


# The types are operator_test.cpp's; one "# EOF" a run, the OpenMetrics parser's below.
def metrics_give_the_documents_values():
    prom = qdsh("-o", "prometheus", "-c", "show queuing interface").stdout  # two interfaces unsupported: left out
    families = {f.name: f for f in parse_prometheus(prom)}
    doc = documents(qdsh("-o", "json", "--compact", "-c", "show queuing interface ethernet1/48").stdout)[0]
    want = doc["interfaces"][0]["rx_queues"][0]["rx_port_pkts"]
    got = [s.value for s in families["qdcli_rx_port_pkts"].samples
           if s.labels == {"interface": "Ethernet1/48", "qos_group": "0"}]
    check(got == [want], f"qdcli_rx_port_pkts_total of Ethernet1/48 qos-group 0: {got}, JSON says {want}")


def every_scenario_follows_the_conventions():
    scenarios = [[]] + [["--scenario", f] for f in sorted(glob.glob(os.path.join(SOURCE, "scenarios", "*.json")))]
    scenarios += [["--scenario", f] for f in sorted(glob.glob(os.path.join(SOURCE, "tests/e2e/cases/*/scenario.json")))
                  if '"faults"' in open(f).read()]
    for scenario in scenarios:
        where = os.path.basename(os.path.dirname(scenario[1])) if scenario else "the default switch"
        names = [l.split()[0] for l in qdsh(*scenario, "-c", "sim interfaces").stdout.splitlines()[1:]]
        commands = ["show queuing interface", "show vaq no-credit-drops", "show logging onboard flow-control pause-count"]
        for name in dict.fromkeys(names[:1] + names[-1:] + [n for n in names if n.count("/") == 2][:1] +
                                  [n for n in names if n.endswith("/48")]):
            commands += [f"show queuing interface {name} extended", f"show queuing host-interface {name}",
                         f"show system internal qd extender-stats interface {name}"]
        args = [a for c in commands for a in ("-c", c)]
        prom = subprocess.run([QDSH, *scenario, "-o", "prometheus", *args], capture_output=True, text=True, timeout=120)
        repeats = [l for l in prom.stderr.splitlines() if "repeats within" in l]
        check(not repeats, f"{where}: series repeat:\n  " + "\n  ".join(repeats[:10]))
        r = subprocess.run(["promtool", "check", "metrics"], input=prom.stdout, capture_output=True, text=True)
        check(r.returncode == 0 and not (r.stdout + r.stderr).strip(), f"{where}: promtool: {r.stdout[:2000]}{r.stderr[:2000]}")
        lists = [l for l in prom.stdout.splitlines() if re.search(r'="[^"]*,', l) and "_info{" not in l]
        check(not lists, f"{where}: a list in the labels of a value: {lists[:3]}")
        om = subprocess.run([QDSH, *scenario, "-o", "openmetrics", *args], capture_output=True, text=True, timeout=120)
        try:
            check(scenario or any(f.unit == "bytes" for f in parse_openmetrics(om.stdout)), f"{where}: no UNIT bytes")
        except ValueError as e:  # the parser's own errors name the line
            check(False, f"{where}: the OpenMetrics parser refuses the exposition: {e}")


def nonzero_leaves_out_zero_rows():
    doc = documents(qdsh("-o", "json", "--compact", "--nonzero", "-c", "show vaq no-credit-drops").stdout)[0]
    rows = [ss for e in doc["extenders"] for a in e["asics"] for ss in a.get("ss", [])]
    check(rows and all(ss["no_credit_drops"] != 0 for ss in rows), f"--nonzero rows: {rows}")


def scrape(port, accept=None):
    request = urllib.request.Request(f"http://127.0.0.1:{port}/metrics")
    if accept:
        request.add_header("Accept", accept)
    with urllib.request.urlopen(request, timeout=20) as response:
        return response.headers.get("Content-Type"), response.read().decode()


def stop_serve(p):
    p.send_signal(signal.SIGTERM)
    check(p.wait(timeout=10) == -signal.SIGTERM, "serve ends by SIGTERM, like the shell")


def serve_answers_scrapes_and_stops():
    with tempfile.TemporaryDirectory() as tmp:
        config = write_json(tmp, "serve.json", {"commands": ["show queuing interface", "show vaq no-credit-drops"],
                                                "timeout_seconds": 20})
        with serving(QDSH, "--config", config) as (p, port):
            results = [scrape(port)]  # many at once: serve_load.py
            check(results[0][0].startswith("text/plain; version=0.0.4"), "a scrape answered")
            families = {f.name: f for f in parse_prometheus(results[0][1])}
            errors = [(s.labels, s.value) for s in families["qdcli_collection_errors"].samples]
            unsupported = {s.labels["command"]: s.value for s in families["qdcli_scrape_unsupported_subjects"].samples}
            success = [s.value for s in families["qdcli_scrape_command_success"].samples]
            check(not errors and success == [1, 1] and unsupported["show vaq no-credit-drops"] == 1,
                  f"unsupported interfaces and ASICs are no collection errors: {errors} {success} {unsupported}")
            check("qdcli_scrape_duration_seconds" in families, "scrape duration")
            content_type, body = scrape(port, "application/openmetrics-text; version=1.0.0")
            check(content_type.startswith("application/openmetrics-text"), "OpenMetrics on request")
            check(any(f.name == "qdcli_rx_port_pkts" for f in parse_openmetrics(body)), "OpenMetrics parsed")
            stop_serve(p)
    # --config goes through the scenario loader's JSON gate (its own tests try the rest of it).
    with tempfile.TemporaryDirectory() as tmp:
        config = os.path.join(tmp, "serve.json")
        open(config, "w").write('{"commands": ["x"], "commands": ["y"]}')
        check('duplicate member "commands"' in qdsh("serve", "--config", config, status=2).stderr, "duplicate refused")
        os.remove(config)
        os.mkfifo(config)  # read at once, never waited on
        check("is not a regular file" in qdsh("serve", "--config", config, status=2).stderr, "a FIFO refused")


def serve_times_out_a_slow_collection():
    """A daemon reply late by more than the scrape timeout: that scrape gets
    503, and the exporter answers again once the collection is over."""
    with tempfile.TemporaryDirectory() as tmp:
        scenario = write_json(tmp, "slow.json", {"extends": "default", "faults": [
            {"target": "daemon", "interface": "Ethernet1/48", "kind": "slow_reply", "milliseconds": 2000, "count": 1}]})
        config = write_json(tmp, "serve.json", {"commands": ["show queuing interface ethernet1/48"], "timeout_seconds": 0.5})
        with serving(QDSH, "--config", config, options=("--scenario", scenario)) as (p, port):
            began = time.monotonic()
            try:
                scrape(port)
                check(False, "a scrape of a slow collection is answered 503")
            except urllib.error.HTTPError as e:
                check(e.code == 503 and "did not finish within" in e.read().decode(), f"503 for a slow collection: {e}")
            check(time.monotonic() - began < 1.9, "the 503 comes at the timeout, not after the collection")
            # Later scrapes share the collection under way, then start new ones
            # (the fault is spent): one of them is answered.
            body = None
            for _ in range(40):
                try:
                    body = scrape(port)[1]
                    break
                except urllib.error.HTTPError:
                    time.sleep(0.1)
            check(body is not None and any(f.name == "qdcli_rx_port_pkts" for f in parse_prometheus(body)),
                  "answered after the slow collection")
            stop_serve(p)


def the_metrics_reference_is_current():
    reference = open(os.path.join(SOURCE, "docs", "METRICS.md")).read()
    listed = reference.split("<!-- metric-names begin -->\n", 1)[-1].split("<!-- metric-names end -->", 1)[0]
    names = [line.split("`")[1] for line in listed.splitlines()[2:]]
    check(len(names) == len(set(names)) > 50, "every metric family has a name of its own")
    check(listed == qdsh("--metric-names").stdout,
          "docs/METRICS.md differs from qdsh --metric-names (paste its output between the markers)")


for test in (the_metrics_reference_is_current, every_scenario_follows_the_conventions, watch_rates_match_the_switch_across_a_32_bit_wrap, metrics_give_the_documents_values,
             nonzero_leaves_out_zero_rows, serve_answers_scrapes_and_stops, serve_times_out_a_slow_collection):
    test()
qdsh_test.finish()
