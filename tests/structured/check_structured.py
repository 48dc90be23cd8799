#!/usr/bin/python3
"""Structured output of qdsh, checked with real validators.

For every command of the command table, on the default switch and on every
scenario file (the shipped ones and those of the end-to-end cases, which
inject faults), runs the command three times: as text, with -o json and with
-o xml. The JSON output must be one document that validates against the
JSON Schema, the XML output one document that xmllint validates against the
XML Schema; both must give the text run's exit status, and the JSON
document must carry every number of the text report (a failure is an entry
of "errors" and makes the status "failed").

    check_structured.py QDSH SCHEMA_DIR SCENARIO_DIR E2E_CASES_DIR
"""
import concurrent.futures
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile

import jsonschema

QDSH, SCHEMA_DIR, SCENARIO_DIR, CASES_DIR = sys.argv[1:5]
XMLLINT = shutil.which("xmllint") or "/usr/bin/xmllint"

COMMANDS = [
    "show wrr-queue cos-map",
    "show queuing",
    "show queuing interface ethernet1/1",
    "show queuing interface ethernet1/48",
    "show queuing interface ethernet101/1/1",
    "show queuing interface ethernet1/1-2, ethernet101/1/2",
    "show queuing interface",
    "show queuing interface ethernet101/1/41-46, ethernet102/1/41",
    "show queuing interface ethernet1/1 extended",
    "show queuing host-interface ethernet101/1/1",
    "show system internal qd extender-stats interface ethernet1/48",
    "show logging onboard flow-control pause-count",
    "show logging onboard flow-control pause-events",
    "show vaq no-credit-drops",
    "show system internal qd mem-stats",
    "show system internal qd interface ethernet1/1",
    "clear queuing counters",
    "qos queue-limit 100000",
    "show queuing interface ethernet9/9",
    "sim interfaces",
]

failures = []


def fail(where, what):
    failures.append(f"{where}: {what}")


def run(args, cwd):
    p = subprocess.run([QDSH] + args, cwd=cwd, capture_output=True, text=True, timeout=120)
    return p.returncode, p.stdout


def numbers_of_text(text):
    """The numbers of a text report, each as the values it may stand for:
    after "0x" the typed report prints some fields in decimal, the text
    report in hexadecimal. The channel headings' "40G[0]" and the drop
    report's note are not values."""
    text = re.sub(r"40G\[\d\]|-40g\b", "", text)
    text = text.replace("Maximum drop counter value is 15", "")
    found = []
    for m in re.finditer(r"0x([0-9a-fA-F]+)|(\d+)", text):
        if m.group(1):
            alternatives = {int(m.group(1), 16)}
            if m.group(1).isdigit():
                alternatives.add(int(m.group(1)))
            found.append(alternatives)
        else:
            found.append({int(m.group(2))})
    return found


def numbers_of_document(value, found):
    if isinstance(value, bool):
        return found
    if isinstance(value, int):
        found.add(value)
    elif isinstance(value, str):
        for m in re.finditer(r"0x([0-9a-fA-F]+)|(\d+)", value):
            found.add(int(m.group(1), 16) if m.group(1) else int(m.group(2)))
    elif isinstance(value, list):
        for v in value:
            numbers_of_document(v, found)
    elif isinstance(value, dict):
        for v in value.values():
            numbers_of_document(v, found)
    return found


def check(where, scenario_args, command, cwd, validator, xsd):
    rc_text, text = run(scenario_args + ["-c", command], cwd)
    rc_json, out = run(scenario_args + ["--compact", "-o", "json", "-c", command], cwd)
    if rc_text == 2 and rc_json == 2 and not out:
        return None  # a scenario that does not load: no command runs
    try:
        doc = json.loads(out)
    except ValueError as e:
        fail(where, f"JSON output is not one document: {e}")
        return None
    for error in validator.iter_errors(doc):
        fail(where, f"JSON does not validate: {error.message} at {list(error.absolute_path)}")
        break
    if rc_json != rc_text:
        fail(where, f"exit status {rc_json} in JSON, {rc_text} as text")
    if (doc.get("status") == "ok") != (rc_json == 0):
        fail(where, f"status {doc.get('status')} with exit status {rc_json}")
    if rc_json != 0 and rc_json != 2 and not doc.get("errors"):
        fail(where, "failed without an error entry")
    carried = numbers_of_document(doc, set())
    missing = sorted({min(n) for n in numbers_of_text(text) if not n & carried})
    if missing:
        fail(where, f"numbers of the text report missing from the document: {missing[:10]}")
    rc_xml, xml = run(scenario_args + ["-o", "xml", "-c", command], cwd)
    if rc_xml != rc_text:
        fail(where, f"exit status {rc_xml} in XML, {rc_text} as text")
    with tempfile.NamedTemporaryFile("w", suffix=".xml", delete=False) as f:
        f.write(xml)
        name = f.name
    p = subprocess.run([XMLLINT, "--noout", "--schema", xsd, name], capture_output=True, text=True)
    os.unlink(name)
    if p.returncode != 0:
        fail(where, "XML does not validate: " + p.stderr.strip().splitlines()[0] if p.stderr else "xmllint failed")
    return doc


