# kx7text - tests of kx7conv: what is done with errors, byte order marks, literal conversion, lists, guesses, progress.
import json
import os
import pty
import select
import socket
import subprocess
import time
import unittest

from program import BAD_DATA, IO, KX7CONV, SAMPLES, USAGE, Test, listed, run

BOM = "\ufeff"


class Errors(Test):
    def testSkipLeavesOutWhatCannotBeConverted(self):
        for option in (["--errors", "skip"], ["-c"], ["-c", "--errors=skip"]):
            self.expect(["-f", "utf8", "-t", "28591", *option], "a€b😀c".encode() + b"\xff\xc3", b"abc")

    def testASubstituteStandsForEverything(self):
        for option in ("U+002A", "u+2a", "2A", "U+00002A"[:8]):
            self.expect(["-f", "utf8", "-t", "28591", "--substitute", option], "a€😀".encode() + b"\xff", b"a***")
        self.expect(["-f", "utf8", "-t", "utf16", "--substitute", "U+1F600"], b"a\xff", "a😀".encode("utf-16-le"))
        self.expect(["-f", "932", "--substitute=U+3013", "--errors", "replace"], b"\x82 ", "〓 ".encode())

    def testASubstituteIsACharacterOfTheTarget(self):
        self.expect(["-f", "utf8", "-t", "28591", "--substitute", "U+20AC"], b"a", b"", USAGE,
                    "kx7conv: --substitute: not in KX7CS_ISO_8859_1\n")
        for wrong in ("U+D800", "U+110000", "U+0", "x", "", "U+", "U+00000041"):
            status, output, messages = run("-f", "utf8", "--substitute", wrong)
            self.assertEqual((status, output), (USAGE, b""), wrong)
            self.assertRegex(messages, r"\Akx7conv: --substitute: '.*' is not a character U\+0001 to U\+10FFFF\n\Z")

    def testFailOnLoss(self):
        first = "kx7conv: (stdin):2: byte 2 (0x2): U+20AC not in KX7CS_ISO_8859_1\n"
        for mode, output in (("replace", b"a\n?b?"), ("skip", b"a\nb"), ("escape", b"a\nU+20ACb?")):
            self.expect(["-f", "utf8", "-t", "28591", "--errors", mode, "--fail-on-loss"], "a\n€b".encode() + b"\xff",
                        output, BAD_DATA, first + "kx7conv: (stdin): 2 errors\n")
            self.expect(["-f", "utf8", "-t", "28591", "--errors", mode, "--fail-on-loss"], b"a\nb", b"a\nb")

    def testContradictionsAreUsageErrors(self):
        for arguments in (["--check", "-c"], ["--check", "--errors", "strict"], ["-c", "--errors", "replace"],
                          ["--check", "-i"], ["-o", "x", "-i"], ["-o", "x", "--output-dir", "y"], ["-0"],
                          ["--literal", "-c"], ["--literal", "--check"], ["--literal", "--bom", "strip"],
                          ["--substitute", "U+2A", "-c"], ["-i/x"], ["--bom", "maybe"], ["--stats=xml"],
                          ["--list=xml"], ["--progress", "always"], ["--progress"], ["-j", "x"], ["-j"],
                          ["--max-errors", "-1"], ["--check=yes"], ["--jobs="], ["--jobs=", "1"], ["--bom="], ["-o", ""],
                          ["--outputdir", "x"], ["-x"], ["-cx"], ["-1"], ["-j", "1", "-j", "2"]):
            status, output, messages = run("-f", "1251", *arguments, data=b"a", cwd=self.folder)
            self.assertEqual((status, output), (USAGE, b""), arguments)
            self.assertRegex(messages, r"\Akx7conv: [^\n]+\n\Z", arguments)


