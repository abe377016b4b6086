#!/usr/bin/python3
"""fleet.py <repository> [--machines N...] [--interval SECONDS] [--minutes M] [--board NAME]

What many machines cost a Prometheus: first bytes and series of one scrape of `gputunectl serve` under Wine (serve_cost.py has
its time), then memory, processor time and disk of a Prometheus that scrapes N machines. There is one exporter on one simulated
board: a server in this process fetches its metrics once a second and gives them to everybody, at an address of its own for each
machine (127.1.0.1 and so on). So every machine has its own series, and all have the same, moving, values. Each scrape is a
connection of its own, as the exporter keeps none open. With the rules of monitoring/, and nobody looks at dashboards. The
machine should have little else to do.
"""

import argparse
import asyncio
import contextlib
import http.client
import json
import os
import pathlib
import resource
import shutil
import sys
import tempfile
import threading
import time
import urllib.request

REPOSITORY = pathlib.Path(__file__).resolve().parent.parent
sys.dont_write_bytecode = True
sys.path.insert(0, str(REPOSITORY / "tests" / "monitoring"))

from dashboards import all_dashboards, replaced  # noqa: E402
from exporters import Exporter  # noqa: E402
from processes import processor_seconds  # noqa: E402
from prometheus import Prometheus, eventually, free_port  # noqa: E402

OPEN_METRICS = "application/openmetrics-text;version=1.0.0"


def fetch(address, accept):
    """Over a connection of its own."""
    with contextlib.closing(http.client.HTTPConnection(address, timeout=60)) as connection:
        connection.request("GET", "/metrics", headers={"Accept": accept, "Connection": "close"})
        answer = connection.getresponse()
        body = answer.read()
    if answer.status != 200:
        sys.exit(f"/metrics: {answer.status}")
    return answer.getheader("Content-Type"), body


def measure_answers(address):
    """How much the exporter tells in each format."""
    eventually(lambda: b"\ngputune_up 1\n" in fetch(address, "text/plain")[1], "a sample")
    for accept in "text/plain", OPEN_METRICS:
        kind, body = fetch(address, accept)
        series = sum(not line.startswith(b"#") for line in body.splitlines())
        print(f"{kind}: {len(body)} bytes, {series} series")


class Fleet:
    """Many machines with the metrics of one exporter."""

    def __init__(self, address, machines):
        self._exporter = address
        self._answer = b""
        self._refresh()
        self.port = free_port()
        self.addresses = [f"127.1.{number // 250}.{number % 250 + 1}" for number in range(machines)]
        self._loop = asyncio.new_event_loop()
        self._started = threading.Event()
        threading.Thread(target=self._run, daemon=True).start()
        self._started.wait()

    def _refresh(self):
        kind, body = fetch(self._exporter, OPEN_METRICS)
        self._answer = (f"HTTP/1.1 200 OK\r\nContent-Type: {kind}\r\nContent-Length: {len(body)}\r\n"
                        "Connection: close\r\n\r\n").encode() + body

    def _run(self):
        asyncio.set_event_loop(self._loop)
        self._loop.run_until_complete(asyncio.start_server(self._serve, self.addresses, self.port, backlog=16))
        self._loop.create_task(self._keep_fresh())
        self._started.set()
        self._loop.run_forever()

    async def _keep_fresh(self):
        while True:
            await asyncio.sleep(1)
            self._refresh()

    async def _serve(self, reader, writer):
        with contextlib.suppress(OSError, asyncio.IncompleteReadError):
            await reader.readuntil(b"\r\n\r\n")
            writer.write(self._answer)
            await writer.drain()
        writer.close()


def configure(folder, fleet, interval):
    """The rules, and the scraping of all machines; returns the path."""
    shutil.copy(REPOSITORY / "monitoring/prometheus/gputune.rules.yml", folder)
    with open(f"{folder}/machines.json", "w", encoding="utf-8") as file:
        json.dump([{"targets": [f"{address}:{fleet.port}" for address in fleet.addresses]}], file)
    with open(f"{folder}/prometheus.yml", "w", encoding="utf-8") as file:
        file.write(f"global: {{ scrape_interval: {interval}s, scrape_timeout: {min(interval, 10)}s, evaluation_interval: 30s }}\n"
                   "rule_files: [gputune.rules.yml]\n"
                   "scrape_configs:\n"
                   "  - job_name: gputune\n"
                   "    file_sd_configs: [{ files: [machines.json] }]\n")
    return f"{folder}/prometheus.yml"


def resident_megabytes(pid):
    lines = pathlib.Path(f"/proc/{pid}/status").read_text(encoding="ascii").splitlines()
    return next(int(line.split()[1]) for line in lines if line.startswith("VmRSS")) / 1024


