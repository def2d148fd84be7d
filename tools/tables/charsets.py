# kx7text - the character sets: one row each, from which identifiers, names, converters, labels, the tests' lists and
# the tables of the documents are generated.
"""charsetrow.py says what the fields of a row are, charsetfiles.py what is generated from it.

Labels stand in ASCII order after the first. A label that both registries have is in both fields, perhaps of different
rows. A single-byte encoding of the Encoding Standard stands at the set that it equals, or has a row of its own in WEB; the
multibyte ones without one stand at the set whose mapping comes nearest: its GBK at 936, its Big5 at 950.
"""

from charsetrow import (CharSet, iso_8859, single_byte, web_double_byte, web_single_byte, windows,
                        windows_double_byte, without_converter)
from tables import by_rule, charmap, icu

ISO_8859 = [
    iso_8859(1, "Western European", icu("ISO-8859-1"), 255, samples="french",
             iana="ISO-8859-1 cp819 csisolatin1 ibm819 iso-ir-100 iso_8859-1 iso_8859-1:1987 l1 latin1"),
    iso_8859(2, "Central European", icu("ibm-912_P100-1995"), 255, samples="czech polish",
             iana="ISO-8859-2 csisolatin2 iso-ir-101 iso_8859-2 iso_8859-2:1987 l2 latin2",
             whatwg="ISO-8859-2 csisolatin2 iso-ir-101 iso8859-2 iso88592 iso_8859-2 iso_8859-2:1987 l2 latin2"),
    iso_8859(3, "Southern European: Esperanto, Maltese", icu("ibm-913_P100-2000"), 248, samples="esperanto",
             iana="ISO-8859-3 csisolatin3 iso-ir-109 iso_8859-3 iso_8859-3:1988 l3 latin3",
             whatwg="ISO-8859-3 csisolatin3 iso-ir-109 iso8859-3 iso88593 iso_8859-3 iso_8859-3:1988 l3 latin3"),
    iso_8859(4, "Northern European", icu("ibm-914_P100-1995"), 255, samples="lithuanian",
             iana="ISO-8859-4 csisolatin4 iso-ir-110 iso_8859-4 iso_8859-4:1988 l4 latin4",
             whatwg="ISO-8859-4 csisolatin4 iso-ir-110 iso8859-4 iso88594 iso_8859-4 iso_8859-4:1988 l4 latin4"),
    iso_8859(5, "Cyrillic", icu("ibm-915_P100-1995"), 255, samples="russian",
             iana="ISO-8859-5 csisolatincyrillic cyrillic iso-ir-144 iso_8859-5 iso_8859-5:1988",
             whatwg="ISO-8859-5 csisolatincyrillic cyrillic iso-ir-144 iso8859-5 iso88595 iso_8859-5 iso_8859-5:1988"),
    iso_8859(6, "Arabic", icu("ibm-1089_P100-1995"), 210, samples="arabic",
             iana="ISO-8859-6 arabic asmo-708 csiso88596e csiso88596i csisolatinarabic ecma-114 iso-8859-6-e "
                  "iso-8859-6-i iso-ir-127 iso_8859-6 iso_8859-6-e iso_8859-6-i iso_8859-6:1987",
             whatwg="ISO-8859-6 arabic asmo-708 csiso88596e csiso88596i csisolatinarabic ecma-114 iso-8859-6-e "
                    "iso-8859-6-i iso-ir-127 iso8859-6 iso88596 iso_8859-6 iso_8859-6:1987"),
    iso_8859(7, "Greek", icu("ibm-9005_X110-2007"), 252, samples="greek",
             iana="ISO-8859-7 csisolatingreek ecma-118 elot_928 greek greek8 iso-ir-126 iso_8859-7 iso_8859-7:1987",
             whatwg="ISO-8859-7 csisolatingreek ecma-118 elot_928 greek greek8 iso-ir-126 iso8859-7 iso88597 "
                    "iso_8859-7 iso_8859-7:1987 sun_eu_greek"),
    iso_8859(8, "Hebrew", icu("ibm-5012_P100-1999"), 219, samples="hebrew",
             iana="ISO-8859-8 csiso88598e csiso88598i csisolatinhebrew hebrew iso-8859-8-e iso-8859-8-i iso-ir-138 "
                  "iso_8859-8 iso_8859-8-e iso_8859-8-i iso_8859-8:1988",
             whatwg="ISO-8859-8 csiso88598e csiso88598i csisolatinhebrew hebrew iso-8859-8-e iso-8859-8-i iso-ir-138 "
                    "iso8859-8 iso88598 iso_8859-8 iso_8859-8:1988 logical visual"),
    iso_8859(9, "Turkish", icu("ibm-920_P100-1995"), 255, samples="turkish",
             iana="ISO-8859-9 csisolatin5 iso-ir-148 iso_8859-9 iso_8859-9:1989 l5 latin5"),
    iso_8859(10, "Nordic", icu("iso-8859_10-1998"), 255, samples="lithuanian",
             iana="ISO-8859-10 csisolatin6 iso-ir-157 iso_8859-10 iso_8859-10:1992 l6 latin6",
             whatwg="ISO-8859-10 csisolatin6 iso-ir-157 iso8859-10 iso885910 l6 latin6"),
    iso_8859(11, "Thai", icu("iso-8859_11-2001"), 247, samples="thai", iana="TIS-620 cstis620 iso-8859-11"),
    iso_8859(13, "Baltic", icu("ibm-921_P100-1995"), 255, samples="lithuanian",
             iana="ISO-8859-13 csiso885913",
             whatwg="ISO-8859-13 iso8859-13 iso885913"),
    iso_8859(14, "Celtic", icu("iso-8859_14-1998"), 255, samples="welsh",
             iana="ISO-8859-14 csiso885914 iso-celtic iso-ir-199 iso_8859-14 iso_8859-14:1998 l8 latin8",
             whatwg="ISO-8859-14 iso8859-14 iso885914"),
    iso_8859(15, "Western European with the euro sign", icu("ibm-923_P100-1998"), 255, samples="french german",
             iana="ISO-8859-15 csiso885915 iso_8859-15 latin-9",
             whatwg="ISO-8859-15 csisolatin9 iso8859-15 iso885915 iso_8859-15 l9"),
    iso_8859(16, "South-Eastern European: Romanian", charmap("ISO-8859-16"), 255, samples="polish romanian",
             iana="ISO-8859-16 csiso885916 iso-ir-226 iso_8859-16 iso_8859-16:2001 l10 latin10",
             whatwg="ISO-8859-16"),
]