class Check(Test):
    def testReportsEveryErrorAndTheirNumberAndWritesNothing(self):
        data = "a\n€".encode() + b"\xffb\n" + "😀".encode() + b"\n"
        where = "kx7conv: (stdin):"
        errors = [where + "2: byte 2 (0x2): U+20AC not in KX7CS_ISO_8859_1\n",
                  where + "2: byte 5 (0x5): invalid KX7CS_UTF8 sequence FF\n",
                  where + "3: byte 8 (0x8): U+1F600 not in KX7CS_ISO_8859_1\n"]
        self.expect(["-f", "utf8", "-t", "28591", "--check"], data, b"", BAD_DATA,
                    "".join(errors) + "kx7conv: (stdin): 3 errors\n")
        for most in range(4):
            self.expect(["-f", "utf8", "-t", "28591", "--check", "--max-errors", most], data, b"", BAD_DATA,
                        "".join(errors[:most]) + "kx7conv: (stdin): 3 errors\n")
        self.expect(["-f", "utf8", "-t", "28591", "--check"], "aé".encode(), b"")
        self.expect(["-f", "utf8", "--check"], b"\xff", b"", BAD_DATA,
                    where + "1: byte 0 (0x0): invalid KX7CS_UTF8 sequence FF\nkx7conv: (stdin): 1 error\n")

    def testReportsTenErrorsOfEachInputUnlessToldOtherwise(self):
        count = 300000
        self.file("a", b"\xff\n" * count)
        for jobs in (1, 3):
            status, output, messages = run("-f", "utf8", "--check", "-j", jobs, "a", "a", cwd=self.folder)
            lines = messages.splitlines()
            self.assertEqual((status, output, len(lines)), (BAD_DATA, b"", 22))
            for i in (0, 9, 11, 20):
                number = i % 11
                self.assertEqual(lines[i], f"kx7conv: a:{number + 1}: byte {2 * number} (0x{2 * number:X}): "
                                 "invalid KX7CS_UTF8 sequence FF")
            self.assertEqual((lines[10], lines[21]), (f"kx7conv: a: {count} errors",) * 2)

    def testReportsThousands(self):
        count = 100000
        status, _, messages = run("-f", "utf8", "--check", "--max-errors", count, data=b"a\xff\n" * count)
        lines = messages.splitlines()
        self.assertEqual((status, len(lines)), (BAD_DATA, count + 1))
        self.assertEqual(lines[-2], f"kx7conv: (stdin):{count}: byte {3 * count - 2} (0x{3 * count - 2:X}): "
                         "invalid KX7CS_UTF8 sequence FF")

    def testWritesNothingToClosedOutput(self):
        done = subprocess.run(["sh", "-c", '"$0" -f utf8 --check >&-', KX7CONV], input=b"a", capture_output=True)
        self.assertEqual((done.returncode, done.stderr), (0, b""))


