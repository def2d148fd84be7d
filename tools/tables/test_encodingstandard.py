# kx7text - tests of the stored data of the Encoding Standard against known facts, and of its reader.

import contextlib
import io
import os
import pathlib
import sys
import tempfile
import unittest
from unittest import mock

import encodingstandard

# (pointers, different code points)
INDEXES = {
    "big5": (18590, 18490), "euc-kr": (17048, 17048), "gb18030": (23940, 23939), "gb18030-ranges": (207, 207),
    "iso-2022-jp-katakana": (63, 63), "jis0208": (7724, 7326), "jis0212": (6067, 6067),
}
SINGLE_BYTE = dict.fromkeys(
    ("ibm866", "iso-8859-2", "iso-8859-4", "iso-8859-5", "iso-8859-10", "iso-8859-13", "iso-8859-14", "iso-8859-15",
     "iso-8859-16", "koi8-r", "koi8-u", "macintosh", "windows-1250", "windows-1251", "windows-1252", "windows-1254",
     "windows-1256", "windows-1258", "x-mac-cyrillic"), 128
) | {
    "iso-8859-3": 121, "iso-8859-6": 83, "iso-8859-7": 125, "iso-8859-8": 92, "windows-1253": 125,
    "windows-1255": 118, "windows-1257": 126, "windows-874": 120,
}


class EncodingStandard(unittest.TestCase):
    def test_counts(self):
        expected = INDEXES | {name: (count, count) for name, count in SINGLE_BYTE.items()}
        found = {}
        for name in encodingstandard.index_names():
            entries = encodingstandard.index(name)
            found[name] = (len({pointer for pointer, _ in entries}), len({code_point for _, code_point in entries}))
            self.assertEqual(len(entries), found[name][0], f"{name}: a pointer twice")
            self.assertEqual(entries, tuple(sorted(entries)), f"{name}: not in the order of the pointers")
        self.assertEqual(found, expected)

    def test_entries(self):
        for name, pointer, code_point in (
            ("big5", 942, 0x43F0), ("euc-kr", 0, 0xAC02), ("gb18030", 6555, 0x3000), ("gb18030-ranges", 189000, 0x10000),
            ("iso-2022-jp-katakana", 62, 0x309C), ("jis0208", 282, 0x3041), ("jis0212", 108, 0x02D8),
            ("windows-1252", 0, 0x20AC), ("x-mac-cyrillic", 127, 0x20AC), ("koi8-u", 46, 0x45E),
        ):
            self.assertEqual(dict(encodingstandard.index(name)).get(pointer), code_point, (name, pointer))

    def test_labels(self):
        encodings = encodingstandard.encodings()
        labels = [label for names in encodings.values() for label in names]
        self.assertEqual((len(encodings), len(labels), len(set(labels))), (40, 228, 228))
        for name, names in encodings.items():
            self.assertIn(name.lower(), names)
        self.assertEqual([label for label in labels if label != label.strip().lower()], [])
        self.assertIn("us-ascii", encodings["windows-1252"])
        self.assertIn("utf-16", encodings["UTF-16LE"])

    def test_every_index_belongs_to_an_encoding(self):
        named = {encodingstandard.index_of(encoding) for encoding in encodingstandard.encodings()} - {None}
        beside = {"gb18030-ranges", "iso-2022-jp-katakana", "jis0212"}  # one direction or one code set only
        self.assertEqual(named | beside, set(encodingstandard.index_names()))
        self.assertEqual(named & beside, set())

    def test_stored_again_the_files_are_the_same_bytes(self):
        kept = encodingstandard.STORE
        with tempfile.TemporaryDirectory() as folder:
            source, target = pathlib.Path(folder, "source"), pathlib.Path(folder, "target")
            source.mkdir()
            target.mkdir()
            names = ("index-windows-1252.txt", "index-gb18030-ranges.txt", "encodings.json")
            for name in names:
                (source / name).write_text(encodingstandard._text(name), encoding="utf-8")
            with mock.patch.object(encodingstandard, "STORE", target):
                encodingstandard.store(source)
            for name in names:
                self.assertEqual((target / f"{name}.xz").read_bytes(), (kept / f"{name}.xz").read_bytes(), name)

    def test_unpacks_what_the_tests_read_and_leaves_equal_files_alone(self):
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name, "new")
            with mock.patch.object(sys, "argv", ["", "--unpack", str(folder)]):
                self.assertEqual(encodingstandard.main(), 0)
                labels = (folder / "labels.txt").read_text(encoding="utf-8").splitlines()
                self.assertEqual((len(labels), labels[0]), (228, "unicode-1-1-utf-8\tUTF-8"))
                self.assertEqual(len(list(folder.iterdir())), 35)
                for path in folder.iterdir():
                    os.utime(path, ns=(0, 0))
                (folder / "labels.txt").write_text("another edition's", encoding="utf-8")
                self.assertEqual(encodingstandard.main(), 0)
            written = [path.name for path in folder.iterdir() if path.stat().st_mtime_ns != 0]
            self.assertEqual(written, ["labels.txt"])
            self.assertEqual((folder / "labels.txt").read_text(encoding="utf-8").splitlines(), labels)

    def test_an_action_is_needed(self):
        with mock.patch.object(sys, "argv", [""]), contextlib.redirect_stderr(io.StringIO()):
            self.assertRaises(SystemExit, encodingstandard.main)