ISO_2022 = [
    without_converter("ISO_2022JP", 50220, iana="ISO-2022-JP csiso2022jp", whatwg="ISO-2022-JP csiso2022jp"),
    without_converter("ISO_2022JP_1", 50221),
    without_converter("ISO_2022JP_2", 50222, iana="ISO-2022-JP-2 csiso2022jp2"),
    without_converter("ISO_2022JP_3", 50223),
    without_converter("ISO_2022JP_2004", 50224),
    without_converter("ISO_2022KR", 50225, iana="ISO-2022-KR csiso2022kr"),
    without_converter("ISO_2022CN", 50227, iana="ISO-2022-CN csiso2022cn"),
    without_converter("ISO_2022CN_EXT", 50228, iana="ISO-2022-CN-EXT csiso2022cnext"),
    without_converter("ISO_2022TW", 50229),
]

# As Windows converts them: some bytes of 0x80 to 0x9F that have no character are the C1 control of the same value. In
# ISO/IEC 8859 all of them are.
WINDOWS = [
    windows(1250, "Central European", icu("ibm-5346_P100-1998"), 255, samples="czech polish"),
    windows(1251, "Cyrillic", icu("ibm-5347_P100-1998"), 255, samples="russian"),
    windows(1252, "Western European", icu("ibm-5348_P100-1997"), 255, samples="french german",
            whatwg="windows-1252 ansi_x3.4-1968 ascii cp1252 cp819 csisolatin1 ibm819 iso-8859-1 iso-ir-100 iso8859-1 "
                   "iso88591 iso_8859-1 iso_8859-1:1987 l1 latin1 us-ascii x-cp1252"),
    windows(1253, "Greek", icu("ibm-5349_P100-1998"), 253, samples="greek", iana="cswindows1253", whatwg=""),
    windows(1254, "Turkish", icu("ibm-5350_P100-1998"), 255, samples="turkish",
            whatwg="windows-1254 cp1254 csisolatin5 iso-8859-9 iso-ir-148 iso8859-9 iso88599 iso_8859-9 "
                   "iso_8859-9:1989 l5 latin5 x-cp1254"),
    windows(1255, "Hebrew", icu("ibm-9447_P100-2002"), 244, samples="hebrew", iana="cswindows1255", whatwg=""),
    windows(1256, "Arabic", icu("ibm-9448_X100-2005"), 255, samples="arabic"),
    windows(1257, "Baltic", icu("ibm-9449_P100-2002"), 253, samples="lithuanian"),
    windows(1258, "Vietnamese", icu("ibm-5354_P100-1998"), 255, samples="vietnamese"),
    # Rotates 0x1A, 0x1C and 0x7F, as the multibyte lists of the same family do. Python's is another mapping.
    windows(874, "Thai", icu("ibm-874_P100-1995"), 218, samples="thai", python="", iana="cswindows874", whatwg=""),
]

