#!/usr/bin/env python3
"""Writes a small random dump that is legal where it has to be and odd wherever it may be.

    random_dump.py SEED >DUMP

The same seed gives the same bytes. Odd are the names and ranges, widths, aliases, sections, stamps, values and
the places of comments; simulators, converters and cut files were seen to write each of them.
"""
import random
import sys

SCALARS = "0101010101xzXZHhLlUuWw-"
BITS = "0101010101xzXZHLhlUW-_"
PORTS = "DUNZduLHXTAaBbCcf01?FlhZ"
TYPES = "wire reg integer logic tri supply0 port wire reg wire bit time parameter real event string realtime".split()
NAMES = ["a", "b", "q", "clk", "data", "mem", "net_1", "T0", "NET", "IG", "a$b", "9lives", "x.y", "d:e", "ünï", "a,b",
         'say"so', "DIVIDER", "port"]
INSERTED = ["$comment 1! #7 b1 ! $end", "$comment\n#12\n0!\n$end", "$COMMENT\nx $dumpoff $end", "$version a b $end",
            "$date\ntoday\n$end", "$attrbegin misc 07 3 $end", "$vcdclose #{late} $end", "$Foo bar $end",
            "stray", "?", "$", "#", "#12a", "#-4", "#99999999999999999999999", "$end", "$comment $end"]


