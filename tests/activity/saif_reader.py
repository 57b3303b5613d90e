#!/usr/bin/env python3
"""Reads SAIF back as a power estimator does, and compares it with the CSV of the same run.

    saif_reader.py SAIF [CSV [--unwritten FILE] [--strip PATH]]

SAIF is read strictly: at the first word that no reader takes this one stops too. Every net's times have to add up
to the duration. With a CSV ("path,t0,t1,tx,tz,tc,ig" and more, in ticks) every net has to have the figures of its
row, and rows without a net have to be listed in the unwritten ones. Paths are compared without the backslashes that
open escaped names; --strip is what the SAIF was written with.
"""
import argparse
import csv
import re
import sys

TOKEN = re.compile(rb'\s*(?:(\()|(\))|"([^"]*)"|([^\s()"]+))')
NAME = re.compile(r"[A-Za-z_][A-Za-z0-9_$\[\]\\.]*")
KEYWORDS = ("T0 T1 TX TZ TB TC IG NET PORT INSTANCE DURATION DATE DESIGN VERSION VENDOR DIVIDER TIMESCALE DIRECTION "
            "SAIFILE SAIFVERSION PROGRAM_NAME").split()
UNITS = {"us": 10**9, "ns": 10**6, "ps": 10**3, "fs": 1}


class Broken(Exception):
    pass


class Saif:
    def __init__(self, data):
        self.data, self.at = data, 0
        self.nets, self.instances, self.head = {}, [], {}
        self.expect("(", "SAIFILE")
        for keyword in ("SAIFVERSION", "DIRECTION", "DESIGN", "DATE", "VENDOR", "PROGRAM_NAME", "VERSION", "DIVIDER",
                        "TIMESCALE", "DURATION"):
            self.expect("(", keyword)
            words = []
            while (word := self.word()) != ")":
                words.append(word)
            self.head[keyword] = words
        if self.head["SAIFVERSION"] != ['"2.0'] or self.head["DIRECTION"] != ['"backward']:
            raise Broken("not a backward SAIF 2.0 file")
        count, unit = self.head["TIMESCALE"]
        if count not in ("1", "10", "100") or unit not in UNITS:
            raise Broken(f"time scale {count} {unit}")
        self.unit = int(count) * UNITS[unit]
        self.duration = self.number(*self.head["DURATION"])
        if self.duration == 0:
            raise Broken("a duration of 0")
        self.expect("(", "INSTANCE")
        self.instance(())
        self.expect(")")
        if self.data[self.at:].strip():
            raise Broken("text after the end")

    def word(self):
        match = TOKEN.match(self.data, self.at)
        if not match:
            raise Broken(f"byte {self.at} begins no word")
        self.at = match.end()
        if match[3] is not None:
            return '"' + match[3].decode("latin-1")
        return (match[1] or match[2] or match[4]).decode("latin-1")

    def expect(self, *words):
        for word in words:
            got = self.word()
            if got != word:
                raise Broken(f"{got} at byte {self.at} where {word} belongs")

    def name(self):
        word = self.word()
        if not NAME.fullmatch(word) or word in KEYWORDS:
            raise Broken(f"the name {word}")
        return word

    @staticmethod
    def number(text):
        if not re.fullmatch("[0-9]+", text):
            raise Broken(f"{text} where a number belongs")
        return int(text)

    def instance(self, outer):
        """Instances in each other, without recursion: hostile dumps nest deeply."""
        open_ = [outer + (self.name(),)]
        seen, netted, met = set(), set(), {open_[0]}
        self.instances.append(open_[-1])
        while open_:
            word = self.word()
            if word == ")":
                open_.pop()
                continue
            kind = self.word()
            if kind == "NET" and open_[-1] not in netted and open_[-1] not in seen:
                netted.add(open_[-1])
                self.net_block(open_[-1])
            elif kind == "INSTANCE":
                seen.add(open_[-1])
                open_.append(open_[-1] + (self.name(),))
                if open_[-1] in met:
                    raise Broken(f"two instances {open_[-1]}")
                met.add(open_[-1])
                self.instances.append(open_[-1])
            else:
                raise Broken(f"{kind} in {open_[-1]}")

    def net_block(self, path):
        count = 0
        while self.word() == "(":
            name = self.name()
            if re.search(r"(?<!\\)[\[\]]", name):
                raise Broken(f"an open bracket in {name}")
            figures = []
            for key in ("T0", "T1", "TX", "TZ", "TB", "TC", "IG"):
                self.expect("(", key)
                figures.append(self.number(self.word()))
                self.expect(")")
            self.expect(")")
            if sum(figures[:4]) != self.duration or figures[4] != 0:
                raise Broken(f"times of {name} are not the duration")
            full = path + (re.sub(r"\\([\[\]])", r"\1", name),)
            if full in self.nets:
                raise Broken(f"two nets {full}")
            self.nets[full] = figures[:4] + figures[5:]
            count += 1
        if count == 0:
            raise Broken(f"an empty NET in {path}")


def bare(path):
    return tuple(part.removeprefix("\\") for part in path.split("/"))


def compare(saif, rows, unwritten, strip):
    """Every row is a net of equal figures or an unwritten one; no net is without a row."""
    paths = [bare(row[0]) for row in rows]
    # The outermost instance may have any name. It is the one top-level scope, or was made for several.
    joined = len({path[0] for path in paths}) > 1 or any(len(path) == 1 for path in paths)
    prefix = bare(strip) if strip else () if joined else paths[0][:1] if paths else ()
    ticks = sum(map(int, rows[0][1:5])) if rows else 0
    scale = saif.duration // ticks if ticks else 0
    nets = {path[1:]: figures for path, figures in saif.nets.items()}
    left = dict(nets)
    for path, row in zip(paths, rows):
        if path[:len(prefix)] != prefix:
            continue
        net = nets.get(path[len(prefix):])
        figures = [int(figure) for figure in row[1:7]]
        if row[0] in unwritten:
            continue
        if net is None:
            raise Broken(f"{row[0]} is neither a net nor unwritten")
        if net != [figure * scale for figure in figures[:4]] + figures[4:]:
            raise Broken(f"{row[0]} has {figures}, the net {net}, its unit is {scale} times as fine")
        left.pop(path[len(prefix):], None)
    if left:
        raise Broken(f"{len(left)} nets without a row: {next(iter(left))}")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("saif")
    parser.add_argument("csv", nargs="?")
    parser.add_argument("--unwritten")
    parser.add_argument("--strip")
    args = parser.parse_args()
    with open(args.saif, "rb") as file:
        saif = Saif(file.read())
    rows, unwritten = [], set()
    if args.csv:
        with open(args.csv, encoding="latin-1", newline="") as file:
            rows = list(csv.reader(file))[1:]
        if args.unwritten:
            with open(args.unwritten, encoding="latin-1", newline="\n") as file:
                unwritten = set(file.read().split("\n"))
        compare(saif, rows, unwritten, args.strip)
    print(f"{len(saif.nets)} nets in {len(saif.instances)} instances, {saif.duration} times {saif.unit} fs")


if __name__ == "__main__":
    try:
        main()
    except Broken as fault:
        print(f"saif_reader.py: {fault}", file=sys.stderr)
        sys.exit(1)
