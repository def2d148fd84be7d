// kx7text - the walks over text that all converters share.
//
// A converter class states how one character is read (a decoder's step) and how one is written (an encoder's step).
// Everything else stands here once: room, terminator, source limit, flag, substitutes. What a class does differently is
// a value that its step returns or a member that it hides; no walk asks which class it serves.
#ifndef KX7_CONVERTERS_WALK_H
#define KX7_CONVERTERS_WALK_H

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "kx7/converters/Engine.h"
#include "kx7/converters/Utf16.h"

namespace kx7 {

/** Whether the source limit may end the conversion after a character. */
enum class LimitCheck : unsigned char { CHECK, SKIP };

/** What a step found. */
enum class Found : unsigned char {
    CHARACTER,  ///< a character
    ILLEGAL,    ///< malformed or unmapped; text conversions write a substitute
    STRAY,      ///< the same, but text conversions pass over it without a word
    CUT,        ///< the range ends inside the character; nothing of it is consumed
    END         ///< encoding: the text ends here without a word
};

/** What a decoder finds at the current byte. */
struct DecodedChar {
    unsigned int codePoint;
    unsigned int consumed;  ///< bytes used, at least 1
    unsigned int units;     ///< 1, or 2 for a surrogate pair
    Found found;
    LimitCheck limit;

    static DecodedChar cut() { return {0, 0, 0, Found::CUT, LimitCheck::CHECK}; }
    static DecodedChar illegal(unsigned int consumed, LimitCheck limit)
    {
        return {0, consumed, 0, Found::ILLEGAL, limit};
    }
    static DecodedChar one(unsigned int unit, unsigned int consumed)
    {
        return {unit, consumed, 1, Found::CHARACTER, LimitCheck::CHECK};
    }
};

/** What an encoder finds at the current unit. */
struct EncodedChar {
    unsigned int code;      ///< its low `length` bytes are written, high byte first
    unsigned int length;    ///< bytes
    unsigned int consumed;  ///< units used, at least 1
    Found found;

    static EncodedChar cut() { return {0, 0, 0, Found::CUT}; }
    static EncodedChar end() { return {0, 0, 0, Found::END}; }
    static EncodedChar unmappable(unsigned int consumed) { return {0, 0, consumed, Found::ILLEGAL}; }
};

/** A count that stands for "up to the terminator". */
constexpr unsigned int UNTIL_TERMINATOR = 0xFFFFFFFF;

/** Units looked at in one go: small enough to stay in the first-level cache between two passes. */
constexpr size_t PIECE = 2048;

/** `begin` + `count`, or less where no object can reach so far: rooms and limits of 0xFFFFFFFF are common. */
template <class T>
T* endOf(T* begin, size_t count)
{
    size_t const addressable = UINTPTR_MAX - reinterpret_cast<uintptr_t>(begin);
    return begin + std::min(count, std::min(addressable, size_t{PTRDIFF_MAX}) / sizeof(T));
}

/** Units before the first 0 unit, at most `most`. Reads nothing behind either. */
inline size_t unitLength(unsigned short const* text, size_t most)
{
    size_t n = 0;
    while (n < most && text[n] != 0)
        ++n;
    return n;
}

/** What a decoder has unless it hides it. */
struct DecoderBase {
    /** Length of the terminated text at `text`, at most `most` bytes; reads nothing behind either. */
    static size_t textLength(unsigned char const* text, size_t most)
    {
        return strnlen(reinterpret_cast<char const*>(text), most);
    }
    /** The byte at `text` is no terminator (or the first of one). */
    static bool goesOn(unsigned char const* text) { return *text != 0; }

    /** Converts as long a run as it is sure of, moving `in` and `out`; it may do nothing. */
    void run(unsigned char const*& /*in*/, unsigned char const* /*end*/, unsigned short*& /*out*/,
             unsigned short* /*outEnd*/) const
    {
    }
};

/** What an encoder has unless it hides it. */
struct EncoderBase {
    /** Converts as long a run as it is sure of, moving `in` and `out`; it may do nothing. */
    void run(unsigned short const*& /*in*/, unsigned short const* /*end*/, unsigned char*& /*out*/,
             unsigned char* /*outEnd*/) const
    {
    }

    static void write(unsigned char*& out, EncodedChar const& c)
    {
        for (unsigned int shift = 8 * c.length; shift != 0;) {
            shift -= 8;
            *out++ = static_cast<unsigned char>(c.code >> shift);
        }
    }

    /** Writes the substitute; there is room for at least one byte. False: it does not fit. */
    static bool replace(unsigned char*& out, unsigned char* /*outEnd*/)
    {
        *out++ = '?';
        return true;
    }

