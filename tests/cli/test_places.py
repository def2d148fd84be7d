# kx7text - tests of kx7conv: files and folders that are swapped meanwhile, outputs that are inputs, names of open files.
import os
import re
import subprocess
import unittest

from program import BAD_DATA, IO, KX7CONV, USAGE, Test, inMemory, preloaded, run

SOURCE = b"\xd0"
RESULT = "Π".encode()
REPLACED = "another file has taken its place"


class Places(Test):
    def make(self, **files):
        for name, data in files.items():
            path = self.folder / name.replace("__", "/").replace("_", ".")
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(data)

    def read(self, name):
        return (self.folder / name).read_bytes()

    def entries(self, folder="."):
        return sorted(os.listdir(self.folder / folder))

    def convert(self, *arguments, status=0, messages="", output=b"", data=b"", **options):
        self.expect(["-f", "1253", *arguments], data, output, status, messages, cwd=self.folder, **options)

    def swapped(self, swap, *arguments, **expected):
        self.convert(*arguments, env=preloaded("KX7CONV_SWAPS", KX7CONV_SWAP=swap), **expected)


class Swaps(Places):
    def testAFolderThatBecomesALinkWhileItIsWalkedLeadsNowhere(self):
        """At every point: what is outside is neither read nor written."""
        for arguments in (["-i"], ["--output-dir", "out"], ["--check"], []):
            outcomes = set()
            for n in range(1, 12):
                self.make(d__a=b"a", d__sub__x=b"x", secret__x=b"secret")
                swap = f"openat {n} mv d/sub d/moved && ln -s ../secret d/sub"
                status, output, messages = run("-f", "1253", "-r", *arguments, "d", cwd=self.folder,
                                               env=preloaded("KX7CONV_SWAPS", KX7CONV_SWAP=swap))
                self.assertIn((status, messages), ((0, ""), (IO, f"kx7conv: d/sub: {REPLACED}\n")), (n, arguments))
                outcomes.add(status)
                self.assertNotIn(b"secret", output)
                self.assertEqual(self.read("secret/x"), b"secret")
                found = [path for path in self.folder.rglob("*") if path.is_file() and path.read_bytes() == b"secret"]
                self.assertEqual(found, [self.folder / "secret/x"])
                subprocess.run(["rm", "-rf", "d", "out"], cwd=self.folder, check=True)
            self.assertEqual(outcomes, {0, IO}, arguments)

    def testAFileThatBecomesALinkOrAPipeLeadsNowhere(self):
        for swap in ("ln -s ../secret d/x", "mkfifo d/x", "cp secret d/x"):
            for call in [f"openat {n}" for n in range(1, 12)] + ["tmpfile 1", "fsync 1", "renameat 1"]:
                self.make(d__x=SOURCE, secret=b"secret")
                for arguments in (["-r", "-i", "d"], ["-i", "d/x"], ["-r", "-i.bak", "d"]):
                    self.make(d__x=SOURCE, secret=b"secret")
                    status, output, messages = run(
                        "-f", "1253", *arguments, cwd=self.folder, stdin=None,
                        env=preloaded("KX7CONV_SWAPS", KX7CONV_SWAP=f"{call} mv d/x d/old; {swap}"))
                    self.assertEqual((output, self.read("secret")), (b"", b"secret"))
                    path = self.folder / "d/x"
                    if not path.is_fifo() and not path.is_symlink() and self.read("d/x") != b"secret":
                        self.assertEqual((status, self.read("d/x")), (0, RESULT), (call, arguments, messages))
                    elif status != 0:
                        self.assertRegex(messages, f"kx7conv: d/x: ({REPLACED}|not a regular file, which -i needs)\n")
                    self.assertFalse([name for name in self.entries("d") if name.startswith(".")])
                    subprocess.run(["rm", "-rf", "d"], cwd=self.folder, check=True)

    def testAFoundFileThatIsSwappedIsRefusedOrReadWhole(self):
        """Between the look at a name and its opening: what is no regular file is refused, and never taken for an empty one."""
        device = "mknod d/x c 1 3" if os.getuid() == 0 else "python3 -c 'import socket; socket.socket(1).bind(\"d/x\")'"
        swaps = {"link": "ln -s ../secret d/x", "pipe": "mkfifo d/x", "device": device, "folder": "mkdir d/x",
                 "file": "install -m 600 other d/x"}
        refused = re.compile(rf"kx7conv: d/x: ({REPLACED}|Permission denied|No such device or address)\n")
        for kind, swap in swaps.items():
            for arguments, data in ((["--output-dir", "out"], SOURCE), (["--check"], b"\xd2"), ([], SOURCE)):
                outcomes = []
                for n in range(1, 9):
                    self.make(d__x=data, secret=b"secret", other=b"\xd3\xd2" if "--check" in arguments else b"other")
                    (self.folder / "d/x").chmod(0o644)
                    status, output, messages = run(
                        "-f", "1253", "-r", *arguments, "d", cwd=self.folder,
                        env=preloaded("KX7CONV_SWAPS", KX7CONV_SWAP=f"openat {n} mv d/x old; {swap}"))
                    written = self.folder / "out/x"
                    if written.exists():
                        output += written.read_bytes()
                    if status == IO:
                        self.assertRegex(messages, refused, (kind, arguments, n))
                        outcome = "refused"
                    elif (status, output, messages) == (0, b"", ""):
                        outcome = "ignored"
                    elif output == b"other" or "byte 1" in messages:
                        outcome = "other"
                        self.assertTrue(not written.exists() or written.stat().st_mode & 0o777 == 0o600)
                    else:
                        outcome = "converted"
                        expected = (BAD_DATA, b"") if "--check" in arguments else (0, RESULT)
                        self.assertEqual((status, output), expected, (kind, arguments, n, messages))
                    if outcomes[-1:] != [outcome]:
                        outcomes.append(outcome)
                    subprocess.run(["rm", "-rf", "d", "out", "old"], cwd=self.folder, check=True)
                # Ahead of the look it is what it has become, after the opening what it was.
                self.assertEqual(outcomes, ["other", "converted"] if kind == "file" else ["ignored", "refused", "converted"],
                                 (kind, arguments))

    def testWhatWasNotReadIsNotReplaced(self):
        for options in (["-i"], ["-i.bak"]):
            for call in ("fsync 1", "tmpfile 1"):
                self.make(x=SOURCE, y=b"new")
                self.swapped(f"{call} mv y x", *options, "x", status=IO, messages=f"kx7conv: x: {REPLACED}\n")
                self.assertEqual((self.read("x"), self.entries()), (b"new", ["x"]))

    def testAnOutputThatBecomesALinkIsNotFollowed(self):
        for call in ("openat 1", "openat 2", "tmpfile 1", "fsync 1"):
            self.make(out=b"old", secret=b"secret")
            status, _, messages = run("-f", "1253", "-o", "out", data=SOURCE, cwd=self.folder,
                                      env=preloaded("KX7CONV_SWAPS", KX7CONV_SWAP=f"{call} ln -sf $PWD/secret out"))
            # A link that is there when the name is looked up is followed, as any other is.
            if call != "openat 1":
                self.assertEqual((status, messages, self.read("secret")), (IO, f"kx7conv: out: {REPLACED}\n", b"secret"))
            (self.folder / "out").unlink()

    def testAPipeThatBecomesALinkIsNotWrittenThrough(self):
        self.make(secret=b"secret")
        os.mkfifo(self.folder / "pipe")
        self.swapped("openat 2 ln -sf secret pipe", "-o", "pipe", data=SOURCE, status=IO,
                     messages=f"kx7conv: pipe: {REPLACED}\n")
        self.assertEqual(self.read("secret"), b"secret")

    def testLinksBelowTheOutputFolderAreNotFollowed(self):
        self.make(d__sub__x=SOURCE, d__y=SOURCE, secret__x=b"secret")
        (self.folder / "out").mkdir()
        (self.folder / "out/sub").symlink_to("../secret")
        (self.folder / "out/y").symlink_to("../secret/x")
        self.convert("-r", "--output-dir", "out", "d", status=IO,
                     messages="kx7conv: out/sub: Not a directory\nkx7conv: out/y: Not a regular file\n")
        self.assertEqual(self.read("secret/x"), b"secret")

    def testAPipeInTheOutputFolderIsRefused(self):
        self.make(x=SOURCE)
        (self.folder / "out").mkdir()
        os.mkfifo(self.folder / "out/x")
        self.convert("--output-dir", "out", "x", status=IO, messages="kx7conv: out/x: Not a regular file\n")

    def testAPipeThatIsNamedIsReadAndWritten(self):
        for arguments, output in ((["in"], RESULT), (["--output-dir", "out", "in"], b""), (["-o", "new", "in"], b"")):
            if not (self.folder / "in").exists():
                os.mkfifo(self.folder / "in")
            writer = subprocess.Popen(["sh", "-c", r"printf '\320' >in"], cwd=self.folder)
            self.convert(*arguments, output=output)
            writer.wait()
        self.assertEqual((self.read("out/in"), self.read("new")), (RESULT, RESULT))
        reader = subprocess.Popen(["cat", "in"], cwd=self.folder, stdout=subprocess.PIPE)
        self.convert("-o", "in", data=SOURCE)
        self.assertEqual(reader.communicate()[0], RESULT)
        self.convert("-i", "in", status=USAGE, messages="kx7conv: in: not a regular file, which -i needs\n")


