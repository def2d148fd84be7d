# kx7text - tests of kx7conv: what the names and labels of the Encoding Standard mean, held against its indexes.
import sys
import unittest

from program import BAD_DATA, ROOT, USAGE, Test, listed, run

sys.path.insert(0, str(ROOT / "tools" / "tables"))
import encodingstandard  # noqa: E402

MULTIBYTE = {"UTF-8", "GBK", "gb18030", "Big5", "EUC-JP", "ISO-2022-JP", "Shift_JIS", "EUC-KR", "replacement", "UTF-16BE",
             "UTF-16LE"}
SINGLE_BYTE = [name for name in encodingstandard.encodings() if name not in MULTIBYTE]
EVERY_BYTE = bytes(range(0x100))


def characters(encoding):
    """The character of each byte; None: malformed."""
    if encoding == "x-user-defined":
        return [chr(byte if byte < 0x80 else 0xF700 + byte) for byte in EVERY_BYTE]
    index = dict(encodingstandard.index(encodingstandard.index_of(encoding)))
    return [chr(byte if byte < 0x80 else index[byte - 0x80]) if byte < 0x80 or byte - 0x80 in index else None
            for byte in EVERY_BYTE]


class SingleByteEncodings(Test):
    def testThereAreTwentyEightAndTheUserDefinedOne(self):
        self.assertEqual(len(SINGLE_BYTE), 29)

    def testEveryByteIsTheCharacterOfTheStandard(self):
        for name in SINGLE_BYTE:
            text = "".join(c or "\uFFFD" for c in characters(name))
            self.expect(["-f", name, "--errors", "replace"], EVERY_BYTE, text.encode())

    def testEveryCharacterIsTheByteOfTheStandard(self):
        text = "".join(chr(c) for c in range(0x10000) if not 0xD800 <= c <= 0xDFFF) + "\U0001F600"
        for name in SINGLE_BYTE:
            bytes_ = {c: byte for byte, c in enumerate(characters(name)) if c}
            expected = bytes(bytes_.get(c, ord("?")) for c in text)
            self.expect(["-f", "utf8", "-t", name, "--errors", "replace"], text.encode(), expected)

    def testCheckCountsWhatIsMalformed(self):
        for name in SINGLE_BYTE:
            malformed = [byte for byte, c in enumerate(characters(name)) if c is None]
            status, output, messages = run("-f", name, "--check", "--max-errors", "300", data=EVERY_BYTE)
            self.assertEqual((status, output), (BAD_DATA if malformed else 0, b""), name)
            self.assertEqual(messages.count(" sequence "), len(malformed), name)
        self.expect(["-f", "windows-1253", "--check"], b"a\n\xaa", b"", BAD_DATA,
                    "kx7conv: (stdin):2: byte 2 (0x2): invalid windows-1253 sequence AA\nkx7conv: (stdin): 1 error\n")


class Sets(Test):
    def testNumbersAndNamesWithAPrefixMeanThePublishedSets(self):
        for name in ("1253", "cp1253", "wcp1253", "KX7CS_WCP1253", "csWindows1253"):
            self.expect(["-f", name], b"\xaa", "\u00AA".encode())
        for name in ("874", "cp874", "KX7CS_WCP874"):
            self.expect(["-f", name], b"\x1a", b"\x1c")
        for name in ("windows-874", "66410", "cp66410", "dos-874"):
            self.expect(["-f", name], b"\x1a\x80", b"\x1a" + "€".encode())

    def testNoPrefixGoesBeforeTheOthers(self):
        for name in ("KX7CS_IBM866", "KX7CS_windows-874", "KX7CS_"):
            self.assertEqual(run("-f", name)[0], USAGE)

    def testAreListedAfterThePublishedOnes(self):
        names = [name for _, name in listed()]
        web = [name for name in names if not name.startswith("KX7CS_")]
        self.assertEqual(web, ["IBM866", "KOI8-U", "macintosh", "x-mac-cyrillic", "windows-874", "windows-1253",
                               "windows-1255", "x-user-defined", "Shift_JIS", "EUC-JP", "EUC-KR"])
        self.assertEqual(names[-12:], [*web, "KX7CS_OS_DEFAULT"])

    def testAreNotGuessed(self):
        output = run("--guess", data="Привет".encode("cp866"))[1].decode()
        self.assertIn("KX7CS_WCP1251", output)
        self.assertEqual([line for line in output.splitlines() if "KX7CS_" not in line], [])

    def testTheLiteralConversionHasThemToo(self):
        self.expect(["-f", "ibm866", "--literal"], "Привет".encode("cp866"), "Привет".encode())
        self.expect(["-t", "windows-1253", "-f", "utf8", "--literal"], "αª".encode(), b"\xe1?")


