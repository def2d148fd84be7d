// kx7text - the walks over text that all converters share (internal).
//
// A converter class states how one character is read (a decoder's step) and how one is written (an encoder's step).
// Everything else stands here once: room, terminator, source limit, flag, substitutes. What a class does differently is
// a value that its step returns or a member that it hides; no walk asks which class it serves.
#ifndef KX7_CONVERTERS_WALK_H
#define KX7_CONVERTERS_WALK_H

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "kx7/base/Bounds.h"
#include "kx7/base/Utf16.h"
#include "kx7/converters/Engine.h"
#include "kx7/kernels/Kernels.h"
#include "kx7/kernels/ShortText.h"

// A call and its result cost as much as a short text.
#define KX7_INLINE __attribute__((always_inline)) inline
#define KX7_NOINLINE __attribute__((noinline))

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
    /** A pair where `codePoint` needs one; a value beyond U+10FFFF is one unit, kept to 16 bits. */
    static DecodedChar of(unsigned int codePoint, unsigned int consumed)
    {
        bool const supplementary = codePoint > 0xFFFF && codePoint <= LAST_CODE_POINT;
        return {codePoint, consumed, supplementary ? 2U : 1U, Found::CHARACTER, LimitCheck::CHECK};
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

    /** One byte or two, by the table's value for the character at `unit`; 0 is mapped for U+0000 only. */
    static EncodedChar oneOrTwo(unsigned int code, unsigned short unit, unsigned int consumed)
    {
        if (code == 0 && unit != 0)
            return unmappable(consumed);
        return {code, code < 0x100 ? 1U : 2U, consumed, Found::CHARACTER};
    }
};

/** A count that stands for "up to the terminator". */
constexpr unsigned int UNTIL_TERMINATOR = 0xFFFFFFFF;

/** A byte limit that is none. */
constexpr size_t NO_LIMIT = 0;

/** The byte limit that a source limit in codes of `codeSize` bytes stands for, where 0 and below mean none. */
constexpr size_t positiveLimit(int sourceLimit, size_t codeSize = 1)
{
    if (sourceLimit <= 0)
        return NO_LIMIT;
    auto const codes = static_cast<size_t>(sourceLimit);
    return codes <= SIZE_MAX / codeSize ? codes * codeSize : SIZE_MAX;
}

/**
 * Whether what is written, up to `written` bytes and one more, could lie over text of which `read` bytes and one more
 * are still to be read.
 */
inline bool meet(unsigned char const* source, size_t read, unsigned char const* dest, size_t written)
{
    auto const from = reinterpret_cast<uintptr_t>(source);
    auto const to = reinterpret_cast<uintptr_t>(dest);
    return from <= to ? to - from <= read : from - to <= written;
}

/** Units before the first 0 unit, at most `most`. Touches no page that these do not reach. */
inline size_t unitLength(unsigned short const* text, size_t most)
{
    return kernels().unitLength(text, most);
}

/** What a decoder has unless it hides it. */
struct DecoderBase {
    /** Whether there are `same` and `look`, for short texts straight to UTF-8. */
    static constexpr bool IS_STRAIGHT = false;

    /** Length of the terminated text at `text`, at most `most` bytes; reads nothing behind either. */
    static size_t textLength(unsigned char const* text, size_t most)
    {
        return strnlen(reinterpret_cast<char const*>(text), most);
    }
    /** The same where the text may well be short. */
    static size_t firstLength(unsigned char const* text, size_t most)
    {
        return most >= SHORT_TEXT ? textLengthUpTo(text, most) : textLength(text, most);
    }
    /** The byte at `text` is no terminator. */
    static bool goesOn(unsigned char const* text) { return *text != 0; }

    /** Fewest bytes that `units` code units come from, or that are read to see that the next does not fit. */
    static size_t fewestBytes(size_t units) { return units; }

    /** What a character is that the end of the source cuts off. */
    static DecodedChar cutOff(unsigned char const* /*text*/, unsigned char const* /*end*/)
    {
        return DecodedChar::illegal(1, LimitCheck::CHECK);
    }

    /** Converts as long a run as it is sure of, moving `in` and `out`; it may do nothing. */
    void run(unsigned char const*& /*in*/, unsigned char const* /*end*/, unsigned short*& /*out*/,
             unsigned short* /*outEnd*/) const
    {
    }
};

