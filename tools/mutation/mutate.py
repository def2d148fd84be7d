#!/usr/bin/env python3
# kx7text - seeds single faults in the library, one at a time, and lists those that no test notices.
#
#     mutate.py [COUNT] [--seed N] [--files GLOB…]     a sample of the size wanted
#     mutate.py --again                                those that went unnoticed in the last run, after tests were added
#
# A fault is a comparison or an operator exchanged, a constant one off, a condition turned round or a statement left out.
# Half of the sample lies in kx7/converters, the rest in equal shares in the other folders but kx7/tables, whose lists have
# tests of their own. Faults that do not compile do not count. A fault is noticed if a test fails, crashes, hangs or takes
# too much memory; first the tests that are about its file are asked, then all that are quick, then all. The place of a
# fault in the order of the sample follows from the seed and its line, so that a change elsewhere leaves the sample as it is.
#
# Everything happens below build/mutation: tree/ is a copy of the sources with one fault at most, build/ what is built of it.
import argparse
import fcntl
import fnmatch
import hashlib
import json
import os
import re
import resource
import shutil
import signal
import subprocess
import sys
import time

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
BASE = os.path.join(ROOT, "build", "mutation")
TREE = os.path.join(BASE, "tree")
BUILD = os.path.join(BASE, "build")
UNNOTICED = os.path.join(BASE, "unnoticed.json")

FOLDERS = ["kx7/converters", "kx7/charset", "kx7/convert", "kx7/kernels", "kx7/text"]
# Lists of names and numbers.
LEFT_OUT = ["kx7/charset/CharSetNames.h", "kx7/convert/CharSetLabels.h"]

COMPARISONS = {"==": "!=", "!=": "==", "<": "<=", "<=": "<", ">": ">=", ">=": ">"}
OPERATORS = {"&&": "||", "||": "&&", "+": "-", "-": "+", "<<": ">>", ">>": "<<", "+=": "-=", "-=": "+="}
OPERATOR = re.compile(r" (==|!=|<=|>=|<<|>>|&&|\|\||\+=|-=|<|>|\+|-) ")
CONSTANT = re.compile(r"(?<![\w.'\"])(0x[0-9A-Fa-f]+|[0-9]+)([uUlL]*)(?![\w.'\"])")
STATEMENT = re.compile(r"^\s+(?!return|using|delete|static|constexpr|throw|typedef|friend|extern)"
                       r"((\+\+|--)?\*?[\w.:\->\[\]()]+(\+\+|--)?( (=|\+=|-=|\|=|&=|>>=|<<=) [^=].*)?"
                       r"|[\w.:\->]+\(.*\));$")
# Lists of numbers among the code, and the values of enumerators.
TABLE = re.compile(r"(\b\w+, +){4,}|^\s*\w+ = \w+,")
CONDITION = re.compile(r"\b(if|while) \((.*)\)( \{)?$")

