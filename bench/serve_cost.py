#!/usr/bin/python3
"""serve_cost.py <repository> [--seconds N] [--scrapes N] [--board NAME]

What `gputunectl serve` costs, on a simulated board under Wine: how long scrapes take at 50 a second, beside a fixed answer of
the same server asked in turn with them; then processor time and memory of both processes at one reading a second with a scrape
every 15 seconds. The machine should have nothing else to do.
"""

import argparse
import json
import os
import pathlib
import shutil
import signal
import socket
import subprocess
import tempfile
import time

from processes import Cost, worker_of

PACE = 0.02  # seconds between scrapes


def ask(host, port, path):
    """The bytes of an answer, and the seconds from connecting to its end."""
    begin = time.perf_counter()
    with socket.create_connection((host, port)) as connection:
        connection.sendall(f"GET {path} HTTP/1.1\r\nHost: {host}:{port}\r\n\r\n".encode())
        answer = b""
        while part := connection.recv(65536):
            answer += part
    elapsed = time.perf_counter() - begin
    if not answer.startswith(b"HTTP/1.1 200 "):
        raise SystemExit(f"{path}: {answer[:200]}")
    return answer, elapsed


def measure_scrapes(host, port, count):
    times = {"/healthz": [], "/metrics": []}
    size = 0
    due = time.monotonic()
    for _ in range(count):
        for path, taken in times.items():
            due += PACE / len(times)
            time.sleep(max(0.0, due - time.monotonic()))
            answer, elapsed = ask(host, port, path)
            taken.append(elapsed)
            size = len(answer)
    for path, taken in times.items():
        taken.sort()
        half, most = (taken[min(len(taken) - 1, int(len(taken) * part))] * 1000 for part in (0.5, 0.99))
        print(f"{path}: {half:.2f} ms at the median, {most:.2f} ms at the 99th percentile ({len(taken)} at 50 a second)")
    print(f"a scrape has {size} bytes, its head included")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("repository", type=pathlib.Path)
    parser.add_argument("--seconds", type=int, default=300)
    parser.add_argument("--scrapes", type=int, default=2000)
    parser.add_argument("--board", default="overdriven")
    arguments = parser.parse_args()
    repository = arguments.repository.resolve()
    with tempfile.TemporaryDirectory() as folder:
        # A copy, whose path tells this worker from others.
        board = shutil.copy(repository / f"boards/{arguments.board}.json", folder)
        with subprocess.Popen(
                [str(repository / "scripts/wine"), str(repository / "build/bin/gputunectl.exe"), "--simulate", board, "--json",
                 "serve", "--listen", "127.0.0.1:0"],
                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True, encoding="utf-8") as serve:
            host, _, port = json.loads(serve.stdout.readline())["listen"].rpartition(":")
            while b"gputune_up 1" not in ask(host, int(port), "/metrics")[0]:
                time.sleep(0.1)
            measure_scrapes(host, int(port), arguments.scrapes)
            cost = Cost({"exporter": serve.pid, "worker": worker_of(os.path.basename(folder))})
            begin = time.monotonic()
            scrapes = 0
            while time.monotonic() - begin < arguments.seconds:
                time.sleep(min(15, arguments.seconds))
                ask(host, int(port), "/metrics")
                scrapes += 1
            cost.report(time.monotonic() - begin, f"{scrapes} scrapes")
            serve.send_signal(signal.SIGINT)


if __name__ == "__main__":
    main()