/** What an encoder has unless it hides it. */
struct EncoderBase {
    /** Whether there are `same` and `codeOf`, for short texts straight from UTF-8. */
    static constexpr bool IS_STRAIGHT = false;

    /** As codeOf, of a character above U+FFFF. */
    static unsigned int codeOfPair(unsigned int /*codePoint*/) { return 0; }

    /** Whether there is `runFromUTF8`, which converts as long a run of zero-terminated UTF-8 as it is sure of. */
    static constexpr bool HAS_RUN_FROM_UTF8 = false;

    /** Converts as long a run as it is sure of, moving `in` and `out`; it may do nothing. */
    void run(unsigned short const*& /*in*/, unsigned short const* /*end*/, unsigned char*& /*out*/,
             unsigned char* /*outEnd*/) const
    {
    }

    /** Counts the bytes of as long a run as it is sure of, moving `in`; it may do nothing. */
    static size_t countRun(unsigned short const*& /*in*/, unsigned short const* /*end*/) { return 0; }

    /** What a character is that the end of the source cuts off. */
    static EncodedChar cutOff() { return EncodedChar::unmappable(1); }

    static void write(unsigned char*& out, EncodedChar const& c)
    {
        for (unsigned int shift = 8 * c.length; shift != 0;) {
            shift -= 8;
            *out++ = static_cast<unsigned char>(c.code >> shift);
        }
    }

    /** Bytes of the substitute, and of the terminator. */
    static constexpr unsigned int CODE_SIZE = 1;

