#!/usr/bin/env python3
# kx7text tests - the mapping of one of Python's codecs: a line "CODE CODEPOINT" in hexadecimal for each pair that it
# converts both ways, a code being the bytes of a character as a number, high byte first.
import codecs
import sys


def main():
    name = sys.argv[1]
    codec = codecs.lookup(name)
    lines = []
    for point in range(1, 0x110000):
        if 0xD800 <= point <= 0xDFFF:
            continue
        character = chr(point)
        try:
            code = codec.encode(character)[0]
            if codec.decode(code)[0] == character:
                lines.append("%X %X\n" % (int.from_bytes(code, "big"), point))
        except UnicodeError:
            pass
    sys.stdout.writelines(lines)


if __name__ == "__main__":
    main()
