#!/usr/bin/env python3
# kx7text - the data of the WHATWG Encoding Standard: its indexes, its encodings and their labels.
"""Reads tools/tables/encoding-standard/, where the standard's files stand compressed and otherwise as published.

    encodingstandard.py --unpack FOLDER      writes the indexes and labels.txt (a line "label TAB encoding" each)
    encodingstandard.py --store FOLDER       compresses the files of FOLDER, as the standard publishes them, into the
                                             store; the same files give the same bytes
"""

import argparse
import functools
import json
import lzma
import pathlib
import sys

STORE = pathlib.Path(__file__).resolve().parent / "encoding-standard"

# The encodings whose index is not named as they are, in lower case; None: they need none.
_INDEX_OF = {
    "ISO-8859-8-I": "iso-8859-8",
    "GBK": "gb18030",
    "EUC-JP": "jis0208",
    "ISO-2022-JP": "jis0208",
    "Shift_JIS": "jis0208",
    **dict.fromkeys(("UTF-8", "UTF-16BE", "UTF-16LE", "replacement", "x-user-defined")),
}


def _text(name):
    return lzma.decompress((STORE / f"{name}.xz").read_bytes()).decode("utf-8")


def index_names():
    """The names of all indexes, without "index-" and ".txt"."""
    return sorted(path.name[len("index-") : -len(".txt.xz")] for path in STORE.glob("index-*.txt.xz"))


@functools.cache
def index(name):
    """The (pointer, code point) of an index in its order; of "gb18030-ranges" the first of each range."""
    rows = (line.split("\t") for line in _text(f"index-{name}.txt").split("\n") if line and not line.startswith("#"))
    return tuple((int(row[0]), int(row[1], 16)) for row in rows)


@functools.cache
def encodings():
    """The labels of each encoding by its name, in the standard's order."""
    groups = json.loads(_text("encodings.json"))
    return {encoding["name"]: tuple(encoding["labels"]) for group in groups for encoding in group["encodings"]}


def index_of(encoding):
    """The name of the index that an encoding's decoder and encoder both use; None: they use none."""
    return _INDEX_OF.get(encoding, encoding.lower())


def unpack(folder):
    """Writes the indexes and labels.txt; a file that is already there as it is to be keeps its time."""
    files = {f"index-{name}.txt": _text(f"index-{name}.txt") for name in index_names()}
    files["labels.txt"] = "".join(f"{label}\t{name}\n" for name, labels in encodings().items() for label in labels)
    folder.mkdir(parents=True, exist_ok=True)
    for name, text in files.items():
        path = folder / name
        if not path.exists() or path.read_bytes() != text.encode("utf-8"):
            path.write_bytes(text.encode("utf-8"))


def compressed(data):
    return lzma.compress(data, lzma.FORMAT_XZ, lzma.CHECK_CRC32, preset=9 | lzma.PRESET_EXTREME)


def store(folder):
    for path in sorted([*folder.glob("index-*.txt"), folder / "encodings.json"]):
        (STORE / f"{path.name}.xz").write_bytes(compressed(path.read_bytes()))


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    action = parser.add_mutually_exclusive_group(required=True)
    action.add_argument("--unpack", type=pathlib.Path, metavar="FOLDER", help="write the indexes and labels.txt there")
    action.add_argument("--store", type=pathlib.Path, metavar="FOLDER", help="compress the files of FOLDER")
    options = parser.parse_args()
    if options.unpack:
        unpack(options.unpack)
    else:
        store(options.store)
    return 0


if __name__ == "__main__":
    sys.dont_write_bytecode = True
    sys.exit(main())
