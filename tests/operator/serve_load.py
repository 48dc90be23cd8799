#!/usr/bin/python3
"""The exporter under a hostile local load, on loopback, bounded in time:
slow clients, oversized heads and bodies, a compressed body, pipelining, 200
concurrent scrapes, the per-client limit, a busy port, SIGHUP. A scrape
keeps its answer within 1 s and peak memory stays under twice the idle size.

    serve_load.py QDSH
"""
import gzip
import os
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
from qdsh_test import check, finish, serving, write_json  # noqa: E402

QDSH = sys.argv[1]


def kilobytes(p, field):
    with open(f"/proc/{p.pid}/status") as f:
        return next(int(line.split()[1]) for line in f if line.startswith(field + ":"))


def connect(port, source="127.0.0.1"):
    return socket.create_connection(("127.0.0.1", port), timeout=10, source_address=(source, 0))


def answers(s, count=1, head_only=False):
    """Reads `count` answers (status, head, body) or what comes before the end."""
    data, out = b"", []
    while len(out) < count:
        end = data.find(b"\r\n\r\n")
        if end >= 0:
            head = data[:end].decode("latin-1")
            length = 0 if head_only else next((int(l.split(":")[1]) for l in head.split("\r\n")
                                               if l.lower().startswith("content-length:")), 0)
            if len(data) >= end + 4 + length:
                out.append((int(head.split()[1]), head, data[end + 4:end + 4 + length]))
                data = data[end + 4 + length:]
                continue
        try:
            chunk = s.recv(65536)
        except (socket.timeout, ConnectionResetError):
            break
        if not chunk:
            break
        data += chunk
    return out


def status(request, port, source="127.0.0.1", body_bytes=0):
    """Status of the answer to `request` (None: closed unanswered); a body of
    `body_bytes` zero bytes is sent after it until the server stops reading."""
    with connect(port, source) as s:
        try:
            s.sendall(request)
            sent = 0
            while sent < body_bytes:
                sent += s.send(bytes(1 << 20))
        except OSError:
            pass
        got = answers(s)
        return (got[0][0] if got else None), (got[0][2] if got else b"")


def scrape(port, source="127.0.0.1"):
    """Whether a scrape asking for compression got the metrics uncompressed."""
    began = time.monotonic()
    code, body = status(b"GET /metrics HTTP/1.1\r\nHost: x\r\nAccept-Encoding: gzip, br\r\n\r\n", port, source)
    return code == 200 and body.startswith(b"# HELP"), time.monotonic() - began


