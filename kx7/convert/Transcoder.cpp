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
    TranscoderCall call;
    call.last = last;
    return convert(source, dest, call);
}

StreamResult Transcoder::convert(Span<char const> source, Span<char> dest, TranscoderCall const& call) noexcept
{
    if (!m_decoder.m_engine || !m_encoder.m_engine)
        return {0, 0, Status::NO_CONVERTER};
    Streams::assureAsked(m_encoder);
    unsigned short ownBuffer[Streams::ByteSink::PIECE];
    Place<unsigned short> buffer = {std::begin(ownBuffer), std::end(ownBuffer)};
    if (call.buffer.size() >= Decoder::MINIMUM_CAPACITY)
        buffer = {reinterpret_cast<unsigned short*>(call.buffer.begin()),
                  reinterpret_cast<unsigned short*>(call.buffer.end())};
    Window<unsigned char> window;
    auto const run = [&](auto lines) {
        Streams::ByteSource<decltype(lines)> bytes(m_decoder, *this, source, call.last, lines, window);
        Streams::ByteSink result(m_encoder, *this, dest, buffer);
        pump(bytes, result);
        return StreamResult{bytes.consumed(), result.dest().written(), bytes.status()};
    };
    switch (call.lineFeeds) {
        case LineFeeds::NONE: return run(NoLines());
        case LineFeeds::IN_BYTES: return run(LinesOfBytes{m_lineFeeds});
        case LineFeeds::IN_TEXT: break;
    }
    return run(LinesOfUnits{m_lineFeeds});
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

void Transcoder::setSubstitutes(char32_t malformed, char32_t lacking) noexcept
{
    m_decoder.m_options.substitute = malformed;
    m_encoder.m_options.substitute = lacking;
    m_encoder.m_substituteSize = 0;
    if (m_encoder.m_engine)
        Streams::askTarget(m_encoder);
}

std::optional<size_t> Transcoder::maxBytes(size_t byteCount) const noexcept
{
    std::optional<size_t> const units = m_decoder.maxUnits(byteCount);
    return units ? m_encoder.maxBytes(*units) : std::nullopt;
}

}  // namespace kx7
