#!/usr/bin/python3
# SPDX-License-Identifier: MIT
# What a person meets at a real terminal, typed through tmux (keys in, screen
# captures out), and every example of the READMEs run as it is written.
#   term_test.py qdsh QDSH | bash COMPLETION | readme SOURCE BUILD CXXFLAGS
import os, pty, re, select, shlex, shutil, signal, socket, subprocess, sys, tempfile, time

WIDTH, HEIGHT = 100, 30
failures = []


def fail(name, detail=""):
    failures.append(name)
    print(f"FAIL {name}\n{detail}")


class Terminal:
    """A tmux server of its own running bash with the prompt "$ "."""

    def __init__(self, env):
        self.socket, self.env = f"qdsh-term-{os.getpid()}", env
        self.tmux("new-session", "-d", "-x", str(WIDTH), "-y", str(HEIGHT),
                  "timeout 600 bash --norc --noprofile")  # the server ends with it, whatever happens
        self.type("PS1='$ '; clear", "Enter")
        self.wait_for(r"^\$ $", where="line")

    def tmux(self, *args):
        return subprocess.run(["tmux", "-L", self.socket, *args], env=self.env, check=True,
                              capture_output=True, text=True).stdout

    def type(self, *keys):
        for k in keys:  # tmux key names, or text typed as it is
            named = re.fullmatch(r"Enter|Tab|Up|C-[a-z]", k)
            self.tmux("send-keys", *([k] if named else ["-l", "--", k]))

    def screen(self):
        return self.tmux("capture-pane", "-p").rstrip("\n")

    def line(self):
        """The cursor's line up to the cursor, trailing blanks kept."""
        x, y = map(int, self.tmux("display-message", "-p", "#{cursor_x} #{cursor_y}").split())
        return self.tmux("capture-pane", "-p", "-N").split("\n")[y][:x]

    def wait_for(self, pattern, timeout=10.0, where="screen"):
        deadline = time.monotonic() + timeout
        while True:
            text = self.line() if where == "line" else self.screen()
            if re.search(pattern, text, re.M):
                return text
            if time.monotonic() > deadline:
                raise AssertionError(f"waited {timeout} s for /{pattern}/ on the {where}:\n{text}")
            time.sleep(0.05)

    def run_cases(self, cases):
        """Each step: keys to type (a string), ("line"|"screen", pattern[, timeout]) to wait for, or a check."""
        try:
            for name, steps in cases.items():
                try:
                    for step in steps:
                        if isinstance(step, str):
                            self.type(step)
                        elif isinstance(step, tuple):
                            self.wait_for(step[1], *step[2:], where=step[0])
                        else:
                            step(self)
                    print("ok   " + name)
                except AssertionError as e:
                    fail(name, str(e))
                for _ in range(10):  # back to bash, whatever the case left open
                    line = self.line()
                    if line.startswith("$"):
                        break
                    self.type(*(["C-u", "exit", "Enter"] if line.startswith("qdsh#") else ["q", "C-c"]))
                    time.sleep(0.3)
                self.type("C-u", "clear", "Enter")
                time.sleep(0.2)
        finally:
            subprocess.run(["tmux", "-L", self.socket, "kill-server"], env=self.env, capture_output=True)