def run(p, port, config):
    for _ in range(3):
        scrape(port)
    idle = kilobytes(p, "VmHWM")

    # 64 slow clients, a byte every 0.5 s each: a scrape after 1.5 s answers
    # within 1 s, and all are cut at the 5 s request deadline all the same.
    slow = [connect(port) for _ in range(64)]
    seconds = None
    for tick, byte in enumerate(b"GET /metrics HTTP/1.1\r\nX-Slow: " + b"a" * 40):
        for c in slow:
            try:
                c.send(bytes([byte]))
            except OSError:
                pass
        if tick == 3:
            ok, seconds = scrape(port)
            check(ok and seconds < 1.0, f"with 64 slow clients a scrape answers in {seconds:.2f} s")
        if tick == 13:
            break
        time.sleep(0.5)
    cut = 0
    for c in slow:
        c.settimeout(0.5)
        try:
            cut += c.recv(1) == b""
        except ConnectionResetError:
            cut += 1
        except socket.timeout:
            pass
        c.close()
    check(cut == 64, f"the deadline does not restart with each byte: {cut} of 64 slow clients cut")

    get = b"GET /metrics HTTP/1.1\r\nHost: x\r\n"
    bomb = gzip.compress(bytes(64 << 20))
    for name, request, body_bytes, expected in [
        ("a 20 KB request line", b"GET /" + b"a" * 20000 + b" HTTP/1.1\r\nHost: x\r\n\r\n", 0, (414, 431, None)),
        ("20,000 header fields", get + b"".join(b"h%d: v\r\n" % i for i in range(20000)) + b"\r\n", 0, (431, None)),
        ("100 header fields", get + b"".join(b"h%d: v\r\n" % i for i in range(100)) + b"\r\n", 0, (431,)),
        ("a 512 MB POST body", b"POST /metrics HTTP/1.1\r\nHost: x\r\nContent-Length: 536870912\r\n\r\n", 536870912, (405,)),
        ("a GET with a 512 MB body", get + b"Content-Length: 536870912\r\n\r\n", 536870912, (413,)),
        ("a gzip body of 64 MB", get + b"Content-Encoding: gzip\r\nContent-Length: %d\r\n\r\n" % len(bomb) + bomb, 0, (413,)),
        ("a chunked body", get + b"Transfer-Encoding: chunked\r\n\r\n10\r\n" + b"a" * 16 + b"\r\n0\r\n\r\n", 0, (413,)),
        ("DELETE /metrics", b"DELETE /metrics HTTP/1.1\r\nHost: x\r\n\r\n", 0, (405,)),
        ("GET /nothing", b"GET /nothing HTTP/1.1\r\nHost: x\r\n\r\n", 0, (404,)),
    ]:
        code = status(request, port, body_bytes=body_bytes)[0]
        check(code in expected, f"{name}: {code}")
    peak = kilobytes(p, "VmHWM")
    check(peak < 2 * idle, f"peak memory under the attacks {peak} kB < 2 x idle {idle} kB")

    with connect(port) as s:
        s.sendall(b"HEAD /metrics HTTP/1.1\r\nHost: x\r\n\r\n")
        check([a[0] for a in answers(s, head_only=True)] == [200], "HEAD /metrics: 200")
    with connect(port) as s:
        s.sendall(b"GET / HTTP/1.1\r\nHost: x\r\n\r\nGET /metrics HTTP/1.1\r\nHost: x\r\n\r\n")
        got = answers(s, 2)
    check(len(got) == 2 and b"the metrics are at" in got[0][2] and b"qdcli_rx_port_pkts" in got[1][2],
          f"pipelined requests answered in order ({len(got)} answers)")

    # 200 concurrent scrapes from two client addresses (each has its own limit).
    results = []
    threads = [threading.Thread(target=lambda i=i: results.append(scrape(port, f"127.0.0.{1 + i % 2}")[0]))
               for i in range(200)]
    for th in threads:
        th.start()
    for th in threads:
        th.join()
    check(results.count(True) == 200, f"200 concurrent scrapes answered ({results.count(True)})")

    # 128 idle connections from one address: its next is refused, others served.
    held = [connect(port, "127.0.0.3") for _ in range(128)]
    time.sleep(0.3)
    refused = status(b"GET /metrics HTTP/1.1\r\nHost: x\r\n\r\n", port, "127.0.0.3")[0]
    ok, _ = scrape(port)
    for c in held:
        c.close()
    check(refused is None and ok, "the per-client limit refuses a 129th connection, not others")

    for args, words in [(["--listen", f"127.0.0.1:{port}", "--config", config], "in use by another process"),
                        (["--listen", "127.example:9"], "not a numeric loopback address"),
                        (["--listen", "0.0.0.0:9"], "only loopback addresses")]:
        r = subprocess.run([QDSH, "serve", *args], capture_output=True, text=True, timeout=20)
        check(r.returncode == 2 and words in r.stderr, "refused: " + r.stderr.strip())
    check(scrape(port)[0], "still answering after all of it")
    p.send_signal(signal.SIGHUP)
    check(p.wait(timeout=15) == -signal.SIGHUP, "serve ends by SIGHUP like the shell")


with tempfile.TemporaryDirectory() as tmp:
    config = write_json(tmp, "serve.json", {"commands": ["show queuing interface ethernet1/48"], "timeout_seconds": 5})
    with serving(QDSH, "--config", config) as (p, port):
        run(p, port, config)
finish()
