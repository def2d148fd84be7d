#!/usr/bin/env python3
# kx7text - tests of the stored tables against known facts, and of the generator's own checks.
"""Reads the C++ under kx7/tables/ as it is stored; needs none of the packages that the tables are made from."""

import contextlib
import dataclasses
import io
import pathlib
import re
import sys
import unittest
from unittest import mock

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))

import bytetypes  # noqa: E402
import charsetfiles  # noqa: E402
import charsetrow  # noqa: E402
import charsets  # noqa: E402
import encodingstandard  # noqa: E402
import generate  # noqa: E402
import sources  # noqa: E402
import tables  # noqa: E402
import writers  # noqa: E402
from test_encodingstandard import EncodingStandard  # noqa: E402, F401

TABLES = generate.TARGET
ROOT = generate.ROOT


def stored(file, name):
    """The numbers of a stored array, its terminator last."""
    text = (TABLES / f"{file}.cpp").read_text(encoding="utf-8")
    body = re.search(rf" const {name}\[(?:256)?\] = {{\n(.*?)\n}};", text, re.DOTALL)[1]
    return [int(number, 0) for number in re.findall(r"\b(?:0x[0-9A-F]+|\d+)\b", re.sub(r"//.*", "", body))]


def records(file, name, width):
    """The records of a stored array without its terminator, which is checked."""
    numbers = stored(file, name)
    rows = list(zip(*[iter(numbers)] * width, strict=True))
    if rows[-1] != (0,) * width:
        raise AssertionError(f"{name} does not end with zeros")
    return rows[:-1]


def pairs(name):
    """(code, code point) of a mapping list."""
    if name == "oSJIS0213_2004map":
        return [(code, code_point) for code, _, code_point in records(name, name, 3)]
    return records(name, name, 2)


SINGLE_BYTE = {
    "oCP1250map": 255, "oCP1251map": 255, "oCP1252map": 255, "oCP1253map": 253, "oCP1254map": 255,
    "oCP1255map": 244, "oCP1256map": 255, "oCP1257map": 253, "oCP1258map": 255, "oCP874map": 218,
    "o8859_1map": 255, "o8859_2map": 255, "o8859_3map": 248, "o8859_4map": 255, "o8859_5map": 255,
    "o8859_6map": 210, "o8859_7map": 252, "o8859_8map": 219, "o8859_9map": 255, "o8859_10map": 255,
    "o8859_11map": 247, "o8859_13map": 255, "o8859_14map": 255, "o8859_15map": 255, "o8859_16map": 255,
    "oKOI8Rmap": 255,
}
BY_UNICODE = {
    "oCP932map": 9338, "oCP936map": 24069, "oCP949map": 10236, "oCP950map": 20202, "oBIG5map": 19839,
    "oSJIS0213_2004map": 11398,
}
BY_CODE = {"oKSX1001map": 8224, "oGB2312map": 7445, "oJIS0208map": 6879, "oJIS0201map": 189, "oJIS0212map": 0}
MULTIBYTE = BY_UNICODE | BY_CODE | {"oSHIFTJISmap": 9396}
ROTATION = {0x1A: 0x1C, 0x1C: 0x7F, 0x7F: 0x1A}


def is_ascending(values):
    return all(a < b for a, b in zip(values, values[1:]))


class EveryMappingList(unittest.TestCase):
    def each(self):
        for name, count in (SINGLE_BYTE | MULTIBYTE).items():
            yield name, count, pairs(name)

    def test_has_the_number_of_pairs_of_its_set(self):
        for name, count, found in self.each():
            self.assertEqual(len(found), count, name)

    def test_is_a_bijection_without_zero(self):
        for name, count, found in self.each():
            self.assertEqual(len({code for code, _ in found} - {0}), count, name)
            self.assertEqual(len({unit for _, unit in found} - {0}), count, name)

    def test_holds_values_that_fit_and_no_surrogates(self):
        for name, _, found in self.each():
            code_limit = 0xFF if name in SINGLE_BYTE else 0xFFFF
            unit_limit = 0x10FFFF if name == "oSJIS0213_2004map" else 0xFFFF
            self.assertTrue(all(c <= code_limit and u <= unit_limit for c, u in found), name)
            self.assertFalse([u for _, u in found if 0xD800 <= u <= 0xDFFF], name)

    def test_is_in_its_order(self):
        for name, _, found in self.each():
            if name in BY_CODE:
                self.assertTrue(is_ascending([code for code, _ in found]), name)
            elif name == "oSHIFTJISmap":
                self.assertTrue(is_ascending([unit for _, unit in found[:9257]]))
                self.assertTrue(is_ascending([unit for _, unit in found[9257:]]))
                self.assertGreater(found[9256][1], found[9257][1])
            else:
                self.assertTrue(is_ascending([unit for _, unit in found]), name)

    def test_is_declared_in_the_header(self):
        header = (TABLES / "MappingLists.h").read_text(encoding="utf-8")
        declared = re.findall(r"^extern \w+(?: \w+)? const (\w+)\[\];", header, re.MULTILINE)
        self.assertEqual(sorted(declared), sorted(SINGLE_BYTE | MULTIBYTE))
        self.assertIn(" oGBKmap = oCP936map;", header)


