#!/usr/bin/env python3
"""Counts the exact activity of a dump's bits by a second, slow way, for the tests of `kesncd activity`.

    activity_reference.py DUMP [--begin T] [--end T]

T is a number of ticks, or a time with a unit where the dump has a time scale. Prints a CSV row for each bit,
"path,t0,t1,tx,tz,tc,ig", in the dump's order, and on standard error what was left out, as JSON.

The account is kept as the definitions say it: the body becomes a list of observed stretches, each a list of
steps, each the last value of every code; then every bit walks through its own steps. Nothing is shared with the
program: a fault has to be made twice to go unseen.
"""
import argparse
import csv
import io
import json
import re
import sys
from collections import Counter
from fractions import Fraction

FOREIGN = (b"\x1f\x8b", b"\x28\xb5\x2f\xfd", b"\xfd7zXZ", b"BZh", b"PK\x03\x04", b"\0\0\0\0\0\0\0\x01\x49",
           b"\xfe\0\0\0\0", b"\x13\x80", b"\x01\x38", b"VZ", b"GHDLwave\n", b"version https://git-lfs",
           b"\xff\xfe", b"\xfe\xff", b"$\0", b"\0$")
COMMANDS = {"$dumpvars": "vars", "$dumpports": "vars", "$dumpall": "all", "$dumpportsall": "all",
            "$dumpon": "on", "$dumpportson": "on", "$dumpoff": "off", "$dumpportsoff": "off"}
STARTS = {"$var": "var", "$scope": "scope", "$upscope": "upscope", "$comment": "comment", "$date": "text",
          "$version": "text", "$timescale": "timescale", "$enddefinitions": "enddefinitions",
          "$vcdclose": "close", **COMMANDS}
SCALARS = dict(zip("01xXzZHhLlUuWw-", "01xxzz1100xxxxx"))
BITS = dict(zip("01zZHhLl", "01zz1100"))
PORTS = dict(zip("DdLl0UuHh1ZTF", "0000011111zzz"))
SCOPE_KINDS = ("module task function begin fork generate struct union class interface package program").split()
UNITS = {"s": 15, "ms": 12, "us": 9, "ns": 6, "ps": 3, "fs": 0}
BITLESS = ("real", "realtime", "string", "event", "parameter")
LARGEST = 2**64 - 1


class Unusable(Exception):
    status = 2


class NothingMatched(Unusable):
    status = 1


def lower(word):
    """Small letters of ASCII only, whatever the other bytes mean."""
    return re.sub("[A-Z]", lambda c: c.group().lower(), word)


def keyword_of(word):
    """The kind of a keyword, "end", "section" for another one, or None."""
    if len(word) < 2 or word[0] != "$":
        return None
    small = lower(word)
    return "end" if small == "$end" else STARTS.get(small) or ("section" if re.match("[a-z]", small[1]) else None)


def starts_section(keyword):
    return keyword not in (None, "end", "section")


def is_stamp_word(word):
    return re.match("#[0-9]", word) is not None


def femtoseconds(text):
    """A time with its unit, or None for what is no such time or no whole number of femtoseconds."""
    match = re.fullmatch(r"([0-9]*)(?:\.([0-9]*))?([A-Za-z]+)", text)
    if not match or lower(match[3]) not in UNITS or not (match[1] or match[2]):
        return None
    zeros = UNITS[lower(match[3])]
    value = Fraction(int((match[1] or "0") + (match[2] or "")), 10**len(match[2] or "")) * 10**zeros
    return int(value) if value.denominator == 1 and value <= LARGEST else None


class Words:
    """The dump's words, each with whether it starts its line and whether the dump ends in it."""

    def __init__(self, data):
        self.words = []
        line = 0
        for match in re.finditer(rb"[^\x00-\x20]+|\n", data):
            if match[0] == b"\n":
                line += 1
                continue
            word = match[0].decode("latin-1")
            starts = not self.words or self.words[-1][2] != line
            self.words.append((word, starts, line, match.end() == len(data)))
        self.at = -1

    def next(self):
        self.at += 1
        return self.at < len(self.words)

    def again(self):
        self.at -= 1

    @property
    def word(self):
        return self.words[self.at][0]

    @property
    def starts_line(self):
        return self.words[self.at][1]

    @property
    def ends_dump(self):
        return self.words[self.at][3]

    @property
    def keyword(self):
        return keyword_of(self.word)


