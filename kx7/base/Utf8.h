// kx7text - UTF-8 of one character: reading it by the strict or by the lenient rules, and writing it (internal).
#ifndef KX7_BASE_UTF8_H
#define KX7_BASE_UTF8_H

#include <cstddef>

#include "kx7/base/Utf16.h"

namespace kx7 {

/** What may be read. */
enum class Utf8Rules {
    /** RFC 3629. An illegal sequence is as long as its maximal subpart (The Unicode Standard, 3.9). */
    STRICT,
    /**
     * Only the structure is checked: overlong forms, encoded surrogates and values above U+10FFFF pass. 0xF8 to 0xFF
     * count as leads of four, of which four bits count: kept on purpose.
     */
    LENIENT
};

/** Length of the sequence that a byte begins, by its high four bits; 0: it cannot begin one. */
constexpr unsigned int UTF8_LENGTHS[16] = {1, 1, 1, 1, 1, 1, 1, 1, 0, 0, 0, 0, 2, 2, 3, 4};

/**
 * Reads the character at `p`, which is before `end`. Returns what `Results` has for what is found:
 *   character (code point, bytes)
 *   illegal (bytes)    malformed: the bytes are one sequence
 *   stray()            by the lenient rules: the byte begins none
 *   truncated()        the range ends inside the character
 */
template <Utf8Rules RULES, class Results>
__attribute__((always_inline)) inline auto readUtf8(unsigned char const* p, unsigned char const* end)
{
    unsigned int const lead = p[0];
    if (lead < 0x80)
        return Results::character(lead, 1);
    unsigned int const length = UTF8_LENGTHS[lead >> 4];
    unsigned int low = 0x80;
    unsigned int high = 0xBF;
    if constexpr (RULES == Utf8Rules::STRICT) {
        if (lead < 0xC2 || lead > 0xF4)
            return Results::illegal(1);
        // The second byte is narrower where a wider one would make an overlong form, a surrogate or too large a value.
        switch (lead) {
            case 0xE0: low = 0xA0; break;
            case 0xED: high = 0x9F; break;
            case 0xF0: low = 0x90; break;
            case 0xF4: high = 0x8F; break;
            default: break;
        }
    }
    else if (length == 0) {
        return Results::stray();
    }
    unsigned int value = lead & (length == 2 ? 0x1FU : 0x0FU);
    for (unsigned int i = 1; i < length; ++i) {
        if (p + i == end)
            return Results::truncated();
        if (p[i] < low || p[i] > high)
            return Results::illegal(RULES == Utf8Rules::STRICT ? i : 1);
        value = value << 6 | (p[i] & 0x3FU);
        low = 0x80;
        high = 0xBF;
    }
    return Results::character(value, length);
}

/**
 * Reads a character of text that ends with a zero byte, and so checks no end of a range; moves `in` after it. Returns
 * 0, with `in` anywhere, for U+0000 and for what RFC 3629 forbids. One exception: overlong forms of three bytes are
 * accepted, as the lenient rules decode them to the same character.
 */
__attribute__((always_inline)) inline unsigned int readTerminatedUtf8(unsigned char const*& in)
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

/** The bytes of a character as a number, the first one highest. */
struct Utf8Code {
    unsigned int code;
    unsigned int length;
};

/** What a code point up to U+10FFFF is written as, whatever it is. */
constexpr Utf8Code utf8CodeOf(unsigned int c)
{
    if (c < 0x80)
        return {c, 1};
    if (c < 0x800)
        return {0xC080 | (c & 0x7C0) << 2 | (c & 0x3F), 2};
    if (c <= 0xFFFF)
        return {0xE08080 | (c & 0xF000) << 4 | (c & 0xFC0) << 2 | (c & 0x3F), 3};
    return {0xF0808080 | (c & 0x1C0000) << 6 | (c & 0x3F000) << 4 | (c & 0xFC0) << 2 | (c & 0x3F), 4};
}

/** Writes a character other than U+0000, moving `out`. False: it does not fit, or is none. */
__attribute__((always_inline)) inline bool writeUtf8(unsigned int codePoint, unsigned char*& out,
                                                     unsigned char const* outEnd)
{
    auto const continuation = [codePoint](unsigned int shift) {
        return static_cast<unsigned char>(0x80 | (codePoint >> shift & 0x3F));
    };
    std::ptrdiff_t const capacity = outEnd - out;
    if (codePoint < 0x80) {
        if (capacity < 1 || codePoint == 0)
            return false;
        out[0] = static_cast<unsigned char>(codePoint);
        out += 1;
    }
    else if (codePoint < 0x800) {
        if (capacity < 2)
            return false;
        out[0] = static_cast<unsigned char>(0xC0 | codePoint >> 6);
        out[1] = continuation(0);
        out += 2;
    }
    else if (codePoint <= 0xFFFF) {
        if (capacity < 3 || isSurrogate(codePoint))
            return false;
        out[0] = static_cast<unsigned char>(0xE0 | codePoint >> 12);
        out[1] = continuation(6);
        out[2] = continuation(0);
        out += 3;
    }
    else {
        if (capacity < 4 || codePoint > LAST_CODE_POINT)
            return false;
        out[0] = static_cast<unsigned char>(0xF0 | codePoint >> 18);
        out[1] = continuation(12);
        out[2] = continuation(6);
        out[3] = continuation(0);
        out += 4;
    }
    return true;
}

}  // namespace kx7

#endif