class SingleByteLists(unittest.TestCase):
    def test_agree_with_pythons_codecs(self):
        """Python leaves the undefined bytes of the Windows code pages undefined; here they are the control of the
        same value, or nothing."""
        others = {("oCP1253map", 0xAA): 0xAA}
        for name in SINGLE_BYTE.keys() - {"oCP874map"}:
            with self.subTest(name):
                codec = re.sub(r"^o(CP|8859_|KOI8R)(.*)map$", lambda m: {
                    "CP": "cp", "8859_": "iso8859_", "KOI8R": "koi8_r"}[m[1]] + m[2], name)
                found = dict(pairs(name))
                for byte in range(1, 256):
                    text = bytes([byte]).decode(codec, "ignore")
                    if text:
                        self.assertEqual(found.get(byte), ord(text), f"0x{byte:02X}")
                    elif byte in found:
                        control = byte if byte in range(0x80, 0xA0) and codec.startswith("cp") else None
                        self.assertEqual(found[byte], others.get((name, byte), control), f"0x{byte:02X}")

    def test_code_page_1252_has_controls_where_windows_has_them(self):
        found = dict(pairs("oCP1252map"))
        self.assertEqual([b for b in range(0x80, 0xA0) if found[b] == b], [0x81, 0x8D, 0x8F, 0x90, 0x9D])
        self.assertEqual(found[0x80], 0x20AC)

    def test_iso_8859_has_all_controls(self):
        for name in SINGLE_BYTE:
            if name.startswith("o8859"):
                found = dict(pairs(name))
                self.assertEqual([found.get(b) for b in range(0x80, 0xA0)], list(range(0x80, 0xA0)), name)

    def test_code_page_874_rotates_three_controls(self):
        found = dict(pairs("oCP874map"))
        for byte in range(0x01, 0x80):
            self.assertEqual(found[byte], ROTATION.get(byte, byte))
        self.assertNotIn(0xDB, found)
        self.assertEqual(found[0xA1], 0x0E01)

    def test_no_other_list_rotates_ascii(self):
        for name in SINGLE_BYTE.keys() - {"oCP874map"}:
            found = dict(pairs(name))
            self.assertEqual([found.get(b) for b in range(0x01, 0x80)], list(range(0x01, 0x80)), name)


class WebLists(unittest.TestCase):
    def test_are_the_standards_indexes_and_ascii(self):
        self.assertEqual(len(charsets.WEB), 11)
        for row in charsets.WEB:
            if row.converter != "SBCS":
                continue
            found = records(row.table.name, row.table.name, 2)
            expected = {byte: byte for byte in range(1, 0x80)}
            if row.encoding == "x-user-defined":
                expected |= {byte: 0xF700 + byte for byte in range(0x80, 0x100)}
            else:
                index = encodingstandard.index(encodingstandard.index_of(row.encoding))
                expected |= {0x80 + pointer: code_point for pointer, code_point in index}
            self.assertEqual(dict(found), expected, row.encoding)
            self.assertEqual(len(found), row.table.pairs, row.encoding)
            self.assertTrue(is_ascending([unit for _, unit in found]), row.encoding)

    def test_of_two_bytes_are_what_is_decoded_and_encoded(self):
        for row in charsets.WEB:
            if row.converter != "WebDoubleByte":
                continue
            both, decoded_only, encoded_only, three_bytes = (
                records(table.name, table.name, 2) if table else []
                for table in (row.table, row.decoded_only, row.encoded_only, row.three_bytes))
            self.assertTrue(is_ascending([unit for _, unit in both]), row.encoding)
            index = dict(encodingstandard.index(encodingstandard.index_of(row.encoding)))
            decoded = [*both, *decoded_only]
            self.assertEqual(len(decoded), len(dict(decoded)), row.encoding)
            self.assertLessEqual(set(unit for _, unit in decoded) - set(index.values()),
                                 set(range(1, 0x81)) | set(range(0xFF61, 0xFFA0)) | set(range(0xE000, 0xE758)))
            encoded = [*both, *encoded_only]
            self.assertEqual({unit for _, unit in encoded if unit > 0xFF},
                             {unit for unit in index.values() if unit > 0xFF} |
                             (set(range(0xFF61, 0xFFA0)) | {0x203E, 0x2212} if encoded_only else set()), row.encoding)
            index = dict(encodingstandard.index("jis0212")) if row.encoding == "EUC-JP" else {}
            self.assertEqual({((code >> 8) - 0xA1) * 94 + (code & 0xFF) - 0xA1: unit for code, unit in three_bytes},
                             index, row.encoding)

    def test_differ_from_every_published_list(self):
        published = {frozenset(pairs(name)) for name in SINGLE_BYTE}
        for row in charsets.WEB:
            self.assertNotIn(frozenset(records(row.table.name, row.table.name, 2)), published, row.encoding)

    def test_every_other_single_byte_encoding_is_the_published_list_at_which_it_stands(self):
        others = 0
        for row in charsets.NAMED:
            if row.table and row.whatwg:
                index = dict(encodingstandard.index(encodingstandard.index_of(row.whatwg.split()[0])))
                upper_half = {code - 0x80: unit for code, unit in pairs(row.table.name) if code >= 0x80}
                self.assertEqual(upper_half, index, row.name)
                others += 1
        self.assertEqual(others, 20)

    def test_stand_in_no_list_of_published_sets(self):
        for name in ("kx7/base/CharSet.h", "kx7/charset/CharSetNames.h", "kx7/charset/ConverterObjects.inc",
                     "kx7/charset/Converters.h", "kx7/tables/MappingLists.h", "tests/support/CharSets.h"):
            text = (ROOT / name).read_text(encoding="utf-8")
            for row in charsets.WEB:
                published = "" if row.name in {other.name for other in charsets.NAMED} else "|KX7CS_|g_oConverter"
                self.assertNotRegex(text, rf"(?i)\b(web|oWeb{published}){row.name}\b", name)
                self.assertNotRegex(text, rf"\b{row.number}\b", name)


