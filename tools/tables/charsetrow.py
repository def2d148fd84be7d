# kx7text - what a row of charsets.py is, and the kinds of rows that are alike.

import dataclasses

import mappings
import webmappings
from tables import Table, by_code, by_rule, by_unicode, encoding_standard


@dataclasses.dataclass(frozen=True, kw_only=True)
class CharSet:
    """One named character set."""

    name: str  # without KX7CS_, or in kx7::web
    number: int
    about: str  # one line, which stands beside the identifier and the mapping list
    title: str = ""  # as a reader knows the set
    comment: str = ""  # beside the identifier, where that is to say more than `about`
    iana: str = ""  # the labels that IANA registered, the preferred one first and as it is written there
    whatwg: str = ""  # the labels of the Encoding Standard, the name of the encoding first and as it is written there
    encoding: str = ""  # the name in the Encoding Standard of a set that only kx7/convert.h knows; "": published
    like: str = ""  # of such a set: the name of the published one that readers may take for the same
    converter: str = ""  # the class without KX7CharSetConverter; "": none, the registry knows only the name
    suffix: str = ""  # the object is g_oConverter and this; the name where it is the same
    arguments: tuple = ()  # of the constructor, before the identifier: mapping lists, table of byte types
    table: Table | None = None  # of a single-byte set, and of one that only kx7/convert.h knows: its mapping list
    decoded_only: Table | None = None  # of the latter: the lists of what is mapped one way; None: there is nothing
    encoded_only: Table | None = None
    three_bytes: Table | None = None  # the last two bytes of codes of three, decoded only
    characters: str = ""  # how many it has, and what it is made from, where that is not one mapping list
    made_from: str = ""
    page: str = ""  # of docs/charsets, without .md
    samples: str = ""  # languages of samples/
    sample: str = ""  # how the samples' file names call the set, where that is not its number
    icu: str = ""  # what the peers call the same mapping in both directions, for the tests; "": they do not have it
    glibc: str = ""
    python: str = ""

    @property
    def identifier(self):
        return f"web::{self.name}" if self.encoding else f"KX7CS_{self.name}"

    @property
    def listed(self):
        """The name that the set has in lists."""
        return self.encoding or self.identifier

    @property
    def object(self):
        return f"{'web' if self.encoding else 'g_oConverter'}{self.suffix or self.name}"

    @property
    def type(self):
        return f"KX7CharSetConverter{self.converter}"

    @property
    def in_file_names(self):
        return self.sample or str(self.number)

    @property
    def web_tables(self):
        """The mapping lists of a set that only kx7/convert.h knows."""
        return [t for t in (self.table, self.decoded_only, self.encoded_only, self.three_bytes) if t]

    def lists(self):
        """The mapping lists among the constructor's arguments."""
        lists = {table.name: table for table in mappings.MULTIBYTE + mappings.ROW_AND_CELL}
        lists |= {"oGBKmap": lists["oCP936map"]}
        return [self.table] if self.table else [lists[name] for name in self.arguments if name in lists]


def single_byte(name, number, title, about, source, pairs, *, mapping=None, **more):
    """A set whose every byte is one character: its mapping's source, and how many bytes but 0 have a character."""
    mapping = mapping or f"o{name}map"
    table = Table(mapping, f"{title} ({about})", source=source, order=by_unicode, pairs=pairs)
    icu = source.name if source.origin == "ICU" else ""
    return CharSet(**{"name": name, "number": number, "title": title, "about": about, "converter": "SBCS",
                      "arguments": (mapping,), "table": table, "icu": icu, "page": "windows"} | more)


def windows(number, about, source, pairs, **more):
    """A single-byte code page of Windows."""
    label = f"windows-{number}"
    return single_byte(f"WCP{number}", number, f"Windows code page {number}", about, source, pairs,
                       mapping=f"oCP{number}map",
                       **{"comment": f"Windows, {about}", "iana": f"{label} cswindows{number}",
                          "whatwg": f"{label} cp{number} x-cp{number}", "glibc": f"CP{number}",
                          "python": f"cp{number}"} | more)


def windows_double_byte(number, about, **more):
    """A double-byte code page of Windows; its mapping list is in mappings.py, its byte types in bytetypes.py."""
    return CharSet(name=f"WCP{number}", number=number, title=f"Windows code page {number}", about=about,
                   comment=f"Windows, {about}", converter="DBCS", arguments=(f"oCP{number}map", f"oCP{number}Type"),
                   glibc=f"CP{number}", **more)


def iso_8859(part, about, source, pairs, **more):
    """A part of ISO/IEC 8859."""
    return single_byte(f"ISO_8859_{part}", 28590 + part, f"ISO/IEC 8859-{part}", about, source, pairs,
                       mapping=f"o8859_{part}map",
                       **{"glibc": f"ISO-8859-{part}", "python": f"iso8859_{part}", "page": "iso-8859"} | more)


def web_single_byte(encoding, number, about, pairs, *, source=None, **more):
    """A single-byte encoding of the Encoding Standard that differs from every published set; `source` where it is not
    made of the standard's index. Its constant in kx7::web and its mapping list are named after it."""
    name = encoding.upper().replace("-", "_")
    mapping = f"oWeb{name.replace('_', '')}map"
    table = Table(mapping, f"{encoding} of the Encoding Standard ({about})",
                  source=source or encoding_standard(encoding), order=by_unicode, pairs=pairs, header="WebLists.h")
    return CharSet(**{"name": name, "number": number, "title": encoding, "about": about, "encoding": encoding,
                      "converter": "SBCS", "arguments": (mapping,), "table": table} | more)


def web_double_byte(encoding, number, about, types, pairs, *, decoded_only=0, encoded_only=0, three_bytes=0, **more):
    """A double-byte encoding of the Encoding Standard; `types` is the table of its lead and trail bytes. The numbers
    are those of the pairs that are mapped both ways, when decoding, when encoding, and of codes of three bytes."""
    name = encoding.upper().replace("-", "_")
    list_name = f"oWeb{name.replace('_', '')}"
    source = "the indexes of the WHATWG Encoding Standard (BSD 3-Clause)"

    def table(suffix, what, read, count, order):
        if count == 0:
            return None
        return Table(f"{list_name}{suffix}", f"{encoding} of the Encoding Standard ({about}){what}",
                     source=by_rule(source, read), order=order, pairs=count, one_way=suffix != "map",
                     header="WebLists.h")

    def mapping():
        return webmappings.mapping(encoding)

    both = table("map", "", lambda: mapping().both, pairs, by_unicode)
    decoded = table("Decoded", ", decoded only", lambda: mapping().decoded_only, decoded_only, by_code)
    encoded = table("Encoded", ", encoded only", lambda: mapping().encoded_only, encoded_only, by_unicode)
    three = table("Three", ", after 0x8F, decoded only", webmappings.jis0212, three_bytes, by_code)
    lists = [found.name if found else "nullptr" for found in (both, decoded, encoded, three)]
    return CharSet(**{"name": name, "number": number, "title": encoding, "about": about, "encoding": encoding,
                      "converter": "WebDoubleByte", "arguments": (*lists, types), "table": both,
                      "decoded_only": decoded, "encoded_only": encoded, "three_bytes": three} | more)


def without_converter(name, number, **more):
    """A set that has a number and a name."""
    return CharSet(name=name, number=number, about="no converter", **more)
