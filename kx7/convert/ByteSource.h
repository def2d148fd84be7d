// kx7text - bytes as the source of a pump: decoded strictly (internal).
#ifndef KX7_CONVERT_BYTESOURCE_H
#define KX7_CONVERT_BYTESOURCE_H

#include <algorithm>

#include "kx7/convert/Lines.h"
#include "kx7/convert/SourceBase.h"
#include "kx7/converters/Pump.h"

namespace kx7 {

/**
 * The bytes of one call of a decoder or transcoder.
 * @tparam Lines what is done about line feeds
 */
template <class Lines>
class Streams::ByteSource : public SourceBase<unsigned char> {
public:
    /** @param errors gets the errors: the decoder itself, or the transcoder that it is a part of */
    ByteSource(Decoder& decoder, StreamErrors& errors, Span<char const> source, bool last, Lines lines,
               Window<unsigned char>& window)
        : SourceBase({reinterpret_cast<unsigned char const*>(source.data()), source.size(), last, decoder.m_held,
                      decoder.m_heldCount, window}),
          m_decoder(decoder), m_errors(errors), m_lines(lines)
    {
    }

    template <class Sink>
    bool read(Sink& sink)
    {
        if (m_decoder.m_atStart && !begin(sink))
            return false;
        m_range = m_feed.range();
        if (m_range.begin == m_range.end)
            return end(Status::DONE);
        Place<unsigned short> const place = sink.place(m_decoder.m_unitPosition);
        m_units = place.begin;
        m_progress = decode(place.end);
        m_known = {};
        return true;
    }

    Stop stop() const { return m_progress.stop; }
    unsigned short const* units() const { return m_units; }
    size_t unitCount() const { return m_progress.written; }

    /** Consumes the bytes that became the first `count` units of the piece. */
    void pass(size_t count)
    {
        size_t const bytes = bytesOf(count);
        m_lines.add(upTo(count, bytes));
        m_decoder.m_unitPosition += count;
        passBytes(bytes);
    }

    /** The error of a character of the piece that the target lacks, at `unit`. */
    template <class Sink>
    Error errorAt(unsigned short const* unit, size_t length, Sink const& /*sink*/)
    {
        auto const before = static_cast<size_t>(unit - m_units);
        size_t const bytesBefore = bytesOf(before);
        size_t const bytesAfter = bytesOf(before + length);
        Error error = positionAt(before, bytesBefore);
        error.status = Status::UNREPRESENTABLE;
        error.length = static_cast<unsigned char>(bytesAfter - bytesBefore);
        error.codePoint = length == 2 ? codePointOf(unit[0], unit[1]) : unit[0];
        return error;
    }

    /** Writes what stands for a malformed sequence after the piece, and for those after it, as many as fit. */
    template <class Sink>
    bool passError(Sink& sink)
    {
        unsigned char const* const bytes = m_range.begin + m_progress.consumed;
        ErrorPolicy const errors = m_decoder.m_options.errors;
        Substitute<typename Sink::Element> const substitute = sink.forMalformed(m_decoder.m_options);
        if (sink.dest().left() < substitute.size)
            return end(Status::OUTPUT_FULL);
        record(m_errors, errors, [&] { return malformed(bytes); });
        passBytes(m_progress.length);
        if (errors == ErrorPolicy::STRICT)
            return end(Status::INVALID);
        ErrorRun const more =
            m_decoder.m_engine->illegalRun(*m_decoder.m_converter, bytes + m_progress.length, m_range.end, m_range.last,
                                           sink.dest().fits(substitute.size) - 1);
        m_errors.m_count += more.count;
        passBytes(more.length);
        size_t const count = 1 + more.count;
        sink.dest().appendTimes(substitute.elements, substitute.size, count);
        if (substitutes(errors))
            m_decoder.m_unitPosition += count * substituteOf(m_decoder.m_options).count;
        return true;
    }

private:
    /** Deals with the byte-order mark. */
    template <class Sink>
    bool begin(Sink& sink)
    {
        if (m_decoder.m_options.bom == Bom::KEEP) {
            m_decoder.m_atStart = false;
            return true;
        }
        m_range = m_feed.range();
        if (m_range.begin == m_range.end && !m_range.last)
            return true;
        unsigned short unit = 0;
        m_units = &unit;
        m_progress = m_range.begin == m_range.end ? Progress() : decode(m_units + 1);
        if (m_progress.written == 0 && m_progress.stop == Stop::SOURCE_TRUNCATED) {
            m_feed.hold();
            return end(Status::DONE);
        }
        bool const isMarked = m_progress.written == 1 && unit == BYTE_ORDER_MARK;
        switch (start(m_decoder, isMarked, sink)) {
            case Start::FULL: return end(Status::OUTPUT_FULL);
            case Start::MISSING: return end(missing(m_errors, positionAt(0, 0)));
            case Start::GO_ON: break;
        }
        if (isMarked)
            passBytes(m_progress.consumed);
        return true;
    }

    Progress decode(unsigned short* end) const
    {
        return m_decoder.m_engine->decodeStrict(*m_decoder.m_converter, m_range.begin, m_range.end, m_units, end,
                                                m_range.last);
    }

    /** The bytes that became the first `count` units of the piece. */
    size_t bytesOf(size_t count)
    {
        if (count == m_progress.written)
            return m_progress.consumed;
        // No decoder tears a pair or makes nothing of bytes, so the same conversion into less place ends right there.
        if (count != m_known.units)
            m_known = {count, decode(m_units + count).consumed};
        return m_known.bytes;
    }

    Converted upTo(size_t count, size_t bytes) const
    {
        return {m_range.begin, m_range.begin + bytes, m_units, m_units + count};
    }

    void passBytes(size_t count)
    {
        m_feed.advance(count);
        m_decoder.m_bytePosition += count;
    }

    /** An error after the first units of the piece. */
    Error positionAt(size_t count, size_t bytes) const
    {
        Error error = {};
        error.byteOffset = m_decoder.m_bytePosition + bytes;
        error.unitOffset = m_decoder.m_unitPosition + count;
        error.lineFeeds = m_lines.before(upTo(count, bytes));
        return error;
    }

    /** The error of a malformed sequence after the piece, which has been passed. */
    Error malformed(unsigned char const* bytes) const
    {
        Error error = positionAt(0, 0);
        error.status = Status::INVALID;
        error.length = static_cast<unsigned char>(m_progress.length);
        std::copy_n(bytes, std::min<size_t>(m_progress.length, sizeof error.bytes), error.bytes);
        return error;
    }

    Decoder& m_decoder;
    StreamErrors& m_errors;
    Lines m_lines;
    unsigned short* m_units;  ///< the piece
    Progress m_progress;      ///< to the piece
    struct {
        size_t units;
        size_t bytes;
    } m_known;  ///< what bytesOf returned last
};

}  // namespace kx7

#endif