class Variable:
    def __init__(self, scope, name, escaped_range, kind, width, code):
        self.scope, self.kind, self.width, self.code = scope, lower(kind), width, code
        self.name, self.escaped_range = name, escaped_range

    def bits(self):
        """The names of the bits, the leftmost first."""
        name, bracket = self.name, self.escaped_range
        if not name.startswith("\\"):
            match = re.search(r"\[[^\[\]]*\]$", name)
            if match:
                name, bracket = name[:match.start()], match[0]
        indices = bracket and indices_of(bracket)
        if bracket and (not indices or (len(indices) == 1 and self.width > 1)):
            name, indices = name + bracket, None
        if not indices:
            return [name] if self.width == 1 else [f"{name}[{i}]" for i in range(self.width - 1, -1, -1)]
        left, right = indices[0], indices[-1]
        step = 1 if left >= right else -1
        return [f"{name}[{right + step * i}]" for i in range(self.width - 1, -1, -1)]


def indices_of(bracket):
    match = re.fullmatch(r"\[([+-]?[0-9]+)(?::([+-]?[0-9]+))?\]", bracket)
    return [int(text) for text in match.groups() if text is not None] if match else None


class Header:
    def __init__(self, words):
        self.words, self.variables, self.tallies = words, [], Counter()
        self.scopes = {}
        self.parents = {(): ()}
        self.current = ()
        self.unnamed = 0
        self.timescale = None
        while words.next():
            keyword = words.keyword
            if self.variables and (keyword in COMMANDS.values() or is_stamp_word(words.word)):
                words.again()
                return
            if keyword in (None, "end") or keyword in COMMANDS.values():
                continue
            if keyword in ("enddefinitions", "upscope"):
                if words.next() and words.keyword != "end":
                    words.again()
                if keyword == "enddefinitions":
                    return
                self.current = self.current[:-1]
                continue
            section = self.section(keyword)
            if keyword == "timescale":
                self.timescale = femtoseconds("".join(section)) or None
            if keyword == "scope":
                self.open(section)
            if keyword == "var":
                self.declare(section)

    def section(self, keyword):
        plain = {"var": 4, "scope": 2}.get(keyword, 0)
        taken, words = [], self.words
        while words.next():
            following = words.keyword
            if following == "end":
                break
            is_body = plain > 0 and words.starts_line and is_stamp_word(words.word)
            if keyword != "comment" and len(taken) >= plain and (starts_section(following) or is_body):
                words.again()
                break
            taken.append(words.word)
        return taken

    def new_name(self):
        self.unnamed += 1
        return f"unnamed_{self.unnamed}"

    def open(self, section):
        if len(section) == 1 and section[0] not in SCOPE_KINDS:
            section = ["module"] + section
        name = "".join(section[1:])
        self.current += (name or self.new_name(),)

    def declare(self, section):
        while len(section) > 2 and section[1].startswith("[") and "]" not in section[1]:
            section[1:3] = [section[1] + section[2]]
        if len(section) < 3:
            self.tallies["malformed"] += 1
            return
        kind, size, code, *name = section
        escaped_range = None
        if name and name[0].startswith("\\"):
            for i in range(1, len(name)):  # the words of a range are the last ones, the fewest that make one
                i = len(name) - i
                if indices_of("".join(name[i:])):
                    name, escaped_range = name[:i], "".join(name[i:])
                    break
        name = "".join(name) or self.new_name()
        if size.startswith("["):
            match = re.match(r"\[\s*([+-]?[0-9]*)[^:]*(?::([+-]?[0-9]+))?", size)
            left = int(match[1]) if match[1].strip("+-") else 0
            right = int(match[2] or 0) if ":" in size else left
            width = abs(left - right) + 1
            if not escaped_range and not name.endswith("]"):
                if name.startswith("\\"):
                    escaped_range = size
                else:
                    name += size
        else:
            match = re.match(r"[+-]?[0-9]+", size)
            width = max(int(match[0]) if match else 0, 0)
        self.variables.append(Variable(self.current, name, escaped_range, kind, width, code))


