# kx7text - tests of kx7conv: conversion, character sets and messages.
import hashlib
import json
import os
import pathlib
import random
import re
import shutil
import socket
import subprocess
import sys
import threading
import time
import unittest

from program import IO, KX7CONV, ROOT, SAMPLES, SANITIZED, USAGE, Test, listed, preloaded, run

sys.path.insert(0, str(ROOT / "tools/tables"))
import charsets  # noqa: E402

BLOCK = 128 * 1024  # bytes that the program reads at once
PIECE = 8 * 1024  # code units that it decodes at once

# Named, and never with a converter.
WITHOUT_CONVERTER = {
    50220: "KX7CS_ISO_2022JP", 50221: "KX7CS_ISO_2022JP_1", 50222: "KX7CS_ISO_2022JP_2", 50223: "KX7CS_ISO_2022JP_3",
    50224: "KX7CS_ISO_2022JP_2004", 50225: "KX7CS_ISO_2022KR", 50227: "KX7CS_ISO_2022CN",
    50228: "KX7CS_ISO_2022CN_EXT", 50229: "KX7CS_ISO_2022TW", 51950: "KX7CS_EUC_TW", 1201: "KX7CS_UTF16BE",
    12001: "KX7CS_UTF32BE",
}

# By what the samples' names and kx7conv call a set.
ICONV_NAMES = {row.in_file_names: row.glibc for row in charsets.NAMED if row.glibc}


def namesInOrder():
    """(number, name) of every named character set, in the order of the registry's names."""
    rows = re.findall(r"KX7_NAMED\((KX7CS_\w+), (-?\d+)\)", (ROOT / "tests/charset/NamedSets.h").read_text())
    return [(int(number), name) for name, number in rows]


class CharacterSets(Test):
    def testAreFoundByNumberAndByNameInAnyCaseWithAndWithoutPrefix(self):
        for name in ["1251", "KX7CS_WCP1251", "kx7cs_wcp1251", "Kx7Cs_Wcp1251", "WCP1251", "wcp1251"]:
            self.expect(["--from", name], b"\xcf", "П".encode())
            self.expect(["--from", "utf8", "--to", name], "П".encode(), b"\xcf")
        for name in ["65001", "KX7CS_UTF8", "utf8", "UTF8", "Utf8"]:
            self.expect(["-f", name, "-t", "28591"], "é".encode(), b"\xe9")
        for name in ["28591", "iso_8859_1", "KX7CS_ISO_8859_1"]:
            self.expect([f"--from={name}"], b"\xe9", "é".encode())
        for name in ["-2", "os_default", "KX7CS_OS_DEFAULT"]:
            self.expect(["-f", name, "-t", name], b"abc\n", b"abc\n")

    def testLabelsAreThoseOfTheLibrary(self):
        for name in ["cp1251", "windows-1251", "CsWindows1251", " 1251 "]:
            self.expect(["-f", name, "-t", "utf-8"], b"\xe6", "ж".encode())
        self.expect(["-f", "latin1"], b"\x80", b"\xc2\x80")

    def testEveryOneOfThoseListedAnswersToItsNumberAndItsName(self):
        for number, name in listed():
            for what in (number, name, name.removeprefix("KX7CS_").lower()):
                self.expect(["-f", what, "-t", what], b"", b"")

    def testListHasThoseWithAConverterInTheRegistrysOrder(self):
        expected = [entry for entry in namesInOrder() if entry not in WITHOUT_CONVERTER.items()]
        self.assertEqual((len(expected), expected[-1]), (42, (-2, "KX7CS_OS_DEFAULT")))
        self.assertEqual([entry for entry in listed() if entry[1].startswith("KX7CS_")], expected)

    def testListedLabelsLeadToTheirSet(self):
        status, output, _ = run("--list=json")
        self.assertEqual(status, 0)
        every = bytes(range(0x20, 0x7F)) + bytes(range(0xA0, 0x100))
        count = 0
        for entry in json.loads(output):
            expected = run("-f", entry["number"], "--errors", "replace", data=every)
            for label in entry["labels"]:
                self.assertEqual(run("-f", label.upper(), "--errors", "replace", data=every), expected, label)
                count += 1
        self.assertGreater(count, 200)

    def testUnknownOnesAreRefused(self):
        unknown = ["klingon", "0", "437", "01251", "1251x", "cp", "KX7CS_", "KX7CS_KX7CS_UTF8", "utf-9",
                   "99999999999999999999"]
        for name in unknown:
            message = f"kx7conv: unknown character set '{name}'; --list shows those that there are\n"
            self.expect(["-f", name], b"a", b"", USAGE, message)
            self.expect(["-f", "1251", "-t", name], b"a", b"", USAGE, message)

    def testThoseWithoutAConverterAreNotTakenForUTF8(self):
        for number, name in WITHOUT_CONVERTER.items():
            for what in (number, name):
                message = f"kx7conv: character set {name} has no converter\n"
                self.expect(["-f", what], b"a", b"", USAGE, message)
                self.expect(["-f", "utf8", "-t", what], b"a", b"", USAGE, message)


