"""kx7text - pretty-printers for gdb.

    (gdb) source kx7text.py

Installed as libkx7text.so.1.0.0-gdb.py where gdb looks for such files, it is loaded with the library.
"""
import re

import gdb
import gdb.printing


ESCAPES = {"\\": "\\\\", '"': '\\"'}


def text_of(units, length):
    """UTF-16 code units as a Python string, surrogates without their partners included."""
    data = gdb.selected_inferior().read_memory(units, 2 * length).tobytes() if length else b""
    return data.decode("utf-16-" + byte_order()[0] + "e", "surrogatepass")


def number_at(address, size):
    return int.from_bytes(gdb.selected_inferior().read_memory(address, size).tobytes(), byte_order())


def byte_order():
    return "big" if "big" in gdb.execute("show endian", to_string=True) else "little"


class StringPrinter:
    """KX7UString, by its published layout: a program without debug information of the library does not know it."""

    def __init__(self, value):
        self.address = None if value.address is None else int(value.address)

    def to_string(self):
        if self.address is None:
            return "<not in memory>"
        pointer = gdb.lookup_type("char").pointer().sizeof
        try:
            space = number_at(self.address + pointer, pointer)
            units = number_at(space + pointer, pointer)
            length = number_at(space + 2 * pointer, 4)
            limit = gdb.parameter("print elements") or length
            text = text_of(units, min(length, limit))
        except (gdb.MemoryError, OverflowError):
            return "<no string>"
        escaped = "".join(ESCAPES.get(c) or (c if c >= " " else "\\%03o" % ord(c)) for c in text)
        # A surrogate without its partner would not survive the terminal.
        escaped = re.sub("[\ud800-\udfff]", lambda match: "\\u%04x" % ord(match.group()), escaped)
        return 'u"%s"%s' % (escaped, "..." if length > limit else "")


def printers():
    collection = gdb.printing.RegexpCollectionPrettyPrinter("kx7text")
    collection.add_printer("KX7UString", "^KX7UString$", StringPrinter)
    return collection


gdb.printing.register_pretty_printer(gdb.current_objfile(), printers(), replace=True)
