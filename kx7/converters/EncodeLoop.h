// kx7text - encoding of ranges and of text, and counting of what it would write (internal).
#ifndef KX7_CONVERTERS_ENCODELOOP_H
#define KX7_CONVERTERS_ENCODELOOP_H

#include <algorithm>
#include <cstdint>

#include "kx7/converters/DecodeLoop.h"

namespace kx7 {

/** What an encoder finds at the current unit. */
struct EncodedChar {
    unsigned int code;      ///< its low `length` bytes are written, high byte first
    unsigned int length;    ///< bytes
    unsigned int consumed;  ///< units of the character, at least 1; TRUNCATED, END: 0
    Found found;

    static EncodedChar truncated() { return {0, 0, 0, Found::TRUNCATED}; }
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

/**
 * Base of the Encoder of a converter class, which adds MOST_BYTES, the most bytes that one unit becomes, and
 *     EncodedChar encodeOne(unsigned short const* p, unsigned short const* end) const;
 * which keeps to [p, end) as Decoder::decodeOne does. Every other member may be hidden.
 */
struct EncoderBase {
    /**
     * Whether the class also has what DirectUtf8.h calls: `identity`, `codeOf`, `mostDirect`, IS_SINGLE (one byte a
     * character) and then `runFromUTF8`, else `runKernel`.
     */
    static constexpr bool IS_DIRECT = false;

    /** Whether the published operation clears the flag, and sets it at what cannot be represented. */
    static constexpr bool REPORTS = true;

    /** Whether getNumBytes counts units: one byte each, mapped or not. */
    static constexpr bool IS_ONE_BYTE_A_UNIT = false;

    /** As codeOf, of a character above U+FFFF. */
    static unsigned int codeOfPair(unsigned int /*codePoint*/) { return 0; }

    /** Whether there is `runFromUTF8`, which converts as much of zero-terminated UTF-8 as it is sure of. */
    static constexpr bool HAS_RUN_FROM_UTF8 = false;

    /** The fast path: converts as much as it is sure of, moving `in` and `out`; it may do nothing. */
    void convertFast(unsigned short const*& /*in*/, unsigned short const* /*end*/, unsigned char*& /*out*/,
                     unsigned char* /*outEnd*/) const
    {
    }

    /** Counts the bytes of as many units as it is sure of, moving `in`; it may do nothing. */
    static size_t countFast(unsigned short const*& /*in*/, unsigned short const* /*end*/) { return 0; }

    /** What a character is that the end of the source truncates. */
    static EncodedChar atEnd() { return EncodedChar::unmappable(1); }

    static void write(unsigned char*& out, EncodedChar const& c)
    {
        for (unsigned int shift = 8 * c.length; shift != 0;) {
            shift -= 8;
            *out++ = static_cast<unsigned char>(c.code >> shift);
        }
    }

    /** Bytes of the smallest character, of the substitute, and of the terminator. */
    static constexpr unsigned int CODE_SIZE = 1;

    /** Writes the substitute; there is capacity for it. */
    static void replace(unsigned char*& out) { *out++ = '?'; }

