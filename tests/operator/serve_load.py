#!/usr/bin/python3
"""The exporter under a hostile local load, on loopback, bounded in time:
slow clients, oversized request heads and bodies, a compressed body,
pipelining, 200 concurrent scrapes, a busy port, signals. Through all of it
a well-behaved scrape keeps its answer within its deadline, and the peak
memory stays under twice the idle size.

    serve_load.py QDSH
"""
import gzip
import json
import os
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time

QDSH = sys.argv[1]
failures = []


def check(ok, what):
    print("ok  " if ok else "FAIL", what, flush=True)
    if not ok:
        failures.append(what)


def start(config, port=0):
    p = subprocess.Popen([QDSH, "serve", "--listen", f"127.0.0.1:{port}", "--config", config],
                         stderr=subprocess.PIPE, stdout=subprocess.DEVNULL, text=True)
    line = p.stderr.readline()
    if not line.startswith("qdsh: serving http://127.0.0.1:"):
        p.kill()
        raise SystemExit("serve did not start: " + line + p.stderr.read())
    return p, int(line.rsplit(":", 1)[1].split("/")[0])


def memory(p, field):
    with open(f"/proc/{p.pid}/status") as f:
        for line in f:
            if line.startswith(field + ":"):
                return int(line.split()[1])
    return 0


def connect(port, source="127.0.0.1"):
    s = socket.create_connection(("127.0.0.1", port), timeout=10, source_address=(source, 0))
    return s


def exchange(port, data, source="127.0.0.1", timeout=10):
    """Sends `data`, returns everything read until the server closes or a
    complete single response arrived."""
    with connect(port, source) as s:
        s.settimeout(timeout)
        try:
            s.sendall(data)
        except OSError:
            pass
        return read_responses(s, 1)


def read_responses(s, count, head_only=False):
    data = b""
    answers = []
    while len(answers) < count:
        head_end = data.find(b"\r\n\r\n")
        if head_end >= 0:
            head = data[:head_end].decode("latin-1")
            length = 0
            for line in head.split("\r\n")[1:] if not head_only else []:
                name, _, value = line.partition(":")
                if name.strip().lower() == "content-length":
                    length = int(value)
            if len(data) >= head_end + 4 + length:
                answers.append((head, data[head_end + 4:head_end + 4 + length]))
                data = data[head_end + 4 + length:]
                continue
        try:
            chunk = s.recv(65536)
        except (socket.timeout, ConnectionResetError):
            break
        if not chunk:
            break
        data += chunk
    return answers


def status_of(answers):
    return int(answers[0][0].split()[1]) if answers else None


def timed_scrape(port, source="127.0.0.1"):
    began = time.monotonic()
    answers = exchange(port, b"GET /metrics HTTP/1.1\r\nHost: x\r\nAccept-Encoding: gzip, br\r\n\r\n", source)
    return answers, time.monotonic() - began


def main():
    with tempfile.TemporaryDirectory() as tmp:
        config = os.path.join(tmp, "serve.json")
        with open(config, "w") as f:
            json.dump({"commands": ["show queuing interface ethernet1/48"], "timeout_seconds": 5}, f)
        p, port = start(config)
        try:
            run(p, port, config)
        finally:
            if p.poll() is None:
                p.kill()
                p.wait()


