#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Fails when an include runs back up: each tree's folders are layers, and a
file includes only its own folder and the layers below it."""
import pathlib, re, sys

LAYERS = {  # tree: folder -> layer, lowest first
    "src": {"catalogue": 0, "output": 0, "frame": 1, "inventory": 1, "*": 2},
    "sim": {"core": 0, "render": 0, "mts": 1, "model": 2, "printer": 3,
            "daemon": 4, "agent": 4, "platform": 4, "control": 5},
    "shell": {"term": 0, "cli": 0, "render": 1, "exec": 2, "operator": 3, "": 4},
}
FOREIGN = {"common": ("sim", "shell", "src"), "src": ("sim", "shell", "common"), "tools": ("sim",)}

root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ".")
wrong = []
for path in sorted(root.glob("*/**/*.[ch]pp")):
    rel = path.relative_to(root).parts
    tree, folder = rel[0], (rel[1] if len(rel) > 2 else "")
    for n, line in enumerate(path.read_text().splitlines(), 1):
        m = re.match(r'\s*#\s*include\s+"([^"]+)"', line)
        if not m:
            continue
        target = m.group(1)
        if any(target.startswith(f"{f}/") or f"/{f}/" in target for f in FOREIGN.get(tree, ())) or "../" in target:
            wrong.append(f"{path.relative_to(root)}:{n}: {tree}/ includes {target}")
        layers = LAYERS.get(tree)
        head = target.split("/")[0] if "/" in target else None
        if not layers or head is None or head == folder or not (root / tree / head).is_dir():
            continue
        mine, theirs = (layers.get(f, layers.get("*")) for f in (folder, head))
        if theirs is not None and theirs >= mine:
            wrong.append(f"{path.relative_to(root)}:{n}: {tree}/{folder or '.'} includes {target}, not below it")
print("\n".join(wrong) or "every include runs downward")
sys.exit(1 if wrong else 0)
