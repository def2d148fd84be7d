// kx7text - the stream from bytes to bytes of another character set.
#include "kx7/convert/ByteSource.h"
#include "kx7/convert/Sinks.h"

namespace kx7 {

namespace {

Options withBom(Options options, Bom bom)
{
    options.bom = bom;
    return options;
}

}  // namespace

Transcoder::Transcoder(KX7CharSet from, KX7CharSet to, Options const& options) noexcept
    : m_decoder(from, options), m_encoder(to, withBom(options, Bom::KEEP)), m_lineFeeds(0)
{
}

StreamResult Transcoder::convert(Span<char const> source, Span<char> dest, bool last) noexcept
{
    if (!m_decoder.m_engine || !m_encoder.m_engine)
        return {0, 0, Status::NO_CONVERTER};
    Streams::assureAsked(m_encoder);
    unsigned short buffer[Streams::ByteSink::PIECE];
    Streams::ByteSource<LinesOfUnits> bytes(m_decoder, *this, source, last, {m_lineFeeds});
    Streams::ByteSink result(m_encoder, *this, dest, {std::begin(buffer), std::end(buffer)});
    pump(bytes, result);
    return {bytes.consumed(), result.room().written(), bytes.status()};
}

void Transcoder::reset() noexcept
{
    Streams::forget(*this);
    m_decoder.reset();
    m_encoder.reset();
    m_lineFeeds = 0;
}

void Transcoder::setErrors(ErrorPolicy errors) noexcept
{
    m_decoder.setErrors(errors);
    m_encoder.setErrors(errors);
}

std::optional<size_t> Transcoder::maxBytes(size_t byteCount) const noexcept
{
    std::optional<size_t> const units = m_decoder.maxUnits(byteCount);
    return units ? m_encoder.maxBytes(*units) : std::nullopt;
}

}  // namespace kx7
