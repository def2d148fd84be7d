# kx7text - tests of kx7conv: outputs that take the place of files, folders, lists, and every way a file can fail.
import os
import pathlib
import shutil
import signal
import subprocess
import time
import unittest

from program import BAD_DATA, IO, KX7CONV, SANITIZED, USAGE, Test, preloaded, run

TEXT = "aΓειά\n" * 1000
SOURCE = TEXT.encode("cp1253")
RESULT = TEXT.encode()


def leftover(test):
    """The text of a complete file that has not got the place of file "a" yet, which this removes; None if there is none."""
    names = sorted(set(os.listdir(test.folder)) - {"a"})
    test.assertLessEqual(len(names), 1)
    for name in names:
        test.assertRegex(name, r"\A\.kx7conv-[0-9a-f]{16}\Z")
        text = (test.folder / name).read_bytes()
        (test.folder / name).unlink()
        return text


class Replacing(Test):
    """-o, -i and --output-dir."""

    def entries(self, folder="."):
        return sorted(os.listdir(self.folder / folder))

    def read(self, name):
        return (self.folder / name).read_bytes()

    def quiet(self, *arguments, data=b"", **options):
        self.expect(list(arguments), data, b"", cwd=self.folder, **options)

    def testOutputFile(self):
        self.file("a", SOURCE)
        self.quiet("-f", "1253", "-o", "out", "a", "a")
        self.assertEqual(self.read("out"), 2 * RESULT)
        self.quiet("-f", "1253", "--output=out", data=b"\xd0")
        self.assertEqual(self.read("out"), "Π".encode())
        self.assertEqual(self.entries(), ["a", "out"])

    def testANewFileGetsTheModeOfTheUmaskAndAnOldOneKeepsItsOwn(self):
        self.file("a", SOURCE)
        self.file("old", b"old")
        (self.folder / "old").chmod(0o604)
        for name, mode in (("new", 0o640), ("old", 0o604)):
            subprocess.run(["sh", "-c", f'umask 027; "$0" -f 1253 -o {name} a', KX7CONV], cwd=self.folder, check=True)
            self.assertEqual((self.folder / name).stat().st_mode & 0o7777, mode)
            self.assertEqual(self.read(name), RESULT)

    def testAnOutputThatIsAnInput(self):
        self.file("a", SOURCE)
        self.file("b", b"b")
        self.quiet("-f", "1253", "-o", "b", "b", "a", "b")
        self.assertEqual(self.read("b"), b"b" + RESULT + b"b")
        self.quiet("-f", "utf8", "-t", "1253", "-o", "./b", "b")
        self.assertEqual(self.read("b"), b"b" + SOURCE + b"b")

    def testNothingIsReplacedOnFailure(self):
        self.file("bad", SOURCE + b"\xd2" + SOURCE)
        self.file("out", b"old")
        for arguments in (["-o", "out", "bad"], ["-i", "bad"], ["--output-dir", ".", "bad"],
                          ["-c", "--fail-on-loss", "-i", "bad"], ["-c", "--fail-on-loss", "-o", "out", "bad"]):
            status, output, _ = run("-f", "1253", *arguments, cwd=self.folder)
            self.assertEqual((status, output), (BAD_DATA, b""))
            self.assertEqual((self.read("bad"), self.read("out")), (SOURCE + b"\xd2" + SOURCE, b"old"))
        self.expect(["-f", "1253", "-o", "out", "missing"], b"", b"", IO,
                    "kx7conv: missing: No such file or directory\n", cwd=self.folder)
        self.assertEqual((self.read("out"), self.entries()), (b"old", ["bad", "out"]))

    def testOutputToWhatIsNoRegularFile(self):
        self.quiet("-f", "1253", "-o", "/dev/null", data=b"a")
        self.expect(["-f", "1253", "-o", "/dev/full"], b"a", b"", IO, "kx7conv: /dev/full: No space left on device\n")
        self.expect(["-f", "1253", "-o", "/dev/stdout"], b"\xd0", "Π".encode())
        (self.folder / "folder").mkdir()
        self.expect(["-f", "1253", "-o", "folder"], b"a", b"", IO, "kx7conv: folder: Is a directory\n", cwd=self.folder)
        self.expect(["-f", "1253", "-o", "none/x"], b"a", b"", IO, "kx7conv: none/x: No such file or directory\n",
                    cwd=self.folder)

    def testInPlace(self):
        for jobs in (1, 4):
            names = [f"f{i}" for i in range(20)]
            for name in names:
                self.file(name, SOURCE)
            (self.folder / "f3").chmod(0o640)
            self.quiet("-f", "1253", "-i", "-j", str(jobs), *names)
            self.assertEqual({self.read(name) for name in names}, {RESULT})
            self.assertEqual(((self.folder / "f3").stat().st_mode & 0o7777, self.entries()), (0o640, sorted(names)))

    def testABackupKeepsTheOldFile(self):
        self.file("a", SOURCE)
        for option in ("-i.bak", "--in-place=.bak"):
            self.quiet("-f", "1253", option, "a")
            self.assertEqual((self.read("a"), self.read("a.bak"), self.entries()), (RESULT, SOURCE, ["a", "a.bak"]))
            self.file("a", SOURCE)

    def testLinksAreFollowed(self):
        (self.folder / "sub").mkdir()
        self.file("sub/real", SOURCE)
        (self.folder / "link").symlink_to("sub/real")
        (self.folder / "sub/second").symlink_to(self.folder / "link")
        self.quiet("-f", "1253", "-i", "sub/second")
        self.assertEqual(self.read("sub/real"), RESULT)
        (self.folder / "dangling").symlink_to("sub/new")
        self.quiet("-f", "1253", "-o", "dangling", data=b"a")
        self.assertEqual(self.read("sub/new"), b"a")
        self.assertTrue((self.folder / "dangling").is_symlink() and (self.folder / "link").is_symlink())
        self.assertEqual(self.entries("sub"), ["new", "real", "second"])

    def testALinkInACircleIsNotReplaced(self):
        (self.folder / "circle").symlink_to("circle")
        self.expect(["-f", "1253", "-o", "circle"], b"a", b"", IO,
                    "kx7conv: circle: Too many levels of symbolic links\n", cwd=self.folder)
        self.assertTrue((self.folder / "circle").is_symlink())

    def testAFileWithoutPermissionToWriteIsReplaced(self):
        self.file("a", SOURCE)
        (self.folder / "a").chmod(0o444)
        os.link(self.folder / "a", self.folder / "second")
        self.quiet("-f", "1253", "-i", "a")
        self.assertEqual((self.read("a"), self.read("second")), (RESULT, SOURCE))
        self.assertEqual((self.folder / "a").stat().st_mode & 0o7777, 0o444)

    def testMessagesAreNotWrittenIntoAnOutputWhenStandardErrorIsClosed(self):
        # The output would be opened as the lowest descriptor that is free.
        os.mkfifo(self.folder / "pipe")
        reader = os.open(self.folder / "pipe", os.O_RDONLY | os.O_NONBLOCK)
        self.addCleanup(os.close, reader)
        for closed in ("2>&-", ">&- 2>&-", "<&- >&- 2>&-"):
            self.file("bad", b"a\xd2b")
            done = subprocess.run(["sh", "-c", f'"$0" -f 1253 -c --fail-on-loss -o pipe bad missing {closed}', KX7CONV],
                                  cwd=self.folder)
            self.assertEqual((done.returncode, os.read(reader, 1000)), (IO, b"ab"), closed)

    def testAStandardDescriptorThatIsClosedIsNoOutput(self):
        self.file("a", SOURCE)
        for name, closed in (("/dev/stdout", ">&-"), ("/dev/stderr", "2>&-"), ("/dev/fd/2", "<&- >&- 2>&-"),
                             ("/dev/stdin", "<&-")):
            done = subprocess.run(["sh", "-c", f'"$0" -f 1253 -o {name} a {closed}', KX7CONV], cwd=self.folder,
                                  stderr=subprocess.PIPE)
            self.assertEqual(done.returncode, IO, name)
            if "2>&-" not in closed:
                self.assertEqual(done.stderr.decode(), f"kx7conv: {name}: Bad file descriptor\n")

    def testAFileIsWrittenOnce(self):
        self.file("a", SOURCE)
        (self.folder / "link").symlink_to("a")
        for jobs in ("1", "4"):
            self.file("a", SOURCE)
            self.expect(["-f", "1253", "-i", "-j", jobs, "a", "link", "./a"], b"", b"", USAGE,
                        "kx7conv: link: given twice\nkx7conv: ./a: given twice\n", cwd=self.folder)
            self.assertEqual(self.read("a"), RESULT)
        (self.folder / "sub").mkdir()
        self.file("sub/a", b"other")
        self.expect(["-f", "1253", "--output-dir", "out", "a", "sub/a"], b"", b"", USAGE,
                    "kx7conv: sub/a: another input has the same output\n", cwd=self.folder)

    def testOnlyFilesAreReplaced(self):
        os.mkfifo(self.folder / "pipe")
        (self.folder / "folder").mkdir()
        self.expect(["-f", "1253", "-i"], b"a", b"", USAGE, "kx7conv: (stdin): not a regular file, which -i needs\n")
        self.expect(["-f", "1253", "-i", "/dev/null"], b"a", b"", USAGE,
                    "kx7conv: /dev/null: not a regular file, which -i needs\n")
        self.expect(["-f", "1253", "-i", "folder"], b"a", b"", IO, "kx7conv: folder: Is a directory\n", cwd=self.folder)
        self.expect(["-f", "1253", "--output-dir", "out"], b"a", b"", USAGE,
                    "kx7conv: (stdin): has no name, which --output-dir needs\n", cwd=self.folder)

    def testOutputFolder(self):
        (self.folder / "in/deep/er").mkdir(parents=True)
        for name in ("x", "in/a", "in/b", "in/deep/er/c"):
            self.file(name, SOURCE + name.encode())
        for jobs in ("1", "3"):
            for source in ("in", "in/", "./in"):
                self.quiet("-f", "1253", "-r", "-j", jobs, "--output-dir", "new/out", "x", source)
                for name in ("x", "a", "b", "deep/er/c"):
                    original = name if name == "x" else f"in/{name}"
                    self.assertEqual(self.read(f"new/out/{name}"), RESULT + original.encode())
                self.assertEqual(self.entries("new/out"), ["a", "b", "deep", "x"])
                shutil.rmtree(self.folder / "new")
        self.quiet("-f", "1253", "-r", "--output-dir", "in/out", "in")
        self.quiet("-f", "1253", "-r", "--output-dir", "in/out", "in")
        self.assertEqual(self.entries("in/out"), ["a", "b", "deep"])

    @unittest.skipUnless(os.geteuid() == 0, "only root gives files away")
    def testTheOwnerStays(self):
        self.file("a", SOURCE)
        os.chown(self.folder / "a", 1234, 4321)
        self.quiet("-f", "1253", "-i", "a")
        status = (self.folder / "a").stat()
        self.assertEqual((status.st_uid, status.st_gid, self.read("a")), (1234, 4321, RESULT))

    def testAFolderThatCannotBeWritten(self):
        self.file("a", SOURCE)
        self.folder.chmod(0o555)
        identity = {"user": 65534, "group": 65534, "extra_groups": []} if os.geteuid() == 0 else {}
        try:
            self.expect(["-f", "1253", "-i", "a"], b"", b"", IO, "kx7conv: a: Permission denied\n", cwd=self.folder,
                        **identity)
        except PermissionError:
            self.skipTest("another user cannot run the program from here")
        finally:
            self.folder.chmod(0o755)
        self.assertEqual(self.read("a"), SOURCE)


