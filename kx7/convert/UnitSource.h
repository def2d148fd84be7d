// kx7text - code units as the source of a pump: a piece is what is well-formed of them (internal).
#ifndef KX7_CONVERT_UNITSOURCE_H
#define KX7_CONVERT_UNITSOURCE_H

#include <algorithm>

#include "kx7/convert/SourceBase.h"
#include "kx7/converters/Pump.h"

namespace kx7 {

/** Units at the front of a range that are well-formed and whole. */
inline size_t wellFormedLength(unsigned short const* units, unsigned short const* end)
{
    constexpr ptrdiff_t BLOCK = 32;
    unsigned short const* unit = units;
    while (unit != end) {
        if (end - unit >= BLOCK) {
            unsigned short surrogates = 0;  // as wide as a unit, which is what makes the loop fast
            for (ptrdiff_t i = 0; i < BLOCK; ++i)
                surrogates = static_cast<unsigned short>(surrogates | ((unit[i] & 0xF800) == 0xD800));
            if (surrogates == 0) {
                unit += BLOCK;
                continue;
            }
        }
        if (!isSurrogate(*unit))
            unit += 1;
        else if (isPair(unit, end))
            unit += 2;
        else
            break;
    }
    return static_cast<size_t>(unit - units);
}

/** The code units of one call of an encoder. Engines differ in what they make of unpaired surrogates, so they see none.
 */
class Streams::UnitSource : public SourceBase<unsigned short> {
public:
    UnitSource(Encoder& encoder, Span<char16_t const> source, bool last, Window<unsigned short>& window)
        : SourceBase({reinterpret_cast<unsigned short const*>(source.data()), source.size(), last, &encoder.m_held,
                      encoder.m_heldCount, window}),
          m_encoder(encoder)
    {
    }

    template <class Sink>
    bool read(Sink& sink)
    {
        if (m_encoder.m_atStart && !begin(sink))
            return false;
        m_range = m_feed.range();
        if (m_range.begin == m_range.end)
            return end(Status::DONE);
        auto const inRange = static_cast<size_t>(m_range.end - m_range.begin);
        size_t const seen = std::min(inRange, sink.lookAhead(m_encoder.m_unitPosition));
        m_units = m_range.begin;
        m_count = wellFormedLength(m_units, m_units + seen);
        m_stop = stopAfter(m_units + m_count, seen);
        return true;
    }

    Stop stop() const { return m_stop; }
    unsigned short const* units() const { return m_units; }
    size_t unitCount() const { return m_count; }

    /** Consumes the first units of the piece. */
    void pass(size_t count)
    {
        m_feed.advance(count);
        m_encoder.m_unitPosition += count;
        m_units += count;
    }

    /** The error at `unit`, of `length` units; the sink has written what is before it. */
    template <class Sink>
    Error errorAt(unsigned short const* unit, size_t length, Sink const& sink) const
    {
        Error error = {};
        error.byteOffset = m_encoder.m_bytePosition + sink.dest().written();
        error.unitOffset = m_encoder.m_unitPosition + static_cast<size_t>(unit - m_units);
        error.status = length == 1 && isSurrogate(unit[0]) ? Status::INVALID : Status::UNREPRESENTABLE;
        error.length = static_cast<unsigned char>(length);
        error.codePoint = length == 2 ? codePointOf(unit[0], unit[1]) : unit[0];
        return error;
    }

    /** Writes what stands for a surrogate without its partner, and for those after it, as many as fit. */
    template <class Sink>
    bool passError(Sink& sink)
    {
        unsigned short const* unit = m_units;
        bool const goesOn = sink.substitute(
            *this, unit, 1, [this](unsigned short const* units, size_t most) { return loneSurrogates(units, most); });
        pass(static_cast<size_t>(unit - m_units));
        return goesOn;
    }

private:
    /** Deals with the byte-order mark. */
    template <class Sink>
    bool begin(Sink& sink)
    {
        if (m_encoder.m_options.bom == Bom::KEEP) {
            m_encoder.m_atStart = false;
            return true;
        }
        m_range = m_feed.range();
        if (m_range.begin == m_range.end && !m_range.last)
            return true;
        bool const isMarked = m_range.begin != m_range.end && m_range.begin[0] == BYTE_ORDER_MARK;
        switch (start(m_encoder, isMarked, sink)) {
            case Start::FULL: return end(Status::OUTPUT_FULL);
            case Start::MISSING: return end(missing(m_encoder, {}));
            case Start::GO_ON: break;
        }
        m_units = m_range.begin;
        if (isMarked)
            pass(1);
        return true;
    }

    /** Why the well-formed units of the first `seen` end at `unit`. */
    Stop stopAfter(unsigned short const* unit, size_t seen) const
    {
        bool const seesAll = m_units + seen == m_range.end;
        if (unit == m_range.end)
            return Stop::SOURCE_USED;
        // Units after it have not been looked at, or are half of a pair.
        if (!seesAll && m_count != 0 && m_count + 1 >= seen)
            return Stop::DESTINATION_FULL;
        return isIncomplete(unit) ? Stop::SOURCE_TRUNCATED : Stop::ILLEGAL;
    }

    /** The text that is there ends with a high surrogate, whose partner may follow. */
    bool isIncomplete(unsigned short const* unit) const
    {
        return unit + 1 == m_range.end && isHighSurrogate(*unit) && !m_range.last;
    }

    /** Surrogates without their partners at the front of units, at most `most`. */
    ErrorRun loneSurrogates(unsigned short const* units, size_t most) const
    {
        unsigned short const* unit = units;
        while (unit != m_range.end && static_cast<size_t>(unit - units) != most && isSurrogate(*unit) &&
               !isPair(unit, m_range.end) && !isIncomplete(unit))
            ++unit;
        auto const count = static_cast<size_t>(unit - units);
        return {count, count};
    }

    Encoder& m_encoder;
    unsigned short const* m_units;  ///< the piece
    size_t m_count;
    Stop m_stop;
};

}  // namespace kx7

#endif
