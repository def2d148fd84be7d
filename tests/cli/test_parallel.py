# kx7text - tests of kx7conv: threads, blocks and records change nothing; memory stays small.
import os
import pathlib
import random
import re
import struct
import subprocess
import time
import unittest

from program import KX7CONV, SAMPLES, SANITIZED, Test, listed, run

CODE_SIZE = {"KX7CS_UTF16": 2, "KX7CS_UTF32": 4}
SETS = [name for number, name in listed() if number != -2]
MODES = (["--errors", "strict"], ["--errors", "replace"], ["--errors", "skip"], ["--errors", "escape"])


def lineFeed(name):
    return b"\n".ljust(CODE_SIZE.get(name, 1), b"\0")


class Chance(random.Random):
    """Bytes that are hard to cut."""

    def text(self, name, size):
        """Whole codes, of characters, parts of them and whatever else there is."""
        if name == "KX7CS_UTF16":
            units = [self.choice((0x61, 0x0A, 0x0A0A, 0xD83D, 0xDE00, 0x20AC, 0xFEFF)) for _ in range(size // 2)]
            return struct.pack(f"<{len(units)}H", *units)
        if name == "KX7CS_UTF32":
            points = [self.choice((0x61, 0x0A, 0x1F600, 0xD800, 0x110000, 0x20AC)) for _ in range(size // 4)]
            return struct.pack(f"<{len(points)}I", *points)
        pieces = [self.randbytes(size // 8) for _ in range(2)]
        ends = [0x80, 0x8E, 0x8F, 0x81, 0x82, 0x30, 0x39, 0xA1, 0xFE, 0xFF, 0x7F, 0xE0, 0xF0, 0x20, 0x40, 0x0A]
        pieces.append(bytes(self.choices(ends, k=size // 4)))
        pieces.append(bytes(self.choices([0x81, 0xA1, 0xB0, 0xC4, 0xFE, 0xE3], k=size // 4)))
        escapes = ["U+D83DU+DE00", "U+D83D", "U+000A", "U+20A", "U+", "U", "a", " ", "\n", "é", "€", "😀"]
        pieces.append("".join(self.choices(escapes, k=size // 16)).encode())
        self.shuffle(pieces)
        return b"".join(pieces)


class Threads(Test):
    def clean(self, name):
        """Much text without an error, in it long runs without a byte at which a cut is easy."""
        if not hasattr(Threads, "text"):
            chance = Chance("text")
            characters = "aé€Пあ漢한ก😀שع ŝŵışčąơğλ"
            Threads.text = "".join("".join(chance.choices(characters, k=60000)) +
                                   "".join(chance.choices(characters + " \n", k=20000)) for _ in range(3)).encode()
        status, output, messages = run("-f", "utf8", "-t", name, "-c", data=Threads.text)
        self.assertEqual((status, messages), (0, ""))
        return output

    def compare(self, jobs, name, *arguments):
        expected = run("-f", name, *arguments, cwd=self.folder)
        status, output, messages = run("-f", name, "-j", jobs, *arguments, cwd=self.folder)
        self.assertEqual((status, messages), (expected[0], expected[2]), (name, arguments, jobs))
        self.assertTrue(output == expected[1], (name, arguments, jobs))
        return expected

    def testChangeNothingInAnySet(self):
        # Among the single-byte sets there is no difference but the table.
        names = [name for name in SETS if not re.match("KX7CS_(ISO_8859_|WCP125)[^1]", name)]
        self.assertGreater(len(names), 18)
        for name in names:
            with self.subTest(name):
                clean = self.clean(name)
                self.file("clean", clean)
                self.file("rough", Chance(name + "rough").text(name, 200000))
                self.file("late", clean + b"\xff" + lineFeed(name) * 3 + clean)
                self.assertEqual(self.compare(8, name, "clean")[0], 0)
                self.compare(64, name, "--check", "--max-errors", "30", "rough", "clean", "late")
                self.compare(64, name, "late", "rough", "missing", "clean")

    def testChangeNothingInTheWaysToTreatErrors(self):
        for name in ("KX7CS_UTF8", "KX7CS_EUC_JP", "KX7CS_WCP932", "KX7CS_UTF16", "KX7CS_UTF16ESC"):
            self.file("rough", Chance(name).text(name, 400000))
            for mode in MODES:
                self.compare(8, name, *mode, "--bom", "add", "-t", "utf16", "rough", "rough")
                self.compare(64, name, *mode, "-t", "28591", "rough", "rough")

    def testLinesAreCountedOverBlocks(self):
        self.file("a", b"a\n" * 1000000 + b"\xff")
        for jobs in (1, 4):
            self.expect(["-f", "utf8", "-t", "1252", "-j", jobs, "a"], b"", b"a\n" * 1000000, 1,
                        "kx7conv: a:1000001: byte 2000000 (0x1E8480): invalid KX7CS_UTF8 sequence FF\n",
                        cwd=self.folder)

    def testAClosedPipeEndsThemQuietly(self):
        self.file("big", b"a\n" * (8 << 20))
        process = subprocess.Popen([KX7CONV, "-f", "1251", "-j", "4", "big"], stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE, cwd=self.folder)
        process.stdout.read(10)
        process.stdout.close()
        self.assertEqual((process.stderr.read(), process.wait()), (b"", 0))
        process.stderr.close()

    def testFullOutputEndsThem(self):
        self.file("big", b"a\n" * (1 << 20))
        with open("/dev/full", "wb") as full:
            done = subprocess.run([KX7CONV, "-f", "1251", "-j", "4", "big", "missing"], stdout=full,
                                  stderr=subprocess.PIPE, cwd=self.folder)
        self.assertEqual((done.returncode, done.stderr), (3, b"kx7conv: (stdout): No space left on device\n"))


class Records(Test):
    """conv(A, line feed) and conv(B) are conv(A, line feed, B)."""

    def testAreIndependent(self):
        for name in SETS:
            chance = Chance(name + "records")
            for mode in MODES[1:]:
                target = chance.choice(("utf8", name, "utf16", "28591"))
                first = chance.text(name, chance.choice((32, 64, 4000))) + lineFeed(name)
                second = chance.text(name, 4000)
                converted = [run("-f", name, "-t", target, *mode, data=data)
                             for data in (first, second, first + second)]
                self.assertEqual([(status, messages) for status, _, messages in converted], [(0, "")] * 3)
                self.assertEqual(converted[0][1] + converted[1][1], converted[2][1], (name, target, mode))

    def testInputLineFeedsAreTheOutputsLineFeeds(self):
        # 0x80 0x8A of EUC-JP is U+000A in the library's table; a record would become two.
        self.expect(["-f", "euc_jp"], b"a\x80\x8ab\n", b"a", 1,
                    "kx7conv: (stdin):1: byte 1 (0x1): invalid KX7CS_EUC_JP sequence 80 8A\n")
        # The library's own escapes in UTF-8 drop the unit after the escaped one.
        self.expect(["-f", "utf16", "--errors", "escape"], b"\x00\xd8\n\0b\0", "\ufffd\nb".encode())


class Memory(Test):
    limit = 16 << 20

    def peak(self, *arguments):
        # Its standard input comes last, and keeps it from ending unseen.
        process = subprocess.Popen([KX7CONV, *arguments, "-"], stdin=subprocess.PIPE, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL, cwd=self.folder)
        status = pathlib.Path(f"/proc/{process.pid}/status")
        peak = 0
        while process.poll() is None:
            found = re.search(r"VmHWM:\s+(\d+) kB", status.read_text())
            peak = max(peak, int(found[1]) * 1024 if found else 0)
            if peak > 1 << 20:
                process.stdin.close()
            time.sleep(0.002)
        return process.returncode, peak

    @unittest.skipIf(SANITIZED, "sanitizers take memory of their own")
    def testStaysSmallForInputOfAnySize(self):
        with open(self.folder / "huge", "wb") as huge:
            huge.truncate(5 << 30)
        # The pair that takes zeros fastest.
        status, peak = self.peak("-f", "utf32", "-t", "utf16", "-j", "2", "huge")
        self.assertEqual(status, 0)
        self.assertTrue(1 << 20 < peak < self.limit, peak)

    @unittest.skipIf(SANITIZED, "sanitizers take memory of their own")
    def testStaysSmallForEveryKindOfWork(self):
        (self.folder / "wide").write_bytes("한漢あ".encode("cp949") * 400000)
        (self.folder / "bad").write_bytes(b"\xff" * (3 << 20))
        for arguments in (["-f", "949", "-j", "64", "wide"], ["-f", "949", "-t", "utf16esc", "-j", "64", "wide"],
                          ["-f", "utf8", "-t", "utf32", "--errors", "escape", "-j", "64", "bad", "bad"],
                          ["-f", "utf8", "--check", "--max-errors", "999999999", "-j", "8", "bad", "bad"],
                          ["-f", "949", "--literal", "-t", "gb18030", "wide"], ["--guess", "wide"],
                          ["-f", "949", "--line-buffered", "wide"]):
            _, peak = self.peak(*arguments)
            self.assertTrue(1 << 20 < peak < self.limit, (peak, arguments))


if __name__ == "__main__":
    unittest.main()