class MultibyteLists(unittest.TestCase):
    def test_ascii(self):
        for name in ("oCP932map", "oCP949map", "oCP950map", "oSHIFTJISmap", "oCP936map", "oBIG5map"):
            expected = {} if name in ("oCP936map", "oBIG5map") else dict(ROTATION)
            if name == "oCP949map":
                expected[0x5C] = 0x20A9
            found = dict(pairs(name))
            for code in range(0x01, 0x80):
                self.assertEqual(found.get(code), expected.get(code, code), f"{name} 0x{code:02X}")

    def test_single_bytes_above_ascii(self):
        katakana = {c: 0xFF61 + c - 0xA1 for c in range(0xA1, 0xE0)}
        expected = {
            "oCP932map": {0x80: 0x00A2, 0xA0: 0x00A3, 0xFD: 0x00AC} | katakana,
            "oSHIFTJISmap": katakana,
            "oCP936map": {0x80: 0x20AC, 0xFF: 0xF8F5},
            "oCP949map": {0x80: 0x00A2, 0x81: 0x00AC, 0x82: 0x005C, 0x83: 0x203E, 0x84: 0x00A6},
            "oCP950map": {},
            "oBIG5map": {0x80: 0x0080, 0xFF: 0xF8F8},
            "oSJIS0213_2004map": katakana,
        }
        for name, singles in expected.items():
            with self.subTest(name):
                self.assertEqual({c: u for c, u in pairs(name) if 0x80 <= c <= 0xFF}, singles)

    def test_code_pages_map_some_known_characters(self):
        for name, code, unit in (
            ("oCP932map", 0x82A0, 0x3042), ("oCP936map", 0x8180, 0x4E90), ("oCP936map", 0xB0A1, 0x554A),
            ("oCP949map", 0xB0A1, 0xAC00), ("oCP950map", 0xA440, 0x4E00), ("oBIG5map", 0xA440, 0x4E00),
            ("oSHIFTJISmap", 0x82A0, 0x3042),
        ):
            self.assertEqual(dict(pairs(name))[code], unit, name)

    def test_code_page_936_agrees_with_pythons_gbk_outside_private_use(self):
        found = {c: u for c, u in pairs("oCP936map") if c > 0xFF and not 0xE000 <= u <= 0xF8FF}
        for code, unit in found.items():
            self.assertEqual(chr(unit).encode("gbk"), code.to_bytes(2, "big"))
        self.assertEqual(len(found), 21791)

    def test_shift_jis_second_run(self):
        run = pairs("oSHIFTJISmap")[9257:]
        self.assertEqual(len(run), 139)
        codes = {code for code, _ in run}
        kanji = {c for c, u in run if 0x4E00 <= u <= 0x9FFF or 0xF900 <= u <= 0xFAFF}
        vendor_rows = {c for c in codes if 0x8740 <= c <= 0x8799}
        symbols = {0x815C, 0x8160, 0x8161, 0x817C, 0x81CA, 0x81E6, 0xFA55}
        self.assertEqual((len(kanji), len(vendor_rows)), (56, 74))
        self.assertEqual(codes, {0x5C, 0x7E} | symbols | vendor_rows | kanji)
        code_page_932 = set(pairs("oCP932map"))
        shared = {c for c, u in run if (c, u) in code_page_932}
        self.assertEqual(shared, {0x5C, 0x7E, 0x815C, 0x8160, 0x8161, 0x817C, 0xFA55})
        self.assertFalse([p for p in pairs("oSHIFTJISmap")[:9257] if p not in code_page_932])

    def test_shift_jis_2004(self):
        rows = records("oSJIS0213_2004map", "oSJIS0213_2004map", 3)
        self.assertEqual({reserved for _, reserved, _ in rows}, {0})
        supplementary = [code_point for _, _, code_point in rows if code_point > 0xFFFF]
        self.assertEqual((len(supplementary), max(supplementary)), (303, 0x2A6B2))
        found = dict(pairs("oSJIS0213_2004map"))
        self.assertEqual([found[c] for c in (0x5C, 0x7E, 0x815F, 0x81B0)], [0x00A5, 0x203E, 0x005C, 0x007E])
        # Python has these two brackets and the dash from another edition of the mapping.
        other = {0x815C: 0x2014, 0x81D4: 0xFF5F, 0x81D5: 0xFF60}
        for code, code_point in found.items():
            if code != 0x00FF:
                text = code.to_bytes(1 if code <= 0xFF else 2, "big").decode("shift_jis_2004")
                self.assertEqual(code_point, other.get(code, ord(text)), f"0x{code:04X}")

    def test_row_and_cell_lists_agree_with_pythons_codecs(self):
        for name, codec, others in (
            ("oKSX1001map", "euc_kr", {0x2454: 0x3164}),  # Python takes the Hangul filler for the start of a jamo run
            ("oGB2312map", "gb2312", {}),
            ("oJIS0208map", "euc_jp", {0x2140: 0x005C}),
        ):
            with self.subTest(name):
                for code, unit in pairs(name):
                    self.assertTrue(0x21 <= code >> 8 <= 0x7E and 0x21 <= code & 0xFF <= 0x7E, f"0x{code:04X}")
                    if code in others:
                        self.assertEqual(unit, others[code])
                    else:
                        self.assertEqual(chr(unit), (code + 0x8080).to_bytes(2, "big").decode(codec))
        self.assertFalse({0x2266, 0x2267, 0x2268} & dict(pairs("oKSX1001map")).keys())
        self.assertFalse({0x00A5, 0x203E} & set(dict(pairs("oJIS0208map")).values()))

    def test_jis_x_0201(self):
        found = dict(pairs("oJIS0201map"))
        self.assertEqual(found.keys(), {*range(0x01, 0x7F), *range(0xA1, 0xE0)})
        for code, unit in found.items():
            plain = code if code < 0x7F else 0xFF61 + code - 0xA1
            self.assertEqual(unit, {0x5C: 0x00A5, 0x7E: 0x203E}.get(code, plain))


