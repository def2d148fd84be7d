// kx7text - text of one converter to another through UTF-16, in pieces.
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

#include "kx7/converters/Engine.h"
#include "kx7/converters/KX7CharSetConverterUTF8.h"
#include "kx7/converters/Loop.h"
#include "kx7/converters/Pump.h"
#include "kx7/kernels/Page.h"

namespace kx7 {

extern template struct EngineOf<KX7CharSetConverterUTF8>;

namespace {

/** What unescape() leaves. */
struct Unescaped {
    size_t units;    ///< units now at the front, the pending ones included
    size_t pending;  ///< of these, the last ones, which may be the beginning of an escape
};

/** The unit that the escape at `text` names, or -1: "U+" and four upper-case digits. `length` units can be read. */
int unitOfEscape(unsigned short const* text, size_t length)
{
    if (length < ESCAPE_LENGTH || text[0] != 'U' || text[1] != '+')
        return -1;
    int value = 0;
    for (size_t i = 2; i < ESCAPE_LENGTH; ++i) {
        int const digit = hexValue(text[i]);
        if (digit < 0)
            return -1;
        value = value * 16 + digit;
    }
    return value;
}

/** Units before the first "U", at most `length`. */
size_t firstU(unsigned short const* text, size_t length)
{
    constexpr size_t BLOCK = 64;
    size_t n = 0;
    for (; length - n >= BLOCK; n += BLOCK) {
        unsigned short found = 0;
        for (size_t i = 0; i < BLOCK; ++i)
            found = static_cast<unsigned short>(found | (text[n + i] == 'U'));
        if (found != 0)
            break;
    }
    while (n != length && text[n] != 'U')
        ++n;
    return n;
}

/** Replaces escapes by the units they name, in place. With `more` the last five units may go on after them. */
Unescaped unescape(unsigned short* text, size_t length, bool more)
{
    size_t in = 0;
    size_t out = 0;
    for (;;) {
        size_t const plain = firstU(text + in, length - in);
        if (in != out)
            std::copy(text + in, text + in + plain, text + out);
        in += plain;
        out += plain;
        if (in == length || (more && length - in < ESCAPE_LENGTH))
            break;
        int const unit = unitOfEscape(text + in, length - in);
        text[out++] = unit < 0 ? text[in] : static_cast<unsigned short>(unit);
        in += unit < 0 ? 1 : ESCAPE_LENGTH;
    }
    size_t const pending = length - in;
    std::copy(text + in, text + length, text + out);
    return {out + pending, pending};
}

/** One pass through a buffer for the whole text, for converters that know no pieces. */
unsigned int convertWhole(KX7CharSetConverter& from, char const* source, KX7CharSetConverter& to, void* dest,
                          unsigned int capacity, Transit transit)
{
    size_t const most = strlen(source);
    // Some compilers throw, even here, for an array larger than any object.
    bool const isObject = most < PTRDIFF_MAX / sizeof(unsigned short) - 1;
    std::unique_ptr<unsigned short[]> const text(isObject ? new (std::nothrow) unsigned short[most + 1] : nullptr);
    if (!text)
        return 0;
    size_t units = from.toUTF16(text.get(), source, saturated(most), ILLCHAR_REPLACE, nullptr, -1);
    if (units == 0)
        return 0;
    if (transit.unescape) {
        units = unescape(text.get(), units, false).units;
        text[units] = 0;
    }
    return to.fromUTF16(dest, text.get(), capacity, transit.op, nullptr);
}

/** A conversion between two engines: what it reads, and where it writes. */
struct Passage {
    KX7CharSetConverter& from;
    Engine const& fromEngine;
    KX7CharSetConverter& to;
    Engine const& toEngine;
    Transit transit;
    unsigned char const* source;
    size_t codeSize;   ///< bytes of the terminator of the source
    size_t mostUnits;  ///< units after which the source ends where it has no terminator
    unsigned char* dest;
    size_t capacity;  ///< bytes, the terminator not counted
};

/**
 * The text of a passage as the source of a pump; `SIZE` units are between the two converters. Substitutes are written
 * by these, so that no error is left to decide about.
 */
template <size_t SIZE>
class Pieces {
public:
    explicit Pieces(Passage const& passage)
        : m_passage(passage), m_in(passage.source), m_unitsLeft(passage.mostUnits), m_count(0), m_held(0), m_more(true),
          m_isEmpty(true)
    {
    }