class Stretch:
    """What is observed without a break: steps of (time, {code: value}); time is None before the first stamp."""

    def __init__(self, time):
        self.begin, self.end, self.steps = time, time, []

    def give(self, time, code, value):
        if not self.steps or self.steps[-1][0] != time:
            self.steps.append((time, {}))
        self.steps[-1][1][code] = value


class Body:
    def __init__(self, words, codes):
        self.words, self.codes, self.tallies = words, codes, Counter()
        self.first = self.time = None
        self.stretches = [Stretch(None)]
        self.observing = True
        while words.next():
            self.take(words.word)
        if self.observing:
            self.stretches[-1].end = self.time
        for stretch in self.stretches:  # what stands before the first stamp belongs to it
            stretch.begin = self.first if stretch.begin is None else stretch.begin
            stretch.end = self.first if stretch.end is None else stretch.end
            early = [values for time, values in stretch.steps if time in (None, self.first)]
            late = [(time, values) for time, values in stretch.steps if time not in (None, self.first)]
            merged = {code: value for values in early for code, value in values.items()}
            stretch.steps = [(self.first, merged)] * bool(early) + late

    def take(self, word):
        keyword = keyword_of(word)
        if word[0] in SCALARS:
            self.scalar(word)
        elif word[0] in "bB":
            self.give("".join(BITS.get(c, "x") for c in word[1:] or "x"))
        elif word[0] in "rR":
            self.give(None)
        elif word[0] in "sS":
            self.give(None)
        elif word[0] in "pP":
            self.port(word[1:])
        elif word[0] == "#":
            self.stamp(word)
        elif keyword == "off" and self.observing:
            self.stretches[-1].end = self.time
            self.observing = False
        elif keyword == "on" and not self.observing:
            self.stretches.append(Stretch(self.time))
            self.observing = True
        elif keyword in ("comment", "text", "section", "timescale", "scope", "upscope", "var"):
            self.skip(keyword)
        elif keyword is None:
            self.tallies["strays"] += 1

    def skip(self, keyword):
        words = self.words
        while words.next():
            following = words.keyword
            if following == "end":
                return
            is_stamp = words.starts_line and words.word[0] == "#"
            if keyword != "comment" and (is_stamp or starts_section(following)):
                words.again()
                break
        self.tallies["unended"] += 1

    def scalar(self, word):
        if len(word) == 1:
            self.give(SCALARS[word])
        elif word[1:] in self.codes:
            self.note(word[1:], SCALARS[word[0]])
        else:
            self.tallies["undeclared"] += 1

    def port(self, states):
        words = self.words
        if not states:
            if not words.next():
                return
            states = words.word
        for _ in range(2):
            if not words.next():
                return
            if not re.fullmatch("[0-7]+", words.word):
                words.again()
                break
        self.give("".join(PORTS.get(c, "x") for c in states))

    def give(self, value):
        """Takes the code that follows as a word of its own."""
        words = self.words
        line = words.at
        if not words.next():
            self.tallies["torn"] += 1
        elif words.word in self.codes:
            self.note(words.word, value)
        else:
            self.tallies["undeclared"] += 1
            if words.starts_line or words.word[0] == "#" or words.keyword is not None:
                words.again()
        return line

    def note(self, code, value):
        if self.observing and value is not None:
            self.stretches[-1].give(self.time, code, value)

    def stamp(self, word):
        match = re.fullmatch(r"#([0-9]+)(\.[0-9]*)?", word)
        if not match or int(match[1]) > LARGEST:
            self.tallies["strays"] += 1
            return
        if self.words.ends_dump:
            self.tallies["cut_stamps"] += 1
            return
        self.tallies["fractions"] += match[2] is not None
        ticks = int(match[1])
        if self.time is None:
            self.first = self.time = ticks
        elif ticks < self.time:
            self.tallies["backward"] += 1
        else:
            self.time = ticks


