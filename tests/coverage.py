#!/usr/bin/env python3
# kx7text tests - prints the lines and branches of the library that no test reaches, by file, and fails where they are
# too many.
#
#     coverage.py LCOV EXCLUSIONS
#
# LCOV is what llvm-cov exports in that form. A line of EXCLUSIONS is FILE | TEXT | REASON: the first line of FILE that has
# TEXT is not counted, nor what stands between the braces that it opens. An exclusion that the tests reach, or that is in
# no file, is an error.
import os
import sys

LEAST_LINES, LEAST_BRANCHES = 98.0, 95.0
ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))


def read(lcov):
    """By file: the calls of each line, and whether each branch was taken."""
    lines, branches = {}, {}
    with open(lcov) as report:
        for record in report:
            kind, _, rest = record.strip().partition(":")
            if kind == "SF":
                name = os.path.relpath(rest, ROOT)
            elif kind == "DA":
                line, calls = rest.split(",")[:2]
                lines.setdefault(name, {})[int(line)] = int(calls)
            elif kind in ("BRF", "BRH"):
                branches.setdefault(name, {})[kind] = int(rest)
    return lines, branches


def block(source, text):
    """The numbers of the lines from the one with `text` to the end of what it opens; none where it is in no line."""
    first = next((i for i, line in enumerate(source) if text in line), None)
    if first is None:
        return range(0)
    # The brace may stand in the line below.
    last = first + (source[first + 1].strip() == "{")
    depth = source[last].count("{") - source[last].count("}")
    while depth > 0:
        last += 1
        depth += source[last].count("{") - source[last].count("}")
    return range(first + 1, last + 2)


def exclude(lines, listed):
    """Takes away what is listed. Returns the number of lines, and what is wrong with the list."""
    excluded, wrong = 0, []
    with open(listed) as file:
        entries = [line.strip().split(" | ") for line in file if line.strip() and not line.startswith("#")]
    for name, text, _ in entries:
        with open(os.path.join(ROOT, name)) as file:
            numbers = [n for n in block(file.read().split("\n"), text) if n in lines.get(name, {})]
        if not numbers or any(lines[name][n] for n in numbers):
            wrong.append(f"{name}: {text}")
            continue
        for n in numbers:
            excluded += 1
            del lines[name][n]
    return excluded, wrong


def main():
    lines, branches = read(sys.argv[1])
    excluded, wrong = exclude(lines, sys.argv[2])
    for name in sorted(lines):
        missed = [n for n, calls in sorted(lines[name].items()) if calls == 0]
        some = branches.get(name, {"BRF": 0, "BRH": 0})
        if missed or some["BRF"] != some["BRH"]:
            print(f"{name}: {some['BRF'] - some['BRH']} of {some['BRF']} branches; "
                  f"lines {', '.join(map(str, missed)) or 'none'}")
    counted = [calls for calls_of in lines.values() for calls in calls_of.values()]
    reached = 100 * sum(calls != 0 for calls in counted) / len(counted)
    found = sum(some["BRF"] for some in branches.values())
    taken = 100 * sum(some["BRH"] for some in branches.values()) / found
    print(f"{reached:.2f} % of {len(counted)} lines ({excluded} more are excluded), {taken:.2f} % of {found} branches")
    for entry in wrong:
        print("an exclusion that the tests reach, or that is in no file: " + entry)
    sys.exit(bool(wrong) or reached < LEAST_LINES or taken < LEAST_BRANCHES)


main()