class Marks(Test):
    forms = {"utf8": "utf-8", "utf16": "utf-16-le", "utf32": "utf-32-le", "gb18030": "gb18030"}

    def testKeepStripAndAdd(self):
        for source, sourceCodec in self.forms.items():
            for target, targetCodec in self.forms.items():
                for mode, text, result in (("keep", BOM + "a", BOM + "a"), ("strip", BOM + "a", "a"),
                                           ("strip", "a" + BOM, "a" + BOM), ("strip", BOM * 2, BOM),
                                           ("add", "a", BOM + "a"), ("add", BOM + "a", BOM + "a"), ("add", "", BOM)):
                    self.expect(["-f", source, "-t", target, "--bom", mode], text.encode(sourceCodec),
                                result.encode(targetCodec))

    def testEveryInputLosesItsMarkAndEveryOutputGetsOne(self):
        self.file("a", (BOM + "1").encode())
        self.file("b", (BOM + "2").encode())
        self.expect(["-f", "utf8", "-t", "1252", "--bom", "strip", "a", "b"], b"", b"12", cwd=self.folder)
        self.expect(["-f", "utf8", "--bom", "add", "a", "b"], b"", (BOM + "12").encode(), cwd=self.folder)
        self.expect(["-f", "utf8", "--bom", "add", "--output-dir", "out", "a", "b"], b"", b"", cwd=self.folder)
        self.assertEqual((self.folder / "out/b").read_bytes(), (BOM + "2").encode())

    def testOffsetsCountAMarkThatIsStripped(self):
        self.expect(["-f", "utf8", "--bom", "strip"], BOM.encode() + b"a\xff", b"a", BAD_DATA,
                    "kx7conv: (stdin):1: byte 4 (0x4): invalid KX7CS_UTF8 sequence FF\n")

    def testAMarkThatComesInPieces(self):
        process = subprocess.Popen([KX7CONV, "-f", "utf8", "--bom", "strip"], stdin=subprocess.PIPE,
                                   stdout=subprocess.PIPE, bufsize=0)
        for byte in (BOM + "ab").encode():
            process.stdin.write(bytes([byte]))
            time.sleep(0.02)
        self.assertEqual(process.communicate()[0], b"ab")

    def testATargetWithoutAMark(self):
        self.expect(["-f", "utf8", "-t", "1251", "--bom", "add"], b"a", b"", USAGE,
                    "kx7conv: --bom add: KX7CS_WCP1251 has no byte order mark\n")


class Literal(Test):
    def testEndsAtAZero(self):
        self.expect(["-f", "1251", "--literal"], b"\xcf\0\xcf", "П".encode())
        self.expect(["-f", "utf16", "--literal"], "aП\0b".encode("utf-16-le"), "aП".encode())
        self.expect(["-f", "utf32", "--literal"], "aП\0b".encode("utf-32-le"), "aП".encode())
        self.expect(["-f", "utf16", "--literal"], "a\u0100\u0001".encode("utf-16-le"), "a\u0100\u0001".encode())

    def testIsLenientAsTheLibraryIs(self):
        rows = [(b"a\x80b", "ab"),  # stray continuation bytes are passed over
                (b"\xc3A", "\ufffdA"), (b"\xe2\x82", "\ufffd"), (b"\xc1\x81", "A")]
        for data, text in rows:
            self.expect(["-f", "utf8", "--literal"], data, text.encode())
        self.expect(["-f", "euc_jp", "--literal"], b"a\x80\x8ab", b"a\nb")
        self.expect(["-f", "utf8", "-t", "1252", "--literal"], b"\xed\xa0\x80", b"?")
        # An overlong zero becomes a unit 0, at which encoding ends.
        self.expect(["-f", "utf8", "-t", "1252", "--literal"], b"ab\xc0\x80cd", b"ab")

    def testModes(self):
        text = "a€b".encode()
        self.expect(["-f", "utf8", "-t", "28591", "--literal"], text, b"a?b")
        self.expect(["-f", "utf8", "-t", "28591", "--literal", "--errors", "escape"], text, b"aU+20ACb")
        self.expect(["-f", "utf8", "-t", "28591", "--literal", "--errors", "strict"], text, b"a", BAD_DATA,
                    "kx7conv: (stdin): U+20AC not in KX7CS_ISO_8859_1\n")
        self.expect(["-f", "932", "--literal", "--errors", "strict"], b"a\x82 ", b"a", BAD_DATA,
                    "kx7conv: (stdin): invalid KX7CS_WCP932 sequence 82\n")
        # UTF-8 output with escapes drops the unit after an unpaired surrogate, a line feed for one.
        self.expect(["-f", "utf16", "--literal", "--errors", "escape"], b"\x00\xd8\n\0b\0", b"U+D800b")
        # GB 18030 ends at a high surrogate without its partner, without a word.
        self.expect(["-f", "utf16", "-t", "gb18030", "--literal", "--errors", "strict"], b"a\0\x00\xd8b\0", b"a")

    def testPiecesChangeNothing(self):
        for source, target, data, result in (
                ("utf8", "1251", "Пa€".encode() * 200000, "Пa€".encode("cp1251") * 200000),
                ("utf16", "utf8", "😀a".encode("utf-16-le") * 200000, "😀a".encode() * 200000),
                ("utf8", "utf8", "x".encode() + "😀".encode() * 200000, "x".encode() + "😀".encode() * 200000),
                ("932", "utf8", b"\x82 " * 300000, "\ufffd ".encode() * 300000)):
            self.expect(["-f", source, "-t", target, "--literal"], data, result)
            self.expect(["-f", source, "-t", target, "--literal", "-j", "8"], data, result)


