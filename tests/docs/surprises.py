#!/usr/bin/python3
"""Turns the examples of docs/surprises.md into a GoogleTest source on standard output.

A line of the list is "- **What it is**…: `expression`. What to do instead." The expression is C++ and must be true.
"""

import re
import sys


def main():
    count = 0
    print("// GENERATED from docs/surprises.md by tests/docs/surprises.py.")
    print('#include "tests/docs/Surprises.h"')
    with open(sys.argv[1], encoding="utf-8") as file:
        for number, line in enumerate(file, 1):
            if not line.startswith("- "):
                continue
            match = re.fullmatch(r"- (.*?): `(.+?)`\. \S.*\n", line)
            if not match:
                sys.exit(f"{sys.argv[1]}:{number}: not '- what: `example`. Instead.'")
            count += 1
            print(f'TEST(Surprises, Line{number})\n{{\n#line {number} "docs/surprises.md"')
            print(f"    EXPECT_TRUE(({match.group(2)}));\n}}")
    if count == 0:
        sys.exit(f"{sys.argv[1]}: no examples")


main()
