// kx7text - the stream from UTF-16 to bytes.
#include <algorithm>

#include "kx7/convert/Sinks.h"
#include "kx7/convert/Sizes.h"
#include "kx7/convert/UnitSource.h"
#include "kx7/convert/WebSets.h"

namespace kx7 {

/** Writes a character in the target of an encoder and returns its bytes; 0 where the target lacks it. */
unsigned char Streams::encodeChar(Encoder const& encoder, CharUnits const& c, unsigned char (&bytes)[MOST_BYTES])
{
    Progress const progress =
        encoder.m_engine->encode(*encoder.m_converter, c.units, c.units + c.count, bytes, std::end(bytes), true);
    return static_cast<unsigned char>(progress.stop == Stop::SOURCE_USED ? progress.written : 0);
}

/** Without memory for its tables the target cannot say; then "?", one byte in every set that has tables, stands for
 * what is lost until it can. */
unsigned char Streams::encodeSubstitute(Encoder const& encoder, Options const& options,
                                        unsigned char (&bytes)[MOST_BYTES])
{
    unsigned char size = encodeChar(encoder, substituteOf(options), bytes);
    if (size == 0)
        size = encodeChar(encoder, CharUnits(U'?'), bytes);
    if (size == 0)
        bytes[0] = '?';
    return size;
}

void Streams::askTarget(Encoder& encoder)
{
    unsigned char mark[MOST_BYTES];
    encoder.m_substituteSize = encodeSubstitute(encoder, encoder.m_options, encoder.m_substitute);
    encoder.m_bomSize = encodeChar(encoder, CharUnits(BYTE_ORDER_MARK), mark);
    std::copy_n(mark, encoder.m_bomSize, encoder.m_bom);
}

Encoder::Encoder(KX7CharSet to, Options const& options) noexcept
    : m_engine(nullptr), m_converter(nullptr), m_options(options), m_atStart(true), m_heldCount(0), m_substituteSize(0),
      m_bomSize(0), m_held(0), m_substitute(), m_bom(), m_bytePosition(0), m_unitPosition(0)
{
    Served const served = servedInLayer(to);
    m_engine = served.engine;
    m_converter = served.converter;
    if (m_engine)
        Streams::askTarget(*this);
}

StreamResult Encoder::convert(Span<char16_t const> source, Span<char> dest, bool last) noexcept
{
    if (!m_engine)
        return {0, 0, Status::NO_CONVERTER};
    Streams::assureAsked(*this);
    Window<unsigned short> window;
    Streams::UnitSource units(*this, source, last, window);
    Streams::ByteSink bytes(*this, *this, dest, {});
    pump(units, bytes);
    m_bytePosition += bytes.dest().written();
    return {units.consumed(), bytes.dest().written(), units.status()};
}

void Encoder::reset() noexcept
{
    Streams::forget(*this);
    m_atStart = true;
    m_heldCount = 0;
    m_bytePosition = 0;
    m_unitPosition = 0;
}

std::optional<size_t> Encoder::maxBytes(size_t unitCount) const noexcept
{
    std::optional<size_t> const units = sum(unitCount, m_heldCount);
    if (!m_engine || !units)
        return std::nullopt;
    // A surrogate without its partner is an error of one unit in every set.
    size_t const ofError = m_options.errors == ErrorPolicy::REPLACE  ? Streams::substituteSize(*this)
                           : m_options.errors == ErrorPolicy::ESCAPE ? ESCAPE_LENGTH * m_converter->getMinUnitSize()
                                                                     : 0;
    size_t const ofUnit = std::max<size_t>(m_engine->maxBytesPerUnit(*m_converter), ofError);
    return sum(product(*units, ofUnit), m_atStart && m_options.bom == Bom::ADD ? m_bomSize : 0);
}

}  // namespace kx7