# The tests that are about a file, by the first pattern that it matches. Each line: of library_tests; of internal_tests.
SUBJECTS = [
    ("kx7/kernels/*", "", "*Kernels*:GuardPages*:StrictUTF8*:Engines*"),
    ("kx7/converters/*UTF8*", "UTF8*:EntryPoints*:*UTF_8*:*UTF8", "StrictUTF8*:Engines*:GuardPages*"),
    ("kx7/converters/*SBCS*", "SingleByte*:*8859*", "SingleByte*:Engines*:GuardPages*"),
    ("kx7/converters/*GB18030*", "GB18030*:*/GB18030", "GB18030*:Multibyte*"),
    ("kx7/converters/*EUC_JP*", "EUC*:Multibyte*:*/EUC*", "Multibyte*:GuardPages*"),
    ("kx7/converters/*E[uU][cC]*", "EUC*:Multibyte*:*/EUC*", "Multibyte*:GuardPages*"),
    ("kx7/converters/*DBCSEx*", "ShiftJis*:DoubleByte*", "Multibyte*:GuardPages*"),
    ("kx7/converters/*DBCS*", "DoubleByte*:CP9*:Big5*:ShiftJis*:Multibyte*", "Multibyte*:GuardPages*"),
    ("kx7/converters/*MBCS*", "DoubleByte*:CP9*:Big5*:ShiftJis*:GB18030*:EUC*:Multibyte*", "Multibyte*:GuardPages*"),
    ("kx7/converters/DoubleByte*", "DoubleByte*:CP9*:Big5*:ShiftJis*:GB18030*:EUC*", "Multibyte*:GuardPages*"),
    ("kx7/converters/*UTF16*", "UTF16*:Wide*:Converters*:*UTF16*", "GuardPages*:Engines*"),
    ("kx7/converters/*UTF32*", "UTF32*:Wide*:Converters*:*UTF32*", "GuardPages*:Engines*"),
    ("kx7/converters/Wide*", "Wide*:UTF16*:UTF32*", "GuardPages*:Engines*"),
    ("kx7/converters/L*", "Lookup*:MultibyteConverters*:GB18030*", "*Allocation*:MultibyteLoading*"),
    ("kx7/converters/*", "UTF8*:LongTexts*:ShiftJis*", "*Engines*:ThroughUTF16*:DecodeCounted*:GuardPages*"),
    ("kx7/charset/*", "EntryPoint*:W*:Names*:CharSet*:Registry*", ""),
    ("kx7/convert*", "Lookup*:*Sizes*:Stream*:*Streams*:Validate*:DetectBom*:*Whole*", ""),
    ("kx7/text/*", "String*:Char*:ListModel*:StandardLibrary*", ""),
    ("*", "", ""),
]
PROGRAMS = ["library_tests", "internal_tests"]
# What a fault must pass besides. The programs that load the library again and again are about its linking.
OTHER_TESTS = (r"^(oracle_tests|(environment|concurrency)\..*"
               r"|lifecycle\.(allocation|load_allocation|fork_while_loading|large_source|static_order.*|os_default.*))$")

SLOW = 1.0  # seconds of the processor for one test that make it one of the last to be asked
MEMORY = 16 << 30  # address space; the tables of a double-byte set are large and mostly untouched


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
        if skipped or "__attribute__" in code:
            continue
        end = line.find("//")
        body = line if end < 0 else line[:end]
        for match in OPERATOR.finditer(body):
            old = match.group(1)
            if "template" in body or "operator" in body or "<<=" in body or body.count('"', 0, match.start()) % 2:
                continue
            new = COMPARISONS.get(old) or OPERATORS[old]
            kind = "comparison" if old in COMPARISONS else "operator"
            faults.append((number, line[: match.start(1)] + new + line[match.end(1):], kind))
        for match in CONSTANT.finditer(body):
            if TABLE.search(body) or body.count('"', 0, match.start()) % 2:
                continue
            value = str(int(match.group(1), 0) + 1) + match.group(2)
            faults.append((number, line[: match.start(1)] + value + line[match.end(2):], "constant"))
        if STATEMENT.match(body):
            faults.append((number, re.match(r"\s*", line).group() + ";", "dropped statement"))
        match = CONDITION.search(body)
        if match and "constexpr" not in body:
            turned = line[: match.start(2)] + "!(" + match.group(2) + ")" + line[match.end(2):]
            faults.append((number, turned, "condition"))
    return faults


def in_order(name, seed):
    """The faults of a file with their places in the order of the sample."""
    with open(os.path.join(ROOT, name)) as source:
        lines = source.read().split("\n")
    times = {}
    for number, faulty, kind in faults_of(name):
        what = (lines[number].strip(), faulty.strip(), kind)
        times[what] = times.get(what, 0) + 1
        place = hashlib.sha256(repr((seed, name, what, times[what])).encode()).hexdigest()
        yield place, name, number, lines[number].strip(), faulty, kind


def sample(names, count, shares, seed):
    """All faults, those first that make up the sample: a list for each share, and how many to take of it."""
    parts = []
    for folder, share in shares.items():
        chosen = [name for name in names if folder is None or in_folder(name, folder)]
        faults = sorted(fault for name in chosen for fault in in_order(name, seed))
        parts.append((faults, share))
    total = sum(share for faults, share in parts if faults) or 1
    counts = [min(len(faults), round(count * share / total)) for faults, share in parts]
    counts[0] = max(0, min(len(parts[0][0]), counts[0] + count - sum(counts)))
    return [(faults, wanted) for (faults, share), wanted in zip(parts, counts)]