    /**
     * Writes the escape of the `consumed` units at `in` that cannot be represented and moves `in` beyond what it stands
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

/** A range of code units and the range that its bytes go to. */
struct EncodeRange {
    unsigned short const* source;
    unsigned short const* sourceEnd;
    unsigned char* dest;
    unsigned char* destEnd;
};

/**
 * Encodes a range up to the first thing that needs a decision.
 * @param last no more source follows: a character that the range truncates is not SOURCE_TRUNCATED but what it amounts
 * to
 */
template <class Encoder>
KX7_INLINE Progress encodeRange(Encoder const& encoder, EncodeRange const& range, bool last,
                                Begin begin = Begin::FAST_PATH)
{
    unsigned short const* in = range.source;
    unsigned short const* const end = range.sourceEnd;
    unsigned char* out = range.dest;
    unsigned char* const outEnd = range.destEnd;
    auto const stopped = [&](Stop stop, unsigned int length = 0) {
        return Progress{static_cast<size_t>(in - range.source), static_cast<size_t>(out - range.dest), stop, length};
    };
    for (;;) {
        if (begin == Begin::FAST_PATH)
            encoder.convertFast(in, end, out, outEnd);
        begin = Begin::FAST_PATH;
        if (in == end)
            return stopped(Stop::SOURCE_USED);
        if (out == outEnd)
            return stopped(Stop::DESTINATION_FULL);
        EncodedChar c = encoder.encodeOne(in, end);
        if (c.found == Found::TRUNCATED) {
            if (!last)
                return stopped(Stop::SOURCE_TRUNCATED);
            c = encoder.atEnd();
        }
        if (c.found == Found::END)
            return stopped(Stop::UNMAPPABLE, 1);
        if (c.found != Found::CHARACTER)
            return stopped(Stop::UNMAPPABLE, c.consumed);
        if (static_cast<size_t>(outEnd - out) < c.length)
            return stopped(Stop::DESTINATION_FULL);
        encoder.write(out, c);
        in += c.consumed;
    }
}

/** As illegalRun for characters that an encoder lacks, in well-formed units. */
template <class Encoder>
KX7_INLINE ErrorRun unmappableRun(Encoder const& encoder, unsigned short const* source, unsigned short const* sourceEnd,
                                  size_t most)
{
    unsigned short const* in = source;
    size_t count = 0;
    for (; in != sourceEnd && count != most; ++count) {
        if (encoder.encodeOne(in, sourceEnd).found == Found::CHARACTER)
            break;
        in += isHighSurrogate(*in) && sourceEnd - in > 1 ? 2 : 1;
    }
    return {static_cast<size_t>(in - source), count};
}

/** What an encoder that takes less from the capacity for an escape than it writes may do. */
enum class EscapeCapacity : unsigned char {
    AS_PUBLISHED,  ///< write beyond the capacity
    EXACT          ///< end before the first character that does not fit
};

/** A text to encode, and how. */
struct EncodeTask {
    UnitText source;
    unsigned char* dest;
    unsigned int capacity;  ///< bytes that may be written
    ILLCHAR_OPTYPE op;
    bool* illegal;  ///< may be null; set at what cannot be represented, not cleared
    EscapeCapacity escapeCapacity = EscapeCapacity::AS_PUBLISHED;
    bool last = true;  ///< no more source follows; else a character that the end truncates is left to the caller
};

/** What encodeText did before it went on in encodeLongText. */
struct EncodeFront {
    unsigned short const* in;   ///< converted up to here
    unsigned short const* end;  ///< [in, end) has no terminator
    unsigned char* out;
    bool ended;  ///< the text ends at `end`
};

/** The loop of encodeText, from where that came to. */
template <class Encoder>
KX7_NOINLINE TextProgress encodeLongText(Encoder const& encoder, EncodeTask const& task, EncodeFront const& front)
{
    unsigned short const* in = front.in;
    unsigned short const* const last = task.source.end ? task.source.end : endOf(in, SIZE_MAX);
    unsigned short const* end = front.end;  // what is known to be text
    bool ended = front.ended;               // and is all of it
    Begin begin = in != end ? Begin::AFTER_FAST_PATH : Begin::FAST_PATH;
    unsigned char* out = front.out;
    unsigned char* const capacityEnd = endOf(task.dest, task.capacity);
    unsigned char* outEnd = capacityEnd;
    bool full = false;
    bool truncated = false;

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
        Progress const progress = encodeRange(encoder, {in, end, out, outEnd}, false, begin);
        begin = Begin::FAST_PATH;
        in += progress.consumed;
        out += progress.written;
        if (progress.stop == Stop::DESTINATION_FULL) {
            full = true;
            break;
        }
        if (progress.stop == Stop::SOURCE_USED)
            continue;

        // One character that the piece truncates, or one that cannot be represented.
        EncodedChar c = encoder.encodeOne(in, end);
        while (c.found == Found::TRUNCATED && end != last && *end != 0)
            c = encoder.encodeOne(in, ++end);
        if (c.found == Found::TRUNCATED) {
            truncated = !task.last && end == last;
            if (truncated)
                break;
            c = encoder.atEnd();
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
        if (task.illegal)
            *task.illegal = true;
        if (task.op == ILLCHAR_STOP)
            break;
        if (task.op == ILLCHAR_ESCAPE) {
            full = !encoder.escape(in, end, c.consumed, out, outEnd);
            if (task.escapeCapacity == EscapeCapacity::EXACT)
                outEnd = capacityEnd;
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
    return {static_cast<size_t>(in - task.source.begin), static_cast<size_t>(out - task.dest), full || out >= outEnd,
            truncated};
}

/** Encodes text: the published rules but for the terminator, which the caller writes. */
template <class Encoder>
KX7_INLINE TextProgress encodeText(Encoder const& encoder, EncodeTask const& task)
{
    // As in decodeText.
    EncodeFront front = {task.source.begin, task.source.begin, task.dest, false};
    size_t const atMost = task.source.end ? static_cast<size_t>(task.source.end - task.source.begin) : PIECE + 1;
    if (atMost != 0) {
        unsigned char* const outEnd = endOf(task.dest, task.capacity);
        size_t const most = std::min({size_t{task.capacity}, PIECE, atMost});
        size_t const length = unitLength(front.in, most);
        front.end += length;
        front.ended = length < most || length == atMost;
        encoder.convertFast(front.in, front.end, front.out, outEnd);
        if (front.ended && front.in == front.end)
            return {length, static_cast<size_t>(front.out - task.dest), front.out == outEnd, false};
    }
    return encodeLongText(encoder, EncodeTask(task), front);
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
        bytes += encoder.countFast(in, end);
        if (in == end)
            continue;
        EncodedChar c = encoder.encodeOne(in, end);
        while (c.found == Found::TRUNCATED && end != last && *end != 0)
            c = encoder.encodeOne(in, ++end);
        if (c.found == Found::TRUNCATED || c.found == Found::END)
            break;
        bytes += c.found == Found::CHARACTER ? c.length : encoder.CODE_SIZE;
        in += c.consumed;
    }
    return saturated(bytes);
}

}  // namespace kx7

#endif
