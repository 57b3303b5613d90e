#!/usr/bin/env python3
"""Counts a dump by a way of its own, for the tests of real dumps.

    count_dump.py DUMP

Words are taken freely, wherever lines end. Prints a line for each signal, "SCOPE PATH<tab>NAME<tab>CHANGES",
after a first one "<tab>FIRST<tab>LAST" with the time stamps. Scalars of H and L count as 1 and 0, as
`kesncd prepare` writes them.
"""
import sys
from collections import Counter


def count_paths(path):
    with open(path, encoding="latin-1") as dump:
        words = iter(dump.read().split())
    scopes, signals, changes, recording, stamps = [], {}, Counter(), True, []
    for word in words:
        if word == "$scope":
            scopes.append((next(words), next(words))[1])
        elif word == "$upscope":
            scopes.pop()
        elif word == "$var":
            _type, _width, code, *name = iter(words.__next__, "$end")
            signals["/".join(scopes), "".join(name)] = code
        elif word in ("$comment", "$date", "$version", "$timescale"):
            while next(words) != "$end":
                pass
        elif word in ("$dumpon", "$dumpall", "$dumpvars", "$dumpoff"):
            recording = word != "$dumpoff"
        elif word[0] in "bBrR":
            changes[next(words)] += recording
        elif word[0] in "01hHlL":
            changes[word[1:]] += recording
        elif word[0] == "#":
            stamps.append(int(word[1:]))
    print("", stamps[0], stamps[-1], sep="\t")
    for (scope, name), code in sorted(signals.items()):
        print(scope, name, changes[code], sep="\t")


count_paths(sys.argv[1])
