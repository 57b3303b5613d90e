#!/usr/bin/env python3
"""Counts a dump by a way of its own, for the tests of real dumps.

Words are taken freely, wherever lines end, so it agrees with the line readers on well-formed dumps
only. Prints for each dump: scopes, signals (codes by scope) and changes of the module tree; then
signals and changes of the top module (the scope of the first variable), as far as its first inner
scope. With --paths it prints a line for each signal instead, "SCOPE PATH<tab>NAME<tab>CHANGES", a
first one "<tab>FIRST<tab>LAST" with the time stamps, and takes scalars of H and L for 1 and 0, as `kesncd prepare` does; prepare_test.cc compares the two.
"""
import sys
from collections import Counter, defaultdict


def words_of(path):
    with open(path, encoding="latin-1") as dump:
        return dump.read().split()


def count(path):
    words = iter(words_of(path))
    stack, scopes, signals = [], 0, defaultdict(list)
    top, top_signals, top_open = None, [], True
    changes, recording, vector = Counter(), True, False
    for word in words:
        if word == "$scope":
            kind, name = next(words), next(words)
            stack.append((scopes, name))
            scopes += 1
            if top is not None:
                top_open = False
        elif word == "$upscope":
            if top is not None and stack[-1] == top:
                top_open = False
            stack.pop()
        elif word == "$var":
            _type, _width, code = next(words), next(words), next(words)
            signals[code].append(stack[-1][0])
            if top is None:
                top = stack[-1]
            if top_open:
                top_signals.append(code)
        elif word in ("$comment", "$date", "$version", "$timescale"):
            while next(words) != "$end":
                pass
        elif word == "$dumpoff":
            recording = False
        elif word in ("$dumpon", "$dumpall", "$dumpvars"):
            recording = True
        elif vector:
            vector = False
            changes[word] += recording
        elif word[0] in "bBrR":
            vector = True
        elif word[0] in "01":
            changes[word[1:]] += recording
    tree_signals = sum(len(set(nodes)) for nodes in signals.values())
    tree_changes = sum(len(nodes) * changes[code] for code, nodes in signals.items())
    top_changes = sum(changes[code] for code in set(top_signals))
    return scopes, tree_signals, tree_changes, len(top_signals), top_changes


def count_paths(path):
    words = iter(words_of(path))
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


if sys.argv[1:2] == ["--paths"]:
    count_paths(sys.argv[2])
    sys.exit()
for dump in sys.argv[1:]:
    print(dump.rsplit("/", 1)[-1], *count(dump))