class Options(Test):
    def testHelpAndVersionAreOutput(self):
        status, output, messages = run("--help")
        self.assertEqual((status, messages), (0, ""))
        for option in ["-f, --from", "-t, --to", "--errors", "--list", "--version", "--help", "FILE"]:
            self.assertIn(option, output.decode())
        self.assertEqual(run("-h"), (status, output, messages))
        version = re.search(r"project\(kx7text VERSION (\S+)", (ROOT / "CMakeLists.txt").read_text())[1]
        self.expect(["--version"], b"", f"kx7conv {version}\n".encode())

    def testWrongUseIsOneLineAndStatusTwo(self):
        wrong = [[], ["a.txt"], ["--from"], ["--from="], ["--frm", "1251"], ["-f", "1251", "-x"],
                 ["-f", "1251", "--errors", "ignore"], ["-f", "1251", "--errors"], ["-f", "1251", "-f", "1252"],
                 ["-f", "1251", "-t", ""]]
        for arguments in wrong:
            status, output, messages = run(*arguments, data=b"a")
            self.assertEqual((status, output), (USAGE, b""), arguments)
            self.assertRegex(messages, r"\Akx7conv: [^\n]+\n\Z", arguments)
        self.expect([], b"", b"", USAGE, "kx7conv: --from is required\n")

    def testOutputIsUTF8UnlessToldOtherwise(self):
        self.expect(["-f", "iso_8859_5"], b"\xda\xde\xe8\xda\xd0", "кошка".encode())

    def testFilesAndStandardInputComeInOrder(self):
        self.file("a", b"1")
        self.file("b", b"3")
        self.expect(["-f", "1252", "a", "-", "b"], b"2", b"123", cwd=self.folder)
        self.expect(["a", "b", "-f", "1252"], b"2", b"13", cwd=self.folder)
        self.expect(["-f", "1252", "-"], b"2", b"2")
        self.expect(["-f", "1252", "-", "-", "a"], b"2", b"21", cwd=self.folder)

    def testAnyFileNameIsAFileName(self):
        for name in ["[a]", "[a,b]", "{}", "%%", "a b", "ü", "a\nb", "--from", "-x", "--"]:
            self.file(name, name.encode())
            for count in (1, 2):
                self.expect(["-f", "utf8", "--", *count * [name]], b"", count * name.encode(), cwd=self.folder)


