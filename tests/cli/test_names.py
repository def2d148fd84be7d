# kx7text - tests of kx7conv: names of files, whatever bytes they have, in messages and records.
import os
import random
import resource
import subprocess
import unittest

from program import BAD_DATA, IO, KX7CONV, SANITIZED, USAGE, Test, preloaded, run

# Escaped in every locale, although ls prints some of them in a UTF-8 one.
REORDERING = [0x061C, 0x200E, 0x200F, *range(0x202A, 0x202F), *range(0x2066, 0x206A)]
SEPARATORS = [0x2028, 0x2029]
C1_CONTROLS = list(range(0x80, 0xA0))
HARMFUL = [chr(code).encode() for code in REORDERING + SEPARATORS + C1_CONTROLS]
PRINTABLE = "éΩя漢\U0001F600\u00A0\u3000".encode()


def names(units, longest, count, seed):
    """Names of random units, none of which is ".", ".." or "-" or has a slash."""
    chooser = random.Random(seed)
    made = {b"".join(chooser.choices(units, k=chooser.randint(1, longest))) for _ in range(count)}
    return sorted(made - {b".", b"..", b"-"})


class Quoting(Test):
    def quotedByLs(self, files, locale):
        for name in files:
            open(os.path.join(os.fsencode(self.folder), name), "w").close()
        done = subprocess.run(["ls", "-dU1", "--quoting-style=shell-escape", "--", *files], cwd=self.folder,
                              stdout=subprocess.PIPE, check=True, env=os.environ | {"LC_ALL": locale})
        for name in files:
            os.unlink(os.path.join(os.fsencode(self.folder), name))
        return done.stdout.split(b"\n")[:-1]

    def quotedInMessages(self, files, locale):
        """As the messages have them that there are no such files."""
        done = subprocess.run([KX7CONV, "-f", "utf8", "--", *files], cwd=self.folder, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, env=os.environ | {"LC_ALL": locale})
        self.assertEqual((done.returncode, done.stdout), (IO, b""))
        begin, end = b"kx7conv: ", b": No such file or directory"
        lines = done.stderr.split(b"\n")[:-1]
        for line in lines:
            self.assertTrue(line.startswith(begin) and line.endswith(end), line)
        return [line[len(begin):-len(end)] for line in lines]

    def takenByShell(self, words):
        done = subprocess.run(["bash", "-c", b"printf '%s\\0' " + b" ".join(words)], stdout=subprocess.PIPE, check=True)
        return done.stdout.split(b"\0")[:-1]

    def expectAsLs(self, files, locale):
        """In any locale the program quotes as ls does in `locale`."""
        different = 0
        for at in range(0, len(files), 1000):
            some = files[at:at + 1000]
            expected = self.quotedByLs(some, locale)
            for own in ("C", "C.UTF-8"):
                for name, found, wanted in zip(some, self.quotedInMessages(some, own), expected, strict=True):
                    if found != wanted:
                        # A name with an apostrophe that ends with an escape: ls begins as if in the middle of an escape,
                        # so that it forgets the first "'$'", which is wrong, or begins with two quotes too many.
                        self.assertRegex(wanted, rb"\\'.*\$'[^']*'\Z", name)
                        self.assertEqual(self.takenByShell([found]), [name])
                        different += 1
        self.assertLess(different, len(files) * 0.2)

    def testEveryByteIsQuotedAsLsDoes(self):
        bytes_ = [bytes([code]) for code in range(1, 256) if code != ord("/")]
        files = [begin + byte + end for byte in bytes_ for begin in (b"", b"a", b"'", b"\n") for end in (b"", b"b", b"'")]
        self.expectAsLs(sorted(set(files) - {b".", b"-"}), "C.UTF-8")

    def testNamesOfSpecialBytesAreQuotedAsLsDoes(self):
        ascii_ = [bytes([code]) for code in range(1, 128) if code != ord("/")]
        special = [bytes([code]) for code in b" '\"#~{}\\$\n\t\x1b\x7f\x01a-7"]
        self.expectAsLs(names(special, 6, 2000, 1), "C.UTF-8")
        self.expectAsLs(names(ascii_, 12, 1000, 2), "C")
        broken = [b"\x80", b"\xc3", b"\xe2", b"\xe2\x82", b"\xed\xa0\x80", b"\xf0\x9f\x98", b"\xf5", b"\xff", b"\xc0\xaf"]
        self.expectAsLs(names(special + broken + [PRINTABLE] + [c.encode() for c in PRINTABLE.decode()], 5, 3000, 3),
                        "C.UTF-8")

    def testWhatReordersOrBreaksLinesIsEscapedInEveryLocale(self):
        files = [begin + c + end for c in HARMFUL for begin in (b"", b"a") for end in (b"", b"b", b"'")]
        # In the C locale ls escapes whatever is not ASCII.
        self.expectAsLs(files, "C")
        neighbours = {ord(c.decode()) + step for c in HARMFUL for step in (-1, 1)}
        files = [chr(code).encode() for code in neighbours if code > 0x9F and chr(code).encode() not in HARMFUL]
        self.assertGreater(len(files), 8)
        self.assertEqual(self.quotedInMessages(files, "C"), files)

    def testPlainNamesAreNotQuoted(self):
        files = [b"in.txt", b"./a-b_c/d+e,f@g:h%i", b"a#b~c{d}", "Ωé/漢字.txt".encode(), b"(stdin)"]
        expected = [*files[:-1], b"'(stdin)'"]
        self.assertEqual(self.quotedInMessages(files, "C"), expected)

    def testAShellTakesWhatMessagesHave(self):
        files = names([bytes([code]) for code in range(1, 256) if code != ord("/")], 8, 300, 4)
        self.assertEqual(self.takenByShell(self.quotedInMessages(files, "C")), files)