def bit_of(value, position):
    if position < len(value):
        return value[-1 - position]
    return "0" if value[0] in "01" else value[0]


def count(body, code, position, begin, end):
    """The figures of a bit: its ticks at 0, 1, x and z, its toggles and its excursions."""
    ticks, toggles, excursions = Counter(), 0, 0
    for stretch in body.stretches:
        value, since, known, touched = "x", stretch.begin, None, False
        for time, values in stretch.steps:
            if code not in values:
                continue
            ticks[value] += max(0, min(time, end) - max(since, begin))
            was, value, since = value, bit_of(values[code], position), time
            if value == "x":
                touched = True
            elif value in "01":
                if begin < time <= end and known is not None:
                    toggles += value != known
                    excursions += value == known and was not in "01" and touched
                known, touched = value, False
        ticks[value] += max(0, min(stretch.end, end) - max(since, begin))
    return [ticks["0"], ticks["1"], ticks["x"], ticks["z"], toggles, excursions]


def window_of(args, body, tick):
    def ticks_of(text, up):
        if re.fullmatch("[0-9]+", text):
            return int(text)
        if tick is None or femtoseconds(text) is None:
            raise Unusable(f"the time {text} cannot be read in ticks")
        return (femtoseconds(text) + (tick - 1 if up else 0)) // tick

    if args.begin is None and args.end is None:
        return body.first or 0, body.time or 0
    if body.first is None:
        raise NothingMatched("a dump without a time stamp has no window")
    begin = body.first if args.begin is None else ticks_of(args.begin, True)
    end = body.time if args.end is None else ticks_of(args.end, False)
    body.tallies["end_cut_back"] = int(end > body.time)
    if begin > end or begin > body.time or end < body.first:
        raise NothingMatched("the window holds nothing of the dump")
    return max(begin, body.first), min(end, body.time)


def rows_of(header, body, begin, end):
    seen, figures = set(), {}
    for variable in header.variables:
        if variable.kind in BITLESS or variable.width <= 0:
            header.tallies["bitless" if variable.kind in BITLESS else "widthless"] += 1
            continue
        for position, name in zip(range(variable.width - 1, -1, -1), variable.bits()):
            key = (variable.scope, name, variable.code, position)
            if key in seen:
                continue
            seen.add(key)
            bit = key[2:]
            if bit not in figures:
                figures[bit] = [0] * 6 if body.first is None else count(body, *bit, begin, end)
            yield ["/".join(variable.scope + (name,))] + figures[bit]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("dump")
    parser.add_argument("--begin")
    parser.add_argument("--end")
    args = parser.parse_args()
    with open(args.dump, "rb") as dump:
        data = dump.read()
    if not data or data.startswith(FOREIGN) or (b"\0" in data[:4096] and data.find(b"$") % 2**32 > data.find(b"\0")):
        raise Unusable("no VCD file")
    words = Words(data.removeprefix(b"\xef\xbb\xbf"))
    header = Header(words)
    if not header.variables:
        raise Unusable("declares no variable")
    body = Body(words, {variable.code for variable in header.variables})
    begin, end = window_of(args, body, header.timescale)
    out = io.TextIOWrapper(sys.stdout.buffer, encoding="latin-1", newline="")
    writer = csv.writer(out, lineterminator="\r\n")
    writer.writerow("path t0 t1 tx tz tc ig".split())
    writer.writerows(rows_of(header, body, begin, end))
    out.flush()
    observed = sum(max(0, min(s.end, end) - max(s.begin, begin)) for s in body.stretches) if body.first is not None else 0
    facts = {"tick_fs": header.timescale, "begin": begin, "end": end, "observed": observed,
             **header.tallies, **body.tallies}
    print(json.dumps(facts), file=sys.stderr)


if __name__ == "__main__":
    try:
        main()
    except Unusable as failure:
        print(f"activity_reference.py: {failure}", file=sys.stderr)
        sys.exit(failure.status)