def qdsh_cases(qdsh):
    home = tempfile.mkdtemp(prefix="qdsh-term-")
    env = dict(os.environ, HOME=home, TERM="xterm", PAGER="less -FRX")
    env.pop("LESS", None)
    slow = os.path.join(home, "slow.json")  # a report that takes 3 s in any build
    open(slow, "w").write('{"extends": "default", "faults": [{"target": "daemon", "interface": "Ethernet1/48", '
                          '"kind": "slow_reply", "milliseconds": 3000}]}')
    prompt = [f"clear; {shlex.quote(qdsh)}", "Enter", ("line", r"^qdsh# $")]
    idle = ("line", r"^qdsh# $")

    def wide(t):
        widths = [len(r) for r in t.wait_for(r"Ethernet102/1/48").split("\n") if "Ethernet" in r]
        assert 80 < max(widths) <= WIDTH, f"the list is not as wide as the terminal: {max(widths)} columns"

    def refreshes(interval, quit_key, back):
        def check(t):
            first = t.wait_for(rf"\A.*Every {interval}s: .*sample 1")  # drawn from the top: not scrolled
            assert first != t.wait_for(rf"\A.*Every {interval}s: .*sample 2", interval + 3), "the screen stays"
            started = time.monotonic()
            t.type(quit_key)
            t.wait_for(back, 2, where="line")
            assert time.monotonic() - started < 1.5, f"{quit_key} did not end the watch at once"
        return check

    Terminal(env).run_cases({
        "? lists, and is typed inside a value": prompt + [
            "?", ("screen", r"^  show +Show switch state"), idle, "show wrr?",
            ("screen", r"^  wrr-queue +Multicast WRR queues"), "C-u", 'sim set /platform/vdc {"a": ?',
            ("line", r'^qdsh# sim set /platform/vdc \{"a": \?$'), "C-u", "qos queue-limit 99999999999", "Enter",
            ("screen", r"queue-limit 99999999999 is out of range: expected \d+ to \d+")],
        "Tab completes words and interfaces": prompt + [
            "show wrr", "Tab", ("line", r"^qdsh# show wrr-queue $"), "Tab", ("line", r"^qdsh# show wrr-queue cos-map $"),
            "C-u", "show queuing interface eth1/4", "Tab", ("screen", r"^Ethernet1/4 +Ethernet1/4\d .*\n.*Ethernet1/48"),
            "C-u", "show queuing interface ", "Tab", ("screen", r"Display all 192 possibilities\? \(y or n\)"), "n",
            ("line", r"^qdsh# show queuing interface Ethernet$"), "Tab", ("screen", r"Display all 192"), "y", wide],
        "a long report is paged": prompt + ["show queuing interface", "Enter", ("line", r"^:$"), "q", idle],
        "Ctrl-C cuts a long report short": [f"clear; {shlex.quote(qdsh)} --no-pager --scenario {slow}", "Enter", idle,
                                            "show queuing interface", "Enter", lambda t: time.sleep(0.5), "C-c",
                                            ("screen", r"interrupted: the rest of the output was dropped", 30), idle],
        "history is kept across two sessions": prompt + ["sim interfaces | count", "Enter", "exit", "Enter"] + prompt
        + ["Up", "Up", ("line", r"^qdsh# sim interfaces \| count$")],
        "watch at the prompt refreshes in place, q ends it": prompt + [
            "watch -n 1 show queuing interface ethernet1/1", "Enter", refreshes(1, "q", r"^qdsh# $")],
        "the README's watch through -c refreshes in place, Ctrl-C ends it": [
            f"clear; PATH={shlex.quote(os.path.dirname(qdsh))}:$PATH; "
            'qdsh -c "watch -n 5 --nonzero show queuing interface eth1/1-48"', "Enter", refreshes(5, "C-c", r"^\$ $")],
        "exit leaves qdsh": prompt + ["exit", "Enter", "echo status=$?", "Enter", ("screen", r"^status=0$")],
    })


