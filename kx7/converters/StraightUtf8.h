// kx7text - short texts straight to and from UTF-8 (internal).
//
// Two conversions with UTF-16 between them have costs that a short text does not earn back: two searches for its end,
// two calls by converter, units that are loaded before they are stored. Here one loop reads a character and writes it.
// It takes a text as a whole or not at all: whatever needs a decision or a substitute, does not fit, or could look
// otherwise once it has been UTF-16 (surrogates that stand alone, a 0 unit), is left to the conversion in two steps.
// What has been written by then is what that writes there, too; where it would be written over the text itself, the
// text is left at once.
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

/**
 * Reads a character of text that a zero byte ends: what is behind a byte of it can be read. 0: it is left to the steps
 * of KX7CharSetConverterUTF8, which are the rule: U+0000, malformed, cut off, half of one, or by some of the overlong
 * forms.
 */
KX7_INLINE unsigned int readUTF8(unsigned char const*& in)
{
    // Bytes that continue a character are below 0x40 then.
    auto const next = [in](int i) { return in[i] ^ 0x80U; };
    constexpr unsigned int CONTINUATIONS = 0x40;
    unsigned int const lead = in[0];
    if (lead < 0x80) {
        in += 1;
        return lead;
    }
    unsigned int const second = next(1);
    if (lead < 0xC2 || second >= CONTINUATIONS)
        return 0;
    if (lead < 0xE0) {
        in += 2;
        return (lead & 0x1F) << 6 | second;
    }
    unsigned int const third = next(2);
    if (third >= CONTINUATIONS)
        return 0;
    if (lead < 0xF0) {
        unsigned int const codePoint = (lead & 0xF) << 12 | second << 6 | third;
        in += 3;
        return isSurrogate(codePoint) ? 0 : codePoint;
    }
    unsigned int const fourth = next(3);
    if (lead > 0xF4 || fourth >= CONTINUATIONS)
        return 0;
    unsigned int const codePoint = (lead & 7) << 18 | second << 12 | third << 6 | fourth;
    in += 4;
    return codePoint > 0xFFFF && codePoint <= LAST_CODE_POINT ? codePoint : 0;
}

/** Writes the lowest bytes of a code. */
template <int BYTES>
KX7_INLINE void putBytes(unsigned char*& out, unsigned int code)
{
    for (int i = 0; i < BYTES; ++i)
        out[i] = static_cast<unsigned char>(code >> 8 * (BYTES - 1 - i));
    out += BYTES;
}

template <int BYTES>
KX7_INLINE void copyBytes(unsigned char const*& in, unsigned char*& out)
{
    memmove(out, in, BYTES);
    in += BYTES;
    out += BYTES;
}

/** Writes a code: four bytes, two or one. */
KX7_INLINE void putCode(unsigned char*& out, unsigned int code)
{
    if (code > 0xFFFF)
        putBytes<4>(out, code);
    else if (code > 0xFF)
        putBytes<2>(out, code);
    else
        putBytes<1>(out, code);
}

/** Writes a character other than U+0000. False: it does not fit, or cannot be represented. */
template <class Encoder>
KX7_INLINE bool writeCharacter(Encoder const& encoder, unsigned int codePoint, unsigned char*& out,
                               unsigned char const* outEnd)
{
    std::ptrdiff_t const room = outEnd - out;
    unsigned int const code =
        codePoint <= 0xFFFF ? encoder.codeOf(static_cast<unsigned short>(codePoint)) : encoder.codeOfPair(codePoint);
    if (code != 0) {
        if (room < (code > 0xFFFF ? 4 : code > 0xFF ? 2 : 1))
            return false;
        putCode(out, code);
        return true;
    }
    bool const isPair = codePoint > 0xFFFF;
    unsigned short const units[2] = {isPair ? highSurrogateOf(codePoint) : static_cast<unsigned short>(codePoint),
                                     lowSurrogateOf(codePoint)};
    unsigned int const count = isPair ? 2 : 1;
    EncodedChar const c = encoder.step(units, units + count);
    if (c.found != Found::CHARACTER || c.consumed != count || room < static_cast<std::ptrdiff_t>(c.length))
        return false;
    encoder.write(out, c);
    return true;
}

/** The character at `unit`, of which the last unit is then the one at `unit`. */
KX7_INLINE unsigned int characterAt(unsigned short const*& unit, unsigned short const* end)
{
    if (isHighSurrogate(unit[0]) && unit + 1 != end && isLowSurrogate(unit[1])) {
        ++unit;
        return codePointOf(unit[-1], unit[0]);
    }
    return *unit;
}