class GB18030(unittest.TestCase):
    def setUp(self):
        self.by_code = records("GB18030Ranges", "oGB2UniRange", 3)
        self.by_unit = records("GB18030Ranges", "oUni2GBRange", 3)

    def test_runs_ascend_without_overlap(self):
        for runs in (self.by_code, self.by_unit):
            self.assertEqual(len(runs), 265)
            self.assertTrue(all(first <= last for first, last, _ in runs))
            self.assertTrue(all(a[1] < b[0] for a, b in zip(runs, runs[1:])))

    def test_two_byte_and_four_byte_runs(self):
        def codes(runs):
            return sum(last - first + 1 for first, last, _ in runs)

        two = [run for run in self.by_code if run[1] <= 0xFFFF]
        four = [run for run in self.by_code if run[0] >= 0x10000]
        self.assertEqual((len(two), codes(two), len(four), codes(four)), (59, 81, 206, 39420))

    def test_known_runs(self):
        for run in ((0xA2E3, 0xA2E3, 0x20AC), (0xA8BF, 0xA8BF, 0x01F9), (0xA98A, 0xA995, 0x2FF0),
                    (0xFE50, 0xFE50, 0x2E81), (0x10000, 0x10023, 0x0080)):
            self.assertIn(run, self.by_code)
        self.assertEqual(self.by_code[-1], (0x199E2, 0x199FB, 0xFFE6))
        self.assertEqual(self.by_unit[0], (0x0080, 0x00A3, 0x10000))
        self.assertEqual(self.by_unit[-1], (0xFFE6, 0xFFFF, 0x199E2))

    def test_the_tables_are_inverse_and_hold_no_surrogates(self):
        self.assertEqual(self.by_unit, sorted((u, u + last - first, first) for first, last, u in self.by_code))
        self.assertFalse([run for run in self.by_unit if run[0] <= 0xDFFF and run[1] >= 0xD800])

    def test_a_run_ends_only_where_it_must(self):
        for runs in (self.by_code, self.by_unit):
            for a, b in zip(runs, runs[1:]):
                self.assertFalse(b[0] == a[1] + 1 and b[2] == a[2] + b[0] - a[0], f"0x{a[1]:04X}")

    def test_with_gbk_they_are_the_edition_of_2000(self):
        """Python's codec is that edition too; it says 0xA2E3 for the euro sign, which GBK has as 0x80."""
        to_unit = dict(pairs("oCP936map"))
        to_unit |= {first + k: u + k for first, last, u in self.by_code for k in range(last - first + 1)}
        for unit in range(1, 0x10000):
            if not 0xD800 <= unit <= 0xDFFF:
                code = chr(unit).encode("gb18030")
                if len(code) == 4:
                    b1, b2, b3, b4 = code
                    key = 0x10000 + (((b1 - 0x81) * 10 + b2 - 0x30) * 126 + b3 - 0x81) * 10 + b4 - 0x30
                else:
                    key = int.from_bytes(code, "big")
                self.assertEqual(to_unit.get(key), unit, f"U+{unit:04X}")
        self.assertEqual(to_unit[0xA8BC], 0xE7C7)


