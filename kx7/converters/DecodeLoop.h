// kx7text - decoding of ranges and of text (internal).
#ifndef KX7_CONVERTERS_DECODELOOP_H
#define KX7_CONVERTERS_DECODELOOP_H

#include <algorithm>
#include <cstring>

#include "kx7/converters/Loop.h"
#include "kx7/kernels/ShortText.h"

namespace kx7 {

/** Whether the source limit may end the conversion after a character. */
enum class LimitCheck : unsigned char { CHECK, SKIP };

/** What a decoder finds at the current byte. */
struct DecodedChar {
    unsigned int codePoint;
    unsigned int consumed;  ///< bytes of the character, at least 1; TRUNCATED: 0
    unsigned int units;     ///< CHARACTER: 1, or 2 for a surrogate pair; else 0
    Found found;
    LimitCheck limit;

    static DecodedChar truncated() { return {0, 0, 0, Found::TRUNCATED, LimitCheck::CHECK}; }
    static DecodedChar illegal(unsigned int consumed, LimitCheck limit)
    {
        return {0, consumed, 0, Found::ILLEGAL, limit};
    }
    static DecodedChar one(unsigned int unit, unsigned int consumed)
    {
        return {unit, consumed, 1, Found::CHARACTER, LimitCheck::CHECK};
    }
    /** A surrogate pair where `codePoint` needs one; a value beyond U+10FFFF is one unit, kept to 16 bits. */
    static DecodedChar of(unsigned int codePoint, unsigned int consumed)
    {
        bool const supplementary = codePoint > 0xFFFF && codePoint <= LAST_CODE_POINT;
        return {codePoint, consumed, supplementary ? 2U : 1U, Found::CHARACTER, LimitCheck::CHECK};
    }
};

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

/** What a published source limit means. */
struct SourceLimit {
    bool convertsNothing;
    size_t bytes;  ///< or NO_LIMIT
};

/**
 * Base of the Decoder of a converter class, which adds
 *     DecodedChar decodeOne(unsigned char const* p, unsigned char const* end) const;
 * It decodes the character at `p` (`p` != `end`) and reads only [p, end). No character of several codes contains a zero
 * code, so it reads nothing after one. TRUNCATED: more bytes are needed to decide. Every other member may be hidden.
 */
struct DecoderBase {
    /** Whether the class also has `identity` and `look` (see PairDecoder), which DirectUtf8.h calls. */
    static constexpr bool IS_DIRECT = false;

    /** Whether the published operation sets the flag at what is illegal; all clear it. */
    static constexpr bool REPORTS = true;

    /** Whether the published operation obeys ILLCHAR_STOP. */
    static constexpr bool STOPS = true;

    /** Whether a surrogate pair that finds capacity for one unit only is replaced. */
    static constexpr bool REPLACES_HALF_PAIR = false;

    /** What the published operation takes a source limit for: 0 and below mean none, the others count bytes. */
    static SourceLimit limitOf(int sourceLimit) { return {false, positiveLimit(sourceLimit)}; }

    /** Length of the terminated text at `text`, at most `most` bytes; reads nothing after either. */
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

    /** What a character is that the end of the source truncates. */
    static DecodedChar atEnd(unsigned char const* /*text*/, unsigned char const* /*end*/)
    {
        return DecodedChar::illegal(1, LimitCheck::CHECK);
    }