def schemas_reject_mutations(validator, xsd, cwd):
    """Real documents, each damaged in one way a faulty builder could damage
    it: both schemas must refuse every one (XML Schema 1.0 cannot tie the
    status to the errors: that pair is the JSON Schema's alone)."""
    import copy
    import xml.etree.ElementTree as ET
    doc = json.loads(run(["-o", "json", "-c", "show queuing interface ethernet1/1"], cwd)[1])
    xml_text = run(["-c", "show queuing interface ethernet1/1 | xml"], cwd)[1].split("?>", 1)[1]
    gone = object()
    for name, where, key, new in [
            ("deleted counter", "row", "rx_port_pkts", gone), ("deleted index column", "row", "rx_qos_group", gone),
            ("unknown state word", "row", "drop_type", "banana"), ("missing if_name", "interface", "if_name", gone),
            ("empty row", "row", None, None), ("failed without errors", "document", "status", "failed"),
            ("ok with errors", "document", "errors", [{"kind": "receive", "message": "lost"}])]:
        d, root = copy.deepcopy(doc), ET.fromstring(xml_text)
        obj, element = {"row": (d["interfaces"][0]["rx_queues"][0], root.find("interfaces/interface/rx_queues/row")),
                        "interface": (d["interfaces"][0], root.find("interfaces/interface")),
                        "document": (d, None)}[where]
        if key is None:
            obj.clear()
            for child in list(element):
                element.remove(child)
        elif new is gone:
            obj.pop(key)
            element.remove(element.find(key))
        else:
            obj[key] = new
            if element is not None:
                element.find(key).text = new
        if validator.is_valid(d):
            fail("schema", f"the JSON Schema accepts a document with a {name}")
        if element is not None and subprocess.run([XMLLINT, "--noout", "--schema", xsd, "-"], capture_output=True, text=True,
                                                  input=ET.tostring(root, encoding="unicode")).returncode == 0:
            fail("schema", f"the XML Schema accepts a document with a {name}")


def reproductions(cwd):
    """What users met when documents were read back from text."""
    e1 = "/interfaces/Ethernet1~11"
    # The extended report's two rows per line: a CoS's queue, and the
    # scheduling of the queue numbered like the CoS.
    rc, out = run(["-o", "json", "--compact", "-c", f"sim set {e1}/extended/cos_to_queue [7,6,5,4,3,2,1,0]",
                   "-c", "show queuing interface ethernet1/1 extended"], cwd)
    ext = json.loads(out.splitlines()[-1])
    iface = ext["interfaces"][0]
    queues = {q["ext_queue"]: q for q in iface["ingress_queues"]}
    if {c["ext_cos"]: c["ext_cos_queue"] for c in iface["cos_map"]}.get(6) != 1:
        fail("extended", f"cos 6 should go to queue 1: {iface['cos_map']}")
    if queues[1]["ext_sched"] != "dwrr" or queues[6]["ext_sched"] != "sp" or queues[6].get("ext_sp_level") != 2:
        fail("extended", f"queue scheduling: {iface['ingress_queues']}")
    # Two extenders' internal statistics stay apart, under their interfaces.
    rc, out = run(["-o", "json", "--compact", "-c", "show system internal qd extender-stats interface ethernet1/48",
                   "-c", "show system internal qd extender-stats interface ethernet2/48"], cwd)
    names = [json.loads(l)["interfaces"][0]["if_name"] for l in out.splitlines()]
    if names != ["Ethernet1/48", "Ethernet2/48"]:
        fail("extender statistics", f"subjects {names}")
    # Unsupported subjects of a walk do not fail it (a named one does: tests/e2e/cases/ethernet-queuing).
    p = subprocess.run([QDSH, "-c", "show queuing interface"], cwd=cwd, capture_output=True, text=True)
    if p.returncode != 0 or "qdsh: Ethernet2/24: " not in p.stderr or "qdsh: Ethernet101/1/43: " not in p.stderr:
        fail("walk", f"exit {p.returncode}, standard error {p.stderr[:300]}")
    # A bad filter in structured output still gives a document, a failed one.
    p = subprocess.run([QDSH, "-o", "json", "-c", "show queuing interface ethernet1/1 | include ("], cwd=cwd,
                       capture_output=True, text=True)
    if p.returncode != 1 or json.loads(p.stdout)["status"] != "failed":
        fail("bad filter", f"exit {p.returncode}: {p.stdout[:200]}")