class ByteTypes(unittest.TestCase):
    def test_runs(self):
        ascii_start = "00-1F:00 20-20:08 21-2F:02 30-39:04 3A-3F:02 "
        cp936 = ascii_start + (
            "40-40:82 41-5A:A1 5B-60:82 61-7A:91 7B-7E:82 7F-7F:80 80-80:00 81-A0:40 A1-FE:C0 FF-FF:00"
        )
        expected = {
            "oCP932Type": ascii_start + "40-40:82 41-5A:A1 5B-60:82 61-7A:91 7B-7D:82 7E-7E:81 7F-7F:00 80-80:80 "
            "81-9F:C0 A0-A0:80 A1-A5:82 A6-DF:81 E0-FC:C0 FD-FF:00",
            "oCP936Type": cp936,
            "oCP949Type": ascii_start.replace("3A-3F", "3A-40") + "41-5A:A1 5B-60:02 61-7A:91 7B-7E:02 7F-80:00 "
            "81-FE:C0 FF-FF:00",
            "oCP950Type": cp936,
            "oBig5Type": cp936.replace("7F-7F:80 80-80:00", "7F-80:00"),
        }
        for name, text in expected.items():
            with self.subTest(name):
                types = stored("ByteTypeTables", name)
                self.assertEqual(len(types), 256)
                starts = [b for b in range(256) if b == 0 or types[b] != types[b - 1]]
                ends = [b - 1 for b in starts[1:]] + [255]
                runs = " ".join(f"{a:02X}-{b:02X}:{types[a]:02X}" for a, b in zip(starts, ends))
                self.assertEqual(runs, text)


class CharProperties(unittest.TestCase):
    def setUp(self):
        self.upper, self.lower, self.classes = (
            records("CharProperties", name, 3) for name in ("toUpperTable", "toLowerTable", "classTable")
        )

    def test_runs_ascend_without_overlap_and_end_below_the_last_unit(self):
        for runs, first, last in (
            (self.upper, 0x0061, 0xFF5A), (self.lower, 0x0041, 0xFF3A), (self.classes, 0x0009, 0xFFEE),
        ):
            self.assertEqual((runs[0][0], runs[-1][1]), (first, last))
            self.assertTrue(all(a <= b and value for a, b, value in runs))
            self.assertTrue(all(a[1] < b[0] for a, b in zip(runs, runs[1:])))

    def test_known_case_runs(self):
        for run in ((0x61, 0x7A, 0x41), (0xE0, 0xF6, 0xC0), (0xFF, 0xFF, 0x178), (0x131, 0x131, 0x49)):
            self.assertIn(run, self.upper)
        for run in ((0x41, 0x5A, 0x61), (0xC0, 0xD6, 0xE0), (0x130, 0x130, 0x69)):
            self.assertIn(run, self.lower)

    def test_case_mapping_agrees_with_python(self):
        """Python knows the full mappings: where one is a single unit, it is the simple mapping too. Its Unicode may
        be another version, so a case that only one side knows is no fault; most of them have to be known to both."""
        for runs, convert, at_least in ((self.upper, str.upper, 1100), (self.lower, str.lower, 1100)):
            known = 0
            for first, last, value in runs:
                for k in range(last - first + 1):
                    text = convert(chr(first + k))
                    if len(text) == 1 and text != chr(first + k):
                        self.assertEqual(ord(text), value + k, f"U+{first + k:04X}")
                        known += 1
            self.assertGreater(known, at_least)

    def test_a_class_run_ends_only_where_it_must(self):
        for a, b in zip(self.classes, self.classes[1:]):
            self.assertFalse(b[0] == a[1] + 1 and b[2] == a[2])

    def test_classes(self):
        found = {c: value for first, last, value in self.classes for c in range(first, last + 1)}
        ranges = {
            (0x0009, 0x000D): 0x0001, (0x0020, 0x0020): 0x0001, (0x0085, 0x0085): 0x0001, (0x00A0, 0x00A0): 0x0001,
            (0x2028, 0x2029): 0x0001, (0x3000, 0x3000): 0x8001,
            (0x0030, 0x0039): 0x0002, (0x00B2, 0x00B3): 0x0002, (0x00B9, 0x00B9): 0x0002,
            (0x0041, 0x005A): 0x0044, (0x0061, 0x007A): 0x0084, (0x01C5, 0x01C5): 0x0104, (0x01C8, 0x01C8): 0x0104,
            (0x01CB, 0x01CB): 0x0104, (0x01F2, 0x01F2): 0x0104, (0x02B0, 0x02B8): 0x0204, (0x3005, 0x3005): 0x0604,
            (0x0300, 0x0345): 0x0008, (0x0483, 0x0486): 0x0008,
            (0x0021, 0x0023): 0x0010, (0x0025, 0x002A): 0x0010, (0x002C, 0x002F): 0x0010, (0x3001, 0x3003): 0x0410,
            (0x05D0, 0x05EA): 0x0024, (0x0621, 0x063F): 0x0024, (0x064B, 0x065F): 0x0028, (0x05B0, 0x05BD): 0x0028,
            (0xFB1E, 0xFB1E): 0x0028, (0x0660, 0x0669): 0x0002, (0x061B, 0x061B): 0x0030,
            (0x3041, 0x3094): 0x0404, (0x3105, 0x312F): 0x0404, (0x1100, 0x11FF): 0x0404, (0x9FA6, 0x9FFF): 0x0404,
            (0x4DB6, 0x4DBF): 0x0404, (0x3007, 0x3007): 0x0C00, (0x3220, 0x3229): 0x0C00, (0xA490, 0xA4C6): 0x0C00,
            (0xFF01, 0xFF03): 0x8010, (0xFF21, 0xFF3A): 0x8044, (0xFF41, 0xFF5A): 0x8084, (0xFF10, 0xFF19): 0x8002,
            (0xFF61, 0xFF65): 0x4010, (0xFF66, 0xFF6F): 0x4404, (0xFFE0, 0xFFE6): 0x4800, (0xFFE8, 0xFFEE): 0x4800,
            (0x0024, 0x0024): 0x0800, (0x002B, 0x002B): 0x0800, (0x00BC, 0x00BE): 0x0800, (0x20AC, 0x20AC): 0x0800,
            (0x2160, 0x2182): 0x0800, (0xE000, 0xF8FF): 0x0800,
        }
        for (first, last), value in ranges.items():
            for unit in range(first, last + 1):
                self.assertEqual(found.get(unit, 0), value, f"U+{unit:04X}")

    def test_what_is_no_character_has_no_class(self):
        found = {c for first, last, _ in self.classes for c in range(first, last + 1)}
        for unit in (*range(0x0000, 0x0009), *range(0x000E, 0x0020), *range(0x007F, 0x0085), *range(0x0086, 0x00A0),
                     0x00AD, 0x0378, 0x200B, 0x200E, 0x2060, 0xFDD0, 0xFEFF, 0xFFBF, 0xFFFC, 0xFFFD, 0xFFFE, 0xFFFF):
            self.assertNotIn(unit, found, f"U+{unit:04X}")

    def test_blocks_that_are_answered_by_rule_are_left_out(self):
        for a, b in ((0x2E80, 0x2E99), (0x2E9B, 0x2EF3), (0x2F00, 0x2FD5), (0x3400, 0x4DB5), (0x4E00, 0x9FA5),
                     (0xA000, 0xA48C), (0xAC00, 0xD7A3), (0xD800, 0xDFFF), (0xF900, 0xFA2D)):
            self.assertFalse([run for run in self.classes if run[0] <= b and run[1] >= a], f"U+{a:04X}")


