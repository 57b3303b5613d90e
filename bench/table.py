#!/usr/bin/env python3
"""Runs the benchmarks and prints the table of bench/README.md.

    table.py PROGRAMS MEGABYTES [FOLDER]

Each figure is the best of several runs and stands beside the yardsticks measured on the same file
between them, so that a noisy machine slows both.
"""
import json
import os
import platform
import resource
import subprocess
import sys
import tempfile

ROUNDS = 7


def output(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


class Bench:
    def __init__(self, programs, megabytes):
        self.programs, self.bytes = programs, megabytes * 1_000_000
        self.folder = tempfile.TemporaryDirectory()

    def dump(self, kind, size=None, scale=1):
        path = os.path.join(self.folder.name, f"{kind}-{size}-{scale}.vcd")
        if not os.path.exists(path):
            with open(path, "wb") as file:
                arguments = [f"{self.programs}/generate_dump", kind, str(size or self.bytes), str(scale)]
                subprocess.run(arguments, check=True, stdout=file)
        return path

    def seconds(self, path, *ways):
        """The best time of each way, the ways taking turns."""
        best = {way: float("inf") for way in ways}
        for _ in range(ROUNDS):
            for way in ways:
                best[way] = min(best[way], float(output(f"{self.programs}/measure", way, path, "1")))
        return best

    def wc_seconds(self, path):
        """The processor time of wc -l, the best of several runs."""
        times = []
        for _ in range(ROUNDS):
            before = resource.getrusage(resource.RUSAGE_CHILDREN)
            output("wc", "-l", path)
            after = resource.getrusage(resource.RUSAGE_CHILDREN)
            times.append(after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime)
        return min(times)

    def peak(self, path, megabytes=None):
        """Peak memory in KiB of a hierarchical reading through a pipe."""
        cut = f"head -c {megabytes}000000 {path}" if megabytes else f"cat {path}"
        return int(output("bash", "-c", f"{cut} | {self.programs}/measure peak /dev/stdin 1"))


def row(work, value, goal):
    print(f"| {work} | {value} | {goal} |")


def ratio(best, yardstick, way):
    size = best[yardstick] / best[way]
    return f"{size:.2f} ({1000 * best[way]:.0f} ms against {1000 * best[yardstick]:.0f} ms)"


def reading(bench, name, path, goal, yardstick="lines", ways=("flat", "tree")):
    best = bench.seconds(path, yardstick, *ways)
    for way in ways:
        row(f"{name}: {way} / {yardstick}", ratio(best, yardstick, way), goal)


def yardsticks(bench, name, path):
    best = bench.seconds(path, "lines", "newlines")
    times = {"lines": best["lines"], "newlines": best["newlines"], "wc -l": bench.wc_seconds(path)}
    row(f"yardsticks on {name}",
        ", ".join(f"{yardstick} {1000 * time:.0f} ms" for yardstick, time in times.items()), "")


def lookups(bench):
    report = json.loads(output(f"{bench.programs}/parts", "--benchmark_format=json",
                               "--benchmark_filter=SearchInVain|BuildPowerTable"))
    return {entry["name"]: entry["real_time"] for entry in report["benchmarks"]}


def growth(bench):
    for kind, size in (("tree", 1), ("names", 1)):
        once = bench.seconds(bench.dump(kind, size), "tree")["tree"]
        twice = bench.seconds(bench.dump(kind, size, 2), "tree")["tree"]
        row(f"growth: twice the codes and scopes of {kind}", f"{twice / once:.2f}", "at most 2.3")


def main():
    bench = Bench(sys.argv[1], int(sys.argv[2]))
    more = sys.argv[3] if len(sys.argv) > 3 else ""
    print(f"{platform.machine()}, {os.cpu_count()} cores, {sys.argv[2]} MB a dump, ratios of throughput\n")
    print("| work | reached | to reach |\n|---|---|---|")
    yardsticks(bench, "many short changes", bench.dump("short"))
    reading(bench, "many short changes", bench.dump("short"), "1.8")
    reading(bench, "wide vectors", bench.dump("vectors"), "1.0", "newlines")
    reading(bench, "200,000 signals in 5,000 scopes", bench.dump("tree"), "1.5", ways=("tree",))
    small = bench.dump("tree", 52_000_000)
    reading(bench, "200,000 signals, 60 MB", small, "1.0", ways=("tree",))
    reading(bench, "1,000,000 signals", bench.dump("names"), "0.4", ways=("tree",))
    buses = bench.dump("buses", 100_000_000)
    reading(bench, "4,000 buses, 192,000 bits, 100 MB", buses, "0.7", "newlines", ("flat-run",))
    for name, goal in (("gate-level", "2.8"), ("register-level", "2.5")):
        path = os.path.join(more, f"{name}.vcd")
        if more and os.path.exists(path):
            reading(bench, name, path, goal)
            reading(bench, name, path, "0.33", ways=("grammar",))
    for kind in ("short", "vectors"):
        reading(bench, kind, bench.dump(kind), "0.33", ways=("grammar",))
    times = lookups(bench)
    for exact in (1, 0):
        table = times[f"BuildPowerTable/signals:1000000/rows:100000/exact:{exact}"]
        search = times[f"SearchInVain/signals:1000000/exact:{exact}"]
        row(f"power table of 100,000 rows, exact {exact} / one search in vain",
            f"{table / search:.1f} ({table:.0f} ms against {search:.0f} ms)", "under 10")
    base = "BuildPowerTable/signals:{}/rows:{}/exact:1"
    once = times[base.format(1000000, 100000)]
    row("growth: twice the rows", f"{times[base.format(1000000, 200000)] / once:.2f}", "at most 2.3")
    row("growth: twice the names", f"{once / times[base.format(500000, 100000)]:.2f}", "at most 2.3")
    growth(bench)
    long_dump = bench.dump("tree", 4_000_000_000)
    difference = bench.peak(long_dump) - bench.peak(long_dump, 20)
    row("peak memory, 4 GB through a pipe against its first 20 MB, codes of three characters", f"{difference} KiB more", "1024")


if __name__ == "__main__":
    main()
