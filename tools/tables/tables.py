# kx7text - what a stored table is: its declaration, and the checks that every table has to pass.
"""The declarations themselves are in mappings.py, gb18030.py, bytetypes.py and properties.py."""

import dataclasses
import typing

import encodingstandard
import sources


class TableError(Exception):
    """A table is not what its declaration says."""


def require(condition, name, text):
    if not condition:
        raise TableError(f"{name}: {text}")


# --- sources of pairs -------------------------------------------------------------------------------------------


@dataclasses.dataclass(frozen=True)
class Source:
    """Pairs (code, code point) of one origin, and how the generated file calls it."""

    name: str
    origin: str | None  # a key of sources.PINNED, or None for what is given by rule
    read: typing.Callable

    def label(self):
        if self.origin is None:
            return self.name
        return f"{self.name} ({self.origin} {sources.installed_version(self.origin)})"


def icu(name):
    """What an ICU converter maps both ways, fallbacks off."""
    return Source(name, "ICU", lambda: sources.icu_pairs(name))


def charmap(name):
    """What a glibc charmap maps both ways."""
    return Source(f"charmap {name}", "glibc locales", lambda: sources.charmap_pairs(name))


def encoding_standard(encoding):
    """What a single-byte encoding of the Encoding Standard maps both ways: ASCII, and its index."""
    name = encodingstandard.index_of(encoding)

    def read():
        upper_half = [(pointer + 0x80, code_point) for pointer, code_point in encodingstandard.index(name)]
        return [(byte, byte) for byte in range(1, 0x80)] + upper_half

    return by_rule(f"index-{name} of the WHATWG Encoding Standard (BSD 3-Clause)", read)


def by_rule(name, read):
    return Source(name, None, read)


def row_and_cell(source):
    """The two-byte codes of an EUC source whose bytes both lie in the upper half, as row and cell: less 0x8080."""

    def read():
        return [(c - 0x8080, u) for c, u in source.read() if c <= 0xFFFF and c >> 8 >= 0xA1 and c & 0xFF >= 0xA1]

    return Source(f"{source.name}, row and cell", source.origin, read)


# --- exceptions to a source -------------------------------------------------------------------------------------


@dataclasses.dataclass(frozen=True)
class Put:
    """The code stands for another character than in the source."""

    code: int
    unicode: int
    reason: str

    def apply(self, pairs, name):
        require(self.code in pairs, name, f"the source lost 0x{self.code:04X}, which an exception changes")
        require(pairs[self.code] != self.unicode, name, f"the exception for 0x{self.code:04X} changes nothing")
        pairs[self.code] = self.unicode

    def label(self):
        return f"0x{self.code:04X} is U+{self.unicode:04X}: {self.reason}"


@dataclasses.dataclass(frozen=True)
class Drop:
    """The code is left out."""

    code: int
    reason: str

    def apply(self, pairs, name):
        require(self.code in pairs, name, f"the source lost 0x{self.code:04X}, which an exception drops")
        del pairs[self.code]

    def label(self):
        return f"0x{self.code:04X} is left out: {self.reason}"


def read_with_changes(source, changes, name, one_way=False):
    """The pairs of a source after its exceptions. No code may repeat, no code point either unless the list is read
    `one_way`, and none is 0."""
    read = source.read()
    pairs = dict(read)
    require(len(pairs) == len(read), name, "the source repeats a code")
    for change in changes:
        change.apply(pairs, name)
    require(one_way or len(set(pairs.values())) == len(pairs), name, "a code point is repeated")
    require(0 not in pairs and 0 not in pairs.values(), name, "0 cannot be mapped: it ends the list")
    return list(pairs.items())


# --- order ------------------------------------------------------------------------------------------------------


@dataclasses.dataclass(frozen=True)
class Order:
    """Ascending by code or by code point, in one run or more."""

    text: str
    field: int  # of (code, code point): the one that ascends
    split: typing.Callable = lambda pairs: [pairs]

    def runs(self, pairs):
        return [sorted(run, key=lambda pair: pair[self.field]) for run in self.split(pairs)]


by_code = Order("by ascending code", 0)
by_unicode = Order("by ascending unit", 1)


def by_unicode_in_two_runs(first, second, second_run):
    """Two ascending runs of the lengths `first` and `second`; `second_run` picks the pairs of the second one."""

    def split(pairs):
        picked = second_run(pairs)
        runs = [[p for p in pairs if p not in picked], [p for p in pairs if p in picked]]
        require([len(run) for run in runs] == [first, second], "runs", f"{len(runs[0])} and {len(runs[1])} pairs")
        return runs

    return Order(f"in two runs by ascending unit, of {first:,} and {second:,} pairs", 1, split)


# --- tables -----------------------------------------------------------------------------------------------------


@dataclasses.dataclass(frozen=True)
class Table:
    """A mapping list; `pairs` is the number of records without the terminator."""

    name: str
    title: str
    source: Source
    order: Order
    pairs: int
    changes: tuple = ()
    code_points: bool = False  # records of sMBCSExTable, which reach beyond U+FFFF
    one_way: bool = False  # decoded only, where a code point may have several codes, or encoded only
    header: str = "MappingLists.h"  # declares it

    def runs(self):
        """The checked records, as runs in stored order."""
        runs = self.order.runs(read_with_changes(self.source, self.changes, self.name, self.one_way))
        records = [pair for run in runs for pair in run]
        limit = 0x10FFFF if self.code_points else 0xFFFF
        require(len(records) == self.pairs, self.name, f"{len(records):,} pairs, declared are {self.pairs:,}")
        require(all(c <= 0xFFFF and u <= limit for c, u in records), self.name, "a pair does not fit its record")
        return runs


@dataclasses.dataclass(frozen=True)
class RangeTable:
    """A table of (first, last, value) records; `records` is their number without the terminator."""

    name: str
    title: str
    labels: typing.Callable  # () -> label of the source, labels of the exceptions to it
    read: typing.Callable  # () -> records
    records: int

    def checked(self):
        records = self.read()
        require(len(records) == self.records, self.name, f"{len(records):,} records, declared are {self.records:,}")
        require(all(0 < first <= last for first, last, _ in records), self.name, "a run without a first unit")
        require(all(a[1] < b[0] for a, b in zip(records, records[1:])), self.name, "runs overlap or are out of order")
        return records


def runs_of(items, continues):
    """Groups ascending (key, value) items to (first key, last key, first value). A run goes on with the next key as
    long as `continues(step, first value, value)` holds, `step` being how far the key is from the first one."""
    runs = []
    for key, value in items:
        if runs and key == runs[-1][1] + 1 and continues(key - runs[-1][0], runs[-1][2], value):
            runs[-1] = (runs[-1][0], key, runs[-1][2])
        else:
            runs.append((key, key, value))
    return runs


def both_advance(step, first_value, value):
    return value == first_value + step


def value_stays(_step, first_value, value):
    return value == first_value