class OpenFiles(Places):
    def testAreWrittenToWhereTheyStand(self):
        for name in ("/dev/stdout", "/dev/fd/1", "/proc/self/fd/1", "/proc/thread-self/fd/1", "link"):
            (self.folder / "link").symlink_to("/dev/fd/1")
            for mode, before in (("r+b", b"before"), ("ab", b"before")):
                self.make(out=b"before, and after")
                with open(self.folder / "out", mode) as out:
                    out.seek(6)
                    if mode == "ab":
                        before = b"before, and after"
                    subprocess.run([KX7CONV, "-f", "1253", "-o", name], input=SOURCE, stdout=out, cwd=self.folder,
                                   check=True)
                self.assertEqual(self.read("out"), (before + RESULT + b"before, and after"[len(before) + 2:]))
            with open(self.folder / "gone", "w+b") as out:
                (self.folder / "gone").unlink()
                subprocess.run([KX7CONV, "-f", "1253", "-o", name], input=SOURCE, stdout=out, cwd=self.folder, check=True)
                out.seek(0)
                self.assertEqual(out.read(), RESULT)
            self.convert("-o", name, data=SOURCE, output=RESULT)
            self.assertEqual(self.entries(), ["link", "out"])
            (self.folder / "link").unlink()

    def testOfAnyNumber(self):
        subprocess.run(["sh", "-c", 'printf x >out; printf "\\320" | "$0" -f 1253 -o /dev/fd/7 7>>out', KX7CONV],
                       cwd=self.folder, check=True)
        self.assertEqual(self.read("out"), b"x" + RESULT)
        status, _, messages = run("-f", "1253", "-o", "/dev/fd/9", data=SOURCE)
        self.assertEqual(status, IO, messages)

    def testAreNoFilesInPlace(self):
        self.make(x=SOURCE)
        with open(self.folder / "x", "r+b") as file:
            self.convert("-i", f"/dev/fd/{file.fileno()}", pass_fds=[file.fileno()], status=USAGE,
                         messages=f"kx7conv: /dev/fd/{file.fileno()}: not a regular file, which -i needs\n")
        self.assertEqual(self.read("x"), SOURCE)


