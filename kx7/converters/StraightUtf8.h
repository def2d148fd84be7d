// kx7text - short texts straight to and from UTF-8 (internal).
//
// Two conversions with UTF-16 between them have costs that a short text does not earn back: two searches for its end,
// two calls by converter, units that are loaded before they are stored. Here one loop reads a character and writes it.
// It takes a text as a whole or not at all: whatever needs a decision or a substitute, does not fit, or could look
// otherwise once it has been UTF-16 (surrogates that stand alone, a 0 unit), is left to the conversion in two steps.
// What has been written by then is what that writes there, too.
#ifndef KX7_CONVERTERS_STRAIGHTUTF8_H
#define KX7_CONVERTERS_STRAIGHTUTF8_H

#include "kx7/converters/Walk.h"
#include "kx7/kernels/ShortText.h"

namespace kx7 {

/** Writes a character other than U+0000. False: it does not fit, or is half of one. */
KX7_INLINE bool writeUTF8(unsigned int codePoint, unsigned char*& out, unsigned char const* outEnd)
{
    auto const continuation = [codePoint](unsigned int shift) {
        return static_cast<unsigned char>(0x80 | (codePoint >> shift & 0x3F));
    };
    std::ptrdiff_t const room = outEnd - out;
    if (codePoint < 0x80) {
        if (room < 1 || codePoint == 0)
            return false;
        out[0] = static_cast<unsigned char>(codePoint);
        out += 1;
    }
    else if (codePoint < 0x800) {
        if (room < 2)
            return false;
        out[0] = static_cast<unsigned char>(0xC0 | codePoint >> 6);
        out[1] = continuation(0);
        out += 2;
    }
    else if (codePoint <= 0xFFFF) {
        if (room < 3 || isSurrogate(codePoint))
            return false;
        out[0] = static_cast<unsigned char>(0xE0 | codePoint >> 12);
        out[1] = continuation(6);
        out[2] = continuation(0);
        out += 3;
    }
    else {
        if (room < 4 || codePoint > LAST_CODE_POINT)
            return false;
        out[0] = static_cast<unsigned char>(0xF0 | codePoint >> 18);
        out[1] = continuation(12);
        out[2] = continuation(6);
        out[3] = continuation(0);
        out += 4;
    }
    return true;
}

/** Reads a character. 0: it is U+0000, malformed, cut off, half of one, or not in the standard form. */
KX7_INLINE unsigned int readUTF8(unsigned char const*& in, unsigned char const* end)
{
    unsigned int const lead = in[0];
    std::ptrdiff_t const available = end - in;
    auto const isContinuation = [in](int i) { return (in[i] & 0xC0) == 0x80; };
    if (lead < 0x80) {
        in += 1;
        return lead;
    }
    if (lead < 0xC2 || available < 2 || !isContinuation(1))
        return 0;
    if (lead < 0xE0) {
        unsigned int const codePoint = (lead & 0x1F) << 6 | (in[1] & 0x3FU);
        in += 2;
        return codePoint;
    }
    if (available < 3 || !isContinuation(2))
        return 0;
    if (lead < 0xF0) {
        unsigned int const codePoint = (lead & 0xF) << 12 | (in[1] & 0x3FU) << 6 | (in[2] & 0x3FU);
        in += 3;
        return isSurrogate(codePoint) ? 0 : codePoint;
    }
    if (lead > 0xF4 || available < 4 || !isContinuation(3))
        return 0;
    unsigned int const codePoint = (lead & 7) << 18 | (in[1] & 0x3FU) << 12 | (in[2] & 0x3FU) << 6 | (in[3] & 0x3FU);
    in += 4;
    return codePoint > 0xFFFF && codePoint <= LAST_CODE_POINT ? codePoint : 0;
}

/** The longest text that is short here, in bytes: three times SHORT_TEXT, so that of UTF-8 as much is taken. */
constexpr size_t LONGEST_STRAIGHT = 3 * SHORT_TEXT;

/** What is left of a text goes through the kernels where it is longer than this: bytes. */
constexpr std::ptrdiff_t ONE_BY_ONE = 16;

/** Decodes a short text into UTF-8, up to its zero byte. Returns the bytes written, or NOT_STRAIGHT. */
template <class Decoder>
KX7_INLINE size_t shortToUTF8(Decoder const& decoder, unsigned char const* in, unsigned char* dest, size_t room)
{
    size_t const length = textLengthUpTo(in, LONGEST_STRAIGHT + 1);
    if (length > LONGEST_STRAIGHT)
        return NOT_STRAIGHT;
    unsigned char const* const end = in + length;
    unsigned char* out = dest;
    unsigned char* const outEnd = endOf(dest, room);
    copyShort(decoder.same(), in, end, out, outEnd);
    if (end - in > ONE_BY_ONE) {
        unsigned short units[LONGEST_STRAIGHT];
        unsigned short* unitsEnd = units;
        decoder.run(in, end, unitsEnd, units + LONGEST_STRAIGHT);
        unsigned short const* unit = units;
        kernels().encodeUTF8(unit, unitsEnd, out, outEnd);
        for (; unit != unitsEnd; ++unit) {
            unsigned int codePoint = *unit;
            if (isHighSurrogate(codePoint) && unit + 1 != unitsEnd && isLowSurrogate(unit[1]))
                codePoint = codePointOf(codePoint, *++unit);
            if (!writeUTF8(codePoint, out, outEnd))
                return NOT_STRAIGHT;
        }
    }
    while (in != end) {
        DecodedChar c = decoder.look(in, end);
        if (c.found != Found::CHARACTER) {
            c = decoder.step(in, end);
            if (c.found != Found::CHARACTER || (c.units == 1 && c.codePoint > 0xFFFF))
                return NOT_STRAIGHT;
        }
        if (!writeUTF8(c.codePoint, out, outEnd))
            return NOT_STRAIGHT;
        in += c.consumed;
    }
    return static_cast<size_t>(out - dest);
}

/** Encodes a short text of UTF-8, up to its zero byte. Returns the bytes written, or NOT_STRAIGHT. */
template <class Encoder>
KX7_INLINE size_t shortFromUTF8(Encoder const& encoder, unsigned char const* in, unsigned char* dest, size_t room)
{
    size_t const length = textLengthUpTo(in, LONGEST_STRAIGHT + 1);
    if (length > LONGEST_STRAIGHT)
        return NOT_STRAIGHT;
    unsigned char const* const end = in + length;
    unsigned char* out = dest;
    unsigned char* const outEnd = endOf(dest, room);
    copyShort(encoder.same(), in, end, out, outEnd);
    if (end - in > ONE_BY_ONE) {
        unsigned short units[LONGEST_STRAIGHT];
        unsigned short* unitsEnd = units;
        kernels().decodeUTF8(in, end, unitsEnd, units + LONGEST_STRAIGHT);
        auto const count = static_cast<size_t>(unitsEnd - units);
        if (unitLength(units, count) != count)
            return NOT_STRAIGHT;
        Progress const encoded = encodeRange(encoder, units, unitsEnd, out, outEnd, true);
        if (encoded.stop != Stop::SOURCE_USED)
            return NOT_STRAIGHT;
        out += encoded.written;
    }
    while (in != end) {
        unsigned int const codePoint = readUTF8(in, end);
        if (codePoint == 0)
            return NOT_STRAIGHT;
        unsigned int const code = codePoint <= 0xFFFF ? encoder.codeOf(static_cast<unsigned short>(codePoint)) : 0;
        if (code != 0) {
            if (code > 0xFF) {
                if (outEnd - out < 2)
                    return NOT_STRAIGHT;
                *out++ = static_cast<unsigned char>(code >> 8);
            }
            else if (out == outEnd) {
                return NOT_STRAIGHT;
            }
            *out++ = static_cast<unsigned char>(code);
            continue;
        }
        bool const isPair = codePoint > 0xFFFF;
        unsigned short const units[2] = {isPair ? highSurrogateOf(codePoint) : static_cast<unsigned short>(codePoint),
                                         lowSurrogateOf(codePoint)};
        unsigned int const count = isPair ? 2 : 1;
        EncodedChar const c = encoder.step(units, units + count);
        if (c.found != Found::CHARACTER || c.consumed != count || static_cast<size_t>(outEnd - out) < c.length)
            return NOT_STRAIGHT;
        encoder.write(out, c);
    }
    return static_cast<size_t>(out - dest);
}

}  // namespace kx7

#endif