def in_folder(name, folder):
    """convert.h stands beside its folder."""
    return os.path.dirname(name) == folder or name == folder + ".h"


def run(command, processor_seconds=None, seconds=3600, parts=1):
    """
    Exit status; None: out of time.
    @param parts  processes that share out the tests of a test program
    """
    def limit():
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
        if processor_seconds:
            most = int(processor_seconds) + 1
            resource.setrlimit(resource.RLIMIT_CPU, (most, most + 5))
            resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))

    processes, status = [], 0
    with open(os.path.join(BASE, "log"), "w") as log:
        for part in range(parts):
            share = {"GTEST_TOTAL_SHARDS": str(parts), "GTEST_SHARD_INDEX": str(part)} if parts > 1 else {}
            processes.append(subprocess.Popen(command, cwd=TREE, stdin=subprocess.DEVNULL, stdout=log,
                                              stderr=subprocess.STDOUT, env={**os.environ, **share},
                                              start_new_session=True, preexec_fn=limit))
    end = time.monotonic() + seconds
    try:
        waiting = list(processes)
        while waiting and status == 0:
            if time.monotonic() > end:
                return None
            try:
                status = waiting[0].wait(0.05)
                waiting.pop(0)
            except subprocess.TimeoutExpired:
                waiting.append(waiting.pop(0))
        return status
    finally:
        for process in processes:
            try:
                os.killpg(process.pid, signal.SIGKILL)
            except ProcessLookupError:
                pass
            process.wait()


def fail(message):
    with open(os.path.join(BASE, "log"), errors="replace") as log:
        lines = log.read().split("\n")
    sys.exit("\n".join(["mutate: " + message, *lines[-30:]]))


def builds(*targets):
    return run(["cmake", "--build", BUILD, *(["--target", *targets] if targets else [])], None, 1800) == 0


class Tests:
    """The tests of the two programs, and how long each takes where there is no fault."""

    def __init__(self, sources):
        """With the times that were stored when the same sources passed."""
        stored = os.path.join(BASE, "times.json")
        self.seconds, self.others = {}, 0.0
        try:
            with open(stored) as file:
                times = json.load(file)
            if times["sources"] == sources:
                self.seconds, self.others = times["seconds"], times["others"]
                return
        except (OSError, ValueError, KeyError):
            pass
        print("mutate: running the tests without a fault", flush=True)
        for program in PROGRAMS:
            self.seconds[program] = self.times(program)
        started = time.monotonic()
        if not builds() or not self.pass_others(3600):
            fail("the tests fail without a fault")
        self.others = time.monotonic() - started
        with open(stored, "w") as file:
            json.dump({"sources": sources, "seconds": self.seconds, "others": self.others}, file)

    def times(self, program):
        """Seconds of the processor by test."""
        report = os.path.join(BASE, program + ".json")
        used = resource.getrusage(resource.RUSAGE_CHILDREN)
        if self.start(program, ["--gtest_output=json:" + report]) != 0:
            fail("the tests fail without a fault")
        now = resource.getrusage(resource.RUSAGE_CHILDREN)
        with open(report) as found:
            suites = json.load(found)["testsuites"]
        seconds = {suite["name"] + "." + test["name"]: float(test["time"].rstrip("s"))
                   for suite in suites for test in suite["testsuite"]}
        # The report has seconds of the clock, and the machine may be busy.
        factor = (now.ru_utime + now.ru_stime - used.ru_utime - used.ru_stime) / (sum(seconds.values()) or 1)
        return {test: time * factor for test, time in seconds.items()}

    @staticmethod
    def start(program, arguments, processor_seconds=None, seconds=3600, parts=1):
        command = [os.path.join(BUILD, "tests", program), "--gtest_fail_fast", *arguments]
        return run(command, processor_seconds, seconds, parts)

    def stages(self, name):
        """(program, filter), the likeliest to notice a fault in that file first."""
        subject = next(line for line in SUBJECTS if fnmatch.fnmatch(name, line[0]))
        slow = {p: [t for t, s in self.seconds[p].items() if s > SLOW] for p in PROGRAMS}
        own = dict(zip(PROGRAMS, subject[1:]))
        order = sorted(PROGRAMS, key=lambda p: not own[p])
        for program in filter(own.get, order):
            yield program, own[program] + "-" + ":".join(slow[program])
        for program in order:
            yield program, "*-" + ":".join(slow[program] + list(filter(None, [own[program]])))
        for program in filter(slow.get, order):
            yield program, ":".join(slow[program])

    def noticed(self, name):
        """By what; None: by nothing; "compiler": it is no program."""
        for program, wanted in self.stages(name):
            if not builds(program):
                return "compiler"
            # A fault may make a test somewhat slower, and a machine may be busy.
            most = 20 + 3 * self.cost_of(program, wanted)
            status = self.start(program, ["--gtest_filter=" + wanted], most, 10 * most, os.cpu_count())
            if status is None or status == -signal.SIGXCPU:
                return "time limit"
            if status != 0:
                return program.replace("_tests", "") if status > 0 else signal.Signals(-status).name
        if not builds():
            return "compiler"
        return None if self.pass_others(300 + 5 * self.others) else "others"

    def cost_of(self, program, wanted):
        """Seconds of the tests that a filter leaves."""
        chosen, _, left_out = wanted.partition("-")
        matches = lambda test, patterns: any(fnmatch.fnmatch(test, p) for p in patterns.split(":") if p)
        return sum(s for t, s in self.seconds[program].items() if matches(t, chosen) and not matches(t, left_out))

    @staticmethod
    def pass_others(seconds):
        return run(["ctest", "--test-dir", BUILD, "-R", OTHER_TESTS, "--stop-on-failure", "-j2", "--no-tests=error"],
                   None, seconds) == 0