class OutputsThatAreInputs(Places):
    def shell(self, command, messages, status=USAGE):
        done = subprocess.run(["bash", "-c", f"ulimit -f 1000; {command}", KX7CONV], cwd=self.folder,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=60)
        self.assertEqual((done.returncode, done.stderr.decode(), done.stdout), (status, messages, b""), command)

    def testAreRefusedBeforeAnythingIsWritten(self):
        text = SOURCE * 200000
        for jobs in (1, 3):
            self.make(x=text, y=b"y", d__a=b"a", d__sub__z=b"z")
            os.link(self.folder / "x", self.folder / "second")
            os.link(self.folder / "d/sub/z", self.folder / "outside")
            (self.folder / "link").symlink_to("x")
            run = f'"$0" -f 1253 -j {jobs}'
            for name in ("x", "./x", "second", "link"):
                self.shell(f"{run} y {name} >>x", f"kx7conv: {name}: is the output, too\n")
                self.shell(f"{run} -o /dev/stdout y {name} >>x", f"kx7conv: {name}: is the output, too\n")
            self.shell(f"{run} <x >>x", "kx7conv: (stdin): is the output, too\n")
            self.shell(f"{run} -r y d >>d/sub/z", "kx7conv: (stdout): is in a folder that is converted\n")
            self.shell(f"{run} -r y d >>d/new", "kx7conv: (stdout): is in a folder that is converted\n")
            self.shell(f"{run} -r y d >>outside", "kx7conv: d/sub/z: is the output, too\n")
            self.shell(f"{run} -r -o d/sub/z y d", "kx7conv: d/sub/z: is in a folder that is converted\n")
            self.shell(f"{run} -r -o d/other y d", "kx7conv: d/other: is in a folder that is converted\n")
            self.shell(f"{run} --files-from=- >>x <x", "kx7conv: (stdin): is the output, too\n")
            for name, data in (("x", text), ("d/sub/z", b"z"), ("d/new", b""), ("outside", b"z")):
                self.assertEqual(self.read(name), data)
            self.assertEqual(self.entries("d"), ["a", "new", "sub"])
            subprocess.run("rm -r *", shell=True, cwd=self.folder, check=True)

    def testAreRefusedInAList(self):
        self.make(x=b"x", list=b"y\nx\n", y=b"y")
        self.shell('"$0" -f 1253 --files-from list >>x', "kx7conv: x: is the output, too\n")
        self.assertEqual(self.read("x"), b"xy")

    def testMessagesAndRecordsAreNotWrittenIntoAnInput(self):
        name = "Ж"  # not in the output: the message about it would be the next error
        for arguments in (["--check", "--max-errors", "1000000"], ["-i"], ["--output-dir", "out"]):
            (self.folder / "d").mkdir(exist_ok=True)
            (self.folder / f"d/{name}").write_text(f"{name}\n")
            with open(self.folder / f"d/{name}", "ab") as messages:
                done = subprocess.run(["bash", "-c", 'ulimit -f 1000; "$@"', "-", KX7CONV, "-f", "utf8", "-t", "1252", *arguments,
                                       "-r", "d"], cwd=self.folder, stderr=messages, timeout=60)
            self.assertEqual(done.returncode, USAGE)
            self.assertEqual((self.folder / f"d/{name}").read_text(),
                             f"{name}\nkx7conv: d/{name}: messages are written to it\n")
        self.make(x=b"x", y=b"y")
        with open(self.folder / "x", "ab") as out:
            done = subprocess.run([KX7CONV, "--guess", "y", "x"], cwd=self.folder, stdout=out, stderr=subprocess.PIPE)
        self.assertEqual((done.returncode, done.stderr), (USAGE, b"kx7conv: x: is the output, too\n"))
        self.assertNotIn(b"x\t", self.read("x"))

    def testAnOutputFolderAmongItsInputs(self):
        for jobs in ("1", "3"):
            self.make(d__d__x=b"first", d__x=b"second", e__x=b"third")
            self.convert("-r", "-j", jobs, "--output-dir", ".", "d", status=USAGE,
                         messages="kx7conv: d/d/x: its output is in a folder that is converted\n")
            self.assertEqual((self.read("d/x"), self.read("x")), (b"second", b"second"))
            (self.folder / "x").write_bytes(b"fourth")
            self.convert("-j", jobs, "--output-dir", "d", "e/x", "d/x", status=USAGE,
                         messages="kx7conv: e/x: its output is another input\n")
            self.assertEqual(self.read("d/x"), b"second")

    def testAnOutputFolderInAFolderOfAList(self):
        """Folders in a list are not known before they are walked."""
        for names in (b"d\n", b"e\nd\n"):  # e/d has been converted into d
            self.make(d__d__x=b"first", d__x=b"second", e__d__y=b"third", list=names)
            self.convert("-r", "--output-dir", ".", "--files-from", "list", status=USAGE,
                         messages="kx7conv: d/d/x: its output is in a folder that is converted\n")
            self.assertEqual((self.read("d/d/x"), self.read("d/x"), self.read("x")), (b"first", b"second", b"second"))

    def testAnOutputFolderThatIsTheInput(self):
        for jobs in ("1", "3"):
            self.make(d__x=SOURCE, list=b"d\n")
            for arguments in (["d"], ["--files-from", "list"]):
                self.convert("-r", "-j", jobs, "--output-dir", "d/../d", *arguments, status=USAGE,
                             messages="kx7conv: d: is the folder of the output\n")
            self.assertEqual((self.read("d/x"), self.entries("d")), (SOURCE, ["x"]))


