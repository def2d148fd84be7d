# kx7text - tests of kx7conv: each system call of a run over three files fails in each way that it can, or is the last.
#
# A run without a fault tells the calls; then there is a run for each call and each reason, one that is killed before the
# call, and one that is stopped there, where another program may look at the files, and continued. On the disk and in memory, as root and as an ordinary user; all of them if KX7CONV_ALL_FAULTS is set, else a
# part of the reasons of each call.
import collections
import contextlib
import multiprocessing
import os
import pathlib
import shutil
import signal
import subprocess
import tempfile
import unittest

from program import KX7CONV, SANITIZED, preloaded
from scenarios import REASONS, SCENARIOS, STDOUT

COMPLETE = "KX7CONV_ALL_FAULTS" in os.environ
ORDINARY_USER = 65534


def places():
    """Where and as whom: (folder, whether as an ordinary user, reasons of each call)."""
    disk, memory = os.getcwd(), "/dev/shm"
    yield memory if os.access(memory, os.W_OK) else disk, False, 1 if SANITIZED else 2
    if SANITIZED and not COMPLETE:
        return
    yield disk, False, 1
    if os.geteuid() == 0:
        yield memory if os.access(memory, os.W_OK) else disk, True, 1
        yield disk, True, 1


class Runs:
    """The runs of a scenario in the folder "files" of the current one."""

    def __init__(self, scenario, program, library):
        self.scenario = scenario
        self.program = program
        self.environment = preloaded("KX7CONV_FAULTS") | {"LD_PRELOAD": library}
        self.count = 0

    def run(self, fault, calls=None):
        """What is wrong with a run with that fault. Before another one, the current folder has to be left."""
        shutil.rmtree("files", ignore_errors=True)
        os.mkdir("files")
        os.chdir("files")
        self.scenario.prepare()
        kind, number, reason = fault
        faults = [f"{kind} {number} {reason}", *([self.scenario.always] if self.scenario.always else [])]
        environment = self.environment | {"KX7CONV_FAULT": ",".join(faults)} | ({"KX7CONV_CALLS": calls} if calls else {})
        with open(STDOUT if self.scenario.writesOutput else os.devnull, "wb") as output:
            process = subprocess.Popen([self.program, "-f", "1253", *self.scenario.arguments], stdin=subprocess.DEVNULL,
                                       stdout=output, stderr=subprocess.PIPE, env=environment)
        wrong = ""
        with process:
            if reason == "STOP":
                os.waitid(os.P_PID, process.pid, os.WSTOPPED | os.WEXITED | os.WNOWAIT)
                wrong = self.scenario.wrong(kind, "KILL", -signal.SIGKILL, "")
                process.send_signal(signal.SIGCONT)
            _, messages = process.communicate(timeout=100)
        wrong = wrong or self.scenario.wrong(kind, reason, process.returncode, messages.decode())
        os.chdir("..")
        self.count += 1
        return wrong

    def all(self, reasonsOfEach):
        """What is wrong with which of the runs."""
        # A harmless fault: none.
        wrong = self.run(("fadvise", 1000, "EIO"), calls="../calls")
        if wrong:
            return [f"without a fault: {wrong}"]
        wrongs = []
        numbers = collections.Counter()
        for index, kind in enumerate(pathlib.Path("calls").read_text().split()):
            numbers[kind] += 1
            if self.scenario.always and self.scenario.always.startswith(f"{kind} 0"):
                continue
            reasons = [*REASONS[kind], "KILL", "STOP"]
            some = reasons if COMPLETE else {reasons[(index + i * 3) % len(reasons)] for i in range(reasonsOfEach)}
            for reason in sorted(some):
                fault = (kind, numbers[kind], reason)
                wrong = self.run(fault)
                if wrong:
                    wrongs.append(f"{kind} {numbers[kind]} {reason}: {wrong}")
        return wrongs


def runAll(results, scenario, tools, folder, isOrdinary, reasonsOfEach):
    """In a process of its own. Paths are relative: an ordinary user may not have those of the folder."""
    try:
        os.chdir(folder)
        if isOrdinary:
            os.chown(".", ORDINARY_USER, ORDINARY_USER)
            os.setgroups([])
            os.setgid(ORDINARY_USER)
            os.setuid(ORDINARY_USER)
        runs = Runs(scenario, *tools)
        results.put((runs.all(reasonsOfEach), runs.count))
    except BaseException as error:
        results.put(([f"{type(error).__name__}: {error}"], 0))
        raise


class Faults(unittest.TestCase):
    def setUp(self):
        # Where every user can run them.
        tools = tempfile.TemporaryDirectory()
        self.addCleanup(tools.cleanup)
        os.chmod(tools.name, 0o755)
        self.tools = [shutil.copy(path, tools.name) for path in (KX7CONV, os.environ["KX7CONV_FAULTS"])]

    def expectRight(self, scenario):
        context = multiprocessing.get_context("fork")
        with contextlib.ExitStack() as folders:
            started = []
            for base, isOrdinary, reasonsOfEach in places():
                folder = folders.enter_context(tempfile.TemporaryDirectory(prefix="kx7conv-faults-", dir=base))
                results = context.SimpleQueue()
                process = context.Process(target=runAll,
                                          args=(results, scenario, self.tools, folder, isOrdinary, reasonsOfEach))
                process.start()
                started.append((base, isOrdinary, process, results))
            for base, isOrdinary, process, results in started:
                wrongs, count = results.get()
                process.join()
                with self.subTest(base=base, isOrdinary=isOrdinary):
                    self.assertTrue(not wrongs, "\n".join(["", *wrongs]))
                    self.assertGreater(count, 15)


for name, scenario in SCENARIOS.items():
    setattr(Faults, f"test{name}", lambda self, scenario=scenario: self.expectRight(scenario))


if __name__ == "__main__":
    unittest.main()