    /** Some of the source may be left after this piece. */
    bool more() const { return m_more; }

    /** Nothing has been converted. */
    bool isEmpty() const { return m_isEmpty; }

    /** Decodes a piece after what the sink takes without UTF-16. False: that was all, or the text converts to nothing.
     */
    template <class Sink>
    KX7_INLINE bool read(Sink& sink)
    {
        if (m_held == 0 && !sink.takeDirectly(*this))
            return false;
        size_t const want = std::min(SIZE - m_held, m_unitsLeft);
        TextProgress const decoded = m_passage.fromEngine.decodeText(m_passage.from, {m_in, nullptr}, m_piece + m_held,
                                                                     static_cast<unsigned int>(want));
        m_in += decoded.consumed;
        m_unitsLeft -= decoded.written;
        m_more = decoded.full && decoded.written != 0 && m_unitsLeft != 0;
        m_count = m_held + decoded.written;
        m_isEmpty = m_isEmpty && m_count == 0;
        return !m_isEmpty;
    }

    Stop stop() const { return m_more ? Stop::DESTINATION_FULL : Stop::SOURCE_USED; }

    template <class Sink>
    static bool passError(Sink const& /*sink*/)
    {
        return false;
    }
    static bool carry() { return false; }

    /** Converts without UTF-16 as far as the target's kernel from UTF-8 comes. False: that was all. */
    KX7_INLINE bool runFromUTF8(unsigned char*& out, unsigned char* outEnd)
    {
        unsigned char const* const before = out;
        m_passage.toEngine.runFromUTF8(m_passage.to, m_in, out, outEnd);
        m_isEmpty = m_isEmpty && out == before;
        return *m_in != 0 || m_isEmpty;
    }

    /** Encodes the piece, keeps what must be seen together with what follows, and returns the bytes written. */
    KX7_INLINE size_t encode(unsigned char* dest, size_t capacity)
    {
        size_t units = m_count;
        size_t pending = 0;
        if (m_passage.transit.unescape) {
            Unescaped const unescaped = unescape(m_piece, units, m_more);
            units = unescaped.units;
            pending = unescaped.pending;
        }
        UnitText const ready = {m_piece, m_piece + units - pending};
        TextProgress const encoded = m_passage.toEngine.encodeText(
            m_passage.to, ready, dest, static_cast<unsigned int>(capacity), m_passage.transit.op, !m_more);
        // Ends also at a 0 unit within the text (an overlong UTF-8 form), as a pass over the whole would.
        if (encoded.consumed != units - pending && !encoded.truncated)
            m_more = false;
        m_held = units - encoded.consumed;
        std::copy(m_piece + encoded.consumed, m_piece + units, m_piece);
        return encoded.written;
    }

private:
    Passage const& m_passage;
    unsigned char const* m_in;
    size_t m_unitsLeft;
    size_t m_count;  ///< units in the piece
    size_t m_held;   ///< units at its front that must be seen together with what follows
    bool m_more;
    bool m_isEmpty;
    unsigned short m_piece[SIZE];
};

/** A sink that counts the bytes that would be written, until there are more than some number. */
class Counter {
public:
    static constexpr size_t UNITS = 256;

    Counter(Passage const& passage, size_t most) : m_passage(passage), m_most(most), m_written(0) {}

    bool isMore() const { return m_written > m_most; }