    /** The fast path: converts as much as it is sure of, moving `in` and `out`; it may do nothing. */
    void convertFast(unsigned char const*& /*in*/, unsigned char const* /*end*/, unsigned short*& /*out*/,
                     unsigned short* /*outEnd*/) const
    {
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

/** A range of bytes and the range that its code units go to. */
struct DecodeRange {
    unsigned char const* source;
    unsigned char const* sourceEnd;
    unsigned short* dest;
    unsigned short* destEnd;
};

/** Whether a loop begins with the fast path or has just been through it. */
enum class Begin : unsigned char { FAST_PATH, AFTER_FAST_PATH };

/**
 * Decodes a range up to the first thing that needs a decision.
 * @param last no more source follows: a character that the range truncates is not SOURCE_TRUNCATED but what it amounts
 * to
 */
template <class Decoder>
KX7_INLINE Progress decodeRange(Decoder const& decoder, DecodeRange const& range, bool last,
                                Begin begin = Begin::FAST_PATH)
{
    unsigned char const* in = range.source;
    unsigned char const* const end = range.sourceEnd;
    unsigned short* out = range.dest;
    unsigned short* const outEnd = range.destEnd;
    auto const stopped = [&](Stop stop, unsigned int length = 0) {
        return Progress{static_cast<size_t>(in - range.source), static_cast<size_t>(out - range.dest), stop, length};
    };
    for (;;) {
        if (begin == Begin::FAST_PATH)
            decoder.convertFast(in, end, out, outEnd);
        begin = Begin::FAST_PATH;
        if (in == end)
            return stopped(Stop::SOURCE_USED);
        if (out == outEnd)
            return stopped(Stop::DESTINATION_FULL);
        DecodedChar c = decoder.decodeOne(in, end);
        if (c.found == Found::TRUNCATED) {
            if (!last)
                return stopped(Stop::SOURCE_TRUNCATED);
            c = decoder.atEnd(in, end);
            if (c.found != Found::CHARACTER)
                return stopped(Stop::ILLEGAL, static_cast<unsigned int>(end - in));
        }
        if (c.found != Found::CHARACTER)
            return stopped(Stop::ILLEGAL, c.consumed);
        if (static_cast<size_t>(outEnd - out) < c.units)
            return stopped(Stop::DESTINATION_FULL);
        out = appendUTF16(out, c);
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
        DecodedChar c = decoder.decodeOne(in, sourceEnd);
        if (c.found == Found::TRUNCATED) {
            if (!last)
                break;
            c = decoder.atEnd(in, sourceEnd);
            c.consumed = static_cast<unsigned int>(sourceEnd - in);
        }
        if (c.found == Found::CHARACTER)
            break;
        in += c.consumed;
    }
    return {static_cast<size_t>(in - source), count};
}

/** A text to decode, and how. */
struct DecodeTask {
    ByteText source;
    unsigned short* dest;
    unsigned int capacity;  ///< units that may be written
    ILLCHAR_OPTYPE op;
    bool* illegal;     ///< may be null; set at what is illegal, not cleared
    size_t byteLimit;  ///< bytes to consume before the conversion ends after a character, or NO_LIMIT
    size_t unused;     ///< units: it may end as if the capacity were used up when no more than this is left of it
};

/** What decodeText did before it went on in decodeLongText. */
struct DecodeFront {
    unsigned char const* in;   ///< converted up to here
    unsigned char const* end;  ///< [in, end) has no terminator
    unsigned short* out;
    bool ended;  ///< the text ends at `end`
};

/** The loop of decodeText, from where that came to. */
template <class Decoder>
KX7_NOINLINE TextProgress decodeLongText(Decoder const& decoder, DecodeTask const& task, DecodeFront const& front)
{
    unsigned char const* in = front.in;
    unsigned char const* const last = task.source.end ? task.source.end : endOf(in, SIZE_MAX);
    bool const limited = task.byteLimit != NO_LIMIT;
    unsigned char const* const limitEnd = limited ? endOf(in, task.byteLimit) : last;
    unsigned char const* end = front.end;  // what is known to be text
    bool ended = front.ended;              // and is all of it
    Begin begin = in != end ? Begin::AFTER_FAST_PATH : Begin::FAST_PATH;
    unsigned short* out = front.out;
    unsigned short* const outEnd = endOf(task.dest, task.capacity);
    bool full = false;

    while (out != outEnd) {
        if (in == end) {
            if (ended)
                break;
            full = static_cast<size_t>(outEnd - out) <= task.unused;
            if (full)
                break;
            // Not further than the capacity reaches or the limit: a caller whose bytes end there needs no terminator.
            size_t const untilLimit = in < limitEnd ? static_cast<size_t>(limitEnd - in) : 1;
            size_t const most = std::min({PIECE, decoder.fewestBytes(static_cast<size_t>(outEnd - out)),
                                          static_cast<size_t>(last - in), untilLimit});
            size_t const length = decoder.textLength(in, most);
            if (length == 0)
                break;
            end += length;
            ended = length < most;
        }
        Progress const progress = decodeRange(decoder, {in, end, out, outEnd}, false, begin);
        begin = Begin::FAST_PATH;
        in += progress.consumed;
        out += progress.written;
        if (progress.stop == Stop::DESTINATION_FULL) {
            full = true;
            break;
        }
        if (progress.stop == Stop::SOURCE_USED) {
            if (limited && in >= limitEnd)
                break;
            continue;
        }

        // One character that the piece truncates, or an illegal one. Look at no byte more than it takes to decide.
        unsigned char const* const known = end;
        DecodedChar c = decoder.decodeOne(in, end);
        while (c.found == Found::TRUNCATED && end != last && decoder.goesOn(end))
            c = decoder.decodeOne(in, ++end);
        if (c.found == Found::TRUNCATED)
            c = decoder.atEnd(in, end);
        if (c.found == Found::CHARACTER) {
            if (static_cast<size_t>(outEnd - out) < c.units) {
                full = true;
                break;
            }
            out = appendUTF16(out, c);
        }
        else {
            if (task.illegal)
                *task.illegal = true;
            if (task.op == ILLCHAR_STOP)
                break;
            if (c.found != Found::STRAY)
                *out++ = REPLACEMENT_CHAR;
        }
        in += c.consumed;
        if (end != known)
            end = in;  // the bytes fetched for this character may lie after the limit
        if (limited && in >= limitEnd && c.limit == LimitCheck::CHECK)
            break;
    }
    return {static_cast<size_t>(in - task.source.begin), static_cast<size_t>(out - task.dest), full || out == outEnd,
            false};
}

/** Decodes text: the published rules but for the terminator, which the caller writes. */
template <class Decoder>
KX7_INLINE TextProgress decodeText(Decoder const& decoder, DecodeTask const& task)
{
    // Most texts are short and plain: the rest, which has much to remember, is a function of its own.
    DecodeFront front = {task.source.begin, task.source.begin, task.dest, false};
    if (!task.source.end && task.byteLimit == NO_LIMIT) {
        unsigned short* const outEnd = endOf(task.dest, task.capacity);
        size_t const most = decoder.fewestBytes(std::min(size_t{task.capacity}, PIECE));
        size_t const length = decoder.firstLength(front.in, most);
        front.end += length;
        front.ended = length < most;
        decoder.convertFast(front.in, front.end, front.out, outEnd);
        if (front.ended && front.in == front.end)
            return {length, static_cast<size_t>(front.out - task.dest), front.out == outEnd, false};
    }
    // A copy: short texts then keep theirs in registers.
    return decodeLongText(decoder, DecodeTask(task), front);
}

}  // namespace kx7

#endif
