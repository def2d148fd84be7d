# kx7text - tests of kx7conv: memory stays small however many files there are, and however deep the folders.
import errno
import os
import pathlib
import re
import resource
import shutil
import subprocess
import tempfile
import time
import unittest

from program import KX7CONV, SANITIZED, Test, run

LIMIT = 16 << 20
# ./dev test --long has a million.
COUNT = int(os.environ.get("KX7CONV_FILES", "60000"))
MEMORY = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None


def peakOf(process):
    """The memory that it takes until it ends. What wait4() tells has the memory of this process in it."""
    peak = 0
    while process.poll() is None:
        found = re.search(r"VmHWM:\s+(\d+) kB", pathlib.Path(f"/proc/{process.pid}/status").read_text())
        peak = max(peak, int(found[1]) * 1024 if found else 0)
        time.sleep(0.01)
    return peak


class Many(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(tempfile.mkdtemp(dir=MEMORY))
        (cls.folder / "d").mkdir()
        # Not in the order of their names.
        for i in range(COUNT):
            os.close(os.open(cls.folder / f"d/text number {i * 7919 % COUNT}", os.O_CREAT | os.O_WRONLY, 0o644))
        (cls.folder / "list").write_text("".join(f"d/text number {i}\n" for i in range(COUNT)))

    @classmethod
    def tearDownClass(cls):
        shutil.rmtree(cls.folder)

    def peak(self, *arguments):
        """The memory taken, and what was said."""
        with open(self.folder / "out", "wb") as out:
            process = subprocess.Popen([KX7CONV, "-f", "1253", *arguments], cwd=self.folder, stdout=subprocess.DEVNULL,
                                       stderr=out)
            peak = peakOf(process)
        messages = (self.folder / "out").read_text()
        self.assertEqual(process.returncode, 0, messages[:1000])
        if not SANITIZED:  # sanitizers take memory of their own
            self.assertTrue(1 << 20 < peak < LIMIT, (peak, arguments))
        return messages

    @unittest.skipIf(SANITIZED, "sanitizers take memory of their own")
    def testTakeLittleMemory(self):
        for arguments in (["-r", "-i", "d"], ["-r", "-i", "-j", "2", "d"], ["-r", "--check", "d"],
                          ["-i", "--files-from", "list"], ["--check", "--files-from", "list"],
                          ["--output-dir", "new", "--files-from", "list"], ["-r", "--output-dir", "out-d", "d"],
                          ["-r", "-i", "d", "new"] if COUNT < 1000000 else ["-r", "-i", "d"]):
            if COUNT >= 1000000 and "out-d" in arguments:
                shutil.rmtree(self.folder / "new")  # three million do not fit into every file system
            totals = self.peak("--stats", *arguments)
            self.assertRegex(totals, rf"kx7conv: {COUNT * (1 + ('new' == arguments[-1]))} files, 0 failed;")
        self.assertEqual(len(os.listdir(self.folder / "out-d")), COUNT)
        self.assertEqual(len(os.listdir(self.folder / "d")), COUNT)

    def testAreTakenInTheOrderOfTheirNamesWhileOthersAppear(self):
        """A folder that does not fit into memory is read several times."""
        names = sorted(os.listdir(self.folder / "d"))
        for name in names[::1000]:
            (self.folder / "d" / name).write_text(name + "\n")
        expected = "".join(name + "\n" for name in names[::1000])
        status, output, messages = run("-f", "utf8", "-r", "d", cwd=self.folder)
        self.assertEqual((status, output.decode(), messages), (0, expected, ""))
        for jobs in ("1", "4"):
            totals = self.peak("--stats", "-r", "-i~", "-j", jobs, "d")
            self.assertRegex(totals, rf"kx7conv: {COUNT} files, 0 failed;")
            self.assertEqual(sorted(os.listdir(self.folder / "d")), sorted(names + [name + "~" for name in names]))
            for name in names:
                (self.folder / "d" / (name + "~")).unlink()
        for name in names[::1000]:
            os.truncate(self.folder / "d" / name, 0)


class Arguments(Test):
    base = MEMORY

    @unittest.skipIf(SANITIZED, "sanitizers take memory of their own")
    def testAsManyAsACommandLineHasTakeLittleMemory(self):
        self.file("a", b"")
        for options in (["--check"], ["-o", "out"], ["-o", "out", "-j", "2"], ["--output-dir", "out-d"], ["-r", "-i.bak"],
                        ["-j", "64", "--output-dir", "out-j"]):
            process = None
            for count in (190000, 150000, 100000):
                try:
                    process = subprocess.Popen([KX7CONV, "-f", "1253", *options, *(["a"] * count)], cwd=self.folder,
                                               stderr=subprocess.DEVNULL)
                    break
                except OSError as error:
                    self.assertEqual(error.errno, errno.E2BIG)
            if not process:
                self.skipTest("stacks are limited, and with them arguments")
            peak = peakOf(process)
            self.assertTrue(1 << 20 < peak < LIMIT, (peak, options, count))


class Deep(Test):
    depth = 3000

    def tearDown(self):
        subprocess.run(["rm", "-rf", "d", "out"], cwd=self.folder, check=True)

    def testFoldersTakeFewDescriptors(self):
        at = os.open(self.folder, os.O_RDONLY)
        for name in ["d"] + ["e"] * self.depth:
            os.mkdir(name, dir_fd=at)
            below = os.open(name, os.O_RDONLY, dir_fd=at)
            os.close(at)
            at = below
            for file in ("a", "z"):
                with open(os.open(file, os.O_CREAT | os.O_WRONLY, dir_fd=at), "wb") as text:
                    text.write(b"\xd0")
        os.close(at)
        few = {"preexec_fn": lambda: resource.setrlimit(resource.RLIMIT_NOFILE, (24, 24))}
        expected = "Π".encode() * 2 * (self.depth + 1)
        self.expect(["-f", "1253", "-r", "d"], b"", expected, cwd=self.folder, **few)
        self.expect(["-f", "1253", "-r", "-i", "d"], b"", b"", cwd=self.folder, **few)
        self.expect(["-f", "utf8", "-r", "d"], b"", expected, cwd=self.folder, **few)


if __name__ == "__main__":
    unittest.main()
