#!/usr/bin/env python3
"""kx7text tests - every public name has a description in the pages that Doxygen made: documented.py XML_FOLDER.

Doxygen itself warns of members, but not of enumerators, macros and members of groups.
"""
import pathlib
import sys
import xml.etree.ElementTree as ElementTree


def described(element):
    return any(
        "".join(part.itertext()).strip()
        for part in map(element.find, ("briefdescription", "detaileddescription", "inbodydescription"))
        if part is not None
    )


def is_inherited(member):
    return member.find("reimplements") is not None


def is_obvious(name, member):
    """Guards, what is deleted, and destructors."""
    return name.endswith("_H") or name.startswith("~") or "delete" in (member.findtext("argsstring") or "").split("=")[-1]


names, missing = 0, []
for page in sorted(pathlib.Path(sys.argv[1]).glob("*.xml")):
    compound = ElementTree.parse(page).getroot().find("compounddef")
    if compound is None or compound.get("kind") == "dir" or compound.get("prot") == "private":
        continue
    # A type that is only declared is of no use to callers.
    is_defined = compound.find("location").get("bodyend", "-1") != "-1"
    if compound.get("kind") in ("class", "struct") and is_defined and not described(compound):
        missing.append(compound.findtext("compoundname"))
    for member in compound.iter("memberdef"):
        name = member.findtext("qualifiedname") or member.findtext("name")
        if member.get("prot") == "private" or member.get("kind") == "friend" or is_inherited(member):
            continue
        if is_obvious(member.findtext("name"), member):
            continue
        for item in [member, *member.iter("enumvalue")]:
            names += 1
            if not described(item):
                missing.append(name if item is member else item.findtext("name"))
if names < 300:
    sys.exit(f"documented.py: {names} names in {sys.argv[1]} are too few to be all")
for name in missing:
    print(f"not documented: {name}")
sys.exit(1 if missing else 0)
