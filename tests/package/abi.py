#!/usr/bin/env python3
"""kx7text tests - the binary interface is that of the last release, or has more: abi.py [--update] LIBRARY...

Compares a library with debug information with the baseline of its word size, the layout of types included. At a release
--update takes the interface over. A type that no public header defines is only a name on both sides: callers have pointers
to it at most, and libabigail's own means to leave such types out (suppressions, --drop-private-types) still count the
classes that point to them as changed.
"""

import lzma
import pathlib
import re
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ET

FOLDER = pathlib.Path(__file__).resolve().parent
ROOT = FOLDER.parents[1]


def defined_types():
    """The names of the classes that public headers define, and of those that they only declare inside a class."""
    defined = set()
    nested = set()
    for header in sorted((ROOT / "kx7").rglob("*.h")):
        text = header.read_text()
        if "(internal)" in text.split("\n", 1)[0]:
            continue
        defined.update(re.findall(r"\b(?:class|struct|union) (?:KX7_\w+ )?(\w+)(?: final)?(?:\s*:[^;{]*)?\s*\{", text))
        nested.update(re.findall(r"^ +(?:class|struct) (\w+);$", text, re.M))
    return defined, nested


def make_opaque(element):
    element.attrib.pop("size-in-bits", None)
    element.set("is-declaration-only", "yes")
    for child in list(element):
        element.remove(child)


def interface(library):
    command = ["abidw", "--exported-interfaces-only", "--drop-undefined-syms", "--no-corpus-path", "--no-comp-dir-path",
               "--no-show-locs", library]
    root = ET.fromstring(subprocess.run(command, check=True, stdout=subprocess.PIPE).stdout)
    defined, nested = defined_types()
    for namespace in root.iter("namespace-decl"):
        if namespace.get("name") == "kx7":
            for decl in namespace.findall("class-decl"):
                if decl.get("name").split("<")[0] not in defined:
                    make_opaque(decl)
    for member in root.iter("member-type"):
        for decl in member.findall("class-decl"):
            if decl.get("name") in nested:
                make_opaque(decl)
    return ET.tostring(root)


def main(arguments):
    update = arguments[:1] == ["--update"]
    for library in arguments[update:]:
        with open(library, "rb") as file:
            bits = {1: 32, 2: 64}.get(file.read(5)[4])  # the class of an ELF file
        if bits is None:
            sys.exit(f"abi.py: {library} is no ELF file")
        stored = FOLDER / f"abi-{bits}.xml.xz"
        now = interface(library)
        if update:
            stored.write_bytes(lzma.compress(now, preset=9))
            continue
        with tempfile.TemporaryDirectory() as folder:
            old = pathlib.Path(folder, "released.abi")
            new = pathlib.Path(folder, "built.abi")
            old.write_bytes(lzma.decompress(stored.read_bytes()))
            new.write_bytes(now)
            if subprocess.run(["abidiff", "--no-added-syms", old, new]).returncode:
                sys.exit(f"abi.py: {library} differs from {stored}: a program built with the last release may break")


if __name__ == "__main__":
    main(sys.argv[1:])
