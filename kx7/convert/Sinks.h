// kx7text - the sinks of a pump: UTF-16 that stays where it was decoded to, and bytes that it is encoded to (internal).
#ifndef KX7_CONVERT_SINKS_H
#define KX7_CONVERT_SINKS_H

#include <algorithm>
#include <iterator>

#include "kx7/convert/Feed.h"
#include "kx7/convert/Streams.h"
#include "kx7/converters/Pump.h"

namespace kx7 {

/** The destination of a decoder, into which its source decodes. */
class Streams::UnitSink {
public:
    using Element = unsigned short;

    UnitSink(Decoder& decoder, Span<char16_t> dest)
        : m_decoder(decoder), m_dest(dest.data(), dest.size()), m_substitute(substituteOf(decoder.m_options))
    {
    }

    Destination<unsigned short>& dest() { return m_dest; }
    Place<unsigned short> place(unsigned long long /*position*/) const { return {m_dest.out, m_dest.end}; }

    template <class Source>
    bool write(Source& source)
    {
        m_dest.out += source.unitCount();
        source.pass(source.unitCount());
        return true;
    }

    template <class Source>
    static bool goesOnWhenFull(Source& source)
    {
        return source.end(Status::OUTPUT_FULL);
    }

    bool addMark()
    {
        if (m_dest.left() == 0)
            return false;
        m_dest.append(&BYTE_ORDER_MARK, 1);
        ++m_decoder.m_unitPosition;
        return true;
    }

    Substitute<unsigned short> forMalformed(Options const& options) const
    {
        return {m_substitute.units, substitutes(options.errors) ? m_substitute.count : 0};
    }

private:
    Decoder& m_decoder;
    Destination<unsigned short> m_dest;
    CharUnits m_substitute;
};

/** The destination of an encoder or transcoder, which encodes the pieces of its source. */
class Streams::ByteSink {
public:
    using Element = unsigned char;

    /** Units that are converted in one go: they stay in the first-level cache. */
    static constexpr size_t PIECE = 2048;

    /**
     * @param errors gets the errors: the encoder itself, or the transcoder that it is a part of
     * @param buffer where a source decodes; null for one of code units
     */
    ByteSink(Encoder& encoder, StreamErrors& errors, Span<char> dest, Place<unsigned short> buffer)
        : m_encoder(encoder), m_errors(errors), m_dest(dest.data(), dest.size()), m_buffer(buffer)
    {
    }

    Destination<unsigned char>& dest() { return m_dest; }
    Destination<unsigned char> const& dest() const { return m_dest; }

    /**
     * How many units are looked at before they are encoded. A unit becomes a byte at least, so that more than the
     * destination has bytes would be looked at in vain. After an error that ended a call at most twice as many as have
     * been converted since: then what is looked at again after the next error is in proportion to that, too.
     * @param position in units
     */
    size_t lookAhead(unsigned long long position) const
    {
        constexpr size_t LEAST = 64;
        size_t most = m_buffer.begin ? static_cast<size_t>(m_buffer.end - m_buffer.begin) : PIECE;
        if (policy() == ErrorPolicy::STRICT && m_errors.m_count != 0) {
            unsigned long long const since = position - m_errors.m_last.unitOffset;
            most =
                static_cast<size_t>(std::min<unsigned long long>(std::max<unsigned long long>(2 * since, LEAST), most));
        }
        return std::min(most, std::max<size_t>(m_dest.left(), 2));
    }

    Place<unsigned short> place(unsigned long long position) const
    {
        return {m_buffer.begin, m_buffer.begin + lookAhead(position)};
    }

    /** Encodes a piece, which ends between characters. */
    template <class Source>
    [[gnu::always_inline]] bool write(Source& source)
    {
        unsigned short const* const begin = source.units();
        unsigned short const* const end = begin + source.unitCount();
        unsigned short const* unit = begin;
        while (unit != end) {
            Progress const progress = encodeWhole(unit, end);
            unit += progress.consumed;
            m_dest.out += progress.written;
            if (progress.stop == Stop::SOURCE_USED)
                break;
            bool const goesOn =
                progress.stop == Stop::DESTINATION_FULL
                    ? source.end(Status::OUTPUT_FULL)
                    : substitute(source, unit, isPair(unit, end) ? 2 : 1,
                                 [this, end](unsigned short const* units, size_t most) {
                                     return engine().unmappableRun(*m_encoder.m_converter, units, end, most);
                                 });
            if (!goesOn) {
                source.pass(static_cast<size_t>(unit - begin));
                return false;
            }
        }
        source.pass(source.unitCount());
        return true;
    }

    template <class Source>
    static bool goesOnWhenFull(Source& /*source*/)
    {
        return true;
    }

    bool addMark()
    {
        if (m_dest.left() < m_encoder.m_bomSize)
            return false;
        m_dest.append(m_encoder.m_bom, m_encoder.m_bomSize);
        return true;
    }

    /** @param options of the decoder, whose substitute may be another than the encoder's */
    Substitute<unsigned char> forMalformed(Options const& options)
    {
        if (!substitutes(policy()))
            return {m_malformed, 0};
        if (options.substitute == m_encoder.m_options.substitute)
            return {m_encoder.m_substitute, substituteSize(m_encoder)};
        if (m_malformedSize == 0)
            m_malformedSize = std::max<size_t>(encodeSubstitute(m_encoder, options, m_malformed), 1);
        return {m_malformed, m_malformedSize};
    }