def run(p, port, config):
    for _ in range(3):
        timed_scrape(port)
    idle = memory(p, "VmHWM")
    answers, seconds = timed_scrape(port)
    check(status_of(answers) == 200 and b"qdcli_rx_port_pkts" in answers[0][1], "a plain scrape is answered")
    check("content-encoding" not in answers[0][0].lower(), "no compression, whatever the client accepts")

    # 64 slow clients, each a byte every 0.5 s: the scrape still answers in 1 s.
    slow = [connect(port) for _ in range(64)]
    stop = threading.Event()

    def trickle():
        for i, s in enumerate(b"GET /metrics HTTP/1.1\r\nHost: x\r\nX-Slow: " + b"a" * 40):
            if stop.wait(0.5):
                return
            for c in slow:
                try:
                    c.send(bytes([s]))
                except OSError:
                    pass

    t = threading.Thread(target=trickle)
    t.start()
    time.sleep(1.2)
    answers, seconds = timed_scrape(port)
    check(status_of(answers) == 200 and seconds < 1.0, f"with 64 slow clients a scrape answers in {seconds:.2f} s")
    time.sleep(5.5)  # past the 5 s request deadline, bytes still trickling
    cut = 0
    for c in slow:
        c.settimeout(0.5)
        try:
            cut += c.recv(1) == b""
        except (socket.timeout, ConnectionResetError):
            cut += isinstance(sys.exc_info()[1], ConnectionResetError)
    stop.set()
    t.join()
    for c in slow:
        c.close()
    check(cut == 64, f"the request deadline does not restart with each byte: {cut} of 64 slow clients cut")

    # Oversized request heads.
    status = status_of(exchange(port, b"GET /" + b"a" * 20000 + b" HTTP/1.1\r\nHost: x\r\n\r\n"))
    check(status in (414, 431, None), f"a 20 KB request line is refused ({status})")
    status = status_of(exchange(port, b"GET /metrics HTTP/1.1\r\nHost: x\r\n" + b"".join(b"h%d: v\r\n" % i for i in range(20000)) + b"\r\n"))
    check(status in (431, None), f"20,000 headers are refused ({status})")
    status = status_of(exchange(port, b"GET /metrics HTTP/1.1\r\nHost: x\r\n" + b"".join(b"h%d: v\r\n" % i for i in range(100)) + b"\r\n"))
    check(status == 431, f"100 header fields are refused ({status})")

    # Bodies: refused from the head, never read; no request decompression.
    def body_attack(head, body_bytes, chunk=1 << 20):
        with connect(port) as s:
            s.settimeout(10)
            s.sendall(head)
            sent = 0
            try:
                while sent < body_bytes:
                    sent += s.send(body[:chunk])
            except OSError:
                pass
            return read_responses(s, 1), sent

    body = b"\0" * (1 << 20)
    answers, sent = body_attack(b"POST /metrics HTTP/1.1\r\nHost: x\r\nContent-Length: 536870912\r\n\r\n", 536870912)
    check(status_of(answers) == 405 and sent < 536870912,
          f"a 512 MB POST body is refused ({status_of(answers)}) after {sent >> 20} MB")
    answers, sent = body_attack(b"GET /metrics HTTP/1.1\r\nHost: x\r\nContent-Length: 536870912\r\n\r\n", 536870912)
    check(status_of(answers) == 413 and sent < 536870912,
          f"a GET with a 512 MB body is refused ({status_of(answers)}) after {sent >> 20} MB")
    bomb = gzip.compress(b"\0" * (64 << 20))
    answers = exchange(port, b"GET /metrics HTTP/1.1\r\nHost: x\r\nContent-Encoding: gzip\r\nContent-Length: %d\r\n\r\n" % len(bomb) + bomb)
    check(status_of(answers) == 413, f"a gzip body is refused unread ({status_of(answers)})")
    answers = exchange(port, b"GET /metrics HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: chunked\r\n\r\n10\r\n" + b"a" * 16 + b"\r\n0\r\n\r\n")
    check(status_of(answers) == 413, f"a chunked body is refused ({status_of(answers)})")
    peak = memory(p, "VmHWM")
    check(peak < 2 * idle, f"peak memory under the body attacks {peak} kB < 2 x idle {idle} kB")

    # Methods and paths.
    check(status_of(exchange(port, b"DELETE /metrics HTTP/1.1\r\nHost: x\r\n\r\n")) == 405, "DELETE /metrics: 405")
    check(status_of(exchange(port, b"GET /nothing HTTP/1.1\r\nHost: x\r\n\r\n")) == 404, "GET /nothing: 404")
    with connect(port) as s:
        s.sendall(b"HEAD /metrics HTTP/1.1\r\nHost: x\r\n\r\n")
        check(status_of(read_responses(s, 1, head_only=True)) == 200, "HEAD /metrics: 200")

    # Pipelining: two requests in one write, two answers in order.
    with connect(port) as s:
        s.sendall(b"GET / HTTP/1.1\r\nHost: x\r\n\r\nGET /metrics HTTP/1.1\r\nHost: x\r\n\r\n")
        answers = read_responses(s, 2)
    check(len(answers) == 2 and b"the metrics are at" in answers[0][1] and b"qdcli_rx_port_pkts" in answers[1][1],
          f"pipelined requests answered in order ({len(answers)} answers)")

    # 200 concurrent scrapes (two client addresses: each has its own limit).
    results = []

    def one(i):
        answers, seconds = timed_scrape(port, "127.0.0.1" if i % 2 else "127.0.0.2")
        results.append(status_of(answers))

    began = time.monotonic()
    threads = [threading.Thread(target=one, args=(i,)) for i in range(200)]
    for th in threads:
        th.start()
    for th in threads:
        th.join()
    check(results.count(200) == 200, f"200 concurrent scrapes answered in {time.monotonic() - began:.1f} s "
                                     f"({results.count(200)} of 200)")

    # The per-client limit: 128 idle connections from one address; the next
    # from it is refused, one from another address is answered.
    held = [connect(port, "127.0.0.3") for _ in range(128)]
    time.sleep(0.3)
    refused = exchange(port, b"GET /metrics HTTP/1.1\r\nHost: x\r\n\r\n", "127.0.0.3", timeout=3)
    answers, seconds = timed_scrape(port)
    for c in held:
        c.close()
    check(not refused and status_of(answers) == 200, "the per-client limit refuses a 129th connection, not others")

    # A busy port and a name that is not a numeric loopback address.
    r = subprocess.run([QDSH, "serve", "--listen", f"127.0.0.1:{port}", "--config", config], capture_output=True,
                       text=True, timeout=20)
    check(r.returncode == 2 and "in use" in r.stderr, "a port in use is refused: " + r.stderr.strip())
    r = subprocess.run([QDSH, "serve", "--listen", "127.example:9"], capture_output=True, text=True, timeout=20)
    check(r.returncode == 2 and "not a numeric loopback address" in r.stderr, "a host name is refused: " + r.stderr.strip())

    answers, seconds = timed_scrape(port)
    check(status_of(answers) == 200, f"still answering after all of it ({seconds:.2f} s)")
    p.send_signal(signal.SIGHUP)
    check(p.wait(timeout=15) == -signal.SIGHUP, "serve ends by SIGHUP like the shell")


main()
if failures:
    print(f"{len(failures)} checks failed")
    sys.exit(1)