class DoubleByteEncodings(Test):
    def testEveryCodeOfTheIndexIsItsCharacter(self):
        for name, width, leads, trails in (
                ("EUC-KR", 190, lambda lead: 0x81 + lead, lambda trail: 0x41 + trail),
                ("Shift_JIS", 188, lambda lead: lead + (0x81 if lead < 0x1F else 0xC1),
                 lambda trail: trail + (0x40 if trail < 0x3F else 0x41))):
            index = [(pointer, unit) for pointer, unit in encodingstandard.index(encodingstandard.index_of(name))
                     if leads(pointer // width) <= 0xFE]
            codes = b"".join(bytes([leads(pointer // width), trails(pointer % width)]) for pointer, _ in index)
            self.expect(["-f", name], codes, "".join(chr(unit) for _, unit in index).encode())

    def testAnASCIIByteThatEndsNoCharacterStays(self):
        for name in ("EUC-KR", "Shift_JIS"):
            for broken, text in ((b"\x81<b", "\uFFFD<b"), (b"\x81\xFFb", "\uFFFDb"), (b"a\x81", "a\uFFFD")):
                self.expect(["-f", name, "--errors", "replace"], broken, text.encode())

    def testThreeBytesOfEUCJP(self):
        codes = b"".join(bytes([0x8F, 0xA1 + pointer // 94, 0xA1 + pointer % 94])
                         for pointer, _ in encodingstandard.index("jis0212"))
        self.expect(["-f", "euc-jp"], codes, "".join(chr(c) for _, c in encodingstandard.index("jis0212")).encode())
        self.expect(["-f", "euc-jp", "--errors", "replace"], b"\x8f\xa2<\x8f<\x8f\xa2\xff<",
                    "\uFFFD<\uFFFD<\uFFFD<".encode())


class Registry(Test):
    def testLabelsMeanWhatTheyMeanOnTheWeb(self):
        for encoding in SINGLE_BYTE:
            text = "".join(c or "\uFFFD" for c in characters(encoding)).encode()
            for label in encodingstandard.encodings()[encoding]:
                self.expect(["--labels=whatwg", "-f", label, "--errors", "replace"], EVERY_BYTE, text)

    def testOfTheInputTheOutputAndTheList(self):
        self.expect(["--labels", "whatwg", "-f", "latin1"], b"\x80", "€".encode())
        self.expect(["--labels", "iana", "-f", "latin1"], b"\x80", "\u0080".encode())
        self.expect(["-f", "latin1"], b"\x80", "\u0080".encode())
        self.expect(["--labels", "whatwg", "-f", "utf8", "-t", "l1"], "€".encode(), b"\x80")
        self.expect(["--labels", "whatwg", "-f", "1253"], b"\xaa", "\u00AA".encode())
        self.assertEqual(run("--labels", "whatwg", "-f", "cp1253", data=b"\xaa")[0], BAD_DATA)
        self.assertEqual(run("--labels", "klingon", "-f", "utf8")[0], USAGE)
        lines = {line.split("\t")[1]: line.split("\t")[2:] for line in
                 run("--list", "--labels", "whatwg")[1].decode().splitlines()}
        self.assertIn(" latin1 ", lines["KX7CS_WCP1252"][0])
        self.assertTrue(lines["EUC-KR"][0].startswith("EUC-KR "), lines["EUC-KR"])
        self.assertNotIn("latin1", " ".join(lines["KX7CS_ISO_8859_1"]))
        labels = [label for line in lines.values() for label in " ".join(line).split()]
        self.assertEqual(len(labels), len(set(labels)))
        self.assertEqual({label.lower() for label in labels}, {label.lower() for label in
                         " ".join(" ".join(line.split("\t")[2:]) for line in
                                  run("--list")[1].decode().splitlines()).split()})


if __name__ == "__main__":
    unittest.main()