class Backups(Places):
    def testTheNameOfAnotherInputIsRefused(self):
        for jobs in ("1", "4"):
            for names in (["x", "x.bak"], ["x.bak", "x"], ["y", "./x.bak", "x"], ["link", "x"]):
                self.make(x=SOURCE, x_bak=b"two", y=b"y")
                if not (self.folder / "link").is_symlink():
                    (self.folder / "link").symlink_to("x.bak")
                self.convert("-i.bak", "-j", jobs, *names, status=USAGE,
                             messages="kx7conv: x: the name of its backup is that of another input\n")
                self.assertEqual((self.read("x"), self.read("x.bak"), self.read("y")), (SOURCE, b"two", b"y"))
                self.assertEqual(self.entries(), ["link", "x", "x.bak", "y"])

    def testInFoldersAndListsNoBackupIsReplaced(self):
        for jobs in ("1", "4"):
            self.make(d__x=SOURCE, d__x_bak=b"two", d__y=SOURCE, list=b"d/x\nd/x.bak\nd/y\nd/y.bak\n")
            taken = "kx7conv: d/x: the name of its backup is taken, perhaps by another input\n"
            self.convert("-r", "-i.bak", "-j", jobs, "d", status=USAGE, messages=taken)
            self.assertEqual([self.read(f"d/{name}") for name in self.entries("d")], [SOURCE, b"two", RESULT, SOURCE])
            (self.folder / "d/y").write_bytes(SOURCE)
            (self.folder / "d/y.bak").unlink()
            self.convert("-i.bak", "-j", jobs, "--errors", "skip", "--files-from", "list", status=USAGE,
                         messages=taken + "kx7conv: d/y.bak: has the name of another input's backup\n")
            self.assertEqual((self.read("d/x"), self.read("d/x.bak.bak"), self.read("d/y"), self.read("d/y.bak")),
                             (SOURCE, b"two", RESULT, SOURCE))
            subprocess.run("rm -r *", shell=True, cwd=self.folder, check=True)

    def testAnOldBackupStaysWhereTheNewOneIsRefused(self):
        self.make(x=SOURCE, x_bak=b"old")
        for call in ("renameat 1", "fsync 1"):
            self.swapped(f"{call} rm x.bak; mkdir -p x.bak/y", "-i.bak", "x", status=IO,
                         messages="kx7conv: x: its backup x.bak: Is a directory\n")
            self.assertEqual((self.read("x"), self.entries()), (SOURCE, ["x", "x.bak"]))
            subprocess.run("rm -r x.bak; echo old >x.bak", shell=True, cwd=self.folder, check=True)

    def testAFolderUnderTheNameOfTheBackupIsNamed(self):
        (self.folder / "real").mkdir()
        self.make(real__x=SOURCE)
        (self.folder / "real/x.bak").mkdir()
        (self.folder / "link").symlink_to("real/x")
        for name in ("real/x", "link"):
            self.convert("-i.bak", name, status=IO, messages=f"kx7conv: {name}: its backup x.bak: Is a directory\n")
        self.assertEqual((self.read("real/x"), self.entries("real")), (SOURCE, ["x", "x.bak"]))

    def testARefusedReplacementLeavesTheBackupAsItWas(self):
        for variables in ({}, {"always": "tmpfile 0 EOPNOTSUPP,"}):
            for older, call in ((None, "rename 1"), (b"older", "rename 2"), ("same", "rename 2")):
                self.make(x=SOURCE)
                if older == "same":
                    os.link(self.folder / "x", self.folder / "x.bak")
                elif older:
                    self.make(x_bak=older)
                fault = variables.get("always", "") + f"{call} EIO"
                self.convert("-i.bak", "x", status=IO, messages="kx7conv: x: Input/output error\n",
                             env=preloaded("KX7CONV_FAULTS", KX7CONV_FAULT=fault))
                self.assertEqual((self.read("x"), self.entries()), (SOURCE, ["x", "x.bak"] if older else ["x"]), fault)
                if older:
                    self.assertEqual(self.read("x.bak"), SOURCE if older == "same" else older)
                    (self.folder / "x.bak").unlink()

    def testTheOnlyNameOfTheOldTextStays(self):
        for before, call in ({}, 1), ({"x_bak": b"older"}, 2):
            self.make(x=SOURCE, **before)
            self.swapped(f"renameat {call} rm x; mkdir x", "-i.bak", "x", status=IO, messages="kx7conv: x: Is a directory\n")
            self.assertEqual((self.read("x.bak"), self.entries()), (SOURCE, ["x", "x.bak"]))
            subprocess.run("rm -r x x.bak", shell=True, cwd=self.folder, check=True)

    def testAnOlderBackupIsReplacedWhereNamesCannotBeExchanged(self):
        self.make(x=SOURCE, x_bak=b"older")
        self.convert("-i.bak", "x", env=preloaded("KX7CONV_FAULTS", KX7CONV_FAULT="rename 1 EINVAL"))
        self.assertEqual((self.read("x"), self.read("x.bak"), self.entries()), (RESULT, SOURCE, ["x", "x.bak"]))

    def testABackupThatIsTheSameFile(self):
        self.make(x=SOURCE)
        os.link(self.folder / "x", self.folder / "x.bak")
        self.convert("-i.bak", "x")
        self.assertEqual((self.read("x"), self.read("x.bak"), self.entries()), (RESULT, SOURCE, ["x", "x.bak"]))


