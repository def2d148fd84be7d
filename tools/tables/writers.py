# kx7text - what is generated: the stored tables as C++, and the files of the character sets.

import textwrap

import bytetypes
import charsetfiles
import charsets
import gb18030
import mappings
import properties
from tables import by_code

_WIDTH = 110
MARK = charsetfiles.MARK


def _comment(text):
    return textwrap.wrap(text, _WIDTH, initial_indent="// ", subsequent_indent="// ", break_long_words=False)


def _opening(what, labels, header, notes=()):
    lines = _comment(f"kx7text - {what}.") + _comment(f"{MARK} from {', '.join(labels)}. Do not edit.")
    for note in notes:
        lines += _comment(note)
    return [*lines, f'#include "{header}"', "// clang-format off"]


def _rows(cells):
    """Cells side by side, as many as a line holds."""
    return textwrap.wrap(
        " ".join(cell.replace(" ", "\0") for cell in cells), _WIDTH, initial_indent="    ", subsequent_indent="    ",
        break_long_words=False, break_on_hyphens=False,
    )


def _pages(records, key, cell, heading):
    """Rows of records, with a heading wherever the high byte of their key changes."""
    lines = []
    page, cells = None, []
    for record in records:
        if record[key] >> 8 != page:
            lines += _rows(cells)
            page, cells = record[key] >> 8, []
            lines.append(f"    // {heading(page << 8)}")
        cells.append(cell(record))
    return [line.replace("\0", " ") for line in lines + _rows(cells)]


def _as_unit(value):
    return f"U+{value:04X}"


def _as_code(value):
    return f"0x{value:04X}"


def _pair_cell(pair):
    return f"0x{pair[0]:04X},0x{pair[1]:04X},"


def _code_point_cell(pair):
    return f"{{0x{pair[0]:04X}, 0, 0x{pair[1]:05X}}},"


def _range_cell(record):
    return f"{{0x{record[0]:04X}, 0x{record[1]:04X}, 0x{record[2]:04X}}},"


def _mapping_list(table):
    if table.code_points:
        record, end, cell, units_a_record = "sMBCSExTable", "{0, 0, 0}", _code_point_cell, ""
        columns, unit = "code and code point", "code point"
    else:
        record, end, cell, units_a_record = "unsigned short", "0, 0", _pair_cell, "2 * "
        columns, unit = "code and UTF-16 unit", "unit"
    order = table.order.text.replace("unit", unit)
    what = f"{table.title}: {table.pairs:,} pairs of {columns}, {order}"
    notes = [f"Exception to the source: {change.label()}." for change in table.changes]
    lines = _opening(what, [table.source.label()], f"kx7/tables/{table.header}", notes)
    lines.append(f"{record} const {table.name}[] = {{")
    heading = _as_code if table.order is by_code else _as_unit
    runs = table.runs()
    for number, run in enumerate(runs, 1):
        if len(runs) > 1:
            lines.append(f"    // Run {number}: {len(run):,} pairs")
        lines += _pages(run, table.order.field, cell, heading)
    lines += [
        f"    {end}",
        "};",
        f"static_assert(sizeof {table.name} / sizeof {table.name}[0] == {units_a_record}({table.pairs} + 1),",
        f'              "{table.name}: number of pairs");',
    ]
    return lines


def _range_tables(tables, record, heading):
    lines = []
    for table in tables:
        lines.append("")
        lines += _comment(f"{table.records:,} records: {table.title}.")
        lines.append(f"{record} const {table.name}[] = {{")
        lines += _pages(table.checked(), 0, _range_cell, heading[table.name])
        lines += [
            "    {0, 0, 0}",
            "};",
            f"static_assert(sizeof {table.name} / sizeof {table.name}[0] == {table.records} + 1,",
            f'              "{table.name}: number of records");',
        ]
    return lines


def _gb18030_ranges():
    tables = gb18030.TABLES
    what = f"GB 18030 outside GBK: ranges of GB codes and of UTF-16 units, {tables[0].records} records each"
    labels = tables[0].labels()
    notes = [f"Exception to the source: {label}." for label in labels[1:]]
    lines = _opening(what, labels[:1], "kx7/tables/GB18030Ranges.h", notes)
    heading = {"oGB2UniRange": _as_code, "oUni2GBRange": _as_unit}
    return lines + _range_tables(tables, "kx7::GB18030Range", heading)


def _char_properties():
    tables = properties.TABLES
    counts = ", ".join(f"{table.records:,}" for table in tables)
    what = f"case mapping and character classes of the Basic Multilingual Plane: {counts} records"
    lines = _opening(what, tables[-1].labels(), "kx7/tables/CharProperties.h")
    return lines + _range_tables(tables, "kx7::CharRange", {table.name: _as_unit for table in tables})


def _byte_types():
    tables = bytetypes.TABLES
    what = f"lead and trail bytes of the double-byte encodings: {len(tables)} tables of 256 types"
    lines = _opening(what, ["the rules in bytetypes.py"], "kx7/tables/ByteTypeTables.h")
    for name, use, rule in tables:
        types = bytetypes.types(name, rule)
        lines += ["", f"// For {use}.", f"unsigned char const {name}[256] = {{"]
        for first in range(0, 256, 16):
            row = " ".join(f"0x{value:02X}," for value in types[first : first + 16])
            lines.append(f"    {row}  // 0x{first:02X}")
        lines.append("};")
    return lines


def _mapping_lists():
    return charsets.SINGLE_BYTE_LISTS + mappings.MULTIBYTE + mappings.ROW_AND_CELL + charsets.WEB_LISTS


def files():
    """Every generated file, and those with generated sections, as {path from the root: text}."""
    result = {table.name: _mapping_list(table) for table in _mapping_lists()}
    result["GB18030Ranges"] = _gb18030_ranges()
    result["CharProperties"] = _char_properties()
    result["ByteTypeTables"] = _byte_types()
    stored = {f"kx7/tables/{name}.cpp": "\n".join(lines) + "\n" for name, lines in result.items()}
    return stored | charsetfiles.files()


def listing():
    """(name, number of records, sources) of every stored table."""
    rows = [(t.name, t.pairs, t.source.label()) for t in _mapping_lists()]
    rows += [(t.name, t.records, t.labels()[0]) for t in gb18030.TABLES + properties.TABLES]
    return rows + [(name, 256, "the rules in bytetypes.py") for name, _, _ in bytetypes.TABLES]
