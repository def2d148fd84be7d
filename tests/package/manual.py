#!/usr/bin/env python3
"""kx7text tests - the manual's prototypes are those of the headers: manual.py MAN_FOLDER DOXYGEN_XML_FOLDER.

Every function with C linkage has a page under its name with its prototype, and every prototype of the manual is that of
a public function, const and default arguments aside.
"""
import pathlib
import re
import sys
import xml.etree.ElementTree as ElementTree

manual, pages = map(pathlib.Path, sys.argv[1:3])


def normal(text):
    """A declaration without what the manual leaves out, and without spaces that mean nothing."""
    text = re.sub(r"\bKX7_(API|LOCAL)\b|\b(virtual|explicit)\b|\bconst$", "", text.replace(" = 0", "").strip())
    text = re.sub(r"\s*([*&(),<>])\s*", r"\1", " ".join(text.split()))
    return text.strip()


functions, c_functions = set(), {}
for page in pages.glob("*.xml"):
    compound = ElementTree.parse(page).getroot().find("compounddef")
    if compound is None:
        continue
    for member in compound.iter("memberdef"):
        if member.get("kind") != "function" or member.get("prot") != "public":
            continue
        result = "".join(member.find("type").itertext())
        if member.get("static") == "yes" and not result.startswith("static"):
            result = "static " + result
        parameters = [
            f"{''.join(p.find('type').itertext())} {p.findtext('declname') or ''}" for p in member.findall("param")
        ]
        name = member.findtext("name")
        prototype = normal(f"{result} {name}({','.join(parameters)})")
        functions.add(prototype)
        if compound.findtext("compoundname") == "KX7CharSet.h":
            c_functions[name] = prototype

failures = []
if len(c_functions) < 17:
    failures.append(f"{len(c_functions)} functions with C linkage in {pages} are too few to be all")
names, prototypes = set(), {}
for page in sorted(manual.glob("*.3")):
    text = page.read_text()
    head = text.split(".Sh NAME\n")[1].split(".Sh ")[0]
    names |= set(re.findall(r"^\.Nm (\S+)", head, re.MULTILINE))
    synopsis = text.split(".Sh SYNOPSIS\n")[1].split(".Sh ")[0]
    result = ""
    for line in synopsis.splitlines():
        words = [quoted or word for quoted, word in re.findall(r'"([^"]*)"|(\S+)', line)]
        if words[0] == ".Ft":
            result = " ".join(words[1:])
        elif words[0] == ".Fn":
            parameters = [] if words[2:] == ["void"] else words[2:]
            prototypes[normal(f"{result} {words[1]}({','.join(parameters)})")] = page.name
            result = ""
for name, prototype in c_functions.items():
    if name not in names:
        failures.append(f"{name} has no page")
    if prototype not in prototypes:
        failures.append(f"no page declares: {prototype}")
failures += [f"{page} declares what no header does: {p}" for p, page in prototypes.items() if p not in functions]
for failure in failures:
    print(f"manual.py: {failure}")
sys.exit(1 if failures else 0)