WINDOWS_DOUBLE_BYTE = [
    windows_double_byte(932, "Japanese", page="japanese", samples="japanese",
                        iana="windows-31j cswindows31j"),
    windows_double_byte(936, "simplified Chinese (GBK)", page="chinese", samples="chinese-simplified",
                        iana="GBK cp936 csgbk ms936 windows-936",
                        whatwg="GBK chinese csgb2312 csiso58gb231280 gb2312 gb_2312 gb_2312-80 iso-ir-58 x-gbk"),
    windows_double_byte(949, "Korean", page="korean", samples="korean",
                        iana="KS_C_5601-1987 csksc56011987 iso-ir-149 korean ks_c_5601-1989 ksc_5601"),
    windows_double_byte(950, "traditional Chinese", page="chinese", samples="chinese-traditional",
                        whatwg="Big5 big5-hkscs cn-big5 csbig5 x-x-big5"),
]

# A single-byte set that is of neither family above is added at the end of this list.
SINGLE_BYTE = [
    single_byte("KOI8R", 20866, "KOI8-R", "Russian", icu("ibm-878_P100-1996"), 255, samples="russian", sample="koi8r",
                iana="KOI8-R cskoi8r", whatwg="KOI8-R cskoi8r koi koi8 koi8_r", glibc="KOI8-R", python="koi8_r"),
]

GB18030 = CharSet(
    name="GB18030", number=54936, title="GB 18030", about="Chinese, all of Unicode", converter="GB18030",
    arguments=("oGBKmap",), characters="all of Unicode but surrogates",
    made_from="936, and ICU's `gb18030` in ranges, set back to the edition of 2000",
    page="chinese", samples="chinese-simplified", glibc="GB18030",
    iana="GB18030 csgb18030", whatwg="gb18030")

DOUBLE_BYTE = [
    CharSet(name="BIG5", number=30950, title="Big5", about="traditional Chinese", converter="DBCS", suffix="Big5",
            arguments=("oBIG5map", "oBig5Type"), page="chinese", samples="chinese-traditional", glibc="BIG5",
            iana="Big5 csbig5"),
    CharSet(name="SHIFTJIS", number=30932, title="Shift_JIS", about="Japanese", converter="DBCS",
            arguments=("oSHIFTJISmap", "oCP932Type"), page="japanese", samples="japanese", glibc="SHIFT_JIS"),
    CharSet(name="SJIS0213", number=30933, title="Shift_JIS-2004", about="Shift_JIS-2004", converter="DBCSEx",
            suffix="SJIS2004", arguments=("oSJIS0213_2004map", "oCP932Type"),
            made_from="glibc's `SHIFT_JISX0213`, with 0x815F as U+005C and 0x81B0 as U+007E",
            page="japanese", samples="japanese", glibc="SHIFT_JISX0213"),
]

