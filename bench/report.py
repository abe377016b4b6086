#!/usr/bin/python3
"""report.py <repository> [--write] [--runs N]

Runs the measurements, which scripts/bench has built for both widths, and prints them as docs/performance.md, or writes that
page. Each figure stands beside its floor, measured in turn with it in the same run, and its goal; each measurement of one
width follows that of the other. A figure above its goal needs an entry in REASONS; without one this program fails.
"""

import argparse
import json
import os
import pathlib
import re
import statistics
import subprocess
import sys
import tempfile
import time

REASONS = {
    "nvapi": "Every bound call is counted while it runs, so that a loader knows whether the library is in use, with an "
             "interlocked change before and one after. Those two take {counted:.1f} ns of it by themselves, with nothing "
             "else around the call; the binding adds {rest:.1f} ns.",
    "log": "What an entry costs beyond the bare write is putting the line together and taking the export's path to the "
           "adapter.",
    "init": "Nearly all of it is WMI, whose time varies more from run to run than the library adds: see the row below.",
    "load": "Relocating the code and resolving the imports of a DLL that has both.",
}

BACKENDS = {"overdriven": "OverdriveN", "overdrive8": "Overdrive8", "intel": "Intel", "nvidia": "NVIDIA"}


WIDTHS = {"32-bit": "", "64-bit": "x64"}


class Bench:
    """The programs of one width."""

    def __init__(self, repository, runs, width):
        self.repository = repository
        self.runs = runs
        self.width = width
        self.bin = repository / "build/bench" / WIDTHS[width]
        self.library = repository / "build/bin" / WIDTHS[width] / "gputune.dll"
        self.wine = str(repository / "scripts/wine")

    def run(self, program, *arguments, environment=None, prefix=()):
        command = [*prefix, self.wine, str(self.bin / f"{program}.exe"), *arguments]
        # Under Wine, a process that has done its work ends with an error once in a while: it gets a second chance.
        for _ in range(2):
            done = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=1200,
                                  env={**os.environ, **(environment or {})}, check=False)
            if done.returncode == 0:
                break
        else:
            sys.exit(f"{program} {' '.join(arguments)} failed:\n{done.stdout}{done.stderr}")
        return done.stdout

    def benchmarks(self, program, environment=None, minimum_time=0.2):
        """Medians of CPU time in ns, by name."""
        print(f"{self.width} {program} {' '.join((environment or {}).values())}", file=sys.stderr)
        out = pathlib.Path("result.json")
        out.unlink(missing_ok=True)
        self.run(program, f"--benchmark_repetitions={self.runs}", f"--benchmark_min_time={minimum_time}",
                 "--benchmark_enable_random_interleaving=true", "--benchmark_report_aggregates_only=true",
                 f"--benchmark_out={out}", "--benchmark_out_format=json", environment=environment)
        results = json.loads(out.read_text())["benchmarks"]
        for result in results:
            if result.get("error_occurred"):
                sys.exit(f"{result['name']}: {result['error_message']}")
        return {result["run_name"]: result["cpu_time"] for result in results if result["aggregate_name"] == "median"}


def smaps(pid):
    text = pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text()
    return {name: int(kb) for name, kb in re.findall(r"^(\w+):\s+(\d+) kB$", text, re.M)}


def busy_ns(pid):
    """Processor time of all threads of a process."""
    return sum(int(path.read_text().split()[0]) for path in pathlib.Path(f"/proc/{pid}/task").glob("*/schedstat"))


def processes(bench, what, idle=0.0):
    """One process that did `what`: its time in us, and its memory in kB; its CPU time in ns during `idle` seconds."""
    with subprocess.Popen([bench.wine, str(bench.bin / "startup.exe"), what], stdin=subprocess.PIPE,
                          stdout=subprocess.PIPE, text=True) as process:
        line = process.stdout.readline()
        if not line.strip():
            sys.exit(f"startup {what} failed")
        result = {"us": float(line), "kB": smaps(process.pid)["Rss"],
                  "threads": len(list(pathlib.Path(f"/proc/{process.pid}/task").iterdir()))}
        if idle:
            time.sleep(0.5)
            before = busy_ns(process.pid)
            time.sleep(idle)
            result["idle"] = busy_ns(process.pid) - before
        process.stdin.close()
    return result