class Messages(Test):
    hostile = "a b\x1b[2J\u202e\udc9b\n"
    quotedHostile = "'a b'$'\\033''[2J'$'\\342\\200\\256\\233\\n'"

    def expectNamed(self, arguments, status, message):
        found, output, messages = run("-f", "utf8", *arguments, cwd=self.folder)
        self.assertEqual((found, output, messages), (status, b"", f"kx7conv: {message}\n"), arguments)

    def testEveryMessageQuotesTheName(self):
        name, quotedName = self.hostile, self.quotedHostile
        path = os.fsencode(self.folder) + b"/" + os.fsencode(name)
        with open(path, "wb") as file:
            file.write(b"\xff")
        os.mkdir(self.folder / "folder")
        os.rename(path, os.fsencode(self.folder) + b"/folder/" + os.fsencode(name))
        inFolder = f"folder/{name}"
        # Quotes are around all of a path.
        quotedInFolder = "'folder/" + quotedName[1:]
        bad = f"{quotedInFolder}:1: byte 0 (0x0): invalid KX7CS_UTF8 sequence FF"
        rows = [
            ([name], IO, f"{quotedName}: No such file or directory"),
            (["-o", f"{name}/x", "folder"], IO, quotedName + "'/x': No such file or directory"),
            (["--files-from", name], IO, f"{quotedName}: No such file or directory"),
            (["-r", "folder"], BAD_DATA, bad),
            (["-i", inFolder], BAD_DATA, bad),
            (["--check", inFolder], BAD_DATA, bad + f"\nkx7conv: {quotedInFolder}: 1 error"),
            (["-c", "-i", inFolder, f"./{inFolder}"], USAGE, "'./" + quotedInFolder[1:] + ": given twice"),
            (["-o", inFolder + "/x", "folder"], IO, quotedInFolder + "'/x': Not a directory"),
            (["--output-dir", inFolder, "folder/../" + inFolder], IO, f"{quotedInFolder}: Not a directory"),
        ]
        for arguments, status, message in rows:
            self.expectNamed(arguments, status, message)

    def testArgumentsAreQuotedOrEscaped(self):
        text = self.hostile
        escaped = "a b\\033[2J\\342\\200\\256\\233\\012"
        rows = [
            (["-t", text], f"unknown character set {self.quotedHostile}; --list shows those that there are"),
            (["-t", "it's"], 'unknown character set "it\'s"; --list shows those that there are'),
            (["-t", "plain"], "unknown character set 'plain'; --list shows those that there are"),
            (["-j", text], f"-j: {self.quotedHostile} is not a number"),
            (["--" + text], f"The following argument was not expected: --{escaped}"),
            (["--errors", text], f"--errors: {escaped} not in {{escape,replace,skip,strict}}"),
            (["--" + text + "="], f"--{escaped}= has no value"),
        ]
        for arguments, message in rows:
            self.expectNamed(arguments, USAGE, message)

    def testARecordOfGuessCannotBeForged(self):
        for name in ("a\t65001\tKX7CS_UTF8\nb", "x y", "plain"):
            (self.folder / name).write_bytes(b"\xff\xfe")
        self.file("empty", b"")
        _, output, _ = run("--guess", "a\t65001\tKX7CS_UTF8\nb", "x y", "plain", cwd=self.folder)
        records = [line.split("\t") for line in output.decode().splitlines()]
        self.assertEqual({len(record) for record in records}, {3})
        self.assertEqual(list(dict.fromkeys(record[0] for record in records)),
                         ["'a'$'\\t''65001'$'\\t''KX7CS_UTF8'$'\\n''b'", "'x y'", "plain"])
        self.assertNotIn("65001", {record[1] for record in records})