/** Two and four bytes as a number, the first one highest. */
KX7_INLINE unsigned int twoBytesAt(unsigned char const* p)
{
    return static_cast<unsigned int>(p[0] << 8 | p[1]);
}
KX7_INLINE unsigned int fourBytesAt(unsigned char const* p)
{
    return twoBytesAt(p) << 16 | twoBytesAt(p + 2);
}

/**
 * Encodes characters of up to three bytes, up to the first that is not as plain. The text ends with a zero byte at
 * `end`, for which there is no code, and there is room for twice its bytes, so that neither is asked for again.
 * Overlong forms other than those of U+0000 are as good as any here, and so is a surrogate that the set has a code for:
 * the steps read them alike.
 * @param encoder a copy: what is written could change another in the eyes of the compiler
 */
template <class Encoder>
KX7_INLINE void encodeStraight(Encoder const encoder, unsigned char const*& inOut, unsigned char const* end,
                               unsigned char*& outOut)
{
    auto const codeOf = [&](unsigned int unit) { return encoder.codeOf(static_cast<unsigned short>(unit)); };
    bool const copiesASCII = Encoder::IS_SINGLE && encoder.same() == Same::ASCII;
    bool inTwos = sizeof(size_t) == 8;
    unsigned char const* in = inOut;
    unsigned char* out = outOut;
    for (;;) {
        unsigned int const lead = in[0];
        unsigned int code;
        if (lead < 0x80) {
            // Words in double-byte sets are too short for this.
            if (copiesASCII && end - in >= 8) {
                uint64_t const eight = uint64_t{fourBytesAt(in)} << 32 | fourBytesAt(in + 4);
                uint64_t const others = eight & UINT64_C(0x8080808080808080);
                if (others == 0) {
                    copyBytes<8>(in, out);
                    continue;
                }
                int const ascii = __builtin_clzll(others) / 8;
                if (ascii & 4)
                    copyBytes<4>(in, out);
                if (ascii & 2)
                    copyBytes<2>(in, out);
                if (ascii & 1)
                    copyBytes<1>(in, out);
                continue;
            }
            code = codeOf(lead);
            if (code == 0 || code > 0xFF)
                break;
            putBytes<1>(out, code);
            in += 1;
            continue;
        }
        // Where there is one of two or three bytes, there are often more: two at once.
        if (lead < 0xE0) {
            if (Encoder::IS_SINGLE && end - in >= 4) {
                unsigned int const four = fourBytesAt(in);
                unsigned int const units = (four & 0x1F001F00) >> 2 | (four & 0x003F003F);
                if ((four & 0xE0C0E0C0) == 0xC080C080) {
                    unsigned int const first = codeOf(units >> 16);
                    unsigned int const second = codeOf(units & 0xFFFF);
                    if (first != 0 && second != 0) {
                        putBytes<2>(out, first << 8 | second);
                        in += 4;
                        continue;
                    }
                }
            }
            unsigned int const two = twoBytesAt(in);
            if ((two & 0xE0C0) != 0xC080)
                break;
            code = codeOf((two & 0x1F00) >> 2 | (two & 0x3F));
            if (code == 0)
                break;
            in += 2;
        }
        else {
            if (inTwos && end - in >= 6) {
                uint64_t const six = uint64_t{fourBytesAt(in)} << 16 | twoBytesAt(in + 4);
                uint64_t const units = (six & UINT64_C(0x0F00000F0000)) >> 4 | (six & UINT64_C(0x003F00003F00)) >> 2 |
                                       (six & UINT64_C(0x00003F00003F));
                if ((six & UINT64_C(0xF0C0C0F0C0C0)) == UINT64_C(0xE08080E08080)) {
                    unsigned int const first = codeOf(static_cast<unsigned int>(units >> 24));
                    unsigned int const second = codeOf(static_cast<unsigned int>(units & 0xFFFF));
                    if (Encoder::IS_SINGLE) {
                        if (first != 0 && second != 0) {
                            putBytes<2>(out, first << 8 | second);
                            in += 6;
                            continue;
                        }
                    }
                    else if (first > 0xFF && second > 0xFF && (first | second) <= 0xFFFF) {
                        putBytes<4>(out, first << 16 | second);
                        in += 6;
                        continue;
                    }
                    inTwos = false;
                }
            }
            if (end - in < 3)
                break;
            unsigned int const four = fourBytesAt(in);
            if ((four & 0xF0C0C000) != 0xE0808000)
                break;
            code = codeOf((four & 0x0F000000) >> 12 | (four & 0x003F0000) >> 10 | (four & 0x00003F00) >> 8);
            if (code == 0)
                break;
            in += 3;
        }
        putCode(out, code);
    }
    inOut = in;
    outOut = out;
}

