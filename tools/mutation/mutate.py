#!/usr/bin/env python3
# kx7text - seeds single faults in the converters, one at a time, and lists those that no test notices.
#
#     mutate.py [COUNT] [--seed N] [--seconds N] [--files GLOB…]
#
# Works on a copy below build/mutation. A fault is a comparison or an operator exchanged, a constant one off, a condition
# turned round or a statement left out. It counts as noticed if a test fails, crashes or takes longer than the time limit;
# faults that do not compile do not count. The same seed chooses the same faults in the same sources.
import argparse
import fnmatch
import os
import random
import re
import shutil
import subprocess
import sys
import time

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
BUILD = os.path.join(ROOT, "build", "mutation")
TREE = os.path.join(BUILD, "tree")

COMPARISONS = {"==": "!=", "!=": "==", "<": "<=", "<=": "<", ">": ">=", ">=": ">"}
OPERATORS = {"&&": "||", "||": "&&", "+": "-", "-": "+", "<<": ">>", ">>": "<<", "+=": "-=", "-=": "+="}
OPERATOR = re.compile(r" (==|!=|<=|>=|<<|>>|&&|\|\||\+=|-=|<|>|\+|-) ")
CONSTANT = re.compile(r"(?<![\w.'\"])(0x[0-9A-Fa-f]+|[0-9]+)(?![\w.'\"])")
STATEMENT = re.compile(r"^\s+(?!return|using|delete|static|constexpr|throw|typedef|friend|extern)"
                       r"((\+\+|--)?\*?[\w.\->\[\]()]+(\+\+|--)?( (=|\+=|-=|\|=|&=|>>=|<<=) [^=].*)?);$")
CONDITION = re.compile(r"\b(if|while) \((.*)\)( \{)?$")


def faults_of(name):
    """(line number, line with the fault, kind) for each place of a source file where one can be seeded."""
    faults = []
    with open(os.path.join(ROOT, name)) as source:
        lines = source.read().split("\n")
    in_comment = False
    for number, line in enumerate(lines):
        code = line.strip()
        in_comment = in_comment or code.startswith("/*")
        skipped = in_comment or not code or code.startswith(("//", "#", "template", "static_assert", "extern"))
        if "*/" in code:
            in_comment = False
        if skipped:
            continue
        end = line.find("//")
        body = line if end < 0 else line[:end]
        for match in OPERATOR.finditer(body):
            old = match.group(1)
            if "template" in body or "operator" in body or "<<=" in body:
                continue
            new = COMPARISONS.get(old) or OPERATORS[old]
            kind = "comparison" if old in COMPARISONS else "operator"
            faults.append((number, line[: match.start(1)] + new + line[match.end(1):], kind))
        for match in CONSTANT.finditer(body):
            value = int(match.group(1), 0)
            faults.append((number, line[: match.start(1)] + str(value + 1) + line[match.end(1):], "constant"))
        if STATEMENT.match(body):
            faults.append((number, re.match(r"\s*", line).group() + ";", "dropped statement"))
        match = CONDITION.search(body)
        if match and "constexpr" not in body:
            faults.append((number, line[: match.start(2)] + "!(" + match.group(2) + ")" + line[match.end(2):], "condition"))
    return faults


def run(command, seconds):
    """Exit status; None: out of time."""
    process = subprocess.Popen(command, cwd=TREE, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                               start_new_session=True)
    try:
        return process.wait(seconds)
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, 9)
        process.wait()
        return None


def builds():
    return run(["cmake", "--build", "build/release", "--target", "library_tests", "internal_tests"], 1800) == 0


def noticed(seconds):
    """By which tests, or None. The quicker ones go first."""
    programs = [
        ("library_tests", []),
        ("internal_tests", ["--gtest_filter=GuardPages*:*Kernels*:Engines*"]),
        ("internal_tests", ["--gtest_filter=-GuardPages*:*Kernels*:Engines*"]),
    ]
    for program, arguments in programs:
        status = run(["build/release/tests/" + program, "--gtest_fail_fast", *arguments], seconds)
        if status is None:
            return "time limit"
        if status != 0:
            return program
    return None


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("count", nargs="?", type=int, default=60)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--seconds", type=int, default=300, help="time limit of a test program")
    parser.add_argument("--files", nargs="*", default=["kx7/converters/*.cpp", "kx7/converters/*.h"])
    options = parser.parse_args()

    tracked = subprocess.run(["git", "ls-files"], cwd=ROOT, capture_output=True, text=True, check=True).stdout.split("\n")
    for name in filter(None, tracked):
        target = os.path.join(TREE, name)
        os.makedirs(os.path.dirname(target), exist_ok=True)
        if not os.path.exists(target) or open(target, "rb").read() != open(os.path.join(ROOT, name), "rb").read():
            shutil.copy(os.path.join(ROOT, name), target)
    # Quick to compile; warnings about a fault are not errors.
    flags = ["-DKX7_WERROR=OFF", "-DKX7_BUILD_CLI=OFF", "-DCMAKE_CXX_FLAGS_RELEASE=-O1"]
    if run(["cmake", "--preset", "release", *flags], 300) != 0 or not builds():
        sys.exit("mutate: the sources do not build")
    if noticed(options.seconds):
        sys.exit("mutate: the tests fail without a fault")

    sources = sorted(n for n in tracked if any(fnmatch.fnmatch(n, p) for p in options.files))
    faults = [(name, *fault) for name in sources for fault in faults_of(name)]
    random.Random(options.seed).shuffle(faults)
    seeded, survivors = 0, []
    for name, number, faulty, kind in faults:
        if seeded == options.count:
            break
        with open(os.path.join(ROOT, name)) as source:
            lines = source.read().split("\n")
        was = lines[number]
        lines[number] = faulty
        path = os.path.join(TREE, name)
        started = time.monotonic()
        with open(path, "w") as target:
            target.write("\n".join(lines))
        by = noticed(options.seconds) if builds() else "compiler"
        shutil.copy(os.path.join(ROOT, name), path)
        os.utime(path)
        if by == "compiler":
            continue
        seeded += 1
        print(f"{seeded:4} {by or 'SURVIVED':16} {time.monotonic() - started:5.0f} s  {kind:18} {name}:{number + 1}", flush=True)
        if not by:
            survivors.append((name, number, was, faulty))
    print(f"{len(faults)} places; {seeded} faults seeded, {seeded - len(survivors)} noticed")
    for name, number, was, faulty in survivors:
        print(f"{name}:{number + 1}\n  - {was.strip()}\n  + {faulty.strip()}")


if __name__ == "__main__":
    main()
