# kx7text - the range tables of GB 18030: what differs from GBK, as runs of codes.
"""Keys are GB codes: a two-byte code as one number, a four-byte code as 0x10000 plus its place in the sequence."""

import functools

from tables import Put, RangeTable, both_advance, icu, read_with_changes, require, runs_of

_PUBLISHED = icu("gb18030")
_GBK = icu("windows-936-2000")

# ICU has the edition of 2005, the tables are the edition of 2000. These two codes are all that differs.
_CHANGES = (
    Put(0xA8BC, 0xE7C7, "the edition of 2000 has the private-use character here, as GBK"),
    Put(0x8135F437, 0x1E3F, "the edition of 2000 has no two-byte code for it"),
)


def _gb_code(code):
    if code <= 0xFFFF:
        return code
    b1, b2, b3, b4 = code.to_bytes(4, "big")
    return 0x10000 + (((b1 - 0x81) * 10 + (b2 - 0x30)) * 126 + (b3 - 0x81)) * 10 + (b4 - 0x30)


@functools.cache
def _ranges():
    """The runs of (GB code, unit): two-byte codes that GBK maps otherwise, and all four-byte codes."""
    in_gbk = set(_GBK.read())
    pairs = read_with_changes(_PUBLISHED, _CHANGES, "gb18030")
    two_bytes = [(c, u) for c, u in pairs if 0xFF < c <= 0xFFFF and (c, u) not in in_gbk]
    four_bytes = [(_gb_code(c), u) for c, u in pairs if c > 0xFFFF]
    require((len(two_bytes), len(four_bytes)) == (81, 39420), "gb18030", f"{len(two_bytes)}, {len(four_bytes)} codes")
    runs = runs_of(sorted(two_bytes), both_advance), runs_of(sorted(four_bytes), both_advance)
    require((len(runs[0]), len(runs[1])) == (59, 206), "gb18030", f"{len(runs[0])}, {len(runs[1])} runs")
    return runs[0] + runs[1]


def _by_unit():
    return sorted((unit, unit + last - first, first) for first, last, unit in _ranges())


def _labels():
    return [f"{_PUBLISHED.label()} less {_GBK.name}", *(change.label() for change in _CHANGES)]


TABLES = [
    RangeTable("oGB2UniRange", "first and last GB code, unit of the first", _labels, _ranges, records=265),
    RangeTable("oUni2GBRange", "first and last unit, GB code of the first", _labels, _by_unit, records=265),
]
