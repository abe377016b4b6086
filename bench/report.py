#!/usr/bin/python3
"""report.py <repository> [--write] [--runs N]

Runs the measurements, which scripts/bench has built, and prints them as docs/performance.md, or writes that page. Each
figure stands beside its floor, measured in turn with it in the same run, and its goal. A figure above its goal needs an
entry in REASONS; without one this program fails.
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


class Bench:
    def __init__(self, repository, runs):
        self.repository = repository
        self.runs = runs
        self.bin = repository / "build/bench"
        self.wine = str(repository / "scripts/wine")

    def run(self, program, *arguments, environment=None, prefix=()):
        command = [*prefix, self.wine, str(self.bin / f"{program}.exe"), *arguments]
        done = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=1200,
                              env={**os.environ, **(environment or {})}, check=False)
        if done.returncode != 0:
            sys.exit(f"{program} {' '.join(arguments)} failed:\n{done.stdout}{done.stderr}")
        return done.stdout

    def benchmarks(self, program, environment=None, minimum_time=0.2):
        """Medians of CPU time in ns, by name."""
        print(f"{program} {' '.join((environment or {}).values())}", file=sys.stderr)
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
    print("startup", file=sys.stderr)
    for _ in range(bench.runs):
        for name in names:
            samples[name].append(processes(bench, name))
    result = {name: {key: statistics.median(sample[key] for sample in samples[name]) for key in ("us", "kB", "threads")}
              for name in names}
    result["idle"] = processes(bench, "init", idle=5.0)["idle"]
    return result


def figures(bench):
    data = {"fetch": {}, "instructions": {}}
    for name in BACKENDS:
        data["fetch"][name] = {
            mode: bench.benchmarks("fetch_bench", {"GPUTUNE_BENCH_BACKEND": name, "GPUTUNE_BENCH_LOG": mode}, 0.1)
            for mode in ("0", "2")}
        lines = bench.run("instructions", name).split("\n")
        data["instructions"][name] = {line.split()[0]: [int(n) for n in line.split()[1:]] for line in lines if line.strip()}
    for program in ("calls_bench", "intel_bench", "nvidia_bench", "log_bench"):
        data[program] = bench.benchmarks(program)
    prefix = bench.repository / "build/wine-end-to-end"
    command = [str(bench.repository / "scripts/with-graphics-card"), "0x1002", "0x67df",
               sys.executable, __file__, str(bench.repository), "--runs", str(bench.runs), "--startup-only"]
    done = subprocess.run(command, env={**os.environ, "GPUTUNE_WINEPREFIX": str(prefix)}, stdout=subprocess.PIPE,
                          text=True, check=False)
    if done.returncode != 0:
        sys.exit("startup failed")
    data["startup"] = json.loads(done.stdout)
    data["bytes"] = (bench.repository / "build/bin/gputune.dll").stat().st_size
    return data


def time_text(ns):
    if ns >= 1e6:
        return f"{ns / 1e6:.1f} ms"
    return f"{ns / 1e3:.2f} us" if ns >= 1000 else f"{ns:.0f} ns" if ns >= 100 else f"{ns:.1f} ns"


class Table:
    def __init__(self):
        self.rows = []
        self.missed = []

    def add(self, what, measured, floor, goal, met, key=None, **reason):
        self.rows.append(f"| {what} | {measured} | {floor} | {goal} | {'met' if met else '**missed**'} |")
        if not met:
            if key not in REASONS:
                sys.exit(f"{what} is above its goal, and nobody has said why")
            text = f"- **{what}**: {REASONS[key].format(**reason)}"
            if text not in self.missed:
                self.missed.append(text)

    def timed(self, what, measured, floor, most, goal, key=None, floor_text="", **reason):
        self.add(what, time_text(measured), time_text(floor) + floor_text, goal, measured <= most, key, **reason)


def page(data, runs):
    table = Table()
    for name, title in BACKENDS.items():
        bench = data["fetch"][name]["0"]
        floor = bench["FloorOfAFetch"]
        table.timed(f"`FetchHwmValues`, {title}, log off", bench["FetchHwmValues"], floor, 1.05 * floor + 300,
                    "1.05 times the floor and 0.3 us", floor_text=", the vendor's calls alone")
    for name, title in BACKENDS.items():
        bench = data["fetch"][name]["2"]
        floor = bench["FloorOfAFetch"]
        table.timed(f"`FetchHwmValues`, {title}, log into the file", bench["FetchHwmValues"], floor, 1.1 * floor + 300,
                    "1.1 times the floor and 0.3 us", key="log",
                    floor_text=", the vendor's calls, and the same lines written and flushed")
    bench = data["calls_bench"]
    table.timed("`GetHwmValue`", bench["GetHwmValue"], bench["FloorCopyOf272Bytes"], 3 * bench["FloorCopyOf272Bytes"],
                "3 times the floor", floor_text=", a copy of 272 bytes")
    bench = data["log_bench"]
    table.timed("one log entry", bench["LogEntry"], bench["FloorWriteAndFlush"], 1.1 * bench["FloorWriteAndFlush"],
                "1.1 times the floor", key="log", floor_text=", the bare write and flush")
    bench = data["intel_bench"]
    table.timed("a forwarded `ctl` function", bench["ForwardedCall"], bench["FloorDirectCall"],
                bench["FloorDirectCall"] + 5, "the floor and 5 ns",
                floor_text=f", called directly ({time_text(bench['LookUpAtEachCall'])} with a look-up each time)")
    bench = data["nvidia_bench"]
    direct = bench["FloorDirectNvapiCall"]
    counted = bench["FloorCountedNvapiCall"]
    table.timed("an NVAPI function", bench["BoundNvapiCall"], direct, direct + 10, "the floor and 10 ns", key="nvapi",
                floor_text=", called directly", counted=counted - direct, rest=bench["BoundNvapiCall"] - counted)

    startup = data["startup"]
    table.timed("the first `InitVGAHelper`, AMD", startup["init"]["us"] * 1e3, startup["init-floor"]["us"] * 1e3,
                1.05e3 * startup["init-floor"]["us"], "1.05 times the floor", key="init",
                floor_text=", WMI and the vendor's calls by hand")
    own = startup["own-init"]["us"] - startup["own-init-floor"]["us"]
    table.add("of that the library's own, against a WMI that answers at once", time_text(own * 1e3), "0",
              "5 % of WMI's time", own <= 0.05 * startup["init-floor"]["us"])
    table.timed("loading the DLL", startup["load"]["us"] * 1e3, startup["load-floor"]["us"] * 1e3,
                1.5e3 * startup["load-floor"]["us"], "1.5 times the floor", key="load", floor_text=", an empty DLL")
    memory = startup["own-init"]["kB"] - startup["own-init-floor"]["kB"]
    unloaded = startup["init"]["kB"] - startup["init-floor"]["kB"]
    loaded = startup["load"]["kB"] - startup["load-floor"]["kB"]
    table.add("memory in use: loading", f"{loaded:.0f} KB", "an empty DLL loaded", "300 KB together", loaded + memory <= 300)
    table.add("memory in use: `InitVGAHelper`", f"{memory:.0f} KB ({unloaded:+.0f} KB with the machine's WMI)",
              "the same work by hand", "300 KB together", loaded + memory <= 300)
    table.add("processor time when idle, in 5 s", time_text(startup["idle"]), "0", "0", startup["idle"] == 0)
    table.add("threads of its own", f"{startup['init']['threads'] - startup['init-floor']['threads']:.0f}", "0", "0",
              startup["init"]["threads"] == startup["init-floor"]["threads"])
    table.add("size of `gputune.dll`, stripped", f"{data['bytes']:,} bytes", "", "300,000 bytes", data["bytes"] <= 300000)

    counts = []
    for name, title in BACKENDS.items():
        own_count, others = data["instructions"][name]["FetchHwmValues"]
        counts.append(f"| `FetchHwmValues`, {title} | {own_count} | {others} | {data['instructions'][name]['vendor'][1]} |")
    own_count, others = data["instructions"]["intel"]["GetHwmValue"]
    counts.append(f"| `GetHwmValue` | {own_count} | {others} | 0 |")
    own_count, others = data["instructions"]["intel"]["ctlOverclockGpuFrequencyOffsetSet"]
    counts.append(f"| a forwarded `ctl` function | {own_count} | {others} | {others} |")

    missed = "\n".join(table.missed) if table.missed else "Nothing."
    return f"""# Performance