    /** Writes the substitute; there is room for it. */
    static void replace(unsigned char*& out) { *out++ = '?'; }

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

/**
 * Decodes a range up to the first thing that needs a decision.
 * @param last    no more source follows: a character that the range cuts off is not SOURCE_CUT but what it amounts to
 * @param hasRun  the decoder's run has just come to `source`
 */
template <class Decoder>
KX7_INLINE Progress decodeRange(Decoder const& decoder, unsigned char const* source, unsigned char const* sourceEnd,
                                unsigned short* dest, unsigned short* destEnd, bool last, bool hasRun = false)
{
    unsigned char const* in = source;
    unsigned short* out = dest;
    auto const stopped = [&](Stop stop, unsigned int length = 0) {
        return Progress{static_cast<size_t>(in - source), static_cast<size_t>(out - dest), stop, length};
    };
    for (;;) {
        if (!hasRun)
            decoder.run(in, sourceEnd, out, destEnd);
        hasRun = false;
        if (in == sourceEnd)
            return stopped(Stop::SOURCE_USED);
        if (out == destEnd)
            return stopped(Stop::DESTINATION_FULL);
        DecodedChar c = decoder.step(in, sourceEnd);
        if (c.found == Found::CUT) {
            if (!last)
                return stopped(Stop::SOURCE_CUT);
            c = decoder.cutOff(in, sourceEnd);
            if (c.found != Found::CHARACTER)
                return stopped(Stop::ILLEGAL, static_cast<unsigned int>(sourceEnd - in));
        }
        if (c.found != Found::CHARACTER)
            return stopped(Stop::ILLEGAL, c.consumed);
        if (static_cast<size_t>(destEnd - out) < c.units)
            return stopped(Stop::DESTINATION_FULL);
        out = appendUTF16(out, c);
        in += c.consumed;
    }
}

/**
 * Encodes a range up to the first thing that needs a decision.
 * @param last    no more source follows: a character that the range cuts off is not SOURCE_CUT but what it amounts to
 * @param hasRun  the encoder's run has just come to `source`
 */
template <class Encoder>
KX7_INLINE Progress encodeRange(Encoder const& encoder, unsigned short const* source, unsigned short const* sourceEnd,
                                unsigned char* dest, unsigned char* destEnd, bool last, bool hasRun = false)
{
    unsigned short const* in = source;
    unsigned char* out = dest;
    auto const stopped = [&](Stop stop, unsigned int length = 0) {
        return Progress{static_cast<size_t>(in - source), static_cast<size_t>(out - dest), stop, length};
    };
    for (;;) {
        if (!hasRun)
            encoder.run(in, sourceEnd, out, destEnd);
        hasRun = false;
        if (in == sourceEnd)
            return stopped(Stop::SOURCE_USED);
        if (out == destEnd)
            return stopped(Stop::DESTINATION_FULL);
        EncodedChar c = encoder.step(in, sourceEnd);
        if (c.found == Found::CUT) {
            if (!last)
                return stopped(Stop::SOURCE_CUT);
            c = encoder.cutOff();
        }
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
 * Counts what a strict decoder refuses, one after another at the front of a range, at most `most`: where there is one
 * malformed sequence there are often more, and a call for each would cost many times what a character does.
 */
template <class Decoder>
KX7_INLINE ErrorRun illegalRun(Decoder const& decoder, unsigned char const* source, unsigned char const* sourceEnd,
                               bool last, size_t most)
{
    unsigned char const* in = source;
    size_t count = 0;
    for (; in != sourceEnd && count != most; ++count) {
        DecodedChar c = decoder.step(in, sourceEnd);
        if (c.found == Found::CUT) {
            if (!last)
                break;
            c = decoder.cutOff(in, sourceEnd);
            c.consumed = static_cast<unsigned int>(sourceEnd - in);
        }
        if (c.found == Found::CHARACTER)
            break;
        in += c.consumed;
    }
    return {static_cast<size_t>(in - source), count};
}

/** The same for characters that an encoder lacks, in well-formed units. */
template <class Encoder>
KX7_INLINE ErrorRun unmappableRun(Encoder const& encoder, unsigned short const* source, unsigned short const* sourceEnd,
                                  size_t most)
{
    unsigned short const* in = source;
    size_t count = 0;
    for (; in != sourceEnd && count != most; ++count) {
        if (encoder.step(in, sourceEnd).found == Found::CHARACTER)
            break;
        in += isHighSurrogate(*in) && sourceEnd - in > 1 ? 2 : 1;
    }
    return {static_cast<size_t>(in - source), count};
}

/** What decodeText did before it went on in decodeTextOn. */
struct DecodeFront {
    unsigned char const* in;   ///< converted up to here
    unsigned char const* end;  ///< known to be text up to here
    unsigned short* out;
    bool ended;  ///< the terminator stands at `end`
};

/** The walk of decodeText, from where that came to. */
template <class Decoder>
KX7_NOINLINE TextProgress decodeTextOn(Decoder const& decoder, ByteText const& source, DecodeFront const& front,
                                       unsigned short* dest, unsigned short* outEnd, ILLCHAR_OPTYPE op, bool* illegal,
                                       size_t byteLimit, size_t spare)
{
    unsigned char const* in = front.in;
    unsigned char const* const last = source.end ? source.end : endOf(in, SIZE_MAX);
    bool const limited = byteLimit != NO_LIMIT;
    unsigned char const* const limitEnd = limited ? endOf(in, byteLimit) : last;
    unsigned char const* end = front.end;  // what is known to be text
    bool ended = front.ended;              // and is all of it
    bool hasRun = in != end;
    unsigned short* out = front.out;
    bool full = false;

    while (out != outEnd) {
        if (in == end) {
            if (ended)
                break;
            full = static_cast<size_t>(outEnd - out) <= spare;
            if (full)
                break;
            // Not further than the room reaches or the limit: a caller whose bytes end there needs no terminator.
            size_t const untilLimit = in < limitEnd ? static_cast<size_t>(limitEnd - in) : 1;
            size_t const most = std::min({PIECE, decoder.fewestBytes(static_cast<size_t>(outEnd - out)),
                                          static_cast<size_t>(last - in), untilLimit});
            size_t const length = decoder.textLength(in, most);
            if (length == 0)
                break;
            end += length;
            ended = length < most;
        }
        Progress const run = decodeRange(decoder, in, end, out, outEnd, false, hasRun);
        hasRun = false;
        in += run.consumed;
        out += run.written;
        if (run.stop == Stop::DESTINATION_FULL) {
            full = true;
            break;
        }
        if (run.stop == Stop::SOURCE_USED) {
            if (limited && in >= limitEnd)
                break;
            continue;
        }

        // One character that the piece cuts, or an illegal one. Look at no byte more than it takes to decide.
        unsigned char const* const known = end;
        DecodedChar c = decoder.step(in, end);
        while (c.found == Found::CUT && end != last && decoder.goesOn(end))
            c = decoder.step(in, ++end);
        if (c.found == Found::CUT)
            c = decoder.cutOff(in, end);
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
        if (limited && in >= limitEnd && c.limit == LimitCheck::CHECK)
            break;
    }
    return {static_cast<size_t>(in - source.begin), static_cast<size_t>(out - dest), full || out == outEnd, false};
}

/**
 * Decodes text: the published rules but for the terminator, which the caller writes.
 * @param illegal   may be null; set, not cleared
 * @param byteLimit bytes to consume before the conversion ends behind a character, or NO_LIMIT
 * @param spare     it may end as if the room were used up when no more than this is left of it
 */
template <class Decoder>
KX7_INLINE TextProgress decodeText(Decoder const& decoder, ByteText const& source, unsigned short* dest,
                                   unsigned int room, ILLCHAR_OPTYPE op, bool* illegal, size_t byteLimit,
                                   size_t spare = 0)
{
    // Most texts are short and one run: the rest, which has much to remember, is a function of its own.
    DecodeFront front = {source.begin, source.begin, dest, false};
    unsigned short* const outEnd = endOf(dest, room);
    if (!source.end && byteLimit == NO_LIMIT) {
        size_t const most = decoder.fewestBytes(std::min(size_t{room}, PIECE));
        size_t const length = decoder.firstLength(front.in, most);
        front.end += length;
        front.ended = length < most;
        decoder.run(front.in, front.end, front.out, outEnd);
        if (front.ended && front.in == front.end)
            return {length, static_cast<size_t>(front.out - dest), front.out == outEnd, false};
    }
    return decodeTextOn(decoder, source, front, dest, outEnd, op, illegal, byteLimit, spare);
}

/** What an encoder that takes less from the room for an escape than it writes may do. */
enum class EscapeRoom : unsigned char {
    AS_PUBLISHED,  ///< write behind the room
    EXACT          ///< end before the first character that does not fit
};

/** How encodeText treats the ends of room and source. */
struct EncodeEnds {
    EscapeRoom escapeRoom;
    bool last;  ///< no more source follows; else a character that the end cuts off is left to the caller
};

/** What encodeText did before it went on in encodeTextOn. */
struct EncodeFront {
    unsigned short const* in;   ///< converted up to here
    unsigned short const* end;  ///< known to be text up to here
    unsigned char* out;
    bool ended;  ///< the terminator stands at `end`
};

/** The walk of encodeText, from where that came to. */
template <class Encoder>
KX7_NOINLINE TextProgress encodeTextOn(Encoder const& encoder, UnitText const& source, EncodeFront const& front,
                                       unsigned char* dest, unsigned char* const roomEnd, ILLCHAR_OPTYPE op,
                                       bool* illegal, EncodeEnds ends)
{
    unsigned short const* in = front.in;
    unsigned short const* const last = source.end ? source.end : endOf(in, SIZE_MAX);
    unsigned short const* end = front.end;  // what is known to be text
    bool ended = front.ended;               // and is all of it
    bool hasRun = in != end;
    unsigned char* out = front.out;
    unsigned char* outEnd = roomEnd;
    bool full = false;
    bool cut = false;

    while (out < outEnd) {
        if (in == end) {
            if (ended)
                break;
            size_t const most = std::min({PIECE, static_cast<size_t>(outEnd - out), static_cast<size_t>(last - in)});
            size_t const length = unitLength(in, most);
            if (length == 0)
                break;
            end += length;
            ended = length < most;
        }
        Progress const run = encodeRange(encoder, in, end, out, outEnd, false, hasRun);
        hasRun = false;
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
        if (c.found == Found::CUT) {
            cut = !ends.last && end == last;
            if (cut)
                break;
            c = encoder.cutOff();
        }
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
            if (ends.escapeRoom == EscapeRoom::EXACT)
                outEnd = roomEnd;
        }
        else {
            full = static_cast<size_t>(outEnd - out) < encoder.CODE_SIZE;
            if (full)
                break;
            encoder.replace(out);
            in += c.consumed;
        }
        if (full)
            break;
    }
    return {static_cast<size_t>(in - source.begin), static_cast<size_t>(out - dest), full || out >= outEnd, cut};
}

/**
 * Encodes text: the published rules but for the terminator, which the caller writes.
 * @param illegal may be null; set, not cleared
 */
template <class Encoder>
KX7_INLINE TextProgress encodeText(Encoder const& encoder, UnitText const& source, unsigned char* dest,
                                   unsigned int room, ILLCHAR_OPTYPE op, bool* illegal,
                                   EncodeEnds ends = {EscapeRoom::AS_PUBLISHED, true})
{
    // As in decodeText.
    EncodeFront front = {source.begin, source.begin, dest, false};
    unsigned char* const outEnd = endOf(dest, room);
    size_t const atMost = source.end ? static_cast<size_t>(source.end - source.begin) : PIECE + 1;
    if (atMost != 0) {
        size_t const most = std::min({size_t{room}, PIECE, atMost});
        size_t const length = unitLength(front.in, most);
        front.end += length;
        front.ended = length < most || length == atMost;
        encoder.run(front.in, front.end, front.out, outEnd);
        if (front.ended && front.in == front.end)
            return {length, static_cast<size_t>(front.out - dest), front.out == outEnd, false};
    }
    return encodeTextOn(encoder, source, front, dest, outEnd, op, illegal, ends);
}

/** Bytes of text up to its zero byte, at most `byteCount` unless that is UNTIL_TERMINATOR. */
inline size_t terminatedLength(void const* source, unsigned int byteCount)
{
    auto const* const text = static_cast<char const*>(source);
    return byteCount == UNTIL_TERMINATOR ? strlen(text) : strnlen(text, reachable(text, byteCount));
}

inline ByteText terminatedText(void const* source)
{
    return {static_cast<unsigned char const*>(source), nullptr};
}

/** decodeText and the closing 0 unit; `dest` holds `room` + 1 units. */
template <class Decoder>
unsigned int decodeTerminated(Decoder const& decoder, ByteText const& source, unsigned short* dest, unsigned int room,
                              ILLCHAR_OPTYPE op, bool* illegal, size_t byteLimit)
{
    size_t const units = decodeText(decoder, source, dest, room, op, illegal, byteLimit).written;
    dest[units] = 0;
    return static_cast<unsigned int>(units);
}

/** encodeText of zero-terminated units and the terminator; `dest` holds `room` bytes and that. */
template <class Encoder>
unsigned int encodeTerminated(Encoder const& encoder, unsigned short const* source, void* dest, unsigned int room,
                              ILLCHAR_OPTYPE op, bool* illegal)
{
    auto* const out = static_cast<unsigned char*>(dest);
    size_t const bytes = encodeText(encoder, {source, nullptr}, out, room, op, illegal).written;
    memset(out + bytes, 0, encoder.CODE_SIZE);
    return saturated(bytes);  // escapes may take it beyond the room
}

/** The published toUTF16 of the classes that report and to which a source limit of 0 or below is none. */
template <class Decoder>
unsigned int decodePublished(Decoder const& decoder, ByteText const& source, unsigned short* dest, unsigned int room,
                             ILLCHAR_OPTYPE op, bool* illegal, int sourceLimit)
{
    if (illegal)
        *illegal = false;
    return decodeTerminated(decoder, source, dest, room, op, illegal, positiveLimit(sourceLimit));
}

/** The published fromUTF16 of the classes that report. */
template <class Encoder>
unsigned int encodePublished(Encoder const& encoder, unsigned short const* source, void* dest, unsigned int room,
                             ILLCHAR_OPTYPE op, bool* illegal)
{
    if (illegal)
        *illegal = false;
    return encodeTerminated(encoder, source, dest, room, op, illegal);
}

/**
 * The published getNumBytes: what encoding with ILLCHAR_REPLACE writes. Kept on purpose: a high surrogate at the end
 * adds nothing, although encoding writes a substitute for it.
 * @return saturated
 */
template <class Encoder>
unsigned int countBytes(Encoder const& encoder, unsigned short const* source, unsigned int unitCount)
{
    unsigned short const* in = source;
    unsigned short const* const last = endOf(in, unitCount == UNTIL_TERMINATOR ? SIZE_MAX : unitCount);
    unsigned short const* end = in;  // what is known to be text
    uint64_t bytes = 0;
    for (;;) {
        if (in == end) {
            end += unitLength(in, std::min(PIECE, static_cast<size_t>(last - in)));
            if (in == end)
                break;
        }
        bytes += encoder.countRun(in, end);
        if (in == end)
            continue;
        EncodedChar c = encoder.step(in, end);
        while (c.found == Found::CUT && end != last && *end != 0)
            c = encoder.step(in, ++end);
        if (c.found == Found::CUT || c.found == Found::END)
            break;
        bytes += c.found == Found::CHARACTER ? c.length : encoder.CODE_SIZE;
        in += c.consumed;
    }
    return saturated(bytes);
}

}  // namespace kx7

#endif