def startup(bench):
    """Medians of the start-up figures; run where WMI names a graphics card."""
    names = ("load-floor", "load", "init-floor", "init", "own-init-floor", "own-init")
    samples = {name: [] for name in names}
    print(f"{bench.width} startup", file=sys.stderr)
    for _ in range(bench.runs):
        for name in names:
            samples[name].append(processes(bench, name))
    result = {name: {key: statistics.median(sample[key] for sample in samples[name]) for key in ("us", "kB", "threads")}
              for name in names}
    result["idle"] = processes(bench, "init", idle=5.0)["idle"]
    return result


def startup_with_card(bench):
    """startup, in a process and a Wine prefix for it, with a display."""
    is_64_bit = bool(WIDTHS[bench.width])
    prefix = bench.repository / ("build/wine-end-to-end-x64" if is_64_bit else "build/wine-end-to-end")
    command = [str(bench.repository / "scripts/with-graphics-card"), *(["--x64"] if is_64_bit else []), "0x1002", "0x67df",
               sys.executable, __file__, str(bench.repository), "--runs", str(bench.runs), "--startup-only", bench.width]
    done = subprocess.run(command, env={**os.environ, "GPUTUNE_WINEPREFIX": str(prefix)}, stdout=subprocess.PIPE,
                          text=True, check=False)
    if done.returncode != 0:
        sys.exit("startup failed")
    return json.loads(done.stdout)


def instructions(bench, backend):
    lines = bench.run("instructions", backend).split("\n")
    return {line.split()[0]: [int(n) for n in line.split()[1:]] for line in lines if line.strip()}


def figures(benches):
    """By width and by what was measured."""
    data = {width: {"bytes": bench.library.stat().st_size} for width, bench in benches.items()}

    def measure(*keys, how):
        for width, bench in benches.items():
            place = data[width]
            for key in keys[:-1]:
                place = place.setdefault(key, {})
            place[keys[-1]] = how(bench)

    for name in BACKENDS:
        for mode in ("0", "2"):
            environment = {"GPUTUNE_BENCH_BACKEND": name, "GPUTUNE_BENCH_LOG": mode}
            measure("fetch", name, mode, how=lambda bench, e=environment: bench.benchmarks("fetch_bench", e, 0.1))
        measure("instructions", name, how=lambda bench, n=name: instructions(bench, n))
    for program in ("calls_bench", "intel_bench", "nvidia_bench", "log_bench"):
        measure(program, how=lambda bench, p=program: bench.benchmarks(p))
    measure("startup", how=startup_with_card)
    return data


def time_text(ns):
    size = abs(ns)
    if size >= 1e6:
        return f"{ns / 1e6:.1f} ms"
    return f"{ns / 1e3:.2f} us" if size >= 1000 else f"{ns:.0f} ns" if size >= 100 else f"{ns:.1f} ns"


class Figure:
    """What was measured of one width, beside its floor; both as texts."""

    def __init__(self, measured, floor, met, **reason):
        self.measured = measured
        self.floor = floor
        self.met = met
        self.reason = reason

    @classmethod
    def timed(cls, measured, floor, most, **reason):
        return cls(time_text(measured), time_text(floor), measured <= most, **reason)


class Table:
    """A row for each figure, with both widths side by side."""

    def __init__(self, data):
        self.data = data
        self.rows = []
        self.missed = []
        self.unexplained = []

    def add(self, what, floor, goal, figure, key=None):
        """`figure` makes a Figure of the data of one width; `floor` says what the floor is."""
        figures_ = {width: figure(data) for width, data in self.data.items()}
        missed = [width for width, one in figures_.items() if not one.met]
        cells = [cell for one in figures_.values() for cell in (one.measured, one.floor)]
        verdict = f"**missed** ({', '.join(missed)})" if missed else "met"
        self.rows.append(f"| {what} | {' | '.join(cells)} | {floor} | {goal} | {verdict} |")
        for width in missed:
            if key not in REASONS:
                self.unexplained.append(f"{what}, {width}, is above its goal, and nobody has said why")
                continue
            reason = figures_[width].reason
            name = f"{what} ({width})" if reason or len(missed) < len(figures_) else what
            text = f"- **{name}**: {REASONS[key].format(**reason)}"
            if text not in self.missed:
                self.missed.append(text)


