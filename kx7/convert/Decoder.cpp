// kx7text - the stream from bytes to UTF-16.
#include <algorithm>

#include "kx7/convert/ByteSource.h"
#include "kx7/convert/Sinks.h"
#include "kx7/convert/Sizes.h"
#include "kx7/convert/WebSets.h"

namespace kx7 {

/** A byte that is malformed wherever it stands among its like. */
bool Streams::hasMalformedByte(Decoder const& decoder)
{
    for (unsigned int value = 0; value < 0x100; ++value) {
        auto const byte = static_cast<unsigned char>(value);
        unsigned char const text[] = {byte, byte};
        unsigned short unit = 0;
        Progress const progress =
            decoder.m_engine->decodeStrict(*decoder.m_converter, text, text + 2, &unit, &unit + 1, true);
        if (progress.stop == Stop::ILLEGAL && progress.consumed == 0 && progress.length == 1)
            return true;
    }
    return false;
}

Decoder::Decoder(KX7CharSet from, Options const& options) noexcept
    : m_engine(nullptr), m_converter(nullptr), m_options(options), m_atStart(true), m_heldCount(0), m_held(),
      m_bytePosition(0), m_unitPosition(0)
{
    Served const served = servedInLayer(from);
    m_engine = served.engine;
    m_converter = served.converter;
}

StreamResult Decoder::convert(Span<char const> source, Span<char16_t> dest, bool last) noexcept
{
    if (!m_engine)
        return {0, 0, Status::NO_CONVERTER};
    Window<unsigned char> window;
    Streams::ByteSource<NoLines> bytes(*this, *this, source, last, {}, window);
    Streams::UnitSink units(*this, dest);
    pump(bytes, units);
    return {bytes.consumed(), units.dest().written(), bytes.status()};
}

void Decoder::reset() noexcept
{
    Streams::forget(*this);
    m_atStart = true;
    m_heldCount = 0;
    m_bytePosition = 0;
    m_unitPosition = 0;
}

std::optional<size_t> Decoder::maxUnits(size_t byteCount) const noexcept
{
    std::optional<size_t> const bytes = sum(byteCount, m_heldCount);
    if (!m_engine || !bytes)
        return std::nullopt;
    size_t const ofError = substitutes(m_options.errors) ? substituteOf(m_options).count : 0;
    size_t const codeSize = m_converter->getMinUnitSize();
    size_t const ofMark = m_atStart && m_options.bom == Bom::ADD ? 1 : 0;
    if (codeSize == 1)
        return sum(product(*bytes, ofError == 2 && Streams::hasMalformedByte(*this) ? 2 : 1), ofMark);
    size_t const ofCode = std::max<size_t>(codeSize / 2, ofError);
    return sum(sum(product(*bytes / codeSize, ofCode), *bytes % codeSize == 0 ? 0 : ofError), ofMark);
}

}  // namespace kx7
