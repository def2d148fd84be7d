#!/usr/bin/env python3
"""kx7text example - the entry points through ctypes.

    from_python.py [LIBRARY]    libkx7text.so.1 where none is given
"""
import ctypes
import sys

kx7 = ctypes.CDLL(sys.argv[1] if len(sys.argv) > 1 else "libkx7text.so.1")

# A character set is an int32_t, a code unit an unsigned short, a count an unsigned int.
kx7.LocalToUTF8.argtypes = [ctypes.c_char_p, ctypes.c_char_p, ctypes.c_int, ctypes.c_int32]
kx7.LocalToUTF8.restype = ctypes.c_uint
kx7.UTF8ToUTF16.argtypes = [ctypes.POINTER(ctypes.c_ushort), ctypes.c_char_p, ctypes.c_uint]
kx7.UTF8ToUTF16.restype = ctypes.c_uint
kx7.KX7CharSetToString.argtypes = [ctypes.c_int32]
kx7.KX7CharSetToString.restype = ctypes.c_char_p

WCP1252 = 1252


def to_utf8(text, char_set):
    capacity = ctypes.create_string_buffer(4 * len(text) + 1)
    length = kx7.LocalToUTF8(capacity, text, len(capacity), char_set)
    return capacity.raw[:length]


utf8 = to_utf8(b"caf\xE9 \x80", WCP1252)
units = (ctypes.c_ushort * (len(utf8) + 1))()
count = kx7.UTF8ToUTF16(units, utf8, len(units))
print(kx7.KX7CharSetToString(WCP1252).decode(), utf8.hex(" "), count, ["%04X" % unit for unit in units[3:count]])
