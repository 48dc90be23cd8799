#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""qdsh and its bash completion at a real terminal, driven through tmux the
way a person types: keys in, screen captures out.

    term_test.py qdsh QDSH GEN_CHASSIS      the interactive prompt
    term_test.py bash COMPLETION            bash completion of qdsh
"""
import os
import re
import shlex
import subprocess
import sys
import tempfile
import time

WIDTH, HEIGHT = 100, 30


class Terminal:
    """One tmux server of its own, one window running bash."""

    def __init__(self, env):
        self.socket = f"qdsh-term-{os.getpid()}"
        self.env = env
        self.tmux("new-session", "-d", "-x", str(WIDTH), "-y", str(HEIGHT), "bash --norc --noprofile")
        self.tmux("set-option", "-g", "status", "off")
        self.type("PS1='$ '; clear", "Enter")
        self.wait_for(r"^\$ $", where="line")

    def tmux(self, *args):
        return subprocess.run(["tmux", "-L", self.socket, *args], env=self.env, check=True,
                              capture_output=True, text=True).stdout

    def type(self, *keys):
        for k in keys:
            # Named keys (Enter, Tab, C-c) as tmux knows them; text literally.
            if re.fullmatch(r"Enter|Tab|Up|Escape|C-[a-z]|BSpace", k):
                self.tmux("send-keys", k)
            else:
                self.tmux("send-keys", "-l", "--", k)

    def screen(self):
        return self.tmux("capture-pane", "-p").rstrip("\n").split("\n")

    def line(self):
        """The line the cursor is on, up to the cursor (trailing blanks kept)."""
        x, y = map(int, self.tmux("display-message", "-p", "#{cursor_x} #{cursor_y}").split())
        rows = self.tmux("capture-pane", "-p", "-N").split("\n")
        return rows[y][:x] if y < len(rows) else ""

    def wait_for(self, pattern, timeout=10.0, where="screen"):
        deadline = time.monotonic() + timeout
        while True:
            text = self.line() if where == "line" else "\n".join(self.screen())
            if re.search(pattern, text, re.M):
                return text
            if time.monotonic() > deadline:
                raise AssertionError(f"waited {timeout} s for /{pattern}/ on the {where}; it shows:\n{text}")
            time.sleep(0.05)

    def close(self):
        subprocess.run(["tmux", "-L", self.socket, "kill-server"], env=self.env, capture_output=True)


failures = []


def check(name, condition, detail=""):
    print(("ok   " if condition else "FAIL ") + name)
    if not condition:
        failures.append(name)
        if detail:
            print(detail)


def case(term, name, steps):
    """Runs one case; an assertion that fails fails the case only."""
    try:
        steps(term)
        check(name, True)
    except AssertionError as e:
        check(name, False, str(e))
    # Back to bash, whatever the case left open (a pager, a watch, qdsh).
    for _ in range(10):
        line = term.line()
        if line.startswith("$"):
            break
        if line.startswith("qdsh#"):
            term.type("C-u", "exit", "Enter")
        else:
            term.type("q", "C-c")
        time.sleep(0.3)
    term.type("C-u", "clear", "Enter")
    time.sleep(0.2)


def qdsh_cases(qdsh, gen_chassis):
    home = tempfile.mkdtemp(prefix="qdsh-term-")
    env = dict(os.environ, HOME=home, TERM="xterm", LC_ALL="C.UTF-8", PAGER="less -FRX")
    env.pop("LESS", None)
    big = os.path.join(home, "big.json")
    subprocess.run([gen_chassis, "--cards", "16", "--ports", "48", "--extenders", "48", "--host-ports", "48",
                    "-o", big], check=True)
    q = shlex.quote(qdsh)
    term = Terminal(env)

    def prompt(t, extra=""):
        t.type(f"clear; {q} {extra}", "Enter")
        t.wait_for(r"^qdsh# $", where="line")

    def question_mark(t):
        prompt(t)
        t.type("?")
        t.wait_for(r"^  show +Show switch state")
        t.wait_for(r"^qdsh# $", where="line")
        t.type("show wrr?")
        t.wait_for(r"^  wrr-queue +Multicast WRR queues")
        t.type("C-u", "sim set /platform/vdc {\"a\": ?")
        t.wait_for(r'^qdsh# sim set /platform/vdc \{"a": \?$', where="line")
        t.type("C-u", "qos queue-limit 99999999999", "Enter")
        t.wait_for(r"queue-limit 99999999999 is out of range: expected \d+ to \d+")

    def tab_words_and_interfaces(t):
        prompt(t)
        t.type("show wrr", "Tab")
        t.wait_for(r"^qdsh# show wrr-queue $", where="line")
        t.type("Tab")
        t.wait_for(r"^qdsh# show wrr-queue cos-map $", where="line")
        t.type("C-u", "show queuing interface eth1/4", "Tab")
        # Natural order, across the terminal's width.
        t.wait_for(r"^Ethernet1/4 +Ethernet1/4\d .*\n.*Ethernet1/48")
        t.type("C-u", "show queuing interface ", "Tab")
        t.wait_for(r"Display all 192 possibilities\? \(y or n\)")
        t.type("n")  # the common part of the names is still completed
        t.wait_for(r"^qdsh# show queuing interface Ethernet$", where="line")
        t.type("Tab")
        t.wait_for(r"Display all 192 possibilities")
        t.type("y")
        text = t.wait_for(r"Ethernet102/1/48")
        widths = [len(row) for row in text.split("\n") if "Ethernet" in row]
        assert 80 < max(widths) <= WIDTH, f"the listing is not as wide as the terminal: {max(widths)} columns"

    def pager(t):
        prompt(t)
        t.type("show queuing interface", "Enter")
        t.wait_for(r"^:$", where="line")
        t.type("q")
        t.wait_for(r"^qdsh# $", where="line")

    def interrupt(t):
        prompt(t, f"--no-pager --scenario {shlex.quote(big)}")
        # The report of 2,500 interfaces takes seconds; what a command prints
        # is held until it ends.
        t.type("show queuing interface", "Enter")
        time.sleep(0.5)
        t.type("C-c")
        t.wait_for(r"interrupted: the rest of the output was dropped", timeout=60)
        t.wait_for(r"^qdsh# $", where="line")

    def history(t):
        prompt(t)
        t.type("sim interfaces | count", "Enter", "exit", "Enter")
        t.wait_for(r"^\$ $", where="line")
        prompt(t)
        t.type("Up", "Up")
        t.wait_for(r"^qdsh# sim interfaces \| count$", where="line")

    def watch_at_prompt(t):
        prompt(t)
        t.type("watch -n 1 show queuing interface ethernet1/1", "Enter")
        first = t.wait_for(r"\A.*Every 1s: .*sample 2")
        t.wait_for(r"\A.*Every 1s: .*sample 3")
        second = "\n".join(t.screen())
        assert first != second, "two captures a second apart are the same"
        started = time.monotonic()
        t.type("q")
        t.wait_for(r"^qdsh# $", where="line", timeout=2)
        assert time.monotonic() - started < 1.5, "q did not end the watch at once"

    def watch_command(t):
        # The README's watch, exactly as it is written there (qdsh on PATH).
        t.type(f"clear; PATH={shlex.quote(os.path.dirname(qdsh))}:$PATH; "
               'qdsh -c "watch -n 5 --nonzero show queuing interface eth1/1-48"', "Enter")
        first = t.wait_for(r"\A.*Every 5s: .*sample 1")
        t.wait_for(r"\A.*Every 5s: .*sample 2", timeout=8)
        assert "\n".join(t.screen()) != first, "the second sample did not change the screen"
        t.type("C-c")
        t.wait_for(r"^\$ $", where="line", timeout=2)

    def leave(t):
        prompt(t)
        t.type("exit", "Enter")
        t.type("echo status=$?", "Enter")
        t.wait_for(r"^status=0$")

    try:
        for name, steps in [("? lists, and is typed inside a value", question_mark),
                            ("Tab completes words and interfaces", tab_words_and_interfaces),
                            ("a long report goes through the pager", pager),
                            ("Ctrl-C cuts a long report short", interrupt),
                            ("history is kept across two sessions", history),
                            ("watch at the prompt refreshes in place, q ends it", watch_at_prompt),
                            ("watch through -c refreshes in place, Ctrl-C ends it", watch_command),
                            ("exit leaves qdsh", leave)]:
            case(term, name, steps)
    finally:
        term.close()


def bash_cases(completion):
    env = dict(os.environ, TERM="xterm", LC_ALL="C.UTF-8", HOME=tempfile.mkdtemp(prefix="qdsh-term-"))
    term = Terminal(env)
    term.type(f"source {shlex.quote(completion)}; bind 'set bell-style none'; clear", "Enter")
    term.wait_for(r"^\$ $", where="line")

    def quoted_command(t):
        t.type('qdsh -c "sh', "Tab")
        t.wait_for(r'^\$ qdsh -c "show $', where="line")
        t.type("Tab", "Tab")
        t.wait_for(r"show queuing +show system")
        t.wait_for(r'^\$ qdsh -c "show $', where="line")
        t.type("wrr", "Tab")
        t.wait_for(r'^\$ qdsh -c "show wrr-queue $', where="line")
        t.type("cos-map\" -c 'sh", "Tab")
        t.wait_for(r'''^\$ qdsh -c "show wrr-queue cos-map" -c 'show $''', where="line")

    def option_values(t):
        t.type("qdsh -o ", "Tab", "Tab")
        t.wait_for(r"json +openmetrics +prometheus +text +xml")
        t.type("C-u", "qdsh --output o", "Tab")
        t.wait_for(r"^\$ qdsh --output openmetrics $", where="line")
        t.type("C-u", "qdsh --schema ", "Tab", "Tab")
        t.wait_for(r"^json +xml")

    def subcommands(t):
        t.type("qdsh --nonzero wat", "Tab")
        t.wait_for(r"^\$ qdsh --nonzero watch $", where="line")
        t.type("--cou", "Tab")
        t.wait_for(r"^\$ qdsh --nonzero watch --count $", where="line")
        t.type("3 sh", "Tab", "qu", "Tab")
        t.wait_for(r"^\$ qdsh --nonzero watch --count 3 show queuing $", where="line")
        t.type("C-u", "qdsh serve --l", "Tab")
        t.wait_for(r"^\$ qdsh serve --listen $", where="line")

    try:
        for name, steps in [("a quoted -c word completes and stays open", quoted_command),
                            ("option values are offered, not file names", option_values),
                            ("watch and serve complete their options and command", subcommands)]:
            case(term, name, steps)
    finally:
        term.close()


def main():
    if len(sys.argv) == 4 and sys.argv[1] == "qdsh":
        qdsh_cases(os.path.abspath(sys.argv[2]), sys.argv[3])
    elif len(sys.argv) == 3 and sys.argv[1] == "bash":
        bash_cases(sys.argv[2])
    else:
        print(__doc__, file=sys.stderr)
        return 2
    if failures:
        print(f"{len(failures)} case(s) failed: " + ", ".join(failures))
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