    static bool takeDirectly(Pieces<UNITS> const& /*pieces*/) { return true; }
    bool write(Pieces<UNITS>& pieces)
    {
        m_written += pieces.encode(m_piece, std::min(sizeof m_piece, m_passage.capacity - m_written));
        return !isMore();
    }
    static bool goesOnWhenFull(Pieces<UNITS> const& /*pieces*/) { return true; }

private:
    Passage const& m_passage;
    size_t m_most;
    size_t m_written;
    unsigned char m_piece[UNITS * ESCAPE_LENGTH * sizeof(char32_t)];
};

/** Codes of the source before its terminator, at most `most`. */
size_t codesOf(Passage const& passage, size_t most)
{
    if (passage.codeSize == 1)
        return strnlen(reinterpret_cast<char const*>(passage.source), most);
    static constexpr unsigned char ZEROS[4] = {};
    size_t codes = 0;
    while (codes != most && memcmp(passage.source + codes * passage.codeSize, ZEROS, passage.codeSize) != 0)
        ++codes;
    return codes;
}

/** Whether more than `most` bytes would be written. The source is converted to see it; nothing is written. */
KX7_NOINLINE bool writesMoreThan(Passage const& passage, size_t most)
{
    // Each unit is a byte of the source at least.
    size_t const ofEscape = passage.transit.op == ILLCHAR_ESCAPE ? ESCAPE_LENGTH * passage.to.getMinUnitSize() : 0;
    size_t const ofUnit = std::max<size_t>(passage.to.getMaxUnitSize(), ofEscape);
    if (strnlen(reinterpret_cast<char const*>(passage.source), most / ofUnit + 1) <= most / ofUnit)
        return false;

    Pieces<Counter::UNITS> pieces(passage);
    Counter counter(passage, most);
    pump(pieces, counter);
    return counter.isMore();
}

/**
 * Whether a zero byte stands before the destination, so that no text reaches it that begins before it. On the heap
 * there mostly is one, the highest of the size of the block, which spares the search for the end of a text.
 */
KX7_READS_BEYOND bool hasZeroBefore([[maybe_unused]] unsigned char const* dest)
{
#ifdef KX7_X86_KERNELS
    return inPage(dest) != 0 && dest[-1] == 0;
#else
    return false;
#endif
}

/**
 * Whether something would be written over the source, its terminator included. Where not, although the capacity reaches
 * the source, `capacity` becomes as small as that takes.
 */
KX7_NOINLINE bool findsOverlap(Passage const& passage, size_t& capacity)
{
    auto const source = reinterpret_cast<uintptr_t>(passage.source);
    auto const dest = reinterpret_cast<uintptr_t>(passage.dest);
    if (dest > source && passage.codeSize == 1 && hasZeroBefore(passage.dest))
        return false;
    if (dest >= source) {
        size_t const codes = std::min(passage.mostUnits, (dest - source) / passage.codeSize);
        return (codesOf(passage, codes) + 1) * passage.codeSize > dest - source;
    }
    size_t const terminator = passage.to.getNullCharSize();
    if (source - dest < terminator)
        return true;
    size_t const most = source - dest - terminator;
    if (capacity <= most)
        return false;
    if (writesMoreThan(passage, most))
        return true;
    capacity = most;
    return false;
}

/** The same, at once where the destination ends before the source. */
inline bool writesOverSource(Passage const& passage, size_t& capacity)
{
    constexpr size_t LONGEST_TERMINATOR = sizeof(char32_t);
    auto const source = reinterpret_cast<uintptr_t>(passage.source);
    auto const dest = reinterpret_cast<uintptr_t>(passage.dest);
    bool const endsBefore =
        dest < source && source - dest >= LONGEST_TERMINATOR && capacity <= source - dest - LONGEST_TERMINATOR;
    return !endsBefore && findsOverlap(passage, capacity);
}

/** The destination of a passage as the sink of a pump. */
class Writer {
public:
    /** @param isApart what is written lies nowhere over the source; else that is found out where it matters */
    KX7_INLINE Writer(Passage const& passage, bool isApart)
        : m_passage(passage), m_capacity(passage.capacity), m_isApart(isApart), m_overlaps(false),
          m_isDirect(passage.toEngine.runFromUTF8 && !passage.transit.unescape &&
                     &passage.fromEngine == &EngineOf<KX7CharSetConverterUTF8>::ENGINE)
    {
        if (m_isDirect && !m_isApart)
            m_isApart = !writesOverSource(m_passage, m_capacity);
        m_out = passage.dest;
        m_outEnd = endOf(passage.dest, m_capacity);
    }