<!-- in the source tree -->
Made by `scripts/bench --write`, which measures everything anew: do not edit.

<!-- /in the source tree -->
Each figure stands beside its floor, the least
that any library in its place would do, measured in turn with it in the same run. The vendors' libraries cost next to nothing
here (`bench/null_*.cpp`), so that what is seen is the library's own share; a real driver's call takes microseconds to
milliseconds. Under Wine, on a machine with {os.cpu_count()} processors; medians of {runs} runs; times of calls are processor time.

| what | library | floor | goal | |
|---|---|---|---|---|
{chr(10).join(table.rows)}

## Above its goal

{missed}

## Instructions

Counted one by one with the log off (`bench/instructions.cpp`): the same in every run, whatever else the machine does. A
repeated instruction counts once. Where the last two columns agree, the library called nothing but the vendor.

| what | the library's own | outside of it | of the vendor's calls alone |
|---|---|---|---|
{chr(10).join(counts)}
"""


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("repository", type=pathlib.Path)
    parser.add_argument("--write", action="store_true")
    parser.add_argument("--runs", type=int, default=15)
    parser.add_argument("--startup-only", action="store_true", help=argparse.SUPPRESS)
    arguments = parser.parse_args()
    bench = Bench(arguments.repository.resolve(), arguments.runs)
    if arguments.startup_only:
        print(json.dumps(startup(bench)))
        return
    with tempfile.TemporaryDirectory() as scratch:
        # The log goes to the current directory.
        os.chdir(scratch)
        data = figures(bench)
        os.chdir("/")
    text = page(data, arguments.runs)
    if arguments.write:
        (bench.repository / "docs/performance.md").write_text(text)
    else:
        print(text)


if __name__ == "__main__":
    main()
