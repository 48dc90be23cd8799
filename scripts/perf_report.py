#!/usr/bin/python3
"""Summarises the runs of scripts/perf.sh: prints the ratios and the
targets, writes DIR_OUT/results.md (tables), DIR_OUT/scale.dat and
DIR_OUT/scale.gp (the plot's data and gnuplot script).

    perf_report.py WORK_DIR OUT_DIR
"""
import json
import os
import sys

REPORT_RATIO = 1.5      # every report against its snprintf baseline
CHASSIS_RATIO = 3.0     # whole-chassis show queuing interface, simulator included
STARTUP_MS = 20.0       # qdsh start-up on the default switch
LOAD_MS = 50.0          # large chassis (3,072 interfaces) load
KB_PER_INTERFACE = 4.0  # large chassis peak memory per interface beyond the default switch
SHOW_PEAK_RATIO = 1.5   # whole-chassis report's peak against the load-only peak, every output form


def medians(path):
    with open(path) as f:
        doc = json.load(f)
    out = {}
    for b in doc["benchmarks"]:
        if b.get("run_type") == "aggregate" and b.get("aggregate_name") != "median":
            continue
        if b.get("error_occurred"):
            out[b.get("run_name", b["name"]).replace("/real_time", "")] = {"error": b.get("error_message", "error")}
            continue
        out[b.get("run_name", b["name"]).replace("/real_time", "")] = b
    return out, doc.get("context", {})


def ms(b, key="cpu_time"):
    unit = {"ns": 1e-6, "us": 1e-3, "ms": 1.0, "s": 1e3}[b.get("time_unit", "ns")]
    return b[key] * unit


def verdict(ok):
    return "met" if ok else "NOT MET"