    /** The conversion has ended before anything was written, since the source would be written over. */
    bool overlaps() const { return m_overlaps; }

    unsigned char* out() const { return m_out; }

    KX7_INLINE bool takeDirectly(Pieces<PIECE>& pieces)
    {
        return !m_isDirect || !m_isApart || pieces.runFromUTF8(m_out, m_outEnd);
    }

    KX7_INLINE bool write(Pieces<PIECE>& pieces)
    {
        // Nothing is written yet, and a source that is all in the piece may be written over.
        if (!m_isApart && pieces.more()) {
            m_overlaps = writesOverSource(m_passage, m_capacity);
            if (m_overlaps)
                return false;
            m_isApart = true;
            m_outEnd = endOf(m_passage.dest, m_capacity);
        }
        m_out += pieces.encode(m_out, static_cast<size_t>(m_outEnd - m_out));
        return true;
    }

    static bool goesOnWhenFull(Pieces<PIECE> const& /*pieces*/) { return true; }

private:
    Passage const& m_passage;
    size_t m_capacity;
    bool m_isApart;
    bool m_overlaps;
    bool m_isDirect;
    unsigned char* m_out;
    unsigned char* m_outEnd;
};

KX7_NOINLINE unsigned int convertCopy(Passage passage);

/** @param isApart as of a Writer */
KX7_INLINE unsigned int convertInPieces(Passage const& passage, bool isApart)
{
    Pieces<PIECE> pieces(passage);
    Writer writer(passage, isApart);
    pump(pieces, writer);
    if (writer.overlaps())
        return convertCopy(passage);
    if (pieces.isEmpty())
        return 0;
    memset(writer.out(), 0, passage.to.getNullCharSize());
    return static_cast<unsigned int>(writer.out() - passage.dest);
}

/** Converts a copy of the source; without memory for it, nothing. */
unsigned int convertCopy(Passage passage)
{
    size_t const bytes = codesOf(passage, passage.mostUnits) * passage.codeSize;
    std::unique_ptr<unsigned char[]> const copy(new (std::nothrow) unsigned char[bytes + passage.codeSize]);
    if (!copy)
        return 0;
    memcpy(copy.get(), passage.source, bytes);
    memset(copy.get() + bytes, 0, passage.codeSize);
    passage.source = copy.get();
    return convertInPieces(passage, true);
}

}  // namespace

unsigned int convertThroughUTF16(KX7CharSetConverter& from, char const* source, KX7CharSetConverter& to, void* dest,
                                 unsigned int capacity, Transit transit)
{
    Engine const* const fromEngine = engineOf(from);
    Engine const* const toEngine = engineOf(to);
    if (!fromEngine || !toEngine)
        return convertWhole(from, source, to, dest, capacity, transit);

    // Wide text ends at its terminator or after as many units as it has bytes before its first zero byte. In a byte
    // encoding no character has more units than bytes, so there that second bound is never reached.
    size_t const codeSize = from.getNullCharSize();
    return convertInPieces({from, *fromEngine, to, *toEngine, transit, reinterpret_cast<unsigned char const*>(source),
                            codeSize, codeSize == 1 ? SIZE_MAX : strlen(source), static_cast<unsigned char*>(dest),
                            capacity},
                           false);
}

}  // namespace kx7