def tracked():
    """The names of the sources."""
    listed = subprocess.run(["git", "ls-files", "-co", "--exclude-standard"], cwd=ROOT, capture_output=True, text=True)
    if listed.returncode != 0:
        sys.exit("mutate: needs a git checkout: " + listed.stderr.strip())
    return [name for name in listed.stdout.split("\n") if name and os.path.isfile(os.path.join(ROOT, name))]


def copy_tree(names):
    """Makes the copy equal to the sources, leaving files alone that are, and returns what stands for them all."""
    digest = hashlib.sha256()
    for name in names:
        source, target = os.path.join(ROOT, name), os.path.join(TREE, name)
        os.makedirs(os.path.dirname(target), exist_ok=True)
        with open(source, "rb") as file:
            content = file.read()
        if name.startswith(("kx7/", "tests/", "cmake/", "CMake")):
            digest.update(repr((name, hashlib.sha256(content).hexdigest())).encode())
        if not os.path.exists(target) or open(target, "rb").read() != content:
            shutil.copy(source, target)
            os.utime(target)
    known = set(names)
    for folder, _, files in os.walk(TREE):
        for file in files:
            path = os.path.join(folder, file)
            if os.path.relpath(path, TREE) not in known:
                os.remove(path)
    return digest.hexdigest()


def key(fault):
    """What a fault is recognised by where lines have moved."""
    place, name, number, was, faulty, kind = fault
    return [name, was, faulty.strip(), kind]


def left_from_last_run(parts):
    try:
        with open(UNNOTICED) as file:
            last = json.load(file)
    except (OSError, ValueError):
        sys.exit("mutate: no faults of an earlier run in " + UNNOTICED)
    left = [[fault for fault in faults if key(fault) in last] for faults, wanted in parts]
    return [(faults, len(faults)) for faults in left]


def write(path, text):
    with open(path, "w") as file:
        file.write(text)


def left_out(name, processor):
    # A fault in what this machine cannot run would go unnoticed.
    foreign = ("Avx512" in name and " avx512_vbmi2" not in processor) or ("Avx2" in name and " avx2" not in processor)
    return name in LEFT_OUT or not name.endswith((".cpp", ".h")) or foreign


