#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Runs every example of README.md as it is written, and checks its exit
status and, where the README shows it, its output.

    readme_examples.py SOURCE_DIR BUILD_DIR [CXXFLAGS]

The examples of README.md and examples/host/README.md run in a scratch
directory where build/, scenarios/ and scripts/ are those of the tree
(build/ is BUILD_DIR) and examples/ a copy of it, with every `export` line
of the README applied first; CXXFLAGS (the build's, sanitizers included)
is in the environment of the examples that build the example host, and
every example host they build must run. Three things are put elsewhere:
the install prefix /opt/qdcli and the exporter's /etc/qdsh-serve.json go to
the scratch directory (the JSON block the README shows is that file), and
the exporter's port is a free one. A command that exits with another status
than 0 says so in a comment: `# exit status 1: why`.

A block shown as `$ COMMAND` and its output runs on a terminal (a pty,
PAGER empty, as the README says turns paging off); each shown line without
"..." must appear in the output, in order, and the exit status is 1 when
the shown document says "failed". A block of qdsh commands (the first word
is a qdsh command) is typed into qdsh. Commands that run until stopped
(watch without --count, serve) must still be running after a few seconds.
What builds the tree or runs for minutes is listed in SKIPPED with the
reason; nothing else may be left out. A block of `qdsh [OPTIONS] ...`
forms must list the usage lines of `qdsh --help`.
"""
import os
import pty
import re
import select
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time

SKIPPED = {
    "scripts/qdsh.sh": "builds the quick-start tree and opens the prompt: the terminal tests drive qdsh",
    "scripts/test.sh": "is what CI runs",
    "scripts/mutation.py": "rebuilds the library per mutant for minutes",
    "cmake -S . -B": "configures another build tree",
    "cmake --preset": "configures another build tree",
    "cmake --build": "builds",
    "ctest --preset": "runs this suite",
    "fuzz/run-all.sh": "fuzzes for minutes",
    "build-bench/": "needs the benchmark build",
}
QDSH_WORDS = {"show", "clear", "debug", "qos", "wrr-queue", "no", "sim", "help", "watch"}


def code_blocks(path):
    """(line number, lines) of each indented code block."""
    blocks, current, blank_before = [], None, True
    for number, line in enumerate(open(path, encoding="utf-8").read().split("\n"), 1):
        if line.startswith("    ") and (current is not None or blank_before):
            if current is None:
                current = (number, [])
            current[1].append(line[4:])
        elif not line.strip() and current is not None:
            current[1].append("")
        elif current is not None:
            blocks.append(current)
            current = None
        blank_before = not line.strip()
    if current is not None:
        blocks.append(current)
    return [(n, [l for l in b if l.strip()]) for n, b in blocks]


def commands_of(lines):
    """Shell commands: a line ending in |, \\ or && goes on."""
    out, pending = [], ""
    for line in lines:
        pending += line + "\n"
        if not re.search(r"(\||\\|&&)\s*$", line):
            out.append(pending.rstrip("\n"))
            pending = ""
    return out


def free_port():
    with socket.socket() as s:
        s.bind(("127.0.0.1", 0))
        return str(s.getsockname()[1])


def run_on_pty(command, env, cwd, timeout=60):
    master, slave = pty.openpty()
    p = subprocess.Popen(["bash", "-c", command], stdin=slave, stdout=slave, stderr=slave, env=env, cwd=cwd)
    os.close(slave)
    out = b""
    deadline = time.monotonic() + timeout
    while time.monotonic() < deadline:
        ready, _, _ = select.select([master], [], [], 0.2)
        if ready:
            try:
                chunk = os.read(master, 65536)
            except OSError:
                break
            if not chunk:
                break
            out += chunk
        elif p.poll() is not None:
            break
    os.close(master)
    return p.wait(timeout=5), out.decode("utf-8", "replace").replace("\r\n", "\n")


def main():
    source, build = os.path.abspath(sys.argv[1]), os.path.abspath(sys.argv[2])
    scratch = tempfile.mkdtemp(prefix="qdsh-readme-")
    for name in ("scenarios", "scripts"):
        os.symlink(os.path.join(source, name), os.path.join(scratch, name))
    shutil.copytree(os.path.join(source, "examples"), os.path.join(scratch, "examples"))
    os.symlink(build, os.path.join(scratch, "build"))
    readmes = [os.path.join(source, "README.md"), os.path.join(source, "examples", "host", "README.md")]
    text = open(readmes[0], encoding="utf-8").read()
    exports = "".join(line.strip().split("#")[0] + "\n" for line in text.split("\n")
                      if line.strip().startswith("export "))
    port = free_port()
    serve_config = os.path.join(scratch, "qdsh-serve.json")

    def local(command):
        return (command.replace("/opt/qdcli", os.path.join(scratch, "opt-qdcli"))
                .replace("/etc/qdsh-serve.json", serve_config).replace("127.0.0.1:9477", "127.0.0.1:" + port))

    env = dict(os.environ, PAGER="", HOME=scratch, TERM="xterm", CXXFLAGS=" ".join(sys.argv[3:]))
    failures, ran = [], 0
    usage = subprocess.run(["bash", "-c", exports + "qdsh --help"], env=env, cwd=scratch, capture_output=True,
                           text=True).stdout
    usage_lines = {re.sub(r"^(Usage:)?\s+", "", l) for l in usage.split("\n") if re.match(r"(Usage: |\s{7})qdsh ", l)}

    def fail(where, command, why):
        failures.append(where)
        print(f"FAIL {where}: {command}\n  {why}")

    blocks = []
    for readme in readmes:
        for n, lines in code_blocks(readme):
            # A block of "$ COMMAND" and output may show several commands.
            starts = [i for i, l in enumerate(lines) if l.startswith("$ ")] or [0]
            for a, b in zip([0] + starts[1:], starts[1:] + [len(lines)]):
                blocks.append((os.path.relpath(readme, source) + f":{n + a}", lines[a:b]))
    # The installed tree comes first: the example host builds against it.
    blocks.sort(key=lambda b: "examples/" in b[0])
    for _, lines in blocks:
        if lines[0].startswith('{"commands"'):  # the exporter's configuration file
            open(serve_config, "w").write("\n".join(lines) + "\n")
    for number, lines in blocks:
        first = lines[0]
        if first.startswith("{") or first.endswith(":"):  # data: a JSON file, a configuration
            continue
        if "[OPTIONS]" in first:
            ran += 1
            if set(lines) != usage_lines:
                fail(number, "the forms of the command line", f"qdsh --help lists {sorted(usage_lines)}")
            continue
        if first.startswith("$ "):
            command = first[2:]
            status, out = run_on_pty(exports + local(command), env, scratch)
            ran += 1
            want = 1 if re.search(r'"failed"|>failed<', "\n".join(lines)) else 0
            if status != want:
                fail(number, command, f"exit status {status}, not {want}:\n{out[-2000:]}")
                continue
            rest = [l.strip() for l in out.split("\n")]
            at = 0
            for shown in lines[1:]:
                if "..." in shown:
                    continue
                try:
                    at = rest.index(shown.strip(), at) + 1
                except ValueError:
                    fail(number, command, f"the output has no line {shown.strip()!r} where the README shows it")
                    break
            continue
        if first.split()[0] in QDSH_WORDS:
            ran += 1
            p = subprocess.run(["bash", "-c", exports + "qdsh"], input="\n".join(lines) + "\n", env=env,
                               cwd=scratch, capture_output=True, text=True, timeout=60)
            if p.returncode != 0:
                fail(number, " / ".join(lines), f"exit status {p.returncode}: {p.stderr}")
            continue
        for command in commands_of(lines):
            if command.startswith("export "):
                continue
            reason = next((why for prefix, why in SKIPPED.items() if command.startswith(prefix)), None)
            if reason is not None:
                print(f"skip {number}: {command} ({reason})")
                continue
            ran += 1
            # A command the README tells fails says so: "# exit status 1: why".
            status_note = re.search(r"# exit status (\d+)", command)
            want = int(status_note.group(1)) if status_note else 0
            endless = " serve " in command or re.search(r"watch(?!.*--count)", command) is not None
            p = subprocess.Popen(["bash", "-c", exports + local(command)], env=env, cwd=scratch,
                                 stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, start_new_session=True)
            try:
                out, err = p.communicate(timeout=6 if endless else 120)
                if endless:
                    fail(number, command, f"ended (status {p.returncode}) instead of running on: {err}")
                elif p.returncode != want:
                    fail(number, command, f"exit status {p.returncode}, not {want}: {err[-2000:]}")
                elif not out.strip() and re.match(r"\S*qdsh ", command):
                    fail(number, command, "printed nothing")
            except subprocess.TimeoutExpired:
                os.killpg(p.pid, signal.SIGINT if endless else signal.SIGKILL)
                out, err = p.communicate()
                if not endless:
                    fail(number, command, "did not end within 120 s")
                elif not (out + err).strip():
                    fail(number, command, "printed nothing in 6 s")
            print(f"ran  {number}: {command.splitlines()[0]}")
    for built in [os.path.join(d, "qdcli_example_host") for d, _, files in os.walk(scratch, followlinks=False)
                  if "qdcli_example_host" in files]:
        ran += 1
        p = subprocess.run([built], capture_output=True, text=True, timeout=60)
        if p.returncode != 0:
            fail(built, built, f"the example host built by the README does not run ({p.returncode}): {p.stderr}")
        print(f"ran  {os.path.relpath(built, scratch)}")
    print(f"{ran} examples run, {len(failures)} failed")
    return 1 if failures or ran == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
