// kx7text - UTF-16 in ASCII: a unit below 0x80 is its byte, any other an escape of six characters.
#include "kx7/converters/KX7CharSetConverterUTF16Esc.h"

#include "kx7/converters/EngineOf.h"

namespace {

struct EscapeDecoder : kx7::DecoderBase {
    static kx7::DecodedChar decodeOne(unsigned char const* p, unsigned char const* end)
    {
        if (p[0] != 'U')
            return plain(p);
        unsigned int value = 0;
        for (unsigned int i = 1; i < kx7::ESCAPE_LENGTH; ++i) {
            if (p + i == end)
                return kx7::DecodedChar::truncated();
            int const digit = i == 1 ? (p[1] == '+' ? 0 : -1) : kx7::hexValue(p[i]);
            if (digit < 0)
                return plain(p);
            value = value << 4 | static_cast<unsigned int>(digit);
        }
        return kx7::DecodedChar::one(value, kx7::ESCAPE_LENGTH);
    }

    /** The beginning of an escape is text like any other. */
    static kx7::DecodedChar atEnd(unsigned char const* p, unsigned char const* /*end*/) { return plain(p); }

private:
    /** Kept on purpose: the byte is taken for signed, so that 0x80 to 0xFF become 0xFF80 to 0xFFFF. */
    static kx7::DecodedChar plain(unsigned char const* p)
    {
        return kx7::DecodedChar::one(p[0] < 0x80 ? p[0] : 0xFF00U | p[0], 1);
    }
};

/**
 * Refuses what the encoder writes for no unit: bytes from 0x80, and escapes of ASCII, which is written as itself, so
 * that "U+002F" cannot pass for a slash where slashes were looked for. Refuses surrogates without their partners, too.
 */
struct StrictDecoder : EscapeDecoder {
    static kx7::DecodedChar decodeOne(unsigned char const* p, unsigned char const* end)
    {
        if (p[0] >= 0x80)
            return kx7::DecodedChar::illegal(1, kx7::LimitCheck::CHECK);
        kx7::DecodedChar const c = EscapeDecoder::decodeOne(p, end);
        if (c.found != kx7::Found::CHARACTER)
            return c;
        if (c.codePoint < 0x80 && c.consumed != 1)
            return kx7::DecodedChar::illegal(c.consumed, kx7::LimitCheck::CHECK);
        if (!kx7::isSurrogate(c.codePoint))
            return c;
        if (kx7::isHighSurrogate(c.codePoint)) {
            unsigned char const* const following = p + c.consumed;
            if (following == end)
                return kx7::DecodedChar::truncated();
            kx7::DecodedChar const partner = EscapeDecoder::decodeOne(following, end);
            if (partner.found == kx7::Found::TRUNCATED)
                return partner;
            if (kx7::isLowSurrogate(partner.codePoint))
                return kx7::DecodedChar::of(kx7::codePointOf(c.codePoint, partner.codePoint),
                                            c.consumed + partner.consumed);
        }
        return kx7::DecodedChar::illegal(c.consumed, kx7::LimitCheck::CHECK);
    }

    static kx7::DecodedChar atEnd(unsigned char const* p, unsigned char const* end)
    {
        bool const isSurrogate = EscapeDecoder::decodeOne(p, end).found == kx7::Found::CHARACTER;
        return isSurrogate ? kx7::DecodedChar::illegal(kx7::ESCAPE_LENGTH, kx7::LimitCheck::CHECK)
                           : EscapeDecoder::atEnd(p, end);
    }
};

}  // namespace

struct KX7CharSetConverterUTF16Esc::Decoder : EscapeDecoder {};

struct KX7CharSetConverterUTF16Esc::Encoder : kx7::EncoderBase {
    static constexpr unsigned int MOST_BYTES = 6;

    static kx7::EncodedChar encodeOne(unsigned short const* p, unsigned short const* /*end*/)
    {
        return {p[0], p[0] < 0x80 ? 1U : static_cast<unsigned int>(kx7::ESCAPE_LENGTH), 1, kx7::Found::CHARACTER};
    }

    static void write(unsigned char*& out, kx7::EncodedChar const& c)
    {
        auto const unit = static_cast<unsigned short>(c.code);
        if (unit < 0x80)
            *out++ = static_cast<unsigned char>(unit);
        else
            out = kx7::writeEscape(out, unit);
    }
};

namespace kx7 {
template <>
auto EngineOf<KX7CharSetConverterUTF16Esc>::strictDecoder(KX7CharSetConverter& /*converter*/)
{
    return StrictDecoder();
}

template struct EngineOf<KX7CharSetConverterUTF16Esc>;
}  // namespace kx7

KX7CharSetConverterUTF16Esc::KX7CharSetConverterUTF16Esc(KX7CharSet charSet) : KX7CharSetConverter(charSet)
{
}

KX7CharSetConverterUTF16Esc::~KX7CharSetConverterUTF16Esc() = default;

KX7CharSetConverterUTF16Esc::Decoder KX7CharSetConverterUTF16Esc::decoder()
{
    return {};
}

KX7CharSetConverterUTF16Esc::Encoder KX7CharSetConverterUTF16Esc::encoder()
{
    return {};
}

unsigned int KX7CharSetConverterUTF16Esc::getNumUnits(void const* source, unsigned int byteCount)
{
    if (!source)
        return 0;
    auto const* in = static_cast<unsigned char const*>(source);
    unsigned char const* const end = in + kx7::terminatedLength(source, byteCount);
    size_t count = 0;
    for (; in != end; ++count) {
        kx7::DecodedChar const c = Decoder::decodeOne(in, end);
        in += c.found == kx7::Found::TRUNCATED ? 1 : c.consumed;
    }
    return kx7::saturated(count);
}

#define KX7_CONVERTER KX7CharSetConverterUTF16Esc
#include "kx7/converters/PublishedOperations.inc"