def bash_cases(completion):
    term = Terminal(dict(os.environ, TERM="xterm", HOME=tempfile.mkdtemp(prefix="qdsh-term-")))
    term.type(f"source {shlex.quote(completion)}; bind 'set bell-style none'; clear", "Enter")
    term.wait_for(r"^\$ $", where="line")
    term.run_cases({
        "a quoted -c word completes and stays open": [
            'qdsh -c "sh', "Tab", ("line", r'^\$ qdsh -c "show $'), "Tab", "Tab", ("screen", r"show queuing +show system"),
            ("line", r'^\$ qdsh -c "show $'), "wrr", "Tab", ("line", r'^\$ qdsh -c "show wrr-queue $'),
            "cos-map\" -c 'sh", "Tab", ("line", r'''^\$ qdsh -c "show wrr-queue cos-map" -c 'show $''')],
        "option values are offered, not file names": [
            "qdsh -o ", "Tab", "Tab", ("screen", r"json +openmetrics +prometheus +text +xml"), "C-u", "qdsh --output o",
            "Tab", ("line", r"^\$ qdsh --output openmetrics $"), "C-u", "qdsh --schema ", "Tab", "Tab",
            ("screen", r"^json +xml")],
        "watch and serve complete their options and command": [
            "qdsh --nonzero wat", "Tab", "--cou", "Tab", ("line", r"^\$ qdsh --nonzero watch --count $"), "3 sh", "Tab",
            "qu", "Tab", ("line", r"^\$ qdsh --nonzero watch --count 3 show queuing $"), "C-u", "qdsh serve --l", "Tab",
            ("line", r"^\$ qdsh serve --listen $")],
    })


# The READMEs' examples, in a scratch directory holding build/, scenarios/,
# scripts/ and a copy of examples/; /opt/qdcli, /etc/qdsh-serve.json (the
# JSON block the README shows) and the exporter's port are moved there. Left
# out, with the reason: what builds or runs for minutes.
SKIPPED = {"scripts/qdsh.sh": "builds, then the prompt: the terminal cases drive qdsh",
           "scripts/test.sh": "what CI runs", "scripts/mutation.py": "minutes of rebuilds",
           "cmake -S . -B": "another build tree", "cmake --preset": "another build tree", "cmake --build": "builds",
           "ctest --preset": "this suite", "fuzz/run-all.sh": "minutes of fuzzing", "build-bench/": "benchmarks"}


def code_blocks(path):
    """(where, lines) of each indented block; "$ COMMAND" starts a block of its own."""
    blocks, current, blank = [], None, True
    for n, line in enumerate(open(path, encoding="utf-8").read().split("\n"), 1):
        if line.startswith("    ") and (current is not None or blank):
            if current is None or line.startswith("    $ "):
                current = (f"{path}:{n}", [])
                blocks.append(current)
            current[1].append(line[4:])
        elif line.strip():
            current = None
        blank = not line.strip()
    return [(w, [l for l in b if l.strip()]) for w, b in blocks]


def run(command, env, cwd, tty=False, timeout=120):
    """Status and output (standard error included) of a bash command, on a pty when `tty`; the
    status is None when the command still ran after `timeout` seconds (it is then interrupted)."""
    master, slave = pty.openpty() if tty else (None, subprocess.PIPE)
    p = subprocess.Popen(["bash", "-c", command], stdin=slave if tty else subprocess.DEVNULL, stdout=slave,
                         stderr=subprocess.STDOUT, env=env, cwd=cwd, start_new_session=True)
    out, deadline = b"", time.monotonic() + timeout
    if tty:
        os.close(slave)
        while select.select([master], [], [], max(0, deadline - time.monotonic()))[0]:
            try:
                chunk = os.read(master, 65536)
            except OSError:  # the command ended
                break
            out += chunk
        os.close(master)
    try:
        out += p.communicate(timeout=max(0.1, deadline - time.monotonic()))[0] or b""
        status = p.returncode
    except subprocess.TimeoutExpired:
        os.killpg(p.pid, signal.SIGINT)
        out, status = out + (p.communicate()[0] or b""), None
    return status, out.decode("utf-8", "replace").replace("\r\n", "\n")


