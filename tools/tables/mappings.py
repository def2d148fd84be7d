# kx7text - the mapping lists of the multibyte sets: which published mapping each one is, in which order, and how many
# pairs it has. Those of the single-byte sets stand in their rows in charsets.py.

import sources
from tables import Drop, Put, Table, by_code, by_rule, by_unicode, by_unicode_in_two_runs, charmap, icu, row_and_cell


def _jis_x_0201():
    """ASCII with a yen sign and an overline, and half-width katakana."""
    ascii_part = [(c, {0x5C: 0x00A5, 0x7E: 0x203E}.get(c, c)) for c in range(0x01, 0x7F)]
    return ascii_part + [(c, 0xFF61 + c - 0xA1) for c in range(0xA1, 0xE0)]


def _second_run_of_shift_jis(pairs):
    """What code page 932 has otherwise or not at all, and the codes that this encoding takes from elsewhere."""
    own_codes = {0x5C, 0x7E, 0x815C, 0x8160, 0x8161, 0x817C, 0xFA55}
    code_page_932 = set(sources.icu_pairs("ibm-942_P12A-1999"))
    return {pair for pair in pairs if pair not in code_page_932 or pair[0] in own_codes}


MULTIBYTE = [
    Table("oCP932map", "Windows code page 932 (Japanese)",
          source=icu("ibm-942_P12A-1999"), order=by_unicode, pairs=9338),
    # GBK is the same list: MappingLists.h gives it its second name.
    Table("oCP936map", "Windows code page 936 (simplified Chinese), also GBK",
          source=icu("windows-936-2000"), order=by_unicode, pairs=24069),
    Table("oCP949map", "Windows code page 949 (Korean)",
          source=icu("ibm-949_P110-1999"), order=by_unicode, pairs=10236),
    Table("oCP950map", "Windows code page 950 (traditional Chinese)",
          source=icu("ibm-950_P110-1999"), order=by_unicode, pairs=20202),
    Table("oBIG5map", "Big5 (traditional Chinese)",
          source=icu("windows-950-2000"), order=by_unicode, pairs=19839),
    Table("oSHIFTJISmap", "Shift-JIS (Japanese)",
          source=icu("ibm-943_P15A-2003"), order=by_unicode_in_two_runs(9257, 139, _second_run_of_shift_jis),
          pairs=9396),
    Table("oSJIS0213_2004map", "Shift_JIS-2004 (JIS X 0213:2004)",
          source=charmap("SHIFT_JISX0213"), order=by_unicode, pairs=11398, code_points=True,
          changes=(Put(0x815F, 0x005C, "so in JIS X 0213:2004, whose single byte 0x5C is the yen sign"),
                   Put(0x81B0, 0x007E, "so in JIS X 0213:2004, whose single byte 0x7E is the overline"))),
]

# Row and cell of 94-by-94 sets, and JIS X 0201.
ROW_AND_CELL = [
    Table("oKSX1001map", "KS X 1001 (Korean)",
          source=row_and_cell(charmap("EUC-KR")), order=by_code, pairs=8224,
          changes=(Drop(0x2266, "the euro sign was added in 1998, after the edition of this list"),
                   Drop(0x2267, "the registered sign was added in 1998, after the edition of this list"),
                   Drop(0x2268, "the postal code mark was added in 2002, after the edition of this list"))),
    Table("oGB2312map", "GB 2312 (simplified Chinese)",
          source=row_and_cell(charmap("GB2312")), order=by_code, pairs=7445),
    Table("oJIS0208map", "JIS X 0208 (Japanese)",
          source=row_and_cell(charmap("EUC-JP")), order=by_code, pairs=6879,
          changes=(Put(0x2140, 0x005C, "so in the Unicode Consortium's mapping of JIS X 0208"),)),
    Table("oJIS0201map", "JIS X 0201 (Japanese)",
          source=by_rule("the rule in mappings.py", _jis_x_0201), order=by_code, pairs=189),
    Table("oJIS0212map", "JIS X 0212 (Japanese supplement), empty by design",
          source=by_rule("the rule in mappings.py", list), order=by_code, pairs=0),
]