def memory(startup_figures):
    """In kB: what loading takes, what a start takes, and the latter with the machine's WMI."""
    def more(what, than):
        return startup_figures[what]["kB"] - startup_figures[than]["kB"]
    return more("load", "load-floor"), more("own-init", "own-init-floor"), more("init", "init-floor")


def add_calls(table):
    for name, title in BACKENDS.items():
        def fetch(data, name=name):
            floor = data["fetch"][name]["0"]["FloorOfAFetch"]
            return Figure.timed(data["fetch"][name]["0"]["FetchHwmValues"], floor, 1.05 * floor + 300)
        table.add(f"`FetchHwmValues`, {title}, log off", "the vendor's calls alone", "1.05 times the floor and 0.3 us", fetch)
    for name, title in BACKENDS.items():
        def fetch_with_log(data, name=name):
            floor = data["fetch"][name]["2"]["FloorOfAFetch"]
            return Figure.timed(data["fetch"][name]["2"]["FetchHwmValues"], floor, 1.1 * floor + 300)
        table.add(f"`FetchHwmValues`, {title}, log into the file",
                  "the vendor's calls, and the same lines written and flushed", "1.1 times the floor and 0.3 us",
                  fetch_with_log, key="log")

    def simple(program, name, floor_name, most):
        def figure(data):
            floor = data[program][floor_name]
            return Figure.timed(data[program][name], floor, most(floor))
        return figure

    def bound(data):
        bench = data["nvidia_bench"]
        direct, counted = bench["FloorDirectNvapiCall"], bench["FloorCountedNvapiCall"]
        return Figure.timed(bench["BoundNvapiCall"], direct, direct + 10, counted=counted - direct,
                            rest=bench["BoundNvapiCall"] - counted)

    table.add("`GetHwmValue`", "a copy of 272 bytes", "3 times the floor",
              simple("calls_bench", "GetHwmValue", "FloorCopyOf272Bytes", lambda floor: 3 * floor))
    table.add("one log entry", "the bare write and flush", "1.1 times the floor",
              simple("log_bench", "LogEntry", "FloorWriteAndFlush", lambda floor: 1.1 * floor), key="log")
    looked_up = " and ".join(time_text(data["intel_bench"]["LookUpAtEachCall"]) for data in table.data.values())
    table.add("a forwarded `ctl` function", f"called directly ({looked_up} with a look-up each time)", "the floor and 5 ns",
              simple("intel_bench", "ForwardedCall", "FloorDirectCall", lambda floor: floor + 5))
    table.add("an NVAPI function", "called directly", "the floor and 10 ns", bound, key="nvapi")


def add_startup(table):
    def compared(name, times):
        def figure(data):
            floor = data["startup"][f"{name}-floor"]["us"] * 1e3
            return Figure.timed(data["startup"][name]["us"] * 1e3, floor, times * floor)
        return figure

    def own(data):
        more = data["startup"]["own-init"]["us"] - data["startup"]["own-init-floor"]["us"]
        return Figure(time_text(more * 1e3), "0", more <= 0.05 * data["startup"]["init-floor"]["us"])

    def used(text):
        def figure(data):
            sizes = memory(data["startup"])
            return Figure(text(*sizes), "0 KB", sizes[0] + sizes[1] <= 300)
        return figure

    def idle(data):
        return Figure(time_text(data["startup"]["idle"]), "0", data["startup"]["idle"] == 0)

    def threads(data):
        more = data["startup"]["init"]["threads"] - data["startup"]["init-floor"]["threads"]
        return Figure(f"{more:.0f}", "0", more == 0)

    table.add("the first `InitVGAHelper`, AMD", "WMI and the vendor's calls by hand", "1.05 times the floor",
              compared("init", 1.05), key="init")
    table.add("of that the library's own, against a WMI that answers at once", "", "5 % of WMI's time", own)
    table.add("loading the DLL", "an empty DLL", "1.5 times the floor", compared("load", 1.5), key="load")
    table.add("memory in use: loading", "beyond an empty DLL", "300 KB together",
              used(lambda loaded, started, with_wmi: f"{loaded:.0f} KB"), key="memory")
    table.add("memory in use: `InitVGAHelper`", "beyond the same work by hand", "300 KB together",
              used(lambda loaded, started, with_wmi: f"{started:.0f} KB ({with_wmi:+.0f} KB with the machine's WMI)"),
              key="memory")
    table.add("processor time when idle, in 5 s", "", "0", idle)
    table.add("threads of its own", "", "0", threads)
    table.add("size of `gputune.dll`, stripped", "", "300,000 bytes",
              lambda data: Figure(f"{data['bytes']:,} bytes", "", data["bytes"] <= 300000))