class GeneratedFiles(unittest.TestCase):
    def test_lines_are_short_and_say_what_the_file_is(self):
        for path in TABLES.glob("*.cpp"):
            lines = path.read_text(encoding="utf-8").split("\n")
            self.assertLessEqual(max(map(len, lines)), 110, path.name)
            self.assertTrue(lines[0].startswith("// kx7text - "), path.name)
            self.assertTrue(any(writers.MARK in line for line in lines[:6]), path.name)
            self.assertIn("// clang-format off", lines)


class TheGeneratorRefuses(unittest.TestCase):
    def table(self, found, count, **more):
        source = tables.by_rule("a test", lambda: found)
        return tables.Table("oTest", "a test", source=source, pairs=count, **({"order": tables.by_code} | more))

    def refused(self, words, found, count, **more):
        with self.assertRaisesRegex(tables.TableError, words):
            self.table(found, count, **more).runs()

    def test_and_takes_a_good_table(self):
        self.assertEqual(self.table([(2, 1), (1, 2)], 2).runs(), [[(1, 2), (2, 1)]])
        self.assertEqual(self.table([(1, 2), (2, 1)], 2, order=tables.by_unicode).runs(), [[(2, 1), (1, 2)]])

    def test_a_wrong_count(self):
        self.refused("1 pairs, declared are 2", [(1, 1)], 2)

    def test_a_repeated_code_or_unit(self):
        self.refused("repeats a code", [(1, 1), (1, 2)], 2)
        self.refused("code point is repeated", [(1, 1), (2, 1)], 2)

    def test_zero_and_what_does_not_fit(self):
        self.refused("0 cannot be mapped", [(0, 1)], 1)
        self.refused("0 cannot be mapped", [(1, 0)], 1)
        self.refused("does not fit", [(1, 0x10000)], 1)
        self.refused("does not fit", [(0x10000, 1)], 1)

    def test_an_exception_that_has_lost_its_reason(self):
        self.refused("changes nothing", [(1, 1)], 1, changes=(tables.Put(1, 1, ""),))
        self.refused("lost 0x0002", [(1, 1)], 1, changes=(tables.Put(2, 1, ""),))
        self.refused("lost 0x0002", [(1, 1)], 1, changes=(tables.Drop(2, ""),))

    def test_runs_of_other_lengths(self):
        order = tables.by_unicode_in_two_runs(1, 1, lambda pairs: {(2, 2)})
        self.assertEqual(self.table([(1, 1), (2, 2)], 2, order=order).runs(), [[(1, 1)], [(2, 2)]])
        self.refused("2 and 1 pairs", [(1, 1), (2, 2), (3, 3)], 3, order=order)

    def test_overlapping_ranges(self):
        for rows, words in (([(1, 5, 1), (5, 6, 1)], "overlap"), ([(1, 1, 1)], "declared are 2")):
            with self.assertRaisesRegex(tables.TableError, words):
                tables.RangeTable("oTest", "a test", list, lambda rows=rows: rows, 2).checked()

    def test_a_byte_without_a_type_or_with_two(self):
        for rule, words in (([(0, 254, 1)], "255 bytes"), ([(0, 255, 1), (5, 5, 2)], "named twice")):
            with self.assertRaisesRegex(tables.TableError, words):
                bytetypes.types("oTest", rule)