class RandomDump:
    def __init__(self, seed):
        self.random = random.Random(seed)
        self.out, self.codes, self.names, self.time = [], [], [], 0

    def chance(self, share):
        return self.random.random() < share

    def pick(self, items):
        return self.random.choice(items)

    def between(self, low, high):
        return self.random.randint(low, high)

    def blank(self):
        return self.pick([" "] * 12 + ["  ", "\t", "\n", "\r\n", "\n\n", "\0 "]) if self.odd else " "

    def say(self, *words):
        """Writes a section or a value: its words anywhere, after it a newline as a rule."""
        self.out.append(self.blank().join(words) + (self.pick([" ", "\t", "\n"]) if self.chance(0.1) else "\n"))

    def word(self, keyword):
        return keyword.upper() if self.odd and self.chance(0.05) else keyword

    def ends(self):
        return [] if self.odd and self.chance(0.03) else [self.word("$end")]

    def new_code(self):
        if self.chance(0.05):
            return self.pick(["#1", "b1", "$end1", "0", "1", "12", "x", "b", "$dumpoff", "#"])
        return "".join(chr(self.between(33, 126)) for _ in range(self.pick([1, 1, 1, 2, 2, 3, 4, 9])))

    def index(self):
        number = self.pick([0, 0, 0, 1, 2, 3, 7, 15, -1, -4, 31])
        return self.pick([f"{number}"] * 8 + [f"{number:+d}", f"0{abs(number)}"])

    def range_of(self, width):
        """A range that agrees with the width, mostly; or an index; or what looks like one."""
        low = self.between(-5, 9)
        left, right = self.pick([(low + width - 1, low), (low, low + width - 1), (width - 1, 0)])
        agreeing = f"[{left}:{right}]"
        odd = [f"[{self.index()}:{self.index()}]", f"[{self.index()}]", "[a:0]", "[]", "[3:0", "[3:0]_q", "[1:2:3]"]
        return self.pick([agreeing] * 9 + odd + ["", ""])

    def loosened(self, bracket):
        """A bracket's words, where blanks may stand in it."""
        for mark in "[:]":
            if self.chance(0.3):
                bracket = bracket.replace(mark, f" {mark} ")
        return bracket.split()

    def name_words(self, width):
        if self.names and self.chance(0.06):
            return self.pick(self.names)
        name = self.pick(NAMES)
        if self.chance(0.15):
            name = "\\" + name + self.pick(["", "[2]", "[3:0]", "/it", "$end"])
        elif self.chance(0.1):
            name = self.pick(["\\", ""]) + name + f"[{self.index()}]"
        bracket = self.range_of(width) if width != 1 or self.chance(0.3) else ""
        if self.chance(0.05):
            bracket = f"[{self.index()}]" + (" " if self.chance(0.5) else "") + bracket
        words = [name + bracket] if self.chance(0.3) else [name, *bracket.split()]
        if self.odd and self.chance(0.15):
            words = [name, *self.loosened(bracket)]
        words = [] if self.odd and self.chance(0.02) else words
        self.names.append(words)
        return words

    def declare(self):
        width = self.pick([1, 1, 1, 1, 2, 3, 4, 8, 9, 33, 64, 70, 130])
        kind = self.pick(TYPES)
        kind = self.pick([kind] * 4 + [kind.upper(), kind.capitalize()])
        code, known = (self.pick(self.codes) if self.codes and self.chance(0.25) else (self.new_code(), width))
        if self.chance(0.8):
            width = known
        self.codes.append((code, width))
        size = str(width)
        if self.odd and self.chance(0.08):
            size = self.pick(["0", "-3", "x", f"{width}x", f"0{width}", f"[{width - 1}:0]", f"[ {width - 1} : 0 ]", "[2]"])
        self.say(self.word("$var"), kind, size, code, *self.name_words(width), *self.ends())

    def scopes(self, depth):
        for _ in range(self.between(1, 3) if depth else self.pick([1, 1, 2, 3])):
            name = self.pick(NAMES + ["top", "dut", "u1", "g[0]", "\\g [0]", "it s"])
            kind = self.pick(["module", "begin", "task", "vhdl_block"])
            words = self.pick([[kind, name]] * 9 + [[kind], [], [name]]) if self.odd else [kind, name]
            self.say(self.word("$scope"), *words, *self.ends())
            for _ in range(self.between(0, 5)):
                self.declare()
                self.insert(0.03)
            if depth < 3 and self.chance(0.5):
                self.scopes(depth + 1)
                if self.chance(0.4):
                    self.declare()
            self.say(self.word("$upscope"), "$end")
            if self.odd and self.chance(0.05):
                self.say("$upscope", "$end")
            if self.chance(0.05):
                self.declare()

    def insert(self, share):
        if self.odd and self.chance(share):
            self.out.append(self.pick(INSERTED).replace("{late}", str(self.time)) + "\n")

    def head(self):
        if self.chance(0.05):
            self.out.append("\u00ef\u00bb\u00bf")
        self.say("$date", "some day", *self.ends())
        scales = ["1ns"] * 5 + ["10 ps", "1 us", "100fs", "1s", "1NS", "2ns", "0.5 ns", "0ns", "1 parsec", ""]
        for _ in range(self.pick([1, 1, 1, 1, 0, 2])):
            self.say(self.word("$timescale"), self.pick(scales if self.odd else ["1ns"]), *self.ends())
        while not self.codes:
            self.scopes(0)
        if not (self.odd and self.chance(0.1)):
            self.say(self.word("$enddefinitions"), *self.ends())

    def vector_of(self, width):
        long = width + self.between(1, 5)
        length = self.pick([width, width, width, self.between(1, width), 1, long])
        return "".join(self.pick(BITS if self.odd else "01xz") for _ in range(length))

    def value(self):
        code, width = self.pick(self.codes)
        if self.odd and self.chance(0.02):
            code = self.new_code()
        kind = self.random.random()
        if self.odd and kind < 0.03:
            states = "".join(self.pick(PORTS) for _ in range(width))
            self.say("p" + states, *(["6" * width, "0" * width][:self.pick([2, 2, 2, 1, 0])]), code)
        elif self.odd and kind < 0.05:
            self.say(self.pick(["r1.5", "R-3e4", "sHello", "s", "r", "b", "B"]), code)
        elif self.odd and kind < 0.06:
            self.out.append(f"b01 $comment no value $end {code}\n")
        elif self.chance(0.1 if width > 1 else 0.8):
            apart = self.odd and self.chance(0.05)
            self.say(self.pick(SCALARS if self.odd else "01xz") + (" " if apart else "") + code)
        else:
            self.say(self.pick("bbbB") + self.vector_of(width), code)

    def stamp(self):
        self.time += self.pick([0, 1, 1, 1, 2, 5, 10, 100]) if self.chance(0.98) else 2**self.between(20, 33)
        time = str(self.time)
        if self.odd and self.chance(0.05):
            time = self.pick([str(max(0, self.time - self.between(1, 20))), "0" + time, time + ".5", time + ".",
                              "18446744073709551616", time + "x"])
        self.say("#" + time)

    def command(self):
        keyword = self.pick(["$dumpoff", "$dumpon", "$dumpoff", "$dumpon", "$dumpall", "$dumpvars"])
        if self.chance(0.1):
            keyword = keyword.replace("dump", "dumpports").replace("portsvars", "ports")
        self.say(self.word(keyword))
        for _ in range(self.between(0, 6)):
            self.value()
            if self.odd and self.chance(0.03):
                self.stamp()
        if not self.chance(0.1):
            self.say(*self.ends())

    def body(self):
        self.time = self.pick([0, 0, 0, 7, 1000, 2**40, 2**63 + 5])
        for _ in range(self.pick([0, 0, 3])):
            self.value()
        if self.chance(0.5):
            self.say("#" + str(self.time))
            self.command()
        for _ in range(self.pick([0, 1, 5, 20, 60] * 8 + [700])):  # now and then more than a byte counts
            self.stamp()
            self.insert(0.1)
            for _ in range(self.pick([0, 1, 2, 3, 6])):
                self.value()
                self.insert(0.01)
            while self.chance(0.12):  # what comes after one in its step is in front of the next
                self.command()
                for _ in range(self.pick([0, 0, 1, 3])):
                    self.value()

    def text(self):
        self.odd = self.chance(0.8)
        self.head()
        self.body()
        text = "".join(self.out).encode("latin-1", "replace")
        if self.chance(0.3):
            text = text.rstrip() + b"\n" * self.chance(0.5)
            if self.chance(0.5):
                text += f"\n#{self.time + 3}".encode() + self.pick([b"", b"", b"\n", b" ", b".5", b".5 "])
        if self.odd and self.chance(0.1):
            text = text[:self.between(0, len(text))]
        return text


sys.stdout.buffer.write(RandomDump(int(sys.argv[1])).text())