/** Decodes a short text into UTF-8, up to its zero byte. Returns the bytes written, or NOT_STRAIGHT. */
template <class Decoder>
KX7_INLINE size_t shortToUTF8(Decoder const& decoder, unsigned char const* in, unsigned char* dest, size_t room)
{
    size_t const length = textLengthUpTo(in, LONGEST_DIRECT + 1);
    if (length > LONGEST_DIRECT || meet(in, length, dest, std::min(room, 3 * length)))
        return NOT_STRAIGHT;
    unsigned char const* const end = in + length;
    unsigned char* out = dest;
    unsigned char* const outEnd = endOf(dest, room);
    copyShort(decoder.same(), in, end, out, outEnd);
    if (end - in > ONE_BY_ONE) {
        unsigned short units[LONGEST_DIRECT];
        unsigned short* unitsEnd = units;
        decoder.run(in, end, unitsEnd, units + LONGEST_DIRECT);
        unsigned short const* unit = units;
        kernels().encodeUTF8(unit, unitsEnd, out, outEnd);
        for (; unit != unitsEnd; ++unit)
            if (!writeUTF8(characterAt(unit, unitsEnd), out, outEnd))
                return NOT_STRAIGHT;
    }
    // Others have had the addresses of `in` and `out`, so these are kept in memory.
    unsigned char const* from = in;
    unsigned char* to = out;
    while (from != end) {
        DecodedChar c = decoder.look(from, end);
        if (c.found != Found::CHARACTER) {
            c = decoder.step(from, end);
            if (c.found != Found::CHARACTER || (c.units == 1 && c.codePoint > 0xFFFF))
                return NOT_STRAIGHT;
        }
        if (!writeUTF8(c.codePoint, to, outEnd))
            return NOT_STRAIGHT;
        from += c.consumed;
    }
    return static_cast<size_t>(to - dest);
}

/** shortFromUTF8 behind what it copied: most texts are ASCII, to which this is not to add. */
template <class Encoder>
KX7_NOINLINE size_t restFromUTF8(Encoder const& encoder, unsigned char const* in, unsigned char const* end,
                                 unsigned char const* dest, unsigned char* out, unsigned char* outEnd)
{
    // A 0 unit, which an overlong form becomes, ends the text: it must not be written.
    bool const isZeroFree = encoder.codeOf(0) == 0;
    if constexpr (!Encoder::IS_SINGLE) {
        if (end - in > encoder.mostStraight() && isZeroFree) {
            unsigned short units[LONGEST_DIRECT];
            unsigned short* unitsEnd = units;
            kernels().decodeUTF8(in, end, unitsEnd, units + LONGEST_DIRECT);
            unsigned short const* unit = units;
            encoder.runKernel(unit, unitsEnd, out, outEnd);
            for (; unit != unitsEnd; ++unit)
                if (*unit == 0 || !writeCharacter(encoder, characterAt(unit, unitsEnd), out, outEnd))
                    return NOT_STRAIGHT;
        }
    }
    unsigned char const* from = in;
    unsigned char* to = out;
    for (;;) {
        if (isZeroFree && outEnd - to >= 2 * (end - from))
            encodeStraight(encoder, from, end, to);
        if (from == end)
            return static_cast<size_t>(to - dest);
        unsigned int const codePoint = readUTF8(from);
        if (codePoint == 0 || !writeCharacter(encoder, codePoint, to, outEnd))
            return NOT_STRAIGHT;
    }
}

/** Encodes a short text of UTF-8, up to its zero byte. Returns the bytes written, or NOT_STRAIGHT. */
template <class Encoder>
KX7_INLINE size_t shortFromUTF8(Encoder const& encoder, unsigned char const* in, unsigned char* dest, size_t room)
{
    size_t const length = textLengthUpTo(in, LONGEST_DIRECT + 1);
    if (length > LONGEST_DIRECT || meet(in, length, dest, std::min(room, 4 * length)))
        return NOT_STRAIGHT;
    unsigned char const* const end = in + length;
    unsigned char* out = dest;
    unsigned char* const outEnd = endOf(dest, room);
    copyShort(encoder.same(), in, end, out, outEnd);
    if constexpr (Encoder::IS_SINGLE)
        if (end - in > encoder.mostStraight())
            encoder.runFromUTF8(in, out, outEnd);
    return in == end ? static_cast<size_t>(out - dest) : restFromUTF8(encoder, in, end, dest, out, outEnd);
}

}  // namespace kx7

#endif