    /**
     * Writes what stands for an error of `length` units at `unit`, and for those after it, as many as fit; `unit` moves
     * after them.
     * @param run the errors at a unit, of a number at most, as an ErrorRun
     */
    template <class Source, class Run>
    bool substitute(Source& source, unsigned short const*& unit, size_t length, Run const& run)
    {
        ErrorBytes const bytes = substituteFor(unit, length);
        if (m_dest.left() < bytes.size)
            return source.end(Status::OUTPUT_FULL);
        record(m_errors, policy(), [&] { return source.errorAt(unit, length, *this); });
        m_dest.append(bytes.bytes, bytes.size);
        unit += length;
        if (policy() == ErrorPolicy::STRICT)
            return source.end(m_errors.m_last.status);
        ErrorRun const more =
            policy() == ErrorPolicy::ESCAPE ? escapeRun(unit, run, bytes.size) : replaceRun(unit, run, bytes);
        m_errors.m_count += more.count;
        unit += more.length;
        return true;
    }

private:
    /** What stands for an error. */
    struct ErrorBytes {
        unsigned char bytes[Encoder::MINIMUM_CAPACITY];
        size_t size;
    };

    ErrorPolicy policy() const { return m_encoder.m_options.errors; }
    Engine const& engine() const { return *m_encoder.m_engine; }

    Progress encode(unsigned short const* units, unsigned short const* end, unsigned char* out,
                    unsigned char* outEnd) const
    {
        return engine().encode(*m_encoder.m_converter, units, end, out, outEnd, true);
    }

    Progress encodeWhole(unsigned short const* units, unsigned short const* end) const;
    ErrorBytes substituteFor(unsigned short const* units, size_t count) const;

    template <class Run>
    ErrorRun replaceRun(unsigned short const* units, Run const& run, ErrorBytes const& like)
    {
        ErrorRun const errors = run(units, m_dest.fits(like.size));
        m_dest.appendTimes(like.bytes, like.size, errors.count);
        return errors;
    }

    /** @param likeSize bytes of the escape of an error before them */
    template <class Run>
    ErrorRun escapeRun(unsigned short const* units, Run const& run, size_t likeSize)
    {
        // Many with one call of the engine.
        constexpr size_t CHARACTERS = 16;
        size_t const escapeSize = ESCAPE_LENGTH * m_encoder.m_converter->getMinUnitSize();
        ErrorRun total = {0, 0};
        if (likeSize < escapeSize)
            return total;
        ErrorRun errors = {0, 0};
        do {
            errors = run(units + total.length, std::min(CHARACTERS, m_dest.fits(2 * escapeSize)));
            m_dest.out += writeEscapes<2 * CHARACTERS>(units + total.length, errors.length, m_dest.out, m_dest.end);
            total.length += errors.length;
            total.count += errors.count;
        } while (errors.count == CHARACTERS);
        return total;
    }

    /** Writes the escapes of up to `MOST` units in the target, and returns their bytes. */
    template <size_t MOST>
    size_t writeEscapes(unsigned short const* units, size_t count, unsigned char* out, unsigned char* outEnd) const
    {
        unsigned char ascii[MOST * ESCAPE_LENGTH];
        unsigned char* asciiEnd = ascii;
        for (size_t i = 0; i < count; ++i)
            asciiEnd = writeEscape(asciiEnd, units[i]);
        unsigned short escapes[MOST * ESCAPE_LENGTH];
        return encode(escapes, std::copy(ascii, asciiEnd, escapes), out, outEnd).written;
    }

    Encoder& m_encoder;
    StreamErrors& m_errors;
    Destination<unsigned char> m_dest;
    Place<unsigned short> m_buffer;
    size_t m_malformedSize = 0;  ///< bytes of m_malformed; 0: it has not been needed
    unsigned char m_malformed[MOST_BYTES];
};

/** Encodes well-formed units; a pair stays whole, also where the target takes each half for a character. */
inline Progress Streams::ByteSink::encodeWhole(unsigned short const* units, unsigned short const* end) const
{
    Progress progress = encode(units, end, m_dest.out, m_dest.end);
    unsigned short const* const stopped = units + progress.consumed;
    if (progress.stop == Stop::DESTINATION_FULL && progress.consumed != 0 && isPair(stopped - 1, end)) {
        unsigned char half[Encoder::MINIMUM_CAPACITY];
        progress.consumed -= 1;
        progress.written -= encode(stopped - 1, stopped, half, std::end(half)).written;
    }
    return progress;
}

/** What stands for units that the target lacks, or for a surrogate without its partner. */
inline Streams::ByteSink::ErrorBytes Streams::ByteSink::substituteFor(unsigned short const* units, size_t count) const
{
    ErrorBytes result = {};
    if (policy() == ErrorPolicy::ESCAPE)
        result.size = writeEscapes<2>(units, count, result.bytes, std::end(result.bytes));
    // Also for an escape of which the target has nothing, since its tables found no memory.
    if (result.size == 0 && substitutes(policy())) {
        result.size = substituteSize(m_encoder);
        std::copy_n(m_encoder.m_substitute, result.size, result.bytes);
    }
    return result;
}

}  // namespace kx7

#endif