EUC = [
    CharSet(name="EUC_JP", number=51932, title="EUC-JP", about="Japanese", converter="EUC_JP", suffix="EUCJP",
            arguments=("oJIS0208map", "oJIS0201map", "oJIS0212map"),
            characters="6,879 of JIS X 0208, 189 of JIS X 0201",
            made_from="glibc's `EUC-JP`, with 0xA1C0 as U+005C; JIS X 0201 by rule",
            page="japanese", samples="japanese", glibc="EUC-JP"),
    CharSet(name="EUC_CN", number=51936, title="EUC-CN", about="simplified Chinese (GB 2312)",
            converter="EUC_CN_KR", suffix="EUCCN", arguments=("oGB2312map",), made_from="glibc's `GB2312`",
            page="chinese", samples="chinese-simplified", glibc="EUC-CN",
            iana="GB2312 chinese csgb2312 csiso58gb231280 gb_2312-80 iso-ir-58"),
    CharSet(name="EUC_KR", number=51949, title="EUC-KR", about="Korean (KS X 1001)",
            converter="EUC_CN_KR", suffix="EUCKR", arguments=("oKSX1001map",),
            made_from="glibc's `EUC-KR` (KS X 1001), without 0xA2E6 to 0xA2E8",
            page="korean", samples="korean", glibc="EUC-KR"),
    without_converter("EUC_TW", 51950),
]

UTF16ESC = CharSet(
    name="UTF16ESC", number=1202, title="UTF-16 with escapes", about='ASCII with "U+XXXX" for every other code unit',
    converter="UTF16Esc", suffix="UTF16Esc", page="unicode")

UNICODE = [
    CharSet(name="UTF8", number=65001, title="UTF-8", about="lenient on input", converter="UTF8", page="unicode",
            iana="UTF-8 csutf8", whatwg="UTF-8 unicode-1-1-utf-8 unicode11utf8 unicode20utf8 utf8 x-unicode20utf8"),
    CharSet(name="UTF16", number=1200, title="UTF-16", about="host byte order, no byte-order mark", converter="UTF16",
            page="unicode",
            iana="UTF-16 csunicode csutf16 csutf16le iso-10646-ucs-2 utf-16le",
            whatwg="UTF-16LE csunicode iso-10646-ucs-2 ucs-2 unicode unicodefeff utf-16"),
    without_converter("UTF16BE", 1201, iana="UTF-16BE csutf16be", whatwg="UTF-16BE unicodefffe"),
    UTF16ESC,
    CharSet(name="UTF32", number=12000, title="UTF-32", about="host byte order, no byte-order mark", converter="UTF32",
            page="unicode",
            iana="UTF-32 csucs4 csutf32 csutf32le iso-10646-ucs-4 utf-32le"),
    without_converter("UTF32BE", 12001, iana="UTF-32BE csutf32be"),
]