class TemporaryNames(Places):
    def testANameThatIsTakenIsTriedAgain(self):
        taken = ".kx7conv-" + 16 * "0"
        for variables in ({}, {"KX7CONV_NO_TMPFILE": "1"}):
            for arguments in (["-i", "x"], ["-i.bak", "x"], ["-o", "x", "x"], ["-o", "new", "x"]):
                self.make(x=SOURCE, x_bak=b"old")
                (self.folder / taken).write_bytes(b"left over")
                self.convert(*arguments, env=preloaded("KX7CONV_SWAPS", KX7CONV_RANDOM="5", **variables))
                self.assertEqual(self.read("new" if "new" in arguments else "x"), RESULT)
                self.assertEqual(self.read(taken), b"left over")
                self.assertEqual(set(self.entries()) - {"new"}, {taken, "x", "x.bak"})
        self.convert("-r", ".", "--check")
        self.convert("-r", "-o", "/dev/null", ".")
        status, output, _ = run("-f", "1253", "--errors", "skip", "-r", ".", cwd=self.folder)
        self.assertNotIn(b"left over", output)


SwapsInMemory = inMemory(Swaps)
BackupsInMemory = inMemory(Backups)
TemporaryNamesInMemory = inMemory(TemporaryNames)

if __name__ == "__main__":
    unittest.main()
