#!/usr/bin/env python3
"""Times the program's commands against yardsticks on the same dumps and prints a table.

    program_table.py PROGRAM PROGRAMS MEGABYTES

PROGRAM is kesncd, PROGRAMS the folder of generate_dump and measure. The ways of a row take turns,
and each has the best of several runs: a busy machine slows all of them.
"""
import os
import resource
import shutil
import subprocess
import sys
import tempfile
import time

ROUNDS = 5


def run(command):
    """The wall and the processor time of a shell command, which has to succeed or to find faults."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    begin = time.monotonic()
    outcome = subprocess.run(command, shell=True, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
    wall = time.monotonic() - begin
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    if outcome.returncode > 1:
        sys.exit(f"{command}: {outcome.stderr.decode()}")
    return wall, after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def best_times(*commands):
    """For each command its best wall time and its best processor time."""
    times = [[run(command) for command in commands] for _ in range(ROUNDS)]
    return [tuple(min(turn[i][kind] for turn in times) for kind in (0, 1))
            for i in range(len(commands))]


def row(work, value, goal):
    print(f"| {work} | {value} | {goal} |", flush=True)


class Table:
    def __init__(self, program, programs, megabytes, folder):
        self.program, self.programs, self.folder = program, programs, folder
        self.bytes = megabytes * 1_000_000

    def dump(self, kind, size=None):
        path = os.path.join(self.folder, f"{kind}-{size or self.bytes}.vcd")
        if not os.path.exists(path):
            run(f"{self.programs}/generate_dump {kind} {size or self.bytes} 1 >{path}")
        return path

    def command(self, arguments, dump, jobs=1):
        threads = "" if arguments == "prepare" else f"--jobs {jobs}"
        return f"{self.program} {arguments} -q -o /dev/null {threads} {dump}"

    def lines(self, dump):
        return f"{self.programs}/measure lines {dump} 1"

    def speed(self, work, dump, arguments, goal, kind=1, jobs=1):
        """How many times as fast as the yardstick: by processor time (kind 1) or on the wall (0)."""
        loop, own = best_times(self.lines(dump), self.command(arguments, dump, jobs))
        row(f"{work} / lines, {('wall', 'processor')[kind]}",
            f"{loop[kind] / own[kind]:.2f} ({own[kind]:.2f} s against {loop[kind]:.2f} s)", goal)

    def share(self, work, yardstick, command, goal, kind=0):
        """How many times the time of the yardstick."""
        other, own = best_times(yardstick, command)
        row(work, f"{own[kind] / other[kind]:.2f} ({own[kind]:.2f} s against {other[kind]:.2f} s)", goal)

    def reading(self):
        short, vectors = self.dump("short"), self.dump("vectors")
        per_bit = "activity --per bit --format csv"
        self.speed("many short changes: tree", short, "tree", "2.0")
        self.speed(f"many short changes: {per_bit}", short, per_bit, "0.8")
        self.speed(f"wide vectors: {per_bit}", vectors, per_bit, "0.5")
        self.speed("many short changes: check", short, "check", "1.5", kind=0, jobs=2)
        self.speed("many short changes: prepare", short, "prepare", "1.3", kind=0)

    def many_signals(self):
        names = self.dump("names")
        database = os.path.join(self.folder, "names.kact")
        lines = self.lines(names)
        self.share("1,000,000 signals: tree against lines, wall", lines,
                   self.command("tree", names, 2), "2.5")
        self.share("1,000,000 signals: SAIF against lines, wall", lines,
                   self.command("activity --format saif", names), "4")
        (written, _), = best_times(f"{self.program} activity -q -o {database} {names}")
        (read, _), = best_times(self.command("activity --format saif", database))
        row("1,000,000 signals: database written; read and exported as SAIF",
            f"{written:.1f} s; {read:.1f} s", "3 s; 3 s")

    def threads(self):
        long = self.dump("short", 5 * self.bytes)
        for work, goal in (("tree", "1.6"), ("activity --per bit --format csv", "1.8")):
            one, two = best_times(self.command(work, long), self.command(work, long, 2))
            row(f"{work}: one thread / two, wall", f"{one[0] / two[0]:.2f} ({one[0]:.2f} s and {two[0]:.2f} s)",
                goal)

    def parts(self):
        long = self.dump("short", 5 * self.bytes)
        part = os.path.join(self.folder, "part")
        self.share("16 parts and their sum against one reading, processor",
                   f"{self.program} activity --jobs 1 -q -o {part}.kact {long}",
                   f"for i in $(seq 16); do {self.program} activity --part $i/16 -q -o {part}-$i.kact {long};"
                   f" done; {self.program} merge {part}-*.kact -q -o {part}.kact; rm {part}-*.kact",
                   "1.3", kind=1)

    def packed(self):
        short = self.dump("short")
        run(f"gzip -k {short}")
        self.share("gzip: tree against zcat, wall", f"zcat {short}.gz",
                   f"{self.program} tree -q -o /dev/null {short}.gz", "1.1")
        if shutil.which("vcd2fst") and shutil.which("fst2vcd"):
            run(f"vcd2fst {short} {short}.fst")
            unpack, own = best_times(f"fst2vcd {short}.fst",
                                     self.command("activity --per bit --format csv", short))
            row("activity --per bit, from VCD, against fst2vcd: speed", f"{unpack[1] / own[1]:.1f}", "8")


def main():
    program, programs, megabytes = sys.argv[1], sys.argv[2], int(sys.argv[3])
    print(f"{os.cpu_count()} cores, {megabytes} MB a dump\n")
    print("| work | reached | to reach |\n|---|---|---|")
    with tempfile.TemporaryDirectory() as folder:
        table = Table(os.path.abspath(program), programs, megabytes, folder)
        table.reading()
        table.many_signals()
        table.packed()
        table.threads()
        table.parts()


if __name__ == "__main__":
    main()