def main():
    with open(os.path.join(SCHEMA_DIR, "qdcli-document.schema.json")) as f:
        schema = json.load(f)
    jsonschema.Draft202012Validator.check_schema(schema)
    validator = jsonschema.Draft202012Validator(schema)
    xsd = os.path.join(SCHEMA_DIR, "qdcli-document.xsd")

    work = tempfile.mkdtemp()
    try:
        setups = [("default", [], work)]
        for name in sorted(os.listdir(SCENARIO_DIR)):
            if name.endswith(".json"):
                setups.append((name, ["--scenario", os.path.join(SCENARIO_DIR, name)], work))
        for case in sorted(os.listdir(CASES_DIR)):
            path = os.path.join(CASES_DIR, case, "scenario.json")
            if os.path.isfile(path):
                copy = os.path.join(work, case)
                shutil.copytree(os.path.join(CASES_DIR, case), copy)
                setups.append((case, ["--scenario", "scenario.json"], copy))
        # The walk over every interface on the default switch and the shipped
        # scenarios only: the cases' scenarios change a few interfaces.
        jobs = [(label, args, cwd, command) for label, args, cwd in setups for command in COMMANDS
                if command != "show queuing interface" or not os.path.isdir(os.path.join(CASES_DIR, label))]
        with concurrent.futures.ThreadPoolExecutor(max_workers=2) as pool:
            results = pool.map(lambda j: check(f"{j[0]}: {j[3]}", j[1], j[3], j[2], validator, xsd), jobs)
            docs = {(j[0], j[3]): doc for j, doc in zip(jobs, results)}

        # Several commands in XML: one root (in JSON, one document a line: watch below).
        rc, out = run(["-o", "xml", "-c", "show wrr-queue cos-map", "-c", "sim interfaces"], work)
        p = subprocess.run([XMLLINT, "--noout", "--schema", xsd, "-"], input=out, capture_output=True, text=True)
        if p.returncode != 0 or out.count("<document>") != 2:
            fail("two commands", "XML is not one <qdsh> with two documents")
        # "| json" after a command, with text output otherwise.
        rc, out = run(["-c", "show queuing interface ethernet1/1 | json"], work)
        if json.loads(out)["interfaces"][0]["if_name"] != "Ethernet1/1":
            fail("| json", "no document")

        # The samples of watch, in both forms; the 16-bit discard count wraps at 16 bits.
        c = "/interfaces/Ethernet1~11/queuing/qos_groups/0"
        watch = ["--simulated-clock", "--compact", "-c", f"sim set {c}/rates/counters {{\"ingress_discards16\": 10}}",
                 "-c", f"sim set {c}/counters/ingress_discards16 65530",
                 "-c", "watch --interval 1 --count 2 show queuing interface ethernet1/1"]
        rc, out = run(["-o", "json"] + watch, work)
        for sample in out.splitlines():
            for error in validator.iter_errors(json.loads(sample)):
                fail("watch sample", error.message[:200])
        row = json.loads(out.splitlines()[-1])["interfaces"][0]["rx_queues"][0]
        if row["ingress_discards"] != 4 or row["deltas"]["ingress_discards"] != 10 or "restarted" in row:
            fail("16-bit wrap", f"65530 + 10 read as {row['ingress_discards']}, delta {row.get('deltas')}")
        rc, out = run(["-o", "xml"] + watch, work)
        p = subprocess.run([XMLLINT, "--noout", "--schema", xsd, "-"], input=out, capture_output=True, text=True)
        if p.returncode != 0:
            fail("watch sample", "XML: " + p.stderr[:300])

        # Rows in their order, each value in its own row.
        eth = docs[("default", "show queuing interface ethernet1/1")]
        if eth is not None:
            rx = eth["interfaces"][0]["rx_queues"]
            if [r["rx_qos_group"] for r in rx] != [0, 1, 2, 3] or rx[3]["ingress_discards"] != 70872:
                fail("ethernet1/1", "receive rows wrong")
        vaq = docs[("default", "show vaq no-credit-drops")]
        if vaq is not None and [e.get("vaq") for e in vaq["extenders"]] != [101, 102]:
            fail("extenders", f"not one object an extender: {vaq['extenders']}")
        # Every attribute of the catalogue is printed by some command above
        # (one printed but not catalogued fails the schemas), but stream
        # attributes the simulated daemon never sends (the alternative limits
        # of another stream layout, a threshold no scenario sets) and the
        # members of watch's samples.
        declared = set()

        def props(node):
            if isinstance(node, dict):
                declared.update(k for k, v in node.get("properties", {}).items() if "$ref" not in v)
            for v in node.values() if isinstance(node, dict) else node if isinstance(node, list) else ():
                props(v)
        props([v for k, v in schema["$defs"].items() if k == "interface" or k.startswith("table_")])
        seen = set(re.findall(r'"(\w+)":', json.dumps(list(docs.values()))))
        never = declared - seen - {"sw_buffer_threshold", "sw_queue_limit_tx_alt", "sw_queue_limit_rx_alt", "deltas",
                                   "rates", "restarted"}
        if never:
            fail("catalogue", f"catalogued but never printed: {sorted(never)}")
        schemas_reject_mutations(validator, xsd, work)
        reproductions(work)
    finally:
        shutil.rmtree(work, ignore_errors=True)

    for f in failures:
        print(f)
    print(f"{len(failures)} failure(s)")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