class Faults(Test):
    """With a library in front that makes a system call fail."""

    def expectFault(self, fault, arguments, output, messages, status=IO, data=b""):
        self.expect(arguments, data, output, status, messages, cwd=self.folder,
                    env=preloaded("KX7CONV_FAULTS", KX7CONV_FAULT=fault))

    def testReadingFails(self):
        big = SOURCE * 100
        self.file("big", big)
        self.file("b", b"b")
        error = "kx7conv: big: Input/output error\n"
        self.expectFault("read 1 EIO", ["-f", "1253", "big", "b"], b"b", error)
        for jobs in ("1", "3"):
            status, output, messages = run("-f", "1253", "-j", jobs, "big", "b", cwd=self.folder,
                                           env=preloaded("KX7CONV_FAULTS", KX7CONV_FAULT="read 3 EIO"))
            self.assertEqual((status, messages), (IO, error))
            self.assertEqual(output, big[:262144].decode("cp1253").encode() + b"b")
        for arguments in (["-o", "out"], ["-i"], ["--output-dir", "out"]):
            self.expectFault("read 3 EIO", ["-f", "1253", *arguments, "big"], b"", error)
        self.assertEqual((self.folder / "big").read_bytes(), big)
        self.assertFalse((self.folder / "out").is_file() or (self.folder / "out/big").exists())
        self.expectFault("read 3 EIO", ["-f", "1253", "--check", "big", "b"], b"", error)
        self.expectFault("read 1 EIO", ["--guess", "big"], b"", error)

    def testWritingFails(self):
        big = SOURCE * 100
        for name in ("a", "b", "c"):
            self.file(name, big)
        for reason, text in (("EIO", "Input/output error"), ("ENOSPC", "No space left on device")):
            for jobs in ("1", "3"):
                status, output, messages = run("-f", "1253", "-j", jobs, "a", "b", cwd=self.folder,
                                               env=preloaded("KX7CONV_FAULTS", KX7CONV_FAULT=f"write 3 {reason}"))
                self.assertEqual((status, messages), (IO, f"kx7conv: (stdout): {text}\n"))
                self.assertTrue(big.decode("cp1253").encode().startswith(output) and output)
            for call in ("write 3", "fsync 1", "close 1", "rename 1"):
                self.expectFault(f"{call} {reason}", ["-f", "1253", "-i", "a", "b"], b"", f"kx7conv: a: {text}\n")
                self.assertEqual((self.folder / "a").read_bytes(), big)
                self.assertEqual((self.folder / "b").read_bytes(), big.decode("cp1253").encode())
                self.assertEqual(sorted(os.listdir(self.folder)), ["a", "b", "c"])
                self.file("b", big)
        self.file("out", b"old")
        for call in ("write 1", "fsync 1", "close 1", "rename 1"):
            self.expectFault(f"{call} EIO", ["-f", "1253", "-o", "out", "a"], b"",
                             "kx7conv: out: Input/output error\n")
            self.assertEqual((self.folder / "out").read_bytes(), b"old")
        for call in ("write 1", "fsync 1", "close 1"):
            self.expectFault(f"{call} EIO", ["-f", "1253", "-o", "new", "a"], b"",
                             "kx7conv: new: Input/output error\n")
            self.assertEqual(sorted(os.listdir(self.folder)), ["a", "b", "c", "out"])

    def testKilledAheadOfTheRenaming(self):
        for options in (["-i", "a"], ["-i.old", "a"], ["-o", "a", "a"]):
            self.file("a", SOURCE)
            self.expectFault("rename 1 KILL", ["-f", "1253", *options], b"", "", -signal.SIGKILL)
            self.assertEqual((self.folder / "a").read_bytes(), SOURCE)
            if "-i.old" in options:
                (self.folder / "a.old").unlink()
            self.assertEqual(leftover(self), RESULT)

    def testANewFileNeedsNoRenaming(self):
        self.file("a", SOURCE)
        self.expectFault("rename 1 KILL", ["-f", "1253", "-o", "new", "a"], b"", "", 0)
        self.assertEqual((self.folder / "new").read_bytes(), RESULT)

    def testClosingStandardOutputFails(self):
        self.expectFault("close 1 EIO", ["-f", "1253"], b"a", "kx7conv: (stdout): Input/output error\n", data=b"a")


