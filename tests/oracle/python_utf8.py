#!/usr/bin/env python3
# kx7text tests - what Python's strict decoder says of bytes as UTF-8: a line "OFFSET LENGTH" of the first malformed
# sequence, the length of the text and 0 where there is none, for each sequence of LENGTH of the BYTES in hexadecimal.
#
#     python_utf8.py LENGTH BYTES
import itertools
import sys


def main():
    length = int(sys.argv[1])
    lines = []
    for sequence in itertools.product(bytes.fromhex(sys.argv[2]), repeat=length):
        try:
            bytes(sequence).decode("utf-8", "strict")
            lines.append("%d 0\n" % length)
        except UnicodeDecodeError as error:
            lines.append("%d %d\n" % (error.start, error.end - error.start))
    sys.stdout.writelines(lines)


if __name__ == "__main__":
    main()
