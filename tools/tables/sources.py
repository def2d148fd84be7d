# kx7text - where the stored tables come from: ICU converters, glibc charmaps, the Unicode Character Database.
"""Reads the published mappings that Debian packages install.

Every reader gives (code, code point) pairs without U+0000. A code is the byte sequence as one number, first byte
highest: 0x41, 0x82A0, 0x81308130.
"""

import ctypes
import functools
import gzip
import pathlib
import re
import subprocess

# The versions that the stored tables were made from. To move to a newer one:
#  1. install it and run `generate.py --allow-version`; a count that no longer holds stops the run and names the
#     table. A published character set does not change: for a mapping list, declare an exception in mappings.py that
#     keeps the stored pairs. Character properties do: change the count in properties.py.
#  2. Look at `git diff kx7/tables`: in the mapping lists only the line that names the source may differ.
#  3. Change the version here and in kx7/tables/README.md, and the facts in test_generate.py.
#  4. Run `generate.py`, `test_generate.py` and all tests of the library. Callers see the new properties: they belong
#     in the change log.
PINNED = {"ICU": "72", "glibc locales": "2.36", "Unicode": "15.0.0"}

CHARMAPS = pathlib.Path("/usr/share/i18n/charmaps")
UCD = pathlib.Path("/usr/share/unicode")


class SourceMissing(Exception):
    """A package is not installed, or not in the version that the tables are pinned to."""


# --- versions ---------------------------------------------------------------------------------------------------


@functools.cache
def _load_icu():
    """The ICU library and its version; every symbol of it carries the version as a suffix."""
    pinned = int(PINNED["ICU"])
    for version in [pinned, *(v for v in range(120, 48, -1) if v != pinned)]:
        try:
            return ctypes.CDLL(f"libicuuc.so.{version}"), str(version)
        except OSError:
            continue
    raise SourceMissing("libicuuc.so is not installed: install the package libicu-dev")


def _locales_version():
    if not (CHARMAPS / "EUC-KR.gz").exists():
        raise SourceMissing(f"{CHARMAPS} holds no charmaps: install the package locales")
    try:
        query = ["dpkg-query", "--show", "--showformat=${Version}", "locales"]
        package = subprocess.run(query, check=True, capture_output=True, text=True).stdout
    except (OSError, subprocess.CalledProcessError):
        return "unknown"  # charmaps carry no version of their own
    return package.split("-")[0]


def _unicode_version():
    try:
        with open(UCD / "Scripts.txt", encoding="utf-8") as file:
            return re.match(r"# Scripts-([\d.]+)\.txt", file.readline())[1]
    except FileNotFoundError:
        raise SourceMissing(f"{UCD} holds no data files: install the package unicode-data") from None


@functools.cache
def installed_version(origin):
    """The version found here of one of the origins in PINNED."""
    readers = {"ICU": lambda: _load_icu()[1], "glibc locales": _locales_version, "Unicode": _unicode_version}
    return readers[origin]()


def require_versions(allow_other):
    """Every source has to be there, in its pinned version unless others are allowed."""
    for origin, version in PINNED.items():
        if installed_version(origin) != version and not allow_other:
            raise SourceMissing(
                f"{origin} {installed_version(origin)} is installed, the tables are made from {origin} {version}"
                " (--allow-version takes what is there)"
            )


# --- ICU --------------------------------------------------------------------------------------------------------


def _icu_function(name, result, *arguments):
    library, version = _load_icu()
    function = getattr(library, f"{name}_{version}")
    function.restype = result
    function.argtypes = arguments
    return function


def _check(error, what):
    if error.value > 0:  # U_ZERO_ERROR is 0, warnings are negative
        raise SourceMissing(f"ICU: {what}: error {error.value}")