class Kill(Test):
    def testAKilledProgramLeavesTheOldFileOrTheNew(self):
        data = SOURCE * 300
        result = data.decode("cp1253").encode()
        self.file("a", data)
        started = time.monotonic()
        self.expect(["-f", "1253", "-i", "a"], b"", b"", cwd=self.folder)
        duration = time.monotonic() - started
        found = set()
        for i in range(30):
            self.file("a", data)
            process = subprocess.Popen([KX7CONV, "-f", "1253", "-i", "-j", str(1 + i % 2), "a"], cwd=self.folder)
            time.sleep(duration * 1.2 * i / 30)
            process.send_signal(signal.SIGKILL)
            process.wait()
            content = (self.folder / "a").read_bytes()
            self.assertIn(content, (data, result))
            found.add(content == result)
            rest = leftover(self)
            if rest is not None:
                self.assertEqual((rest, content), (result, data))
        self.assertIn(False, found)


class Names(Test):
    def testAnyNameIsOne(self):
        names = ["[a,b]", "{}", "%%", "a b", "-x", "--from", "i=j", "é"]
        for name in names:
            self.file(name, name.encode() + b";")
        self.expect(["-f", "utf8", *names[:4], "--", *names[4:]], b"", ";".join([*names, ""]).encode(), cwd=self.folder)
        for name in names:
            self.expect(["-f", "utf8", "-o", name, "[a,b]", "a b"], b"", b"", cwd=self.folder)
            self.assertEqual((self.folder / name).read_bytes(), b"[a,b];a b;")
            self.file(name, name.encode() + b";")
        self.expect(["-f", "utf8", "-c", "-ri-x", "[a,b]"], b"", b"", cwd=self.folder)
        self.assertIn("[a,b]-x", os.listdir(self.folder))

    def testFoldersInTheOrderOfTheirNames(self):
        (self.folder / "d/b/c").mkdir(parents=True)
        for name in ("d/z", "d/a", "d/b/y", "d/b/c/x", "d/é", "e"):
            self.file(name, name.encode() + b"\n")
        (self.folder / "d/link").symlink_to("a")
        (self.folder / "d/loop").symlink_to(".")
        os.mkfifo(self.folder / "d/pipe")
        expected = "d/a\nd/b/c/x\nd/b/y\nd/z\nd/é\ne\n".encode()
        for jobs in (1, 3):
            self.expect(["-f", "utf8", "-r", "-j", jobs, "d", "e"], b"", expected, cwd=self.folder)
        self.expect(["-f", "utf8", "-r", "missing", "e"], b"", b"e\n", IO,
                    "kx7conv: missing: No such file or directory\n", cwd=self.folder)
        self.expect(["-f", "utf8", "d", "e"], b"", b"e\n", IO, "kx7conv: d: Is a directory\n", cwd=self.folder)

    def testTenThousandFiles(self):
        # In memory, so that the disk is not what is waited for.
        base = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
        count = 1000 if SANITIZED else 10000
        folder = pathlib.Path(subprocess.check_output(["mktemp", "-d", *(["-p", base] if base else [])], text=True)[:-1])
        self.addCleanup(shutil.rmtree, folder)
        text = ""
        messages = ""
        for i in range(count):
            line = f"Χαρτί {i}\n"
            text += line
            bad = b"\xd2" if i % 1000 == 5 else b""
            (folder / f"{i:05}").write_bytes(line.encode("cp1253") + bad)
            if bad:
                offset = len(line)
                messages += (f"kx7conv: ./{i:05}:2: byte {offset} (0x{offset:X}): "
                             "invalid KX7CS_WCP1253 sequence D2\n")
        self.expect(["-f", "1253", "-r", "-j", "2", "."], b"", text.encode(), BAD_DATA, messages, cwd=folder)
        self.expect(["-f", "1253", "-r", "-i", "-j", "2", "."], b"", b"", BAD_DATA, messages, cwd=folder)
        names = sorted(os.listdir(folder))
        self.assertEqual(len(names), count)
        for i, name in enumerate(names):
            line = f"Χαρτί {i}\n"
            expected = line.encode("cp1253") + b"\xd2" if i % 1000 == 5 else line.encode()
            self.assertEqual((folder / name).read_bytes(), expected)


if __name__ == "__main__":
    unittest.main()