class Strict(Test):
    def testEndsBeforeAnIllegalByte(self):
        self.expect(["-f", "1253"], b"a\n\xd1\xd2b", "a\nΡ".encode(), 1,
                    "kx7conv: (stdin):2: byte 3 (0x3): invalid KX7CS_WCP1253 sequence D2\n")

    def testNamesFileLineOffsetAndSequence(self):
        self.file("in.txt", (b"x" * 255 + b"\n") * 16 + b"\xd2")
        self.expect(["-f", "wcp1253", "--errors", "strict", "in.txt"], b"", (b"x" * 255 + b"\n") * 16, 1,
                    "kx7conv: in.txt:17: byte 4096 (0x1000): invalid KX7CS_WCP1253 sequence D2\n", cwd=self.folder)
        self.file("out.txt", ("x" * 255 + "\n").encode() * 16 + "€".encode())
        self.expect(["-f", "utf8", "-t", "28591", "out.txt"], b"", (b"x" * 255 + b"\n") * 16, 1,
                    "kx7conv: out.txt:17: byte 4096 (0x1000): U+20AC not in KX7CS_ISO_8859_1\n", cwd=self.folder)

    def testMessagesAreOneLineWhateverTheNameHolds(self):
        self.file("a\nb\x7f", b"\xd2")
        self.expect(["-f", "1253", "a\nb\x7f"], b"", b"", 1,
                    "kx7conv: 'a'$'\\n''b'$'\\177':1: byte 0 (0x0): invalid KX7CS_WCP1253 sequence D2\n", cwd=self.folder)

    def testRefusesMalformedUTF8(self):
        rows = [
            ("stray continuation byte", b"\x80", "80"),
            ("lead byte without its continuation", b"\xc3A", "C3"),
            ("overlong form of two bytes", b"\xc0\x80", "C0"),
            ("overlong form of three bytes", b"\xe0\x80\x80", "E0"),
            ("encoded surrogate", b"\xed\xa0\x80", "ED"),
            ("value above U+10FFFF", b"\xf4\x90\x80\x80", "F4"),
            ("lead byte that never is", b"\xff", "FF"),
            ("sequence that breaks off", b"\xf0\x9f\x98A", "F0 9F 98"),
            ("sequence of two bytes that the end cuts", b"\xc3", "C3"),
            ("sequence of four bytes that the end cuts", b"\xf0\x9f\x98", "F0 9F 98"),
        ]
        for what, data, sequence in rows:
            with self.subTest(what):
                self.expect(["-f", "utf8"], "é\n".encode() + data, "é\n".encode(), 1,
                            f"kx7conv: (stdin):2: byte 3 (0x3): invalid KX7CS_UTF8 sequence {sequence}\n")

    def testNamesACharacterThatTheTargetLacks(self):
        for character, name in (("ж", "U+0436"), ("€", "U+20AC"), ("😀", "U+1F600"), ("\U0010ffff", "U+10FFFF")):
            text = "é\n\nüé"
            self.expect(["-f", "utf8", "-t", "28591"], f"{text}{character}é".encode(), text.encode("latin-1"), 1,
                        f"kx7conv: (stdin):3: byte 8 (0x8): {name} not in KX7CS_ISO_8859_1\n")

    def testTheFirstErrorCountsWhicheverItIs(self):
        self.expect(["-f", "utf8", "-t", "28591"], "a€".encode() + b"\xff", b"a", 1,
                    "kx7conv: (stdin):1: byte 1 (0x1): U+20AC not in KX7CS_ISO_8859_1\n")
        self.expect(["-f", "utf8", "-t", "28591"], b"a\xff" + "€".encode(), b"a", 1,
                    "kx7conv: (stdin):1: byte 1 (0x1): invalid KX7CS_UTF8 sequence FF\n")

    def testOffsetsAndLinesAreRightOverPiecesAndBlocks(self):
        line = "é\n".encode()
        for boundary in (PIECE, 3 * PIECE, BLOCK, 2 * BLOCK):
            for offset in range(boundary - 5, boundary + 6):
                before = (line * (boundary // len(line) + 8))[:offset]
                if before[-1:] == b"\xc3":
                    before = before[:-1] + b"\n"
                text = before.decode().encode("latin-1")
                place = f"kx7conv: (stdin):{before.count(10) + 1}: byte {offset} (0x{offset:X}): "
                self.expect(["-f", "utf8", "-t", "1252"], before + "😀é".encode(), text, 1,
                            place + "U+1F600 not in KX7CS_WCP1252\n")
                self.expect(["-f", "utf8", "-t", "1252"], before + b"\xe2\x82" + line, text, 1,
                            place + "invalid KX7CS_UTF8 sequence E2 82\n")
                self.expect(["-f", "utf8", "-t", "1252"], before + b"\xf0\x9f", text, 1,
                            place + "invalid KX7CS_UTF8 sequence F0 9F\n")


class Substitutes(Test):
    def testReplaceWritesOneQuestionMarkForACharacter(self):
        self.expect(["-f", "utf8", "-t", "28591", "--errors", "replace"], "a€b😀cé".encode(), b"a?b?c\xe9")

    def testEscapeWritesTheCodeUnits(self):
        self.expect(["-f", "utf8", "-t", "28591", "--errors", "escape"], "a€b😀cé".encode(),
                    b"aU+20ACbU+D83DU+DE00c\xe9")

    def testIllegalInputBecomesTheReplacementCharacter(self):
        for mode in ("replace", "escape"):
            self.expect(["-f", "1253", "--errors", mode], b"a\xd2\xd2b", "a\ufffd\ufffdb".encode())

    def testIllegalInputBecomesAQuestionMarkWhereTheTargetLacksThat(self):
        for mode in ("replace", "escape"):
            self.expect(["-f", "1253", "-t", "1253", "--errors", mode], b"a\xd2b", b"a?b")

    def testAReplacementCharacterInTheTextIsACharacterLikeAnyOther(self):
        self.expect(["-f", "utf8", "-t", "1252", "--errors", "escape"], "\ufffd".encode() + b"\xff", b"U+FFFD?")
        self.expect(["-f", "utf8", "-t", "1252", "--errors", "replace"], "\ufffd".encode() + b"\xff", b"??")

    def testACharacterThatTheEndCutsIsReplacedOnce(self):
        for data in (b"\xc3", b"\xe2\x82", b"\xf0\x9f\x98"):
            self.expect(["-f", "utf8", "--errors", "replace"], b"a" + data, "a\ufffd".encode())

    def testLongRunsOfThemAreAllWritten(self):
        count = 3 * BLOCK
        self.expect(["-f", "utf8", "-t", "1252", "--errors", "replace"], "€ж".encode() * count, b"\x80?" * count)
        self.expect(["-f", "utf8", "-t", "28591", "--errors", "escape"], "€".encode() * count, b"U+20AC" * count)
        self.expect(["-f", "utf8", "--errors", "replace"], b"\xff" * count, "\ufffd".encode() * count)

    def testMalformedUTF8IsReplacedByTheLongestPartThatBeginsASequence(self):
        chance = random.Random(7)
        pieces = [bytes([byte]) for byte in range(256)]
        pieces += [character.encode() for character in ("é", "€", "😀", "\0", "\n")]
        pieces += [b"\xe2\x82", b"\xf0\x9f\x98", b"\xed\xa0"]
        for _ in range(20):
            data = b"".join(chance.choices(pieces, k=20000))
            self.expect(["-f", "utf8", "--errors", "replace"], data, data.decode(errors="replace").encode())

    def testTheyAreWrittenInTheTargetsOwnForm(self):
        for name, codec in (("utf16", "utf-16-le"), ("utf32", "utf-32-le")):
            for mode in ("replace", "escape"):
                self.expect(["-f", "1253", "-t", name, "--errors", mode], b"a\xd2b", "a\ufffdb".encode(codec))

    def testUnpairedSurrogatesAreInvalidInput(self):
        for text in (b"aU+D800b", b"aU+DC00b"):
            self.expect(["-f", "utf16esc", "-t", "utf8", "--errors", "replace"], text, "a\ufffdb".encode())
        for units in ("a\ud800b", "a\udc00b"):
            self.expect(["-f", "utf16", "--errors", "replace"], units.encode("utf-16-le", "surrogatepass"),
                        "a\ufffdb".encode())
            self.expect(["-f", "utf32", "--errors", "replace"], units.encode("utf-32-le", "surrogatepass"),
                        "a\ufffdb".encode())


class Blocks(Test):
    def testCharactersThatABlockCutsStayWhole(self):
        for character in ("é", "€", "😀"):
            for offset in range(BLOCK - 7, BLOCK + 4):
                text = "x" * offset + character + "\n" + "y" * BLOCK + character
                self.expect(["-f", "utf8"], text.encode(), text.encode())
        for character in ("é", "€"):
            for offset in range(BLOCK - 4, BLOCK + 4):
                text = "x" * offset + character + "\n" + "y" * BLOCK + character
                self.expect(["-f", "utf8", "-t", "1252"], text.encode(), text.encode("cp1252"))
                self.expect(["-f", "1252"], text.encode("cp1252"), text.encode())

    def testAPairThatAPieceCutsIsOneCharacter(self):
        for offset in [*range(PIECE - 3, PIECE + 3), *range(BLOCK - 7, BLOCK + 4)]:
            text = "x" * offset + "😀" * PIECE
            self.expect(["-f", "utf8", "-t", "1252", "--errors", "replace"], text.encode(),
                        text.encode("cp1252", "replace"))
            self.expect(["-f", "utf8"], text.encode(), text.encode())

    def testMultibyteCharactersStayWhole(self):
        rows = [("932", "cp932", "表ｱ"), ("936", "cp936", "丂中"), ("949", "cp949", "한"), ("950", "cp950", "許功"),
                ("gb18030", "gb18030", "中ü😀"), ("sjis0213", "shift_jis_2004", "表𠀋"), ("euc_jp", "euc_jp", "表ｱ"),
                ("euc_cn", "gb2312", "中"), ("euc_kr", "euc_kr", "한"), ("utf16", "utf-16-le", "中😀"),
                ("utf32", "utf-32-le", "中😀")]
        for name, codec, characters in rows:
            for offset in range(4):
                text = "x" * offset + characters * (2 * BLOCK // len(characters.encode(codec)))
                with self.subTest(name, offset=offset):
                    self.expect(["-f", name], text.encode(codec), text.encode())
                    self.expect(["-f", "utf8", "-t", name], text.encode(), text.encode(codec))

    def testPairsThatAreDecodedUnitByUnitStayWhole(self):
        def escaped(text):
            return text.replace("😀", "U+D83DU+DE00").encode()

        for offset in [*range(PIECE - 3, PIECE + 3), *range(BLOCK - 13, BLOCK + 3)]:
            text = "x" * offset + "😀e" * PIECE
            self.expect(["-f", "utf16esc"], escaped(text), text.encode())
            self.expect(["-f", "utf16esc", "-t", "1252", "--errors", "replace"], escaped(text),
                        text.encode("cp1252", "replace"))
            self.expect(["-f", "utf16esc", "-t", "1252"], escaped("x" * offset + "😀"), b"x" * offset, 1,
                        f"kx7conv: (stdin):1: byte {offset} (0x{offset:X}): U+1F600 not in KX7CS_WCP1252\n")

    def testASurrogateWithoutItsPartnerIsAnErrorInItsPlace(self):
        rows = [(b"a\0\0\xd8", "00 D8"), (b"a\0\0\xd8b", "00 D8 62"), (b"a\0\0\xd8b\0", "00 D8"),
                (b"a\0\0\xdc", "00 DC")]
        for data, sequence in rows:
            self.expect(["-f", "utf16"], data, b"a", 1,
                        f"kx7conv: (stdin):1: byte 2 (0x2): invalid KX7CS_UTF16 sequence {sequence}\n")
        for data, substituted in ((b"abU+D800", b"ab?"), (b"abU+D800c", b"ab?c"), (b"abU+D800\xe9", b"ab??")):
            status, output, messages = run("-f", "utf16esc", data=data)
            self.assertEqual((status, output), (1, b"ab"))
            self.assertTrue(messages.startswith("kx7conv: (stdin):1: byte 2 (0x2): "), messages)
            self.expect(["-f", "utf16esc", "-t", "1252", "--errors", "replace"], data, substituted)

    def testAnEscapeThatTheEndCutsIsText(self):
        for data in (b"U", b"U+", b"aU+12", b"U+20A"):
            self.expect(["-f", "utf16esc"], data, data)

    def testSizesAroundABlock(self):
        for size in [0, 1, *range(BLOCK - 3, BLOCK + 4), *range(2 * BLOCK - 1, 2 * BLOCK + 2)]:
            data = (b"\xcf\xf0\xe8\n" * BLOCK)[:size]
            self.expect(["-f", "1251"], data, data.decode("cp1251").encode())
            self.expect(["-f", "utf8", "-t", "1251"], data.decode("cp1251").encode(), data)

    def testZeroBytesAreKept(self):
        data = b"\0a\0\0b" * BLOCK + b"\0"
        for name in ("1252", "28595", "utf8"):
            self.expect(["-f", name, "-t", name], data, data)

    def testRandomTextConvertsAsPythonDoesIt(self):
        chance = random.Random(11)
        text = "".join(chance.choices("abc\n\0", k=3 * BLOCK)) + "".join(chance.choices("aяЖ€\n", k=3 * BLOCK))
        self.expect(["-f", "utf8", "-t", "1251"], text.encode(), text.encode("cp1251"))
        self.expect(["-f", "1251", "-t", "utf8"], text.encode("cp1251"), text.encode())
        self.expect(["-f", "1251", "-t", "28595", "--errors", "replace"], text.encode("cp1251"),
                    text.encode("iso8859_5", "replace"))


class Streaming(Test):
    def start(self, *arguments):
        process = subprocess.Popen([KX7CONV, *arguments], stdin=subprocess.PIPE, stdout=subprocess.PIPE, bufsize=0)
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.kill)
        return process

    @staticmethod
    def receive(process, size):
        data = b""
        while len(data) < size:
            data += os.read(process.stdout.fileno(), size - len(data)) or b"(end)"
        return data

    def testOutputComesBeforeTheInputEnds(self):
        # Each answer is waited for, so that a program which waits for more input hangs here and is stopped.
        process = self.start("-f", "1251")
        guard = threading.Timer(60, process.kill)
        guard.start()
        self.addCleanup(guard.cancel)
        for line in ("первая\n", "вторая\n", "без конца строки"):
            process.stdin.write(line.encode("cp1251"))
            self.assertEqual(self.receive(process, len(line.encode())).decode(), line)
        process.stdin.close()
        self.assertEqual((process.stdout.read(), process.wait()), (b"", 0))

    def testOnlyTheCharacterThatIsNotCompleteWaits(self):
        process = self.start("-f", "utf8", "-t", "1252")
        guard = threading.Timer(60, process.kill)
        guard.start()
        self.addCleanup(guard.cancel)
        process.stdin.write(b"ab\xe2")
        self.assertEqual(self.receive(process, 2), b"ab")
        process.stdin.write(b"\x82")
        time.sleep(0.05)
        process.stdin.write(b"\xacc")
        self.assertEqual(self.receive(process, 2), b"\x80c")
        process.stdin.close()
        self.assertEqual((process.stdout.read(), process.wait()), (b"", 0))

    def testMemoryDoesNotGrowWithTheInput(self):
        process = self.start("-f", "1251")
        piece = "Съешь ещё этих мягких французских булок\n".encode("cp1251") * 26214
        received = hashlib.sha256()

        def drain():
            while data := os.read(process.stdout.fileno(), 1 << 20):
                received.update(data)

        reader = threading.Thread(target=drain)
        reader.start()
        peaks = []
        sent = hashlib.sha256()
        for _ in range(64):
            process.stdin.write(piece)
            sent.update(piece.decode("cp1251").encode())
            peaks.append(self.peakMemory(process.pid))
        process.stdin.close()
        reader.join()
        self.assertEqual(process.wait(), 0)
        self.assertEqual(received.hexdigest(), sent.hexdigest())
        self.assertLess(peaks[-1] - peaks[0], 1 << 20, "bytes between the first and the last MiB")
        if not SANITIZED:
            self.assertLess(peaks[-1], 16 << 20)

    @staticmethod
    def peakMemory(process):
        status = pathlib.Path(f"/proc/{process}/status").read_text()
        return int(re.search(r"VmHWM:\s+(\d+) kB", status)[1]) * 1024

    def testFilesBeyondTwoGiBOpen(self):
        path = self.folder / "huge"
        path.write_bytes(b"\xff")
        os.truncate(path, 5 << 30)
        self.expect(["-f", "utf8", "huge"], b"", b"", 1,
                    "kx7conv: huge:1: byte 0 (0x0): invalid KX7CS_UTF8 sequence FF\n", cwd=self.folder)


class Marks(Test):
    """The sequence in a message: what was looked at to see that it is invalid."""

    def testTheByteThatIsNoTrailByteIsNamed(self):
        rows = [("wcp932", b"\x82 ", "KX7CS_WCP932", "82 20"), ("949", b"\x81\n", "KX7CS_WCP949", "81 0A"),
                ("gb18030", b"\x810a", "KX7CS_GB18030", "81 30 61"), ("euc_jp", b"\x8f\xa1\n", "KX7CS_EUC_JP", "8F A1 0A"),
                ("euc_kr", b"\xa1!", "KX7CS_EUC_KR", "A1 21"), ("932", b"\x82", "KX7CS_WCP932", "82")]
        for charSet, data, name, sequence in rows:
            self.expect(["-f", charSet], b"a\n" + data, b"a\n", 1,
                        f"kx7conv: (stdin):2: byte 2 (0x2): invalid {name} sequence {sequence}\n")


class Failures(Test):
    def testFilesThatCannotBeReadAreReportedAndTheOthersConverted(self):
        self.file("good", b"\xcf")
        (self.folder / "directory").mkdir()
        self.expect(["-f", "1251", "good", "missing", "good"], b"", "ПП".encode(), IO,
                    "kx7conv: missing: No such file or directory\n", cwd=self.folder)
        self.expect(["-f", "1251", "directory", "good"], b"", "П".encode(), IO,
                    "kx7conv: directory: Is a directory\n", cwd=self.folder)
        self.expect(["-f", "1251", ""], b"", b"", IO, "kx7conv: '': No such file or directory\n")

    def testAFileWithoutPermission(self):
        self.file("secret", b"a")
        self.file("plain", b"b")
        (self.folder / "secret").chmod(0)
        self.folder.chmod(0o755)
        # Root reads everything.
        identity = {"user": 65534, "group": 65534, "extra_groups": []} if os.geteuid() == 0 else {}
        try:
            self.expect(["-f", "1251", "secret", "plain"], b"", b"b", IO, "kx7conv: secret: Permission denied\n",
                        cwd=self.folder, **identity)
        except PermissionError:
            self.skipTest("another user cannot run the program from here")

    def testTheHighestStatusOfSeveralFilesCounts(self):
        self.file("good", b"\xd1\n")
        self.file("bad", b"\n\xd2\n")
        bad = "kx7conv: bad:2: byte 1 (0x1): invalid KX7CS_WCP1253 sequence D2\n"
        missing = "kx7conv: missing: No such file or directory\n"
        self.expect(["-f", "1253", "good", "bad", "good"], b"", "Ρ\n\nΡ\n".encode(), 1, bad, cwd=self.folder)
        self.expect(["-f", "1253", "bad", "missing", "bad"], b"", b"\n\n", IO, bad + missing + bad, cwd=self.folder)
        self.expect(["-f", "1253", "missing", "bad", "good"], b"", "\nΡ\n".encode(), IO, missing + bad,
                    cwd=self.folder)

    def testACutOffCharacterIsNotContinuedByTheNextFile(self):
        self.file("a", b"\xe2\x82")
        self.file("b", b"\xac")
        self.expect(["-f", "utf8", "--errors", "replace", "a", "b"], b"", "\ufffd\ufffd".encode(), cwd=self.folder)
        self.expect(["-f", "utf8", "a", "b"], b"", b"", 1,
                    "kx7conv: a:1: byte 0 (0x0): invalid KX7CS_UTF8 sequence E2 82\n"
                    "kx7conv: b:1: byte 0 (0x0): invalid KX7CS_UTF8 sequence AC\n", cwd=self.folder)

    def testFullAndClosedOutputAreReported(self):
        for arguments in (["-f", "1251"], ["--list"], ["--help"], ["--version"]):
            with open("/dev/full", "wb") as full:
                done = subprocess.run([KX7CONV, *arguments], input=b"a", stdout=full, stderr=subprocess.PIPE)
            self.assertEqual((done.returncode, done.stderr), (IO, b"kx7conv: (stdout): No space left on device\n"))
            # An empty input writes nothing, so that only closing fails.
            for data in (b"a", b""):
                done = subprocess.run(["sh", "-c", '"$0" "$@" >&-', KX7CONV, *arguments], input=data,
                                      stderr=subprocess.PIPE)
                self.assertEqual((done.returncode, done.stderr), (IO, b"kx7conv: (stdout): Bad file descriptor\n"))
        # An input must not take the place of the output.
        done = subprocess.run(["sh", "-c", '"$0" -f 1251 /dev/null >&-', KX7CONV], stderr=subprocess.PIPE)
        self.assertEqual((done.returncode, done.stderr), (IO, b"kx7conv: (stdout): Bad file descriptor\n"))

    def testNoMoreFilesAreConvertedIntoFullOutput(self):
        self.file("a", b"a")
        with open("/dev/full", "wb") as full:
            done = subprocess.run([KX7CONV, "-f", "1251", "a", "missing"], stdout=full, stderr=subprocess.PIPE,
                                  cwd=self.folder)
        self.assertEqual((done.returncode, done.stderr), (IO, b"kx7conv: (stdout): No space left on device\n"))

    def testClosedInputIsReported(self):
        done = subprocess.run(["sh", "-c", '"$0" -f 1251 <&-', KX7CONV], capture_output=True)
        self.assertEqual((done.returncode, done.stdout, done.stderr),
                         (IO, b"", b"kx7conv: (stdin): Bad file descriptor\n"))

    def testAReaderThatLeavesEndsTheProgramQuietly(self):
        self.file("big", b"\xcf" * (4 << 20))
        self.file("bad", b"\xd2")
        for arguments, status in ((["-f", "1251", "big"], 0), (["-f", "1251", "big", "missing"], 0),
                                  (["-f", "1253", "bad", "big"], 1)):
            process = subprocess.Popen([KX7CONV, *arguments], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                       cwd=self.folder)
            process.stdout.read(10)
            process.stdout.close()
            messages = process.stderr.read()
            process.stderr.close()
            self.assertEqual(process.wait(), status)
            self.assertEqual(messages.count(b"\n"), status)

    def testAMessageIsOneWrite(self):
        # A datagram socket keeps writes apart.
        self.file("bad", b"\xd2")
        ours, theirs = socket.socketpair(socket.AF_UNIX, socket.SOCK_DGRAM)
        with ours, theirs:
            subprocess.run([KX7CONV, "-f", "1253", "bad", "missing"], stdout=subprocess.DEVNULL, stderr=theirs,
                           cwd=self.folder)
            ours.settimeout(10)
            self.assertEqual(ours.recv(1000), b"kx7conv: bad:1: byte 0 (0x0): invalid KX7CS_WCP1253 sequence D2\n")
            self.assertEqual(ours.recv(1000), b"kx7conv: missing: No such file or directory\n")

    def testMessagesDoNotDependOnTheLocale(self):
        environment = os.environ | {"LC_ALL": "de_DE.UTF-8", "LANGUAGE": "de"}
        self.expect(["-f", "1251", "missing"], b"", b"", IO, "kx7conv: missing: No such file or directory\n",
                    cwd=self.folder, env=environment)


class Interruptions(Test):
    """With a library in front that interrupts system calls and makes them do a few bytes only."""

    environment = preloaded("KX7CONV_INTERRUPTIONS")

    def testChangeNothing(self):
        text = "aé€😀ж\0\n" * 3000
        self.file("a", text.encode())
        self.expect(["-f", "utf8", "a", "-"], text.encode(), 2 * text.encode(), cwd=self.folder, env=self.environment)
        self.expect(["-f", "utf8", "-t", "1251", "--errors", "replace", "a"], b"", text.encode("cp1251", "replace"),
                    cwd=self.folder, env=self.environment)

    def testLeaveOffsetsRight(self):
        text = "aé€ж\n" * 1000
        self.expect(["-f", "utf8", "-t", "utf8"], text.encode() + b"\xf0\x9f", text.encode(), 1,
                    f"kx7conv: (stdin):1001: byte {len(text.encode())} (0x{len(text.encode()):X}): "
                    "invalid KX7CS_UTF8 sequence F0 9F\n", env=self.environment)


def samplePairs():
    """(file, character set, UTF-8 file) of every sample in a legacy encoding."""
    for path in sorted(SAMPLES.glob("*.txt")):
        language, charSet, _ = path.name.split(".")
        if charSet != "utf8":
            yield path, charSet, SAMPLES / f"{language}.utf8.txt"


class Samples(Test):
    def testConvertToUTF8AndBack(self):
        self.assertGreaterEqual(len({charSet for _, charSet, _ in samplePairs()}), 37)
        for path, charSet, utf8 in samplePairs():
            self.expect(["-f", charSet, path], b"", utf8.read_bytes())
            self.expect(["-f", "utf8", "-t", charSet, utf8], b"", path.read_bytes())

    def testUTF8Unchanged(self):
        for path in SAMPLES.glob("*.utf8.txt"):
            self.expect(["-f", "utf8", path], b"", path.read_bytes())

    def testAreListedInTheirReadme(self):
        readme = re.findall(r"^\| `(\S+)` \|", (SAMPLES / "README.md").read_text(), re.M)
        self.assertEqual(sorted(readme), sorted(path.name for path in SAMPLES.glob("*.txt")))

    @unittest.skipUnless(shutil.which("iconv"), "no iconv")
    def testConvertAsIconvDoesIt(self):
        for path, charSet, utf8 in samplePairs():
            name = ICONV_NAMES[charSet]
            for source, target, file in ((name, "UTF-8", path), ("UTF-8", name, utf8)):
                if (source, target) == ("CP1258", "UTF-8"):
                    continue  # iconv composes letters and tone marks
                done = subprocess.run(["iconv", "-f", source, "-t", target, file], capture_output=True)
                self.assertEqual((done.returncode, done.stderr), (0, b""), (source, target))
                ours = {"UTF-8": "utf8", name: charSet}
                self.expect(["-f", ours[source], "-t", ours[target], file], b"", done.stdout)

    @unittest.skipUnless(shutil.which("iconv"), "no iconv")
    def testConvertAmongAllEncodingsOfTheirLanguageAsIconvDoes(self):
        unicode = {"utf8": "UTF-8", "utf16": "UTF-16LE", "utf32": "UTF-32LE"}
        for language in ("japanese", "chinese-simplified", "chinese-traditional", "korean"):
            text = (SAMPLES / f"{language}.utf8.txt").read_bytes()
            names = dict(unicode)
            for path in SAMPLES.glob(f"{language}.[0-9]*.txt"):
                charSet = path.name.split(".")[1]
                names[charSet] = ICONV_NAMES[charSet]
            self.assertGreaterEqual(len(names), 5, language)
            forms = {}
            for charSet, name in names.items():
                done = subprocess.run(["iconv", "-f", "UTF-8", "-t", name], input=text, capture_output=True)
                self.assertEqual((done.returncode, done.stderr), (0, b""), name)
                forms[charSet] = done.stdout
            for source, data in forms.items():
                for target, expected in forms.items():
                    self.expect(["-f", source, "-t", target], data, expected)


if __name__ == "__main__":
    unittest.main()