def main():
    work, out = sys.argv[1], sys.argv[2]
    reports, context = medians(os.path.join(work, "reports.json"))
    chassis, _ = medians(os.path.join(work, "chassis.json"))
    runs = {}
    with open(os.path.join(work, "runs.tsv")) as f:
        for line in f:
            size, what, wall, user, peak, size_out = line.split()
            best = runs.setdefault((int(size), what), [1e9, 1e9, 1e12, 0])
            best[0] = min(best[0], float(wall))
            best[1] = min(best[1], float(user))
            best[2] = min(best[2], int(peak))
            best[3] = int(size_out)

    lines = []
    say = lambda s="": (print(s), lines.append(s))
    say(f"Machine: {context.get('num_cpus', '?')} CPUs at {context.get('mhz_per_cpu', '?')} MHz, "
        f"{context.get('host_name', '')}, {context.get('date', '')}")
    say()
    say("### Reports against their snprintf baseline (scripted platform, CPU time, median)")
    say()
    say("| Report | Report µs | Baseline µs | Ratio | Target ≤ 1.5× |")
    say("|---|---:|---:|---:|---|")
    for name, b in reports.items():
        if name.startswith("platform_only") or "error" in b:
            if "error" in b:
                say(f"| {name} | — | — | — | {b['error']} |")
            continue
        r = b.get("ratio", 0)
        say(f"| {name} | {ms(b) * 1e3:.1f} | {b.get('baseline_us', 0):.1f} | {r:.1f}× | {verdict(r <= REPORT_RATIO)} |")
    floor = [b for n, b in reports.items() if n.startswith("platform_only") and "error" not in b]
    if floor:
        say()
        say("Scripted platform alone (one exchange, no handler): " +
            ", ".join(f"{b['run_name'].split('/')[-1]} bytes {ms(b) * 1e3:.1f} µs" for b in floor))
    say()
    say("### Through the simulator (qdsh's executor in process, CPU time, median)")
    say()
    say("| Benchmark | ms | Output | Baseline ms | Ratio | Peak growth KB |")
    say("|---|---:|---:|---:|---:|---:|")
    for name, b in chassis.items():
        if "error" in b:
            say(f"| {name} | {b['error']} | | | | |")
            continue
        t = ms(b, "real_time" if name.startswith("qdsh_startup") else "cpu_time")
        extra = ""
        if "ratio" in b:
            extra = (f"| {b['out_bytes'] / 1024:.0f} KB | {b['baseline_us'] / 1e3:.2f} | {b['ratio']:.1f}× "
                     f"| {b.get('peak_growth_kb', 0):.0f} |")
        elif "child_cpu_ms" in b:
            extra = f"| — | — | CPU {b['child_cpu_ms']:.1f} ms | |"
        else:
            extra = f"| {b.get('interfaces', 0):.0f} interfaces | | | |"
        say(f"| {name} | {t:.2f} {extra}")
    say()
    say("### qdsh as a process (/usr/bin/time, best of the runs)")
    say()
    say("| Interfaces | Run | Wall s | User s | Peak MB | Output |")
    say("|---:|---|---:|---:|---:|---:|")
    forms = {"load": "load only", "show": "`show queuing interface`, text", "json": "the same, `-o json`",
             "xml": "the same, `-o xml`"}
    for (size, what), (wall, user, peak, size_out) in sorted(runs.items(), key=lambda r: (r[0][0], list(forms).index(r[0][1]))):
        say(f"| {size} | {forms[what]} | {wall:.2f} | {user:.2f} | {peak / 1024:.1f} | "
            + (f"{size_out / 1024:.0f} KB |" if what != "load" else "— |"))

    # Targets.
    say()
    say("### Targets")
    say()
    worst = max((b.get("ratio", 0), n) for n, b in reports.items()
                if not n.startswith("platform_only") and "error" not in b)
    say(f"- every report within {REPORT_RATIO}× its baseline: {verdict(worst[0] <= REPORT_RATIO)} "
        f"(worst {worst[1]} at {worst[0]:.1f}×)")
    for size in ("3072", "12288"):
        b = chassis.get(f"show_queuing_interface/{size}", {})
        if "ratio" in b:
            say(f"- whole-chassis `show queuing interface` ({size}) within {CHASSIS_RATIO}× its baseline: "
                f"{verdict(b['ratio'] <= CHASSIS_RATIO)} ({b['ratio']:.1f}×)")
    b = chassis.get("qdsh_startup/default", {})
    if "real_time" in b:
        say(f"- qdsh start-up on the default switch under {STARTUP_MS:.0f} ms: "
            f"{verdict(ms(b, 'real_time') < STARTUP_MS)} ({ms(b, 'real_time'):.1f} ms wall, "
            f"{b.get('child_cpu_ms', 0):.1f} ms CPU)")
    b = chassis.get("chassis_load/3072", {})
    if "cpu_time" in b:
        say(f"- large chassis load under {LOAD_MS:.0f} ms: {verdict(ms(b) < LOAD_MS)} ({ms(b):.1f} ms CPU)")
    if (192, "load") in runs and (3072, "load") in runs:
        per = (runs[(3072, "load")][2] - runs[(192, "load")][2]) / (3072 - 192)
        say(f"- large chassis under {KB_PER_INTERFACE:.0f} KB per interface: {verdict(per < KB_PER_INTERFACE)} "
            f"({per:.1f} KB per interface beyond the default switch's peak)")
    for size in (3072, 12288):
        if (size, "load") not in runs:
            continue
        load = runs[(size, "load")][2]
        worst = max((runs[(size, w)][2] / load, w) for w in ("show", "json", "xml") if (size, w) in runs)
        say(f"- whole-chassis report ({size}) within {SHOW_PEAK_RATIO}× the load-only peak in text, JSON and XML: "
            f"{verdict(worst[0] <= SHOW_PEAK_RATIO)} (worst {worst[1]} at {worst[0]:.2f}×)")
    growth = [(b.get("peak_growth_kb", 0), n) for n, b in chassis.items() if "peak_growth_kb" in b]
    if growth:
        g = max(growth)
        say(f"- memory flat in the number of interfaces for the report itself: {verdict(g[0] < 1024)} "
            f"(largest peak growth while reports ran: {g[0]:.0f} KB, {g[1]})")

    os.makedirs(out, exist_ok=True)
    with open(os.path.join(out, "results.md"), "w") as f:
        f.write("<!-- written by scripts/perf.sh; do not edit -->\n" + "\n".join(lines) + "\n")
    with open(os.path.join(out, "scale.dat"), "w") as f:
        f.write("# interfaces load_ms show_ms baseline_ms show_queuing_ms peak_load_mb peak_show_mb\n")
        for size, name in ((192, "default"), (3072, "3072"), (12288, "12288")):
            load = chassis.get(f"chassis_load/{name}", {})
            show = chassis.get(f"show_queuing_interface/{name}", {})
            stream = chassis.get(f"show_queuing/{name}", {})
            f.write("%d %.3f %.3f %.3f %.3f %.2f %.2f\n" % (
                size, ms(load) if "cpu_time" in load else 0, ms(show) if "cpu_time" in show else 0,
                show.get("baseline_us", 0) / 1e3, ms(stream) if "cpu_time" in stream else 0,
                runs.get((size, "load"), [0, 0, 0])[2] / 1024, runs.get((size, "show"), [0, 0, 0])[2] / 1024))
    with open(os.path.join(out, "scale.gp"), "w") as f:
        f.write("""# written by scripts/perf.sh
set terminal pngcairo size 900,560 font ",10"
set output "scale.png"
set title "qdsh on the simulated switch: cost by chassis size"
set logscale xy
set xlabel "interfaces"
set ylabel "CPU ms (median)"
set y2label "peak resident MB"
set y2tics
set logscale y2
set key left top
set grid
set xtics (192, 3072, 12288)
plot "scale.dat" using 1:2 with linespoints title "load the chassis", \\
     "" using 1:3 with linespoints title "show queuing interface (all)", \\
     "" using 1:4 with linespoints dashtype 2 title "its snprintf baseline", \\
     "" using 1:5 with linespoints title "show queuing", \\
     "" using 1:6 axes x1y2 with linespoints dashtype 3 title "peak MB, load only (right)", \\
     "" using 1:7 axes x1y2 with linespoints dashtype 4 title "peak MB, show queuing interface (right)"
""")


if __name__ == "__main__":
    main()