class CharSets(unittest.TestCase):
    def test_converters_are_in_the_two_orders_that_callers_can_observe(self):
        single_byte = [*range(1250, 1259), 874, *range(28591, 28602), *range(28603, 28607), 20866]
        code_pages, chinese_and_japanese = [932, 936, 949, 950], [54936, 30950, 30932, 30933]
        euc, unicode = [51949, 51936, 51932], [65001, 1200, 12000, 1202]
        self.assertEqual([row.number for row in charsets.CONSTRUCTED],
                         single_byte + code_pages + chinese_and_japanese + euc + unicode)
        self.assertEqual([row.number for row in charsets.REGISTERED],
                         single_byte + code_pages + euc + chinese_and_japanese + unicode)

    def test_what_the_rows_give_is_stored(self):
        """On whatever machine and whenever this runs: the stored files are the same bytes."""
        for name, text in charsetfiles.files().items():
            self.assertEqual((ROOT / name).read_text(encoding="utf-8"), text, name)

    def test_the_quick_lookup_has_a_slot_for_each(self):
        factor, bits = charsetfiles.slots(charsets.CONSTRUCTED)
        self.assertEqual((factor, bits), (0x3017241F, 6))
        for more in (1, 30):
            rows = charsets.CONSTRUCTED + [charsetrow.without_converter(f"X{i}", 70000 + 7 * i) for i in range(more)]
            factor, bits = charsetfiles.slots(rows)
            slots = {(row.number * factor & 0xFFFFFFFF) >> 32 - bits for row in rows}
            self.assertEqual(len(slots), len(rows), more)
            self.assertNotIn((-2 & 0xFFFFFFFF) * factor % 2**32 >> 32 - bits, slots)

    def test_a_label_of_each_kind(self):
        text = (ROOT / "kx7/convert/CharSetLabels.h").read_text(encoding="utf-8")
        for row in ('{"latin1", KX7CS_ISO_8859_1, KX7CS_WCP1252}', '{"x-sjis", KX7CS_OS_DEFAULT, web::SHIFT_JIS}',
                    '{"cp936", KX7CS_WCP936, KX7CS_OS_DEFAULT}',
                    '{KX7CS_WCP950, "KX7CS_WCP950", nullptr, "Big5"}',
                    '{KX7CS_ISO_8859_11, "KX7CS_ISO_8859_11", "TIS-620", nullptr}'):
            self.assertIn(f"    {row},\n", text)


class Sections(unittest.TestCase):
    BEGIN, END = f"// {writers.MARK}: numbers", "// END OF GENERATED"

    def test_lines_between_the_marks_are_replaced_and_take_their_indent(self):
        text = f"a\n    {self.BEGIN}\n    old\n\n    {self.END}\nb {self.END}\n"
        found = charsetfiles.with_sections("x.h", text, {"numbers": ["1", "", "2"]})
        self.assertEqual(found, f"a\n    {self.BEGIN}\n    1\n\n    2\n    {self.END}\nb {self.END}\n")
        self.assertEqual(charsetfiles.with_sections("x.h", found, {"numbers": ["1", "", "2"]}), found)

    def test_in_markdown_the_marks_are_comments(self):
        text = f"<!-- {writers.MARK}: numbers -->\n<!-- END OF GENERATED -->\n"
        self.assertIn("-->\n1\n<!--", charsetfiles.with_sections("x.md", text, {"numbers": ["1"]}))

    def test_one_that_is_not_there_or_there_twice_or_does_not_end_is_refused(self):
        section = f"{self.BEGIN}\n{self.END}\n"
        for text, count in (("", 0), (section + section, 2), (f"{self.BEGIN}\n", 0), (f"{self.BEGIN}\n  {self.END}\n", 0)):
            with self.assertRaisesRegex(tables.TableError, f"has {count} sections 'numbers'"):
                charsetfiles.with_sections("x.h", text, {"numbers": []})

    def test_a_line_that_is_too_long_is_refused(self):
        with self.assertRaisesRegex(tables.TableError, "too long"):
            charsetfiles.with_sections("x.h", f"{self.BEGIN}\n{self.END}\n", {"numbers": ["1" * 121]})