class Lists(Test):
    def testListAsJson(self):
        status, output, messages = run("--list=json")
        self.assertEqual((status, messages), (0, ""))
        entries = json.loads(output)
        self.assertEqual([(entry["number"], entry["name"]) for entry in entries], listed())
        labels = [line.split("\t")[2:] for line in run("--list")[1].decode().splitlines()]
        self.assertEqual([" ".join(entry["labels"]) for entry in entries], ["".join(found) for found in labels])
        self.assertIn(["windows-1251 cp1251 cswindows1251 x-cp1251"], labels)

    def testGuessPutsTheRightSetFirst(self):
        misses = []
        for path in sorted(SAMPLES.glob("*.txt")):
            status, output, messages = run("--guess", path)
            self.assertEqual((status, messages), (0, ""), path.name)
            names = [line.split("\t") for line in output.decode().splitlines()]
            utf8 = (SAMPLES / f"{path.name.split('.')[0]}.utf8.txt").read_bytes()
            if run("-f", names[0][0], path)[1] != utf8:
                misses.append(path.name)
        # Each shares nearly all of its bytes' letters with a neighbour.
        self.assertLessEqual(set(misses), {"lithuanian.28600.txt", "welsh.28604.txt"})

    def testGuessNamesExactlyTheSetsInWhichTheInputIsClean(self):
        for data in (b"plain\n", "é€".encode(), b"\x81\x40\x82", b"\xff\xfe", b"", b"\x80\0\0\xd8", b"\x8e\xa1" * 70000,
                     "あ".encode() * 90000 + b"\xff"):
            clean = {number for number, name in listed() if number != -2 and name.startswith("KX7CS_") and
                     run("-f", number, "-t", "utf8", "--check", data=data)[0] == 0}
            status, output, messages = run("--guess", data=data)
            found = {int(line.split("\t")[0]) for line in output.decode().splitlines()}
            self.assertEqual(found, clean, data[:20])
            self.assertEqual((status, messages), (0, "") if clean else
                             (BAD_DATA, "kx7conv: (stdin): not clean in any character set\n"))

    def testGuessOfSeveral(self):
        self.file("a", "é".encode())
        status, output, messages = run("--guess", "a", "missing", "a", cwd=self.folder)
        self.assertEqual((status, messages), (IO, "kx7conv: missing: No such file or directory\n"))
        self.assertEqual({line.split("\t")[0] for line in output.decode().splitlines()}, {"a"})


class Stats(Test):
    def testStatsAreOneLine(self):
        self.file("a", "aé€\n".encode())
        self.file("bad", b"\xff")
        status, output, messages = run("-f", "utf8", "-t", "1252", "--stats=json", "a", "bad", "a", cwd=self.folder)
        self.assertEqual((status, output), (BAD_DATA, b"a\xe9\x80\n" * 2))
        lines = messages.splitlines()
        self.assertEqual(len(lines), 2)
        found = json.loads(lines[1])
        self.assertGreaterEqual(found.pop("seconds"), 0)
        self.assertEqual(found, {"files": 3, "failedFiles": 1, "bytesRead": 14, "bytesWritten": 8, "errors": 1})
        _, _, messages = run("-f", "utf8", "--stats", "a", cwd=self.folder)
        self.assertRegex(messages, r"\Akx7conv: 1 files, 0 failed; 7 bytes read, 7 written; 0 errors; \d+\.\d{3} s\n\Z")

    def testBytesBeforeACharacterThatTheTargetLacksAreRead(self):
        for data in ("aé".encode() + "€".encode(), "aé".encode() + b"\xff"):
            _, output, messages = run("-f", "utf8", "-t", "28591", "--stats=json", data=data)
            self.assertEqual(output, b"a\xe9")
            self.assertEqual(json.loads(messages.splitlines()[1])["bytesRead"], 3)


