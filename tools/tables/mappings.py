# kx7text - the mapping lists: which published mapping each one is, in which order, and how many pairs it has.

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


# The Windows code pages are as Windows converts them: some bytes of 0x80 to 0x9F that have no character are the C1
# control of the same value. In ISO/IEC 8859 all of them are.
SINGLE_BYTE = [
    Table("oCP1250map", "Windows code page 1250 (Central European)",
          source=icu("ibm-5346_P100-1998"), order=by_unicode, pairs=255),
    Table("oCP1251map", "Windows code page 1251 (Cyrillic)",
          source=icu("ibm-5347_P100-1998"), order=by_unicode, pairs=255),
    Table("oCP1252map", "Windows code page 1252 (Western European)",
          source=icu("ibm-5348_P100-1997"), order=by_unicode, pairs=255),
    Table("oCP1253map", "Windows code page 1253 (Greek)",
          source=icu("ibm-5349_P100-1998"), order=by_unicode, pairs=253),
    Table("oCP1254map", "Windows code page 1254 (Turkish)",
          source=icu("ibm-5350_P100-1998"), order=by_unicode, pairs=255),
    Table("oCP1255map", "Windows code page 1255 (Hebrew)",
          source=icu("ibm-9447_P100-2002"), order=by_unicode, pairs=244),
    Table("oCP1256map", "Windows code page 1256 (Arabic)",
          source=icu("ibm-9448_X100-2005"), order=by_unicode, pairs=255),
    Table("oCP1257map", "Windows code page 1257 (Baltic)",
          source=icu("ibm-9449_P100-2002"), order=by_unicode, pairs=253),
    Table("oCP1258map", "Windows code page 1258 (Vietnamese)",
          source=icu("ibm-5354_P100-1998"), order=by_unicode, pairs=255),
    # Rotates 0x1A, 0x1C and 0x7F, as the multibyte lists of the same family do.
    Table("oCP874map", "Windows code page 874 (Thai)",
          source=icu("ibm-874_P100-1995"), order=by_unicode, pairs=218),
    Table("o8859_1map", "ISO/IEC 8859-1 (Western European)",
          source=icu("ISO-8859-1"), order=by_unicode, pairs=255),
    Table("o8859_2map", "ISO/IEC 8859-2 (Central European)",
          source=icu("ibm-912_P100-1995"), order=by_unicode, pairs=255),
    Table("o8859_3map", "ISO/IEC 8859-3 (South European)",
          source=icu("ibm-913_P100-2000"), order=by_unicode, pairs=248),
    Table("o8859_4map", "ISO/IEC 8859-4 (North European)",
          source=icu("ibm-914_P100-1995"), order=by_unicode, pairs=255),
    Table("o8859_5map", "ISO/IEC 8859-5 (Cyrillic)",
          source=icu("ibm-915_P100-1995"), order=by_unicode, pairs=255),
    Table("o8859_6map", "ISO/IEC 8859-6 (Arabic)",
          source=icu("ibm-1089_P100-1995"), order=by_unicode, pairs=210),
    Table("o8859_7map", "ISO/IEC 8859-7 (Greek)",
          source=icu("ibm-9005_X110-2007"), order=by_unicode, pairs=252),
    Table("o8859_8map", "ISO/IEC 8859-8 (Hebrew)",
          source=icu("ibm-5012_P100-1999"), order=by_unicode, pairs=219),
    Table("o8859_9map", "ISO/IEC 8859-9 (Turkish)",
          source=icu("ibm-920_P100-1995"), order=by_unicode, pairs=255),
    Table("o8859_10map", "ISO/IEC 8859-10 (Nordic)",
          source=icu("iso-8859_10-1998"), order=by_unicode, pairs=255),
    Table("o8859_11map", "ISO/IEC 8859-11 (Thai)",
          source=icu("iso-8859_11-2001"), order=by_unicode, pairs=247),
    Table("o8859_13map", "ISO/IEC 8859-13 (Baltic)",
          source=icu("ibm-921_P100-1995"), order=by_unicode, pairs=255),
    Table("o8859_14map", "ISO/IEC 8859-14 (Celtic)",
          source=icu("iso-8859_14-1998"), order=by_unicode, pairs=255),
    Table("o8859_15map", "ISO/IEC 8859-15 (Western European, with the euro sign)",
          source=icu("ibm-923_P100-1998"), order=by_unicode, pairs=255),
    Table("o8859_16map", "ISO/IEC 8859-16 (South-Eastern European)",
          source=charmap("ISO-8859-16"), order=by_unicode, pairs=255),
    Table("oKOI8Rmap", "KOI8-R (Russian)",
          source=icu("ibm-878_P100-1996"), order=by_unicode, pairs=255),
]

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