    /**
     * Writes the escape of the `consumed` units at `in` that cannot be represented and moves `in` behind what it stands
     * for. False: it does not fit, nothing is written. May move `outEnd`.
     */
    static bool escape(unsigned short const*& in, unsigned short const* /*end*/, unsigned int consumed,
                       unsigned char*& out, unsigned char*& outEnd)
    {
        if (static_cast<size_t>(outEnd - out) < ESCAPE_LENGTH * consumed)
            return false;
        for (; consumed != 0; --consumed)
            out = writeEscape(out, *in++);
        return true;
    }
};

inline unsigned short* appendUTF16(unsigned short* out, DecodedChar const& c)
{
    if (c.units == 2) {
        *out++ = highSurrogateOf(c.codePoint);
        *out++ = lowSurrogateOf(c.codePoint);
    }
    else {
        *out++ = static_cast<unsigned short>(c.codePoint);
    }
    return out;
}

/** Decodes a range up to the first thing that needs a decision. */
template <class Decoder>
Progress decodeRange(Decoder const& decoder, unsigned char const* source, unsigned char const* sourceEnd,
                     unsigned short* dest, unsigned short* destEnd)
{
    unsigned char const* in = source;
    unsigned short* out = dest;
    auto const stopped = [&](Stop stop, unsigned int length = 0) {
        return Progress{static_cast<size_t>(in - source), static_cast<size_t>(out - dest), stop, length};
    };
    for (;;) {
        decoder.run(in, sourceEnd, out, destEnd);
        if (in == sourceEnd)
            return stopped(Stop::SOURCE_USED);
        if (out == destEnd)
            return stopped(Stop::DESTINATION_FULL);
        DecodedChar const c = decoder.step(in, sourceEnd);
        if (c.found == Found::CUT)
            return stopped(Stop::SOURCE_CUT);
        if (c.found != Found::CHARACTER)
            return stopped(Stop::ILLEGAL, c.consumed);
        if (static_cast<size_t>(destEnd - out) < c.units)
            return stopped(Stop::DESTINATION_FULL);
        out = appendUTF16(out, c);
        in += c.consumed;
    }
}

/** Encodes a range up to the first thing that needs a decision. */
template <class Encoder>
Progress encodeRange(Encoder const& encoder, unsigned short const* source, unsigned short const* sourceEnd,
                     unsigned char* dest, unsigned char* destEnd)
{
    unsigned short const* in = source;
    unsigned char* out = dest;
    auto const stopped = [&](Stop stop, unsigned int length = 0) {
        return Progress{static_cast<size_t>(in - source), static_cast<size_t>(out - dest), stop, length};
    };
    for (;;) {
        encoder.run(in, sourceEnd, out, destEnd);
        if (in == sourceEnd)
            return stopped(Stop::SOURCE_USED);
        if (out == destEnd)
            return stopped(Stop::DESTINATION_FULL);
        EncodedChar const c = encoder.step(in, sourceEnd);
        if (c.found == Found::CUT)
            return stopped(Stop::SOURCE_CUT);
        if (c.found == Found::END)
            return stopped(Stop::UNMAPPABLE, 1);
        if (c.found != Found::CHARACTER)
            return stopped(Stop::UNMAPPABLE, c.consumed);
        if (static_cast<size_t>(destEnd - out) < c.length)
            return stopped(Stop::DESTINATION_FULL);
        encoder.write(out, c);
        in += c.consumed;
    }
}

/**
 * Decodes text: the published rules but for the terminator, which the caller writes.
 * @param illegal     may be null; set, not cleared
 * @param sourceLimit bytes; 0 and below: none
 */
template <class Decoder>
TextProgress decodeText(Decoder const& decoder, ByteText const& source, unsigned short* dest, unsigned int room,
                        ILLCHAR_OPTYPE op, bool* illegal, int sourceLimit)
{
    unsigned char const* in = source.begin;
    unsigned char const* const last = source.end ? source.end : endOf(in, SIZE_MAX);
    unsigned char const* const limitEnd = sourceLimit > 0 ? endOf(in, static_cast<size_t>(sourceLimit)) : last;
    unsigned char const* end = in;  // what is known to be text
    unsigned short* out = dest;
    unsigned short* const outEnd = endOf(dest, room);
    bool full = false;

    while (out != outEnd) {
        if (in == end) {
            // Not further than the room reaches or the limit: a caller whose bytes end there needs no terminator.
            size_t const untilLimit = in < limitEnd ? static_cast<size_t>(limitEnd - in) : 1;
            size_t const most =
                std::min({PIECE, static_cast<size_t>(outEnd - out), static_cast<size_t>(last - in), untilLimit});
            end += decoder.textLength(in, most);
            if (in == end)
                break;
        }
        Progress const run = decodeRange(decoder, in, end, out, outEnd);
        in += run.consumed;
        out += run.written;
        if (run.stop == Stop::DESTINATION_FULL) {
            full = true;
            break;
        }
        if (run.stop == Stop::SOURCE_USED) {
            if (sourceLimit > 0 && in >= limitEnd)
                break;
            continue;
        }

        // One character that the piece cuts, or an illegal one. Look at no byte more than it takes to decide.
        unsigned char const* const known = end;
        DecodedChar c = decoder.step(in, end);
        while (c.found == Found::CUT && end != last && decoder.goesOn(end))
            c = decoder.step(in, ++end);
        if (c.found == Found::CUT)
            c = DecodedChar::illegal(1, LimitCheck::CHECK);
        if (c.found == Found::CHARACTER) {
            if (static_cast<size_t>(outEnd - out) < c.units) {
                full = true;
                break;
            }
            out = appendUTF16(out, c);
        }
        else {
            if (illegal)
                *illegal = true;
            if (op == ILLCHAR_STOP)
                break;
            if (c.found != Found::STRAY)
                *out++ = REPLACEMENT_CHAR;
        }
        in += c.consumed;
        if (end != known)
            end = in;  // the bytes fetched for this character may lie behind the limit
        if (sourceLimit > 0 && in >= limitEnd && c.limit == LimitCheck::CHECK)
            break;
    }
    return {static_cast<size_t>(in - source.begin), static_cast<size_t>(out - dest), full || out == outEnd};
}

/**
 * Encodes text: the published rules but for the terminator, which the caller writes.
 * @param illegal may be null; set, not cleared
 */
template <class Encoder>
TextProgress encodeText(Encoder const& encoder, UnitText const& source, unsigned char* dest, unsigned int room,
                        ILLCHAR_OPTYPE op, bool* illegal)
{
    unsigned short const* in = source.begin;
    unsigned short const* const last = source.end ? source.end : endOf(in, SIZE_MAX);
    unsigned short const* end = in;  // what is known to be text
    unsigned char* out = dest;
    unsigned char* outEnd = endOf(dest, room);
    bool full = false;

    while (out < outEnd) {
        if (in == end) {
            size_t const most = std::min({PIECE, static_cast<size_t>(outEnd - out), static_cast<size_t>(last - in)});
            end += unitLength(in, most);
            if (in == end)
                break;
        }
        Progress const run = encodeRange(encoder, in, end, out, outEnd);
        in += run.consumed;
        out += run.written;
        if (run.stop == Stop::DESTINATION_FULL) {
            full = true;
            break;
        }
        if (run.stop == Stop::SOURCE_USED)
            continue;

        // One character that the piece cuts, or one that cannot be represented.
        EncodedChar c = encoder.step(in, end);
        while (c.found == Found::CUT && end != last && *end != 0)
            c = encoder.step(in, ++end);
        if (c.found == Found::CUT)
            c = encoder.cutOff();
        if (c.found == Found::END)
            break;
        if (c.found == Found::CHARACTER) {
            if (static_cast<size_t>(outEnd - out) < c.length) {
                full = true;
                break;
            }
            encoder.write(out, c);
            in += c.consumed;
            continue;
        }
        if (illegal)
            *illegal = true;
        if (op == ILLCHAR_STOP)
            break;
        if (op == ILLCHAR_ESCAPE) {
            full = !encoder.escape(in, end, c.consumed, out, outEnd);
        }
        else {
            full = !encoder.replace(out, outEnd);
            in += c.consumed;
        }
        if (full)
            break;
    }
    return {static_cast<size_t>(in - source.begin), static_cast<size_t>(out - dest), full || out >= outEnd};
}

/** decodeText and the closing 0 unit; `dest` holds `room` + 1 units. */
template <class Decoder>
unsigned int decodeTerminated(Decoder const& decoder, ByteText const& source, unsigned short* dest, unsigned int room,
                              ILLCHAR_OPTYPE op, bool* illegal, int sourceLimit)
{
    size_t const units = decodeText(decoder, source, dest, room, op, illegal, sourceLimit).written;
    dest[units] = 0;
    return static_cast<unsigned int>(units);
}

/** encodeText of zero-terminated units into bytes, and the closing zero byte; `dest` holds `room` + 1 bytes. */
template <class Encoder>
unsigned int encodeTerminated(Encoder const& encoder, unsigned short const* source, void* dest, unsigned int room,
                              ILLCHAR_OPTYPE op, bool* illegal)
{
    auto* const out = static_cast<unsigned char*>(dest);
    size_t const bytes = encodeText(encoder, {source, nullptr}, out, room, op, illegal).written;
    out[bytes] = 0;
    return static_cast<unsigned int>(bytes);
}

}  // namespace kx7

#endif
