# kx7text - tests of kx7conv: limits of the process, and descriptors that do not block.
import fcntl
import os
import re
import resource
import shutil
import subprocess
import time
import unittest

from program import IO, KX7CONV, SANITIZED, Test, needsRoot

TEXT = "aΓειά\n" * 20000
SOURCE = TEXT.encode("cp1253")
RESULT = TEXT.encode()


def limited(limit, value):
    return lambda: resource.setrlimit(limit, (value, value))


class FileSize(Test):
    """Where a file may not grow to the size of the output."""

    def testAnOutputThatMayNotBeSoLargeIsAnErrorLikeAnyOther(self):
        for options, name in ((["-i"], "a"), (["-i.bak"], "a"), (["-o", "out"], "out"), (["-o", "new"], "new"),
                              (["--output-dir", "."], "./a")):
            for jobs in ("1", "3"):
                self.file("a", SOURCE)
                self.file("out", b"old")
                self.expect(["-f", "1253", "-j", jobs, *options, "a"], b"", b"", IO,
                            f"kx7conv: {name}: File too large\n", cwd=self.folder,
                            preexec_fn=limited(resource.RLIMIT_FSIZE, 65536))
                self.assertEqual((self.folder / "a").read_bytes(), SOURCE)
                self.assertEqual((self.folder / "out").read_bytes(), b"old")
                self.assertEqual(sorted(os.listdir(self.folder)), ["a", "out"])

    def testStandardOutputIsWrittenUpToTheLimit(self):
        self.file("a", SOURCE)
        with open(self.folder / "out", "wb") as output:
            done = subprocess.run([KX7CONV, "-f", "1253", "a"], cwd=self.folder, stdout=output, stderr=subprocess.PIPE,
                                  preexec_fn=limited(resource.RLIMIT_FSIZE, 65536))
        self.assertEqual((done.returncode, done.stderr), (IO, b"kx7conv: (stdout): File too large\n"))
        self.assertEqual((self.folder / "out").read_bytes(), RESULT[:65536])


class NonBlocking(Test):
    """Pipes that another process has set so that reads and writes do not wait."""

    def pipe(self, end, size=None):
        ends = os.pipe()
        os.set_blocking(ends[end], False)
        if size:
            fcntl.fcntl(ends[1], fcntl.F_SETPIPE_SZ, size)
        return [open(ends[0], "rb", buffering=0), open(ends[1], "wb", buffering=0)]

    def testStandardInputIsWaitedFor(self):
        reader, writer = self.pipe(0)
        with reader, writer, subprocess.Popen([KX7CONV, "-f", "1253"], stdin=reader, stdout=subprocess.PIPE,
                                              stderr=subprocess.PIPE) as process:
            for part in (b"a\n", b"\xd0\n", b"b"):
                time.sleep(0.2)
                writer.write(part)
            writer.close()
            self.assertEqual(process.communicate(), ("a\nΠ\nb".encode(), b""))
            self.assertEqual(process.returncode, 0)

    def testAListOfNamesIsWaitedFor(self):
        self.file("a", b"a;")
        reader, writer = self.pipe(0)
        with reader, writer, subprocess.Popen([KX7CONV, "-f", "utf8", "--files-from", "-"], stdin=reader,
                                              stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                              cwd=self.folder) as process:
            for part in (b"a\n", b"a", b"\na"):
                time.sleep(0.2)
                writer.write(part)
            writer.close()
            self.assertEqual(process.communicate(), (b"a;a;a;", b""))
            self.assertEqual(process.returncode, 0)

    def readSlowly(self, *arguments, stream):
        """What the program writes into a small pipe, and its status."""
        reader, writer = self.pipe(1, 4096)
        with reader, subprocess.Popen([KX7CONV, "-f", "1253", *arguments], cwd=self.folder, **{stream: writer}) as process:
            writer.close()
            time.sleep(0.3)
            text = b""
            while part := reader.read(1000):
                text += part
        return text, process.returncode

    def testStandardOutputIsWaitedFor(self):
        self.file("a", SOURCE)
        for jobs in ("1", "2"):
            text, status = self.readSlowly("-j", jobs, "a", stream="stdout")
            self.assertEqual((text == RESULT, status), (True, 0))

    def testStandardErrorIsWaitedFor(self):
        self.file("bad", b"\xd2\n" * 3000)
        messages, status = self.readSlowly("--check", "--max-errors", "5000", "bad", stream="stderr")
        self.assertEqual(status, 1)
        self.assertEqual(messages.decode().splitlines(),
                         [*(f"kx7conv: bad:{i + 1}: byte {2 * i} (0x{2 * i:X}): invalid KX7CS_WCP1253 sequence D2"
                            for i in range(3000)), "kx7conv: bad: 3000 errors"])


