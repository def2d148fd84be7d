#!/usr/bin/python3
"""Turns the examples of docs/surprises.md into a GoogleTest source on standard output.

A line of the list is "- **What it is**…: `expression`. What to do instead." The expression is C++ and must be true.
"- **What it is**…: `expression` does not compile. Instead `expression`." holds two: the first must not compile for a string `s`
or a constant one `fixed`, the second is the safe way, compiles for the same and is true.
"""

import re
import sys

# Inside of the templates the class is a parameter of its name, so that an expression is looked at when the template is used.
REFUSED = """\
#line {number} "docs/surprises.md"
template <class KX7UString>
auto refusedOfLine{number}(KX7UString& s, KX7UString const& fixed) -> decltype(static_cast<void>({refused}), std::true_type());
template <class KX7UString>
std::false_type refusedOfLine{number}(...);
#line {number} "docs/surprises.md"
template <class KX7UString>
auto insteadOfLine{number}(KX7UString& s, KX7UString const& fixed) -> decltype({instead})
{{
    static_cast<void>(s);
    static_cast<void>(fixed);
    return {instead};
}}
TEST(Surprises, Line{number})
{{
    KX7UString s = string(u"abc");
    KX7UString const fixed = s;
    EXPECT_FALSE(decltype(refusedOfLine{number}<KX7UString>(s, fixed))::value) << "it compiles";
    EXPECT_TRUE(insteadOfLine{number}(s, fixed));
}}
"""


def main():
    count = 0
    print("// GENERATED from docs/surprises.md by tests/docs/surprises.py.")
    print('#include "tests/docs/Surprises.h"')
    with open(sys.argv[1], encoding="utf-8") as file:
        for number, line in enumerate(file, 1):
            if not line.startswith("- "):
                continue
            refused = re.fullmatch(r"- (.*?): `(.+?)` does not compile\. Instead `(.+?)`\.\n", line)
            if refused:
                count += 1
                print(REFUSED.format(number=number, refused=refused.group(2), instead=refused.group(3)))
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