def main():
    parser = argparse.ArgumentParser(usage="mutate.py [COUNT] [--seed N] [--files GLOB…] | --again")
    parser.add_argument("count", nargs="?", type=int, default=60)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--files", nargs="*", help="instead of all of the library")
    parser.add_argument("--again", action="store_true", help="only those that went unnoticed in the last run")
    parser.add_argument("--list", action="store_true", help="show the sample and seed nothing")
    options = parser.parse_args()
    os.setpriority(os.PRIO_PROCESS, 0, max(10, os.getpriority(os.PRIO_PROCESS, 0)))

    names = tracked()
    with open("/proc/cpuinfo") as info:
        processor = info.read()
    sources = [n for n in names if any(in_folder(n, f) for f in FOLDERS) and not left_out(n, processor)]
    if options.files:
        sources = [n for n in sources if any(fnmatch.fnmatch(n, p) for p in options.files)]
        shares = {None: 1}
    else:
        shares = {folder: len(FOLDERS) - 1 if folder == FOLDERS[0] else 1 for folder in FOLDERS}
    parts = sample(sources, options.count, shares, options.seed)
    if options.again:
        parts = left_from_last_run(parts)
    places = sum(len(faults) for faults, wanted in parts)
    if not places:
        sys.exit("mutate: no place for a fault")
    if options.list:
        for faults, wanted in parts:
            for place, name, number, was, faulty, kind in faults[:wanted]:
                print(f"{name}:{number + 1}  {kind}\n  - {was}\n  + {faulty.strip()}")
        return

    os.makedirs(TREE, exist_ok=True)
    lock = open(os.path.join(BASE, "lock"), "w")
    try:
        fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
    except OSError:
        sys.exit("mutate: another run is using " + BASE)
    digest = copy_tree(names)
    print(f"mutate: {places} places in {len(sources)} files; building the sources without a fault", flush=True)
    # Quick to compile; warnings about a fault are not errors.
    flags = ["-DCMAKE_BUILD_TYPE=Release", "-DCMAKE_CXX_FLAGS_RELEASE=-O1", "-DKX7_BUILD_CLI=OFF", "-DKX7_INSTALL=OFF"]
    if shutil.which("ccache"):  # after each fault the sources are built as they were
        flags.append("-DCMAKE_CXX_COMPILER_LAUNCHER=ccache")
    if run(["cmake", "-S", TREE, "-B", BUILD, "-G", "Ninja", *flags]) != 0 or not builds(*PROGRAMS):
        fail("the sources do not build")
    tests = Tests(digest)

    for interruption in (signal.SIGINT, signal.SIGTERM):
        signal.signal(interruption, signal.default_int_handler)
    seeded, survivors = 0, []
    started_all = time.monotonic()
    try:
        for faults, wanted in parts:
            rest = iter(faults)
            while wanted and (fault := next(rest, None)):
                place, name, number, was, faulty, kind = fault
                path = os.path.join(TREE, name)
                with open(path) as source:
                    right = source.read()
                lines = right.split("\n")
                lines[number] = faulty
                started = time.monotonic()
                try:
                    write(path, "\n".join(lines))
                    by = tests.noticed(name)
                finally:
                    write(path, right)
                if by == "compiler":
                    continue
                wanted -= 1
                seeded += 1
                survivors += [] if by else [fault]
                seconds = time.monotonic() - started
                print(f"{seeded:4} {by or 'UNNOTICED':12} {seconds:5.0f} s  {kind:18} {name}:{number + 1}", flush=True)
                if not by:
                    print(f"       - {was}\n       + {faulty.strip()}", flush=True)
    except KeyboardInterrupt:
        print("mutate: interrupted; so far:")
    noticed = seeded - len(survivors)
    minutes = (time.monotonic() - started_all) / 60
    print(f"{places} places; {seeded} faults seeded, {noticed} noticed ({100 * noticed / max(seeded, 1):.1f} %), "
          f"{minutes:.0f} minutes, seed {options.seed}")
    with open(UNNOTICED, "w") as file:
        json.dump([key(fault) for fault in survivors], file, indent=1)
    for place, name, number, was, faulty, kind in survivors:
        print(f"{name}:{number + 1}\n  - {was}\n  + {faulty.strip()}")


if __name__ == "__main__":
    main()
