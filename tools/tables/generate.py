#!/usr/bin/env python3
# kx7text - writes the stored tables under kx7/tables/ and what is said of each character set elsewhere, or compares.
"""Without an option: writes what has changed. Building the library needs none of this, all of it is in the repository.

Exit codes: 0 done, 1 a difference or an error, 77 the comparison is not possible because a package is missing or is
not of the version that the tables are made from.
"""

import argparse
import itertools
import pathlib
import sys

import sources
import tables
import writers

ROOT = pathlib.Path(__file__).resolve().parents[2]
TARGET = ROOT / "kx7" / "tables"


def write(files):
    for name, text in files.items():
        path = ROOT / name
        if not path.exists() or path.read_text(encoding="utf-8") != text:  # an equal file keeps its time
            path.write_text(text, encoding="utf-8")
            print(f"wrote {name}")


def differences(files):
    """One line for every file that is not what its sources give."""
    for name, text in files.items():
        path = ROOT / name
        if not path.exists():
            yield f"{name}: is missing"
            continue
        pairs = itertools.zip_longest(path.read_text(encoding="utf-8").split("\n"), text.split("\n"))
        for number, (stored, generated) in enumerate(pairs, 1):
            if stored != generated:
                yield f"{name}:{number}: stored {stored!r}, generated {generated!r}"
                break
    for path in sorted(TARGET.glob("*.cpp")):
        name = str(path.relative_to(ROOT))
        if name not in files and writers.MARK in path.read_text(encoding="utf-8"):
            yield f"{name}: no table is declared for it"


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    action = parser.add_mutually_exclusive_group()
    action.add_argument("--check", action="store_true", help="compare the stored tables with their sources")
    action.add_argument("--list", action="store_true", help="print names, numbers of records and sources")
    parser.add_argument("--allow-version", action="store_true", help="take sources of other versions than the pinned")
    options = parser.parse_args()
    try:
        sources.require_versions(allow_other=options.allow_version)
        if options.list:
            for name, count, source in writers.listing():
                print(f"{name:18} {count:6,}  {source}")
            return 0
        files = writers.files()
        if not options.check:
            write(files)
            return 0
        found = list(differences(files))
        print("\n".join(found) if found else f"{len(files)} files agree with their sources")
        return 1 if found else 0
    except sources.SourceMissing as missing:
        print(f"generate.py: {missing}", file=sys.stderr)
        return 77 if options.check else 1
    except tables.TableError as error:
        print(f"generate.py: {error}", file=sys.stderr)
        return 1


if __name__ == "__main__":
    sys.dont_write_bytecode = True
    sys.exit(main())
