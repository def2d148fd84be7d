# kx7text - the character properties: case mapping and character classes of the Basic Multilingual Plane.

import sources
from tables import RangeTable, Source, both_advance, runs_of, value_stays

WHITE_SPACE, DIGIT, LETTER, MARK = 0x0001, 0x0002, 0x0004, 0x0008
PUNCTUATION, RIGHT_TO_LEFT, UPPER, LOWER = 0x0010, 0x0020, 0x0040, 0x0080
TITLE, MODIFIER, EAST_ASIAN, SYMBOL = 0x0100, 0x0200, 0x0400, 0x0800
HALF_WIDTH, FULL_WIDTH = 0x4000, 0x8000

# Fields of UnicodeData.txt.
_CATEGORY, _BIDI, _DECIMAL, _DIGIT, _UPPER, _LOWER = 2, 4, 6, 7, 12, 13

_CATEGORY_BITS = {
    "Zs": WHITE_SPACE, "Zl": WHITE_SPACE, "Zp": WHITE_SPACE,
    "Lu": LETTER | UPPER, "Ll": LETTER | LOWER, "Lt": LETTER | TITLE, "Lm": LETTER | MODIFIER, "Lo": LETTER,
    "Mn": MARK, "Mc": MARK, "Me": MARK,
    "Nd": DIGIT, "Nl": SYMBOL, "No": SYMBOL,
    "Pc": PUNCTUATION, "Pd": PUNCTUATION, "Ps": PUNCTUATION, "Pe": PUNCTUATION,
    "Pi": PUNCTUATION, "Pf": PUNCTUATION, "Po": PUNCTUATION,
    "Sm": SYMBOL, "Sc": SYMBOL, "Sk": SYMBOL, "So": SYMBOL, "Co": SYMBOL,
    "Cc": 0, "Cf": 0, "Cs": 0,
}
_WHITE_CONTROLS = {*range(0x0009, 0x000E), 0x0085}
_EAST_ASIAN_SCRIPTS = {"Han", "Hiragana", "Katakana", "Bopomofo", "Hangul", "Yi"}
# Their combining marks count as right-to-left, although their bidirectional class is that of any mark.
_RIGHT_TO_LEFT_BLOCKS = (range(0x0590, 0x0900), range(0xFB1D, 0xFE00), range(0xFE70, 0xFF00))

# getCharClass() answers these by rule, so that the table need not hold them.
_ANSWERED_BY_RULE = (
    range(0x2E80, 0x2E9A), range(0x2E9B, 0x2EF4), range(0x2F00, 0x2FD6), range(0x3400, 0x4DB6),
    range(0x4E00, 0x9FA6), range(0xA000, 0xA48D), range(0xAC00, 0xD7A4), range(0xF900, 0xFA2E),
)
_LAST_CLASSIFIED = 0xFFEE  # and so no record ends at U+FFFF, where a 16-bit loop would not stop


def _inside(unit, ranges):
    return any(unit in r for r in ranges)


def _class_of(unit, fields, script):
    category = fields[_CATEGORY]
    bits = _CATEGORY_BITS[category]
    if unit in _WHITE_CONTROLS:
        bits = WHITE_SPACE
    if category == "No" and (fields[_DECIMAL] or fields[_DIGIT]):
        bits = DIGIT
    if bits and (fields[_BIDI] in ("R", "AL") or (bits == MARK and _inside(unit, _RIGHT_TO_LEFT_BLOCKS))):
        bits |= RIGHT_TO_LEFT
    if bits and (script in _EAST_ASIAN_SCRIPTS or 0x3001 <= unit <= 0x33FF):
        bits |= EAST_ASIAN
    if 0xFF61 <= unit <= 0xFFEE:
        bits |= HALF_WIDTH
    if unit == 0x3000 or 0xFF01 <= unit <= 0xFF5E:
        bits |= FULL_WIDTH
    return bits


def _classes():
    scripts = sources.scripts()
    items = [
        (unit, _class_of(unit, fields, scripts.get(unit)))
        for unit, fields in sorted(sources.unicode_data().items())
        if unit <= _LAST_CLASSIFIED and not _inside(unit, _ANSWERED_BY_RULE)
    ]
    return runs_of([(unit, value) for unit, value in items if value], value_stays)


def _case(field):
    """The simple mappings that stay in the Basic Multilingual Plane."""
    items = [
        (unit, int(fields[field], 16))
        for unit, fields in sorted(sources.unicode_data().items())
        if unit <= 0xFFFF and fields[field] and int(fields[field], 16) <= 0xFFFF
    ]
    return runs_of(items, both_advance)


_CASE_SOURCE = Source("UnicodeData.txt", "Unicode", sources.unicode_data)
_CLASS_SOURCE = Source("UnicodeData.txt and Scripts.txt", "Unicode", _classes)

TABLES = [
    RangeTable("toUpperTable", "first and last unit, upper case of the first",
               lambda: [_CASE_SOURCE.label()], lambda: _case(_UPPER), records=674),
    RangeTable("toLowerTable", "first and last unit, lower case of the first",
               lambda: [_CASE_SOURCE.label()], lambda: _case(_LOWER), records=658),
    RangeTable("classTable", "first and last unit, class of them all",
               lambda: [_CLASS_SOURCE.label()], _classes, records=2126),
]
