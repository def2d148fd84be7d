# kx7text - the double-byte encodings of the WHATWG Encoding Standard, as lists of pairs of code and code point.
"""What the decoder and the encoder of an encoding say of single codes, by the steps of the standard's text: "Shift_JIS
decoder", "EUC-KR encoder" and so on. A code is a byte, or lead * 256 + trail.
"""

import dataclasses
import functools

import encodingstandard


@dataclasses.dataclass(frozen=True)
class Mapping:
    """What an encoding maps both ways, and each way only, as lists of (code, code point)."""

    both: list
    decoded_only: list
    encoded_only: list


def _mapping(decoded, encoded):
    """Of {code: code point} and {code point: code}."""
    return Mapping(
        both=[(code, c) for code, c in decoded.items() if encoded.get(c) == code],
        decoded_only=[(code, c) for code, c in decoded.items() if encoded.get(c) != code],
        encoded_only=[(code, c) for c, code in encoded.items() if decoded.get(code) != c])


def _first(codes):
    """{code point: code}, of a code point with several codes the first."""
    encoded = {}
    for code, c in codes.items():
        encoded.setdefault(c, code)
    return encoded


ASCII = {byte: byte for byte in range(1, 0x80)}


def _euc_kr():
    codes = {(pointer // 190 + 0x81) << 8 | pointer % 190 + 0x41: c
             for pointer, c in encodingstandard.index("euc-kr")}
    return _mapping(ASCII | codes, _first(ASCII | codes))


def _shift_jis_code(pointer):
    lead, trail = divmod(pointer, 188)
    return (lead + (0x81 if lead < 0x1F else 0xC1)) << 8 | trail + (0x40 if trail < 0x3F else 0x41)


def _shift_jis():
    single = ASCII | {0x80: 0x80} | {byte: 0xFF61 - 0xA1 + byte for byte in range(0xA1, 0xE0)}
    last = (0xFC - 0xC1) * 188 + 187  # the pointer of the last pair
    index = [(pointer, c) for pointer, c in encodingstandard.index("jis0208") if pointer <= last]
    user_defined = {_shift_jis_code(pointer): 0xE000 - 8836 + pointer for pointer in range(8836, 10716)}
    decoded = single | {_shift_jis_code(pointer): c for pointer, c in index} | user_defined
    encoded = _first(single | {_shift_jis_code(pointer): c for pointer, c in index if not 8272 <= pointer <= 8835})
    encoded |= {0xA5: 0x5C, 0x203E: 0x7E, 0x2212: encoded[0xFF0D]}
    return _mapping(decoded, encoded)


def _euc_jp():
    katakana = {0x8E00 + byte: 0xFF61 - 0xA1 + byte for byte in range(0xA1, 0xE0)}
    jis0208 = {(pointer // 94 + 0xA1) << 8 | pointer % 94 + 0xA1: c
               for pointer, c in encodingstandard.index("jis0208") if pointer < 94 * 94}
    encoded = _first(ASCII | katakana | jis0208)
    encoded |= {0xA5: 0x5C, 0x203E: 0x7E, 0x2212: encoded[0xFF0D]}
    return _mapping(ASCII | katakana | jis0208, encoded)


def jis0212():
    """What EUC-JP decodes of three bytes: the last two, and their character."""
    return [((pointer // 94 + 0xA1) << 8 | pointer % 94 + 0xA1, c) for pointer, c in encodingstandard.index("jis0212")]


_READ = {"EUC-JP": _euc_jp, "EUC-KR": _euc_kr, "Shift_JIS": _shift_jis}


@functools.cache
def mapping(encoding):
    return _READ[encoding]()
