// kx7text - text of one converter to another through UTF-16, in pieces.
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

#include "kx7/converters/Engine.h"
#include "kx7/converters/KX7CharSetConverterUTF8.h"
#include "kx7/converters/Loop.h"
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

/** Replaces escapes by the units they name, in place. With `more` the last five units may go on behind them. */
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
                          unsigned int room, Transit transit)
{
    size_t const most = strlen(source);
    std::unique_ptr<unsigned short[]> const text(new (std::nothrow) unsigned short[most + 1]);
    if (!text)
        return 0;
    size_t units = from.toUTF16(text.get(), source, saturated(most), ILLCHAR_REPLACE, nullptr, -1);
    if (units == 0)
        return 0;
    if (transit.unescape) {
        units = unescape(text.get(), units, false).units;
        text[units] = 0;
    }
    return to.fromUTF16(dest, text.get(), room, transit.op, nullptr);
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
    size_t room;  ///< bytes, the terminator not counted
};

/** A passage a piece at a time; `SIZE` units are between the two converters. */
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

    /** Converts without UTF-16 as far as the target's kernel from UTF-8 comes. False: that was all. */
    KX7_INLINE bool runFromUTF8(unsigned char*& out, unsigned char* outEnd)
    {
        if (m_held != 0)
            return true;
        unsigned char const* const before = out;
        m_passage.toEngine.runFromUTF8(m_passage.to, m_in, out, outEnd);
        m_isEmpty = m_isEmpty && out == before;
        return *m_in != 0 || m_isEmpty;
    }

    /** Decodes a piece. False: the source converts to nothing. */
    KX7_INLINE bool decode()
    {
        size_t const want = std::min(SIZE - m_held, m_unitsLeft);
        TextProgress const decoded = m_passage.fromEngine.decodeText(m_passage.from, {m_in, nullptr}, m_piece + m_held,
                                                                     static_cast<unsigned int>(want));
        m_in += decoded.consumed;
        m_unitsLeft -= decoded.written;
        m_more = decoded.full && decoded.written != 0 && m_unitsLeft != 0;
        m_count = m_held + decoded.written;
        if (m_count == 0 && m_isEmpty)
            return false;
        m_isEmpty = false;
        return true;
    }

    /** Encodes it and returns the bytes written. */
    KX7_INLINE size_t encode(unsigned char* dest, size_t room)
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
            m_passage.to, ready, dest, static_cast<unsigned int>(room), m_passage.transit.op, !m_more);
        // Ends also at a 0 unit within the text (an overlong UTF-8 form), as a pass over the whole would.
        if (encoded.consumed != units - pending && !encoded.cut)
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
    bool m_isEmpty;  ///< nothing has been converted
    unsigned short m_piece[SIZE];
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

    constexpr size_t UNITS = 256;
    Pieces<UNITS> pieces(passage);
    unsigned char piece[UNITS * ESCAPE_LENGTH * sizeof(char32_t)];
    size_t written = 0;
    while (written <= most && pieces.more()) {
        if (!pieces.decode())
            return false;
        written += pieces.encode(piece, std::min(sizeof piece, passage.room - written));
    }
    return written > most;
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
 * Whether something would be written over the source, its terminator included. Where not, although the room reaches
 * the source, `room` becomes as small as that takes.
 */
KX7_NOINLINE bool findsOverlap(Passage const& passage, size_t& room)
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
    if (room <= most)
        return false;
    if (writesMoreThan(passage, most))
        return true;
    room = most;
    return false;
}

/** The same, at once where the destination ends before the source. */
inline bool writesOverSource(Passage const& passage, size_t& room)
{
    constexpr size_t LONGEST_TERMINATOR = sizeof(char32_t);
    auto const source = reinterpret_cast<uintptr_t>(passage.source);
    auto const dest = reinterpret_cast<uintptr_t>(passage.dest);
    bool const endsBefore = dest + LONGEST_TERMINATOR <= source && room <= source - dest - LONGEST_TERMINATOR;
    return !endsBefore && findsOverlap(passage, room);
}

KX7_NOINLINE unsigned int convertCopy(Passage passage);

/** @param isApart what is written lies nowhere over the source; else that is found out where it matters */
KX7_INLINE unsigned int convertInPieces(Passage const& passage, bool isApart)
{
    bool const isDirect = passage.toEngine.runFromUTF8 && !passage.transit.unescape &&
                          &passage.fromEngine == &EngineOf<KX7CharSetConverterUTF8>::ENGINE;
    size_t room = passage.room;
    if (isDirect && !isApart)
        isApart = !writesOverSource(passage, room);
    Pieces<PIECE> pieces(passage);
    unsigned char* out = passage.dest;
    unsigned char* outEnd = endOf(passage.dest, room);
    do {
        if (isDirect && isApart && !pieces.runFromUTF8(out, outEnd))
            break;
        if (!pieces.decode())
            return 0;
        // Nothing is written yet, and a source that is all in the piece may be written over.
        if (!isApart && pieces.more()) {
            if (writesOverSource(passage, room))
                return convertCopy(passage);
            isApart = true;
            outEnd = endOf(passage.dest, room);
        }
        out += pieces.encode(out, static_cast<size_t>(outEnd - out));
    } while (pieces.more());
    memset(out, 0, passage.to.getNullCharSize());
    return static_cast<unsigned int>(out - passage.dest);
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
                                 unsigned int room, Transit transit)
{
    Engine const* const fromEngine = engineOf(from);
    Engine const* const toEngine = engineOf(to);
    if (!fromEngine || !toEngine)
        return convertWhole(from, source, to, dest, room, transit);

    // Wide text ends at its terminator or after as many units as it has bytes before its first zero byte. In a byte
    // encoding no character has more units than bytes, so there that second bound is never reached.
    size_t const codeSize = from.getNullCharSize();
    return convertInPieces({from, *fromEngine, to, *toEngine, transit, reinterpret_cast<unsigned char const*>(source),
                            codeSize, codeSize == 1 ? SIZE_MAX : strlen(source), static_cast<unsigned char*>(dest),
                            room},
                           false);
}

}  // namespace kx7