def instruction_rows(data):
    def row(what, count):
        cells = [str(cell) for one in data.values() for cell in count(one["instructions"])]
        return f"| {what} | {' | '.join(cells)} |"

    rows = [row(f"`FetchHwmValues`, {title}",
                lambda counts, n=name: (*counts[n]["FetchHwmValues"], counts[n]["vendor"][1]))
            for name, title in BACKENDS.items()]
    rows.append(row("`GetHwmValue`", lambda counts: (*counts["intel"]["GetHwmValue"], 0)))
    forwarded = "ctlOverclockGpuFrequencyOffsetSet"
    rows.append(row("a forwarded `ctl` function",
                    lambda counts: (*counts["intel"][forwarded], counts["intel"][forwarded][1])))
    return "\n".join(rows)


def page(data, runs):
    table = Table(data)
    add_calls(table)
    add_startup(table)

    if table.unexplained:
        sys.exit("\n".join([*table.rows, *table.unexplained]))
    missed = "\n".join(table.missed) if table.missed else "Nothing."
    return f"""# Performance

<!-- in the source tree -->
Made by `scripts/bench --write`, which measures everything anew: do not edit.

<!-- /in the source tree -->
Each figure stands beside its floor, the least
that any library in its place would do, measured in turn with it in the same run. The vendors' libraries cost next to nothing
here (`bench/null_*.cpp`), so that what is seen is the library's own share; a real driver's call takes microseconds to
milliseconds. Under Wine, on a machine with {os.cpu_count()} processors; medians of {runs} runs; times of calls are processor time. The
libraries of both widths were measured in turn.

| what | 32-bit | its floor | 64-bit | its floor | what the floor is | goal | |
|---|---|---|---|---|---|---|---|
{chr(10).join(table.rows)}

## Above its goal

{missed}

## Instructions

Counted one by one with the log off (`bench/instructions.cpp`): the same in every run, whatever else the machine does. A
repeated instruction counts once. Where the last two columns of a width agree, the library called nothing but the vendor.

| what | 32-bit: the library's own | outside of it | of the vendor's calls alone | 64-bit: the library's own | outside of it | of the vendor's calls alone |
|---|---|---|---|---|---|---|
{instruction_rows(data)}
"""


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("repository", type=pathlib.Path)
    parser.add_argument("--write", action="store_true")
    parser.add_argument("--runs", type=int, default=15)
    parser.add_argument("--startup-only", choices=WIDTHS, help=argparse.SUPPRESS)
    arguments = parser.parse_args()
    repository = arguments.repository.resolve()
    benches = {width: Bench(repository, arguments.runs, width) for width in WIDTHS}
    if arguments.startup_only:
        print(json.dumps(startup(benches[arguments.startup_only])))
        return
    with tempfile.TemporaryDirectory() as scratch:
        # The log goes to the current directory.
        os.chdir(scratch)
        data = figures(benches)
        os.chdir("/")
    text = page(data, arguments.runs)
    if arguments.write:
        (repository / "docs/performance.md").write_text(text)
    else:
        print(text)


if __name__ == "__main__":
    main()