class _IcuConverter:
    """One ICU converter without fallbacks; what has no mapping is skipped."""

    def __init__(self, name):
        error = ctypes.c_int(0)
        pointer = ctypes.c_void_p
        out = ctypes.POINTER(ctypes.c_int)
        open_converter = _icu_function("ucnv_open", pointer, ctypes.c_char_p, out)
        self._converter = open_converter(name.encode(), error)
        _check(error, f"no converter {name}")
        _icu_function("ucnv_setFallback", None, pointer, ctypes.c_int8)(self._converter, 0)
        library, version = _load_icu()
        for side in ("From", "To"):
            set_callback = _icu_function(
                f"ucnv_set{side}UCallBack", None, pointer, pointer, pointer, pointer, pointer, out
            )
            skip = getattr(library, f"UCNV_{side.upper()}_U_CALLBACK_SKIP_{version}")
            set_callback(self._converter, ctypes.cast(skip, pointer), None, None, None, error)
            _check(error, f"{name}: callback")

    def close(self):
        _icu_function("ucnv_close", None, ctypes.c_void_p)(self._converter)

    def _convert(self, function, unit_in, unit_out, source, room):
        """Converts all of `source`; gives the results and, for each, the place in `source` that it came from."""
        pointer, size = ctypes.c_void_p, ctypes.sizeof
        into = (unit_out * room)()
        source = (unit_in * len(source))(*source)
        offsets = (ctypes.c_int32 * room)()
        next_into = pointer(ctypes.addressof(into))
        next_source = pointer(ctypes.addressof(source))
        error = ctypes.c_int(0)
        convert = _icu_function(
            function, None, pointer, pointer, pointer, pointer, pointer, pointer, ctypes.c_int8, pointer
        )
        convert(
            self._converter,
            ctypes.addressof(next_into), ctypes.addressof(into) + size(into),
            ctypes.addressof(next_source), ctypes.addressof(source) + size(source),
            ctypes.addressof(offsets), 1, ctypes.addressof(error),
        )
        _check(error, function)
        count = (next_into.value - ctypes.addressof(into)) // size(unit_out)
        return into[:count], offsets[:count]

    def encode(self, units):
        """The byte sequence of each unit that has one, as {unit: bytes}."""
        found, offsets = self._convert("ucnv_fromUnicode", ctypes.c_uint16, ctypes.c_uint8, units, 4 * len(units))
        result = {}
        for byte, offset in zip(found, offsets):
            result[units[offset]] = result.get(units[offset], b"") + bytes([byte])
        return result

    def decode(self, sequences):
        """The units of each byte sequence, as {bytes: (unit, ...)}."""
        start_of = {}
        position = 0
        for sequence in sequences:
            start_of[position] = sequence
            position += len(sequence)
        found, offsets = self._convert(
            "ucnv_toUnicode", ctypes.c_uint8, ctypes.c_uint16, b"".join(sequences), 2 * position
        )
        result = {}
        for unit, offset in zip(found, offsets):
            result[start_of[offset]] = result.get(start_of[offset], ()) + (unit,)
        return result


@functools.cache
def icu_pairs(name):
    """The pairs of the Basic Multilingual Plane that an ICU converter maps both ways, by ascending unit."""
    converter = _IcuConverter(name)
    try:
        units = [unit for unit in range(1, 0x10000) if not 0xD800 <= unit <= 0xDFFF]
        encoded = converter.encode(units)
        # A set: for private-use units ICU takes fallbacks whatever it is told, so that two units share a sequence.
        decoded = converter.decode(sorted(set(encoded.values())))
    finally:
        converter.close()
    return [
        (int.from_bytes(sequence, "big"), unit)
        for unit, sequence in encoded.items()
        if decoded.get(sequence) == (unit,)
    ]


# --- charmaps ---------------------------------------------------------------------------------------------------

_CHARMAP_LINE = re.compile(
    r"<U(?P<first>[0-9A-F]{4,8})>(?:\.\.<U(?P<last>[0-9A-F]{4,8})>)?\s+(?P<bytes>(?:/x[0-9a-f]{2})+)", re.IGNORECASE
)


@functools.cache
def charmap_pairs(name):
    """The pairs of a glibc charmap in the order of its lines. Characters made of several code points are left out,
    as are the %IRREVERSIBLE% lines, which map in one direction only."""
    try:
        with gzip.open(CHARMAPS / f"{name}.gz", "rt", encoding="utf-8") as file:
            lines = file.read().splitlines()
    except FileNotFoundError:
        raise SourceMissing(f"no charmap {name} in {CHARMAPS}: install the package locales") from None
    pairs = []
    for line in lines[lines.index("CHARMAP") + 1 : lines.index("END CHARMAP")]:
        match = _CHARMAP_LINE.match(line)
        if not match:
            continue
        first = int(match["first"], 16)
        last = int(match["last"] or match["first"], 16)
        code = int(match["bytes"].replace("/x", ""), 16)
        pairs += [(code + k, first + k) for k in range(last - first + 1)]
    return [pair for pair in pairs if pair != (0, 0)]


# --- Unicode Character Database ---------------------------------------------------------------------------------


@functools.cache
def unicode_data():
    """UnicodeData.txt as {code point: list of its 15 fields}, with the First/Last ranges written out."""
    result = {}
    first = None
    with open(UCD / "UnicodeData.txt", encoding="utf-8") as file:
        for line in file:
            fields = line.rstrip("\n").split(";")
            code_point = int(fields[0], 16)
            if fields[1].endswith(", First>"):
                first = code_point
            elif fields[1].endswith(", Last>"):
                result.update((c, fields) for c in range(first, code_point + 1))
            else:
                result[code_point] = fields
    return result


@functools.cache
def scripts():
    """Scripts.txt as {code point: script}; what is not listed is missing."""
    result = {}
    with open(UCD / "Scripts.txt", encoding="utf-8") as file:
        for line in file:
            match = re.match(r"([0-9A-F]+)(?:\.\.([0-9A-F]+))?\s*;\s*(\w+)", line)
            if match:
                first, last = int(match[1], 16), int(match[2] or match[1], 16)
                result.update(dict.fromkeys(range(first, last + 1), match[3]))
    return result