@unittest.skipIf(SANITIZED, "the sanitizer has descriptors of its own")
class Descriptors(Test):
    def testFewerFilesAreOpenAtOnceWhereFewMayBe(self):
        names = [f"f{i:03}" for i in range(100)]
        for most in (9, 16, 40):
            for options in (["-i"], ["-i.bak"], ["--output-dir", f"out{most}"], ["-o", f"one{most}"], ["--check"]):
                for name in names:
                    self.file(name, name.encode() + b"\xd0")
                self.expect(["-f", "1253", "-j", "64", *options, *names], b"", b"", cwd=self.folder,
                            preexec_fn=limited(resource.RLIMIT_NOFILE, most))
                if options[0] in ("-i", "-i.bak"):
                    for name in names:
                        self.assertEqual((self.folder / name).read_bytes(), (name + "Π").encode())
            self.assertEqual(len(os.listdir(self.folder / f"out{most}")), len(names))

    def testAnErrorOfAnOutputThatAllShareEndsTheRunThen(self):
        for i in range(50):
            self.file(f"{i:02}", SOURCE)
        for most in (9, 16):
            self.expect(["-f", "1253", "-j", "64", "-o", "/dev/full", "-r", "."], b"", b"", IO,
                        "kx7conv: /dev/full: No space left on device\n", cwd=self.folder,
                        preexec_fn=limited(resource.RLIMIT_NOFILE, most))


@needsRoot
@unittest.skipIf(SANITIZED, "sanitizers read /proc")
class WithoutProc(Test):
    def convert(self, *arguments, status=0, messages=""):
        def enter():
            os.chroot(self.folder)
            os.chdir("/")
        done = subprocess.run(["/kx7conv", "-f", "1253", *arguments], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              timeout=60, preexec_fn=enter)
        self.assertEqual((done.returncode, done.stderr.decode()), (status, messages))
        return done.stdout

    def testThatItIsMissingIsSaid(self):
        """Not that a file which exists does not."""
        shutil.copy(KX7CONV, self.folder / "kx7conv")
        for library in re.findall(r"(/\S+) \(0x", subprocess.check_output(["ldd", KX7CONV], text=True)):
            target = self.folder / library[1:]
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(library, target)
        before = self.file("a", SOURCE) and sorted(os.listdir(self.folder))
        missing = "needs /proc, which is not mounted\n"
        self.convert("-i", "a", status=IO, messages=f"kx7conv: a: {missing}")
        self.convert("-i.bak", "a", status=IO, messages=f"kx7conv: a: {missing}")
        self.convert("-o", "new", "a", status=IO, messages=f"kx7conv: new: {missing}")
        self.assertEqual(((self.folder / "a").read_bytes(), sorted(os.listdir(self.folder))), (SOURCE, before))
        self.assertEqual(self.convert("a"), RESULT)
        self.convert("-o", "none/new", "a", status=IO, messages="kx7conv: none/new: No such file or directory\n")


if __name__ == "__main__":
    unittest.main()