class RowsAreRefused(unittest.TestCase):
    """Each in place of the last of the single-byte sets."""

    def refused(self, words, **changes):
        row = dataclasses.replace(charsets.SINGLE_BYTE[-1], **changes)
        orders = [[row if each is charsets.SINGLE_BYTE[-1] else each for each in order]
                  for order in (charsets.NAMED, charsets.CONSTRUCTED, charsets.REGISTERED)]
        with self.assertRaisesRegex(tables.TableError, words):
            charsetfiles.check(*orders, self.samples())

    def samples(self):
        return {path.name for path in (ROOT / "samples").glob("*.txt")}

    def test_but_those_of_the_library_are_not(self):
        charsetfiles.check(charsets.NAMED, charsets.CONSTRUCTED, charsets.REGISTERED, self.samples())

    def test_with_the_name_number_or_object_of_another(self):
        self.refused("KX7CS_UTF8: the name of 2 rows", name="UTF8")
        self.refused("65001: the number of 2 rows", number=65001)
        self.refused("-2: the number of 2 rows", number=-2)
        self.refused("g_oConverterBig5: the converter object of 2 rows", suffix="Big5")

    def test_with_a_label_of_another_or_one_that_is_not_found_by_halving(self):
        self.refused("iana: the label of 2 rows", iana="latin1")
        self.refused("whatwg: the label of 2 rows", whatwg="one UTF-8".lower())
        self.refused("lower case", iana="one Two")
        self.refused("lower case", iana="one tw\xF6")

    def test_of_the_web_that_are_no_encoding_or_are_like_no_published_set(self):
        for words, changes in (("no encoding of the standard", {"encoding": "IBM437"}),
                               ("like has no converter", {"like": "EUC_TW"}),
                               ("the name of 2 rows", {"encoding": "KX7CS_UTF8"}),
                               ("the number of 2 rows", {"number": 874}),
                               ("the label of 2 rows", {"iana": "latin1"})):
            row = dataclasses.replace(charsets.WEB[0], **changes)
            with self.assertRaisesRegex(tables.TableError, words):
                charsetfiles.check(charsets.NAMED, charsets.CONSTRUCTED, charsets.REGISTERED, self.samples(), [row])

    def test_without_its_samples(self):
        self.refused("klingon.koi8r.txt: a row has it", samples="russian klingon")
        self.refused("russian.koi8r.txt: a sample that no row has", samples="")

    def test_with_a_comment_that_is_too_long(self):
        self.refused("too long", about="x" * 100)

    def test_that_are_in_one_order_alone(self):
        with self.assertRaisesRegex(tables.TableError, "constructed are other converters"):
            charsetfiles.check(charsets.NAMED, charsets.CONSTRUCTED[1:], charsets.REGISTERED, self.samples())
        with self.assertRaisesRegex(tables.TableError, "registered are converters of 2 rows"):
            charsetfiles.check(charsets.NAMED, charsets.CONSTRUCTED, charsets.REGISTERED + charsets.REGISTERED[:1],
                               self.samples())


class TheCommand(unittest.TestCase):
    """Runs on a made-up set of files in place of the sources."""

    def run_with(self, arguments, files=None, pinned=None, installed="1"):
        with contextlib.ExitStack() as stack:
            stack.enter_context(mock.patch.object(sys, "argv", ["generate.py", *arguments]))
            stack.enter_context(mock.patch.object(sources, "PINNED", pinned or {"ICU": "1"}))
            stack.enter_context(mock.patch.object(sources, "installed_version", lambda origin: installed))
            stack.enter_context(mock.patch.object(writers, "files", lambda: files or {}))
            write = stack.enter_context(mock.patch.object(generate, "write"))
            output = stack.enter_context(contextlib.redirect_stdout(io.StringIO()))
            errors = stack.enter_context(contextlib.redirect_stderr(io.StringIO()))
            return generate.main(), output.getvalue() + errors.getvalue(), write.called

    def all_files(self):
        return {f"kx7/tables/{path.name}": path.read_text(encoding="utf-8") for path in TABLES.glob("*.cpp")}

    def test_check_names_the_first_line_that_differs(self):
        files = self.all_files()
        self.assertEqual(self.run_with(["--check"], files)[0], 0)
        changed = "kx7/tables/oCP1251map.cpp"
        files[changed] = files[changed].replace("0x0088,0x20AC", "0x0088,0x20AD")
        files["kx7/tables/oMissing.cpp"] = ""
        del files["kx7/tables/oCP1252map.cpp"]
        code, output, written = self.run_with(["--check"], files)
        self.assertEqual((code, written), (1, False))
        self.assertRegex(output, r"oCP1251map\.cpp:\d+: stored '.*0x20AC.*', generated '.*0x20AD")
        self.assertIn("kx7/tables/oMissing.cpp: is missing", output)
        self.assertIn("oCP1252map.cpp: no table is declared for it", output)
        self.assertEqual(len(output.splitlines()), 3)

    def test_another_version_is_an_error_unless_allowed(self):
        for arguments, code, written in (([], 1, False), (["--check"], 77, False), (["--allow-version"], 0, True)):
            found = self.run_with(arguments, pinned={"ICU": "2"})
            self.assertEqual((found[0], found[2]), (code, written), arguments)
            if code:
                self.assertIn("ICU 1 is installed, the tables are made from ICU 2", found[1])
                self.assertEqual(len(found[1].splitlines()), 1)

    def test_a_missing_package_makes_the_check_impossible(self):
        with mock.patch.object(sources.ctypes, "CDLL", side_effect=OSError):
            with self.assertRaisesRegex(sources.SourceMissing, "libicu-dev"):
                sources._load_icu.__wrapped__()
        with mock.patch.object(sources, "CHARMAPS", pathlib.Path("/nowhere")):
            self.assertRaisesRegex(sources.SourceMissing, "locales", sources._locales_version)
        with mock.patch.object(sources, "UCD", pathlib.Path("/nowhere")):
            self.assertRaisesRegex(sources.SourceMissing, "unicode-data", sources._unicode_version)


if __name__ == "__main__":
    unittest.main()