def size(folder):
    return sum(path.stat().st_size for path in pathlib.Path(folder).rglob("*") if path.is_file())


def own_metrics(server):
    """What Prometheus tells of itself; of series that differ in labels, the sum."""
    sums = {}
    with urllib.request.urlopen(f"http://{server.address}/metrics") as answer:
        for line in answer.read().decode().splitlines():
            if not line.startswith("#"):
                series, _, value = line.rpartition(" ")
                name = series.partition("{")[0]
                sums[name] = sums.get(name, 0) + float(value)
    return sums


def measure_server(server, fleet, interval, minutes):
    machines = len(fleet.addresses)
    eventually(lambda: server.value('count(up{job="gputune"} == 1)') == machines, "all machines")
    before, cpu, begin = own_metrics(server), processor_seconds(server.process.pid), time.monotonic()
    highest = 0.0
    while time.monotonic() - begin < minutes * 60:
        time.sleep(5)
        highest = max(highest, resident_megabytes(server.process.pid))
    elapsed = time.monotonic() - begin
    cpu = processor_seconds(server.process.pid) - cpu
    after = own_metrics(server)
    appended = "prometheus_tsdb_head_samples_appended_total"
    samples = after[appended] - before[appended]
    print(f"{machines} machines every {interval} s, for {elapsed:.0f} s: {after['prometheus_tsdb_head_series']:.0f} series, "
          f"{samples / elapsed:.0f} samples a second")
    print(f"  processor time {cpu:.1f} s, {cpu / elapsed * 100:.1f} % of a core; memory at most {highest:.0f} MB, "
          f"of which Go's heap {after['go_memstats_heap_inuse_bytes'] / 2**20:.0f} MB at the end")
    missed = server.value('count(up{job="gputune"} == 0) or vector(0)')
    print(f"  scrapes: median {server.value('quantile(0.5, scrape_duration_seconds)') * 1000:.1f} ms, "
          f"99 of 100 at most {server.value('quantile(0.99, scrape_duration_seconds)') * 1000:.1f} ms; "
          f"{missed:.0f} machines did not answer the last time")
    print(f"  the log of the last hours (WAL): {size('data/wal') / 1e6:.1f} MB")
    snapshot = "data/snapshots/" + server.ask("admin/tsdb/snapshot", method="POST")["name"]
    chunks = sum(size(folder) for folder in pathlib.Path(snapshot).glob("*/chunks"))
    index = sum(path.stat().st_size for path in pathlib.Path(snapshot).glob("*/index"))
    total = sum(json.loads(path.read_text(encoding="utf-8"))["stats"]["numSamples"]
                for path in pathlib.Path(snapshot).glob("*/meta.json"))
    print(f"  as blocks: {chunks / total:.2f} bytes a sample, and an index of {index / 1e6:.1f} MB; {total} samples")


def measure_dashboard(server, minutes):
    values = {"job": "gputune", "__rate_interval": "1m", "__range": "1h"}
    end = server.value("vector(time())")
    fleet_dashboard = next(each for each in all_dashboards(REPOSITORY) if each.name == "gputune-fleet.json")
    times = []
    for _, expression, instant in fleet_dashboard.queries():
        begin = time.perf_counter()
        if instant:
            server.ask("query", query=replaced(expression, values))
        else:
            server.ask("query_range", query=replaced(expression, values), start=end - minutes * 60, end=end, step=15)
        times.append((time.perf_counter() - begin) * 1000)
    print(f"  the {len(times)} queries of the dashboard of all machines, over {minutes} minutes: {sum(times):.0f} ms, "
          f"the longest {max(times):.0f} ms")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("repository", type=pathlib.Path)
    parser.add_argument("--machines", type=int, nargs="+", default=[1000])
    parser.add_argument("--interval", type=int, default=15)
    parser.add_argument("--minutes", type=float, default=5)
    parser.add_argument("--board", default="overdrive8")
    options = parser.parse_args()
    repository = options.repository.resolve()
    hard = resource.getrlimit(resource.RLIMIT_NOFILE)[1]
    resource.setrlimit(resource.RLIMIT_NOFILE, (hard, hard))
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        with Exporter(repository, ["--simulate", f"{repository}/boards/{options.board}.json"]) as exporter:
            measure_answers(exporter.address)
            for machines in options.machines:
                shutil.rmtree("data", ignore_errors=True)
                fleet = Fleet(exporter.address, machines)
                with Prometheus(repository, configure(folder, fleet, options.interval)) as server:
                    measure_server(server, fleet, options.interval, options.minutes)
                    measure_dashboard(server, options.minutes)


if __name__ == "__main__":
    main()