class Lists(Test):
    """--files-from."""

    def testListsOfNames(self):
        for name in ("a", "b c", "new\nline", "-x"):
            self.file(name, name.encode() + b";")
        self.file("list", b"b c\n-x\n\na")
        self.file("zeros", b"new\nline\0b c\0-x\0")
        self.expect(["-f", "utf8", "--files-from", "list"], b"", b"b c;-x;a;", cwd=self.folder)
        self.expect(["-f", "utf8", "--files-from=list", "a"], b"", b"a;b c;-x;a;", cwd=self.folder)
        self.expect(["-f", "utf8", "-0", "--files-from", "zeros"], b"", b"new\nline;b c;-x;", cwd=self.folder)
        self.expect(["-f", "utf8", "--null", "--files-from", "-"], b"a\0b c", b"a;b c;", cwd=self.folder)
        self.expect(["-f", "utf8", "--files-from", "nowhere"], b"", b"", IO,
                    "kx7conv: nowhere: No such file or directory\n", cwd=self.folder)
        self.expect(["-f", "utf8", "--files-from", "/dev/null"], b"a", b"", cwd=self.folder)

    def expectRefused(self, data, reason, options=(), output=b"a;b;", source="-"):
        """The second name of the list; the others are converted."""
        shown = "(stdin)" if source == "-" else source
        for jobs in ("1", "3"):
            self.expect(["-f", "utf8", *options, "-j", jobs, "--files-from", source], data, output, USAGE,
                        f"kx7conv: {shown}:2: {reason}\n", cwd=self.folder)

    def testANameWithAZeroByteIsRefused(self):
        self.file("a", b"a;")
        self.file("b", b"b;")
        reason = "a zero byte in a name; -0 is for names that end with one"
        for name in (b"a\0", b"a\0x", b"\0", b"\0a", b"a\0" + b"x" * 100000, b"x" * 100000 + b"\0"):
            self.expectRefused(b"a\n" + name + b"\nb\n", reason)
        self.expectRefused(b"a\na\0", reason, output=b"a;")
        # They were three names of one file.
        self.file("list", b"a\na\0x\na\0y")
        self.expect(["-f", "utf8", "-i", "--files-from", "list"], b"", b"", USAGE,
                    f"kx7conv: list:2: {reason}\nkx7conv: list:3: {reason}\n", cwd=self.folder)
        status, output, messages = run("--guess", "--files-from", "list", cwd=self.folder)
        self.assertEqual((status, messages), (USAGE, f"kx7conv: list:2: {reason}\nkx7conv: list:3: {reason}\n"))
        self.assertEqual({line.split(b"\t")[0] for line in output.splitlines()}, {b"a"})

    def testStandardInputInAListFromItIsRefused(self):
        self.file("a", b"a;")
        self.file("b", b"b;")
        reason = "'-' is standard input, which the list comes from"
        self.expectRefused(b"a\n-\nb\n", reason)
        self.expectRefused(b"a\0-\0b", reason, ["-0"])
        for name in ("/dev/stdin", "/proc/self/fd/0", "/dev/fd/0"):
            self.expect(["-f", "utf8", "--files-from", "-"], f"a\n{name}\nb\n".encode(), b"a;b;", USAGE,
                        f"kx7conv: {name}: the list of names comes from it\n", cwd=self.folder)
            self.expect(["-f", "utf8", "--files-from", name], b"a\n-\nb\n", b"a;b;", USAGE,
                        "kx7conv: (stdin): the list of names comes from it\n", cwd=self.folder)
        self.expect(["-f", "utf8", "--files-from", "-", "a", "-"], b"a\nb\n", b"", USAGE,
                    "kx7conv: standard input cannot be an input and the list of --files-from\n", cwd=self.folder)
        # In a file it is a name like any other, and so is the file's own.
        self.file("list", b"a\n-\nlist")
        self.expect(["-f", "utf8", "--files-from", "list"], b"in;", b"a;in;a\n-\nlist", cwd=self.folder)

    def testANameThatIsTooLongIsRefused(self):
        self.file("a", b"a;")
        self.file("b", b"b;")
        reason = "a name of more than 4095 bytes"
        for size in (4096, 5000, 16384, 100000):
            self.expectRefused(b"a\n" + b"x" * size + b"\nb", reason)
            self.expectRefused(b"a\0" + b"\n" * size + b"\0b", reason, ["-0"])
        longest = b"./" * 2047
        self.expect(["-f", "utf8", "--files-from", "-"], b"a\n" + longest + b"b\n", b"a;b;", cwd=self.folder)
        self.expectRefused(b"a\n/" + longest + b"b\nb", reason)

    def testANameOfAHundredMegabytesTakesNeitherTimeNorMemory(self):
        self.file("a", b"a;")
        (self.folder / "list").write_bytes(b"a\n" + b"x" * 100_000_000 + b"\na")
        address_space = 0 if SANITIZED else 128 << 20

        def limit():
            resource.setrlimit(resource.RLIMIT_CPU, (60 if SANITIZED else 5,) * 2)
            if address_space:
                resource.setrlimit(resource.RLIMIT_AS, (address_space, address_space))

        self.expect(["-f", "utf8", "--files-from", "list"], b"", b"a;a;", USAGE,
                    "kx7conv: list:2: a name of more than 4095 bytes\n", cwd=self.folder, preexec_fn=limit)

    def testALineIsCountedWhetherItIsEmptyOrNot(self):
        self.file("a", b"a;")
        self.expect(["-f", "utf8", "--files-from", "-"], b"\n\na\n\n-\n\n", b"a;", USAGE,
                    "kx7conv: (stdin):5: '-' is standard input, which the list comes from\n", cwd=self.folder)

    def testNothingIsTakenOutOfAListThatCannotBeReadOn(self):
        self.file("a", b"a;")
        self.file("x", b"x;")
        # The list's second read begins after the first letter of a name. Between them a is read to its end.
        (self.folder / "list").write_bytes(b"a".ljust(16383, b"\n") + b"xyz\n")
        for call, expected in (("read 1", b""), ("read 4", b"a;")):
            self.expect(["-f", "utf8", "--files-from", "list"], b"", expected, IO,
                        "kx7conv: list: Input/output error\n", cwd=self.folder,
                        env=preloaded("KX7CONV_FAULTS", KX7CONV_FAULT=f"{call} EIO"))


if __name__ == "__main__":
    unittest.main()