# Encodings of the Encoding Standard that no published set equals, for kx7/convert.h alone. The number is the vendors'
# code page where it is free; else that of the published set that readers may take for the same, and 0x10000.
WEB = [
    web_single_byte("IBM866", 866, "Cyrillic, DOS", 255,
                    iana="IBM866 866 cp866 csibm866", whatwg="IBM866 866 cp866 csibm866"),
    web_single_byte("KOI8-U", 21866, "Ukrainian", 255, iana="KOI8-U cskoi8u", whatwg="KOI8-U koi8-ru"),
    web_single_byte("macintosh", 10000, "Western European, Mac OS", 255,
                    iana="macintosh csmacintosh mac", whatwg="macintosh csmacintosh mac x-mac-roman"),
    web_single_byte("x-mac-cyrillic", 10007, "Cyrillic, Mac OS", 255, whatwg="x-mac-cyrillic x-mac-ukrainian"),
    web_single_byte("windows-874", 0x10000 + 874, "Thai, Windows", 247, like="WCP874", iana="windows-874",
                    whatwg="windows-874 dos-874 iso-8859-11 iso8859-11 iso885911 tis-620"),
    web_single_byte("windows-1253", 0x10000 + 1253, "Greek, Windows", 252, like="WCP1253", iana="windows-1253",
                    whatwg="windows-1253 cp1253 x-cp1253"),
    web_single_byte("windows-1255", 0x10000 + 1255, "Hebrew, Windows", 245, like="WCP1255", iana="windows-1255",
                    whatwg="windows-1255 cp1255 x-cp1255"),
    web_single_byte("x-user-defined", 50000, "upper half private use", 255, whatwg="x-user-defined",
                    source=by_rule("the rule in charsets.py", lambda: [
                        (byte, byte if byte < 0x80 else 0xF780 + byte - 0x80) for byte in range(1, 0x100)])),
    web_double_byte("Shift_JIS", 0x10000 + 30932, "Japanese", "oCP932Type", 7517, decoded_only=2278, encoded_only=3,
                    like="SHIFTJIS", iana="Shift_JIS csshiftjis ms_kanji",
                    whatwg="Shift_JIS csshiftjis ms932 ms_kanji shift-jis sjis windows-31j x-sjis"),
    web_double_byte("EUC-JP", 0x10000 + 51932, "Japanese", "oWebEucJpType", 7516, decoded_only=10, encoded_only=3,
                    three_bytes=6067, like="EUC_JP",
                    iana="EUC-JP cseucpkdfmtjapanese extended_unix_code_packed_format_for_japanese",
                    whatwg="EUC-JP cseucpkdfmtjapanese x-euc-jp"),
    web_double_byte("EUC-KR", 0x10000 + 51949, "Korean", "oCP949Type", 17175, like="EUC_KR",
                    iana="EUC-KR cseuckr",
                    whatwg="EUC-KR cseuckr csksc56011987 iso-ir-149 korean ks_c_5601-1987 ks_c_5601-1989 ksc5601 "
                           "ksc_5601 windows-949"),
]

# Not a set but what stands for the one of the process environment; the last of the names, in no other list.
OS_DEFAULT = CharSet(name="OS_DEFAULT", number=-2,
                     about="the encoding of the process environment, detected once at load")

# Three orders that callers can observe.
_EUC_BACKWARDS = [row for row in reversed(EUC) if row.converter]
_UTF = [row for row in UNICODE if row.converter and row is not UTF16ESC] + [UTF16ESC]

NAMED = [*ISO_8859, *ISO_2022, *WINDOWS, *WINDOWS_DOUBLE_BYTE, *SINGLE_BYTE, GB18030, *DOUBLE_BYTE, *EUC, *UNICODE]
CONSTRUCTED = [*WINDOWS, *ISO_8859, *SINGLE_BYTE, *WINDOWS_DOUBLE_BYTE, GB18030, *DOUBLE_BYTE, *_EUC_BACKWARDS, *_UTF]
REGISTERED = [*WINDOWS, *ISO_8859, *SINGLE_BYTE, *WINDOWS_DOUBLE_BYTE, *_EUC_BACKWARDS, GB18030, *DOUBLE_BYTE, *_UTF]

# The mapping lists of the single-byte sets; those of the others are in mappings.py.
SINGLE_BYTE_LISTS = [row.table for row in CONSTRUCTED if row.table]
WEB_LISTS = [table for row in WEB for table in row.web_tables]

# The languages of samples/, and what there is to say of the text in UTF-8.
LANGUAGES = {
    "arabic": "Arabic",
    "chinese-simplified": "Chinese, simplified",
    "chinese-traditional": "Chinese, traditional",
    "czech": "Czech",
    "esperanto": "Esperanto",
    "french": "French",
    "german": "German",
    "greek": "Greek",
    "hebrew": "Hebrew",
    "japanese": "Japanese",
    "korean": "Korean",
    "lithuanian": "Lithuanian",
    "polish": "Polish",
    "romanian": "Romanian",
    "russian": "Russian",
    "thai": "Thai",
    "turkish": "Turkish",
    "vietnamese": "Vietnamese",
    "welsh": "Welsh",
}
NOTES = {
    "german": "with €",
    "vietnamese": "tone marks as combining characters, but on letters that Windows 1258 has whole",
}