def readme_cases(source, build, cxxflags):
    source, build, scratch = os.path.abspath(source), os.path.abspath(build), None
    scratch = tempfile.mkdtemp(prefix="qdsh-readme-")
    for name in ("scenarios", "scripts", "build"):
        os.symlink(build if name == "build" else os.path.join(source, name), os.path.join(scratch, name))
    shutil.copytree(os.path.join(source, "examples"), os.path.join(scratch, "examples"))
    readmes = [os.path.join(source, "README.md"), os.path.join(source, "examples/host/README.md")]
    exports = "".join(l.strip() + "\n" for l in open(readmes[0]).read().split("\n") if l.startswith("    export "))
    with socket.socket() as sock:
        sock.bind(("127.0.0.1", 0))
        port = str(sock.getsockname()[1])
    config = os.path.join(scratch, "qdsh-serve.json")
    env = dict(os.environ, PAGER="", HOME=scratch, TERM="xterm", CXXFLAGS=cxxflags)
    sh = lambda command, **kw: run(exports + command.replace("/opt/qdcli", scratch + "/opt").replace(
        "/etc/qdsh-serve.json", config).replace("127.0.0.1:9477", "127.0.0.1:" + port), env, scratch, **kw)
    forms = {re.sub(r"^(Usage:)? +", "", l) for l in sh("qdsh --help")[1].split("\n") if re.match(r"(Usage: | {7})qdsh ", l)}
    blocks = [b for r in readmes for b in code_blocks(r)]
    for _, lines in blocks:
        if lines[0].startswith('{"commands"'):
            open(config, "w").write("\n".join(lines) + "\n")
    ran = 0
    for where, lines in blocks:
        where, first = os.path.relpath(where, source), lines[0]
        commands = [first]
        if first.startswith("{") or first.endswith(":"):
            continue  # a file's contents
        if "[OPTIONS]" in first:  # the forms of the command line
            if set(lines) != forms:
                fail(where, f"the forms are not those of qdsh --help: {sorted(forms)}")
        elif first.startswith("$ "):  # a command on a terminal and its output
            status, out = sh(first[2:], tty=True)
            want = 1 if re.search(r'"failed"|>failed<', "\n".join(lines)) else 0
            got = iter(l.strip() for l in out.split("\n"))
            missing = [l.strip() for l in lines[1:] if "..." not in l and not any(l.strip() == g for g in got)]
            if status != want or missing:
                fail(where, f"status {status} (not {want}); not shown in this order: {missing[:1]}\n{out[-1500:]}")
        elif first.split()[0] in {"show", "clear", "debug", "qos", "sim", "watch"}:  # typed into qdsh
            status, out = sh("qdsh <<'EOF'\n" + "\n".join(lines) + "\nEOF")
            if status != 0:
                fail(where, out)
        else:
            commands = re.split(r"(?<![|\\&])\n", "\n".join(lines))
            for command in commands:
                reason = next((r for prefix, r in SKIPPED.items() if command.startswith(prefix)), None)
                if reason or command.startswith("export "):
                    print(f"skip {where}: {command} ({reason or 'applied to every example'})")
                    continue
                note = re.search(r"# exit status (\d+)", command)  # "# exit status 1: why"
                endless = " serve " in command or re.search(r"watch(?!.*--count)", command) is not None
                status, out = sh(command, timeout=6 if endless else 120)
                if status != (None if endless else int(note.group(1)) if note else 0):
                    fail(where, f"{command}: ended with status {status}: {out[-1500:]}")
                elif re.match(r"\S*qdsh ", command) and not out.strip():
                    fail(where, f"{command}: printed nothing")
                ran += 1
                print(f"ran  {where}: {command.splitlines()[0]}")
            continue
        ran += 1
        print(f"ran  {where}: {first}")
    for d, _, files in os.walk(scratch):  # every example host the READMEs build runs
        if "qdcli_example_host" in files:
            ran += 1
            status, out = run(os.path.join(d, "qdcli_example_host"), env, d)
            print(f"ran  {os.path.relpath(d, scratch)}/qdcli_example_host")
            if status != 0:
                fail(d, f"the example host does not run: {out}")
    if ran < 10:
        fail("readme", f"only {ran} examples ran")


if __name__ == "__main__":
    mode, args = sys.argv[1], sys.argv[2:]
    {"qdsh": qdsh_cases, "bash": bash_cases, "readme": readme_cases}[mode](*args)
    print(f"{len(failures)} failed" if failures else "all passed")
    sys.exit(1 if failures else 0)
