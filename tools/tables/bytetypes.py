# kx7text - the byte-type tables: which bytes lead and which trail in the double-byte encodings.
"""Each table is a list of (first byte, last byte, type); a table that is like another one gives what it changes."""

from tables import require

# The single-byte classes are stored for completeness; converters look at LEAD and TRAIL only.
LETTER, PUNCTUATION, DIGIT, SPACE, LOWER, UPPER, LEAD, TRAIL = (1 << bit for bit in range(8))

_ASCII_START = [
    (0x00, 0x1F, 0), (0x20, 0x20, SPACE), (0x21, 0x2F, PUNCTUATION), (0x30, 0x39, DIGIT), (0x3A, 0x3F, PUNCTUATION),
]
_ASCII_LETTERS = [(0x41, 0x5A, TRAIL | UPPER | LETTER), (0x61, 0x7A, TRAIL | LOWER | LETTER)]

_CP932 = _ASCII_START + _ASCII_LETTERS + [
    (0x40, 0x40, TRAIL | PUNCTUATION), (0x5B, 0x60, TRAIL | PUNCTUATION), (0x7B, 0x7D, TRAIL | PUNCTUATION),
    (0x7E, 0x7E, TRAIL | LETTER), (0x7F, 0x7F, 0), (0x80, 0x80, TRAIL), (0x81, 0x9F, LEAD | TRAIL),
    (0xA0, 0xA0, TRAIL), (0xA1, 0xA5, TRAIL | PUNCTUATION), (0xA6, 0xDF, TRAIL | LETTER),
    (0xE0, 0xFC, LEAD | TRAIL), (0xFD, 0xFF, 0),
]
# Kept on purpose: 0x80 to 0xA0 do not trail here, although the lists of 936 and 950 hold codes that end so.
_CP936 = _ASCII_START + _ASCII_LETTERS + [
    (0x40, 0x40, TRAIL | PUNCTUATION), (0x5B, 0x60, TRAIL | PUNCTUATION), (0x7B, 0x7E, TRAIL | PUNCTUATION),
    (0x7F, 0x7F, TRAIL), (0x80, 0x80, 0), (0x81, 0xA0, LEAD), (0xA1, 0xFE, LEAD | TRAIL), (0xFF, 0xFF, 0),
]
_CP949 = _ASCII_START + _ASCII_LETTERS + [
    (0x40, 0x40, PUNCTUATION), (0x5B, 0x60, PUNCTUATION), (0x7B, 0x7E, PUNCTUATION), (0x7F, 0x80, 0),
    (0x81, 0xFE, LEAD | TRAIL), (0xFF, 0xFF, 0),
]
_BIG5 = [(first, last, 0 if first == 0x7F else value) for first, last, value in _CP936]

_WEB_EUC_JP = [
    (0x00, 0x8D, 0), (0x8E, 0x8E, LEAD), (0x8F, 0xA0, 0), (0xA1, 0xFE, LEAD | TRAIL), (0xFF, 0xFF, 0),
]

TABLES = [
    ("oCP932Type", "code page 932, Shift-JIS and Shift_JIS-2004", _CP932),
    ("oCP936Type", "code page 936", _CP936),
    ("oCP949Type", "code page 949", _CP949),
    ("oCP950Type", "code page 950, the same as oCP936Type", _CP936),
    ("oBig5Type", "Big5", _BIG5),
    ("oWebEucJpType", "the Encoding Standard's EUC-JP, whose codes of three bytes are told apart before", _WEB_EUC_JP),
]


def types(name, rule):
    """The 256 types that a rule gives; every byte has to be named once."""
    result = {}
    for first, last, value in rule:
        for byte in range(first, last + 1):
            require(byte not in result, name, f"0x{byte:02X} is named twice")
            result[byte] = value
    require(len(result) == 256, name, f"{len(result)} bytes are named")
    return [result[byte] for byte in range(256)]