class Streams(Test):
    def testLinesAreWrittenOneByOne(self):
        ours, theirs = socket.socketpair(socket.AF_UNIX, socket.SOCK_DGRAM)  # which keeps writes apart
        with ours, theirs:
            process = subprocess.Popen([KX7CONV, "-f", "1251", "--line-buffered"], stdin=subprocess.PIPE, stdout=theirs,
                                       bufsize=0)
            ours.settimeout(30)
            process.stdin.write(b"\xcf1\n2\n3")
            self.assertEqual([ours.recv(100), ours.recv(100)], ["П1\n".encode(), b"2\n"])
            process.stdin.write(b"4\n5")
            self.assertEqual(ours.recv(100), b"34\n")
            process.stdin.close()
            self.assertEqual(ours.recv(100), b"5")
            self.assertEqual(process.wait(), 0)

    def testLineBufferedConvertsTheSame(self):
        data = b"".join((b"\xcf" * length + b"\n") for length in (0, 1, 5, 300000, 2, 200000)) + b"\xcf"
        for jobs in (1, 4):
            self.expect(["-f", "1251", "--line-buffered", "-j", jobs], data, data.decode("cp1251").encode())

    def testLinesComeAsTheyComeInSeveralThreadsToo(self):
        for charSet, codec in (("1251", "cp1251"), ("932", "cp932"), ("utf8", "utf-8"), ("utf16", "utf-16-le")):
            process = subprocess.Popen([KX7CONV, "-f", charSet, "-j", "3"], stdin=subprocess.PIPE,
                                       stdout=subprocess.PIPE, bufsize=0)
            for line in ("первая\n", "яя", "\n"):
                process.stdin.write(line.encode(codec))
                received = b""
                while len(received) < len(line.encode()):
                    self.assertTrue(select.select([process.stdout], [], [], 30)[0], charSet)
                    received += os.read(process.stdout.fileno(), 100)
                self.assertEqual(received.decode(), line)
            process.stdin.close()
            self.assertEqual((process.stdout.read(), process.wait()), (b"", 0))
            process.stdout.close()

    def testProgressIsForATerminal(self):
        def start(*arguments):
            terminal, theirs = pty.openpty()
            process = subprocess.Popen([KX7CONV, "-f", "1251", *arguments], stdin=subprocess.PIPE,
                                       stdout=subprocess.DEVNULL, stderr=theirs)
            os.close(theirs)
            for _ in range(5):
                process.stdin.write(b"a" * 65536)
                process.stdin.flush()
                time.sleep(0.12)
            process.stdin.close()
            shown = b""
            try:
                while piece := os.read(terminal, 4096):
                    shown += piece
            except OSError:
                pass
            os.close(terminal)
            self.assertEqual(process.wait(), 0)
            return shown.decode()

        shown = start("--progress", "auto")
        self.assertRegex(shown, r"\rkx7conv: \(stdin\): 0\.\d MiB, \d+\.\d MiB/s\x1b\[K")
        self.assertTrue(shown.endswith("\r\x1b[K"), shown)
        self.assertEqual(start(), "")
        self.assertEqual(start("--progress", "never"), "")
        self.expect(["-f", "1251", "--progress", "auto"], b"a" * (1 << 20), b"a" * (1 << 20))


if __name__ == "__main__":
    unittest.main()
