// kx7text - UTF-16 in ASCII: a unit below 0x80 is its byte, any other an escape of six characters.
#include "kx7/converters/KX7CharSetConverterUTF16Esc.h"

#include "kx7/converters/EngineOf.h"

namespace {

struct EscapeDecoder : kx7::DecoderBase {
    static kx7::DecodedChar step(unsigned char const* p, unsigned char const* end)
    {
        if (p[0] != 'U')
            return plain(p);
        unsigned int value = 0;
        for (unsigned int i = 1; i < kx7::ESCAPE_LENGTH; ++i) {
            if (p + i == end)
                return kx7::DecodedChar::cut();
            int const digit = i == 1 ? (p[1] == '+' ? 0 : -1) : kx7::hexValue(p[i]);
            if (digit < 0)
                return plain(p);
            value = value << 4 | static_cast<unsigned int>(digit);
        }
        return kx7::DecodedChar::one(value, kx7::ESCAPE_LENGTH);
    }

    /** The beginning of an escape is text like any other. */
    static kx7::DecodedChar cutOff(unsigned char const* p, unsigned char const* /*end*/) { return plain(p); }

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
    static kx7::DecodedChar step(unsigned char const* p, unsigned char const* end)
    {
        if (p[0] >= 0x80)
            return kx7::DecodedChar::illegal(1, kx7::LimitCheck::CHECK);
        kx7::DecodedChar const c = EscapeDecoder::step(p, end);
        if (c.found != kx7::Found::CHARACTER)
            return c;
        if (c.codePoint < 0x80 && c.consumed != 1)
            return kx7::DecodedChar::illegal(c.consumed, kx7::LimitCheck::CHECK);
        if (!kx7::isSurrogate(c.codePoint))
            return c;
        if (kx7::isHighSurrogate(c.codePoint)) {
            unsigned char const* const behind = p + c.consumed;
            if (behind == end)
                return kx7::DecodedChar::cut();
            kx7::DecodedChar const partner = EscapeDecoder::step(behind, end);
            if (partner.found == kx7::Found::CUT)
                return partner;
            if (kx7::isLowSurrogate(partner.codePoint))
                return kx7::DecodedChar::of(kx7::codePointOf(c.codePoint, partner.codePoint),
                                            c.consumed + partner.consumed);
        }
        return kx7::DecodedChar::illegal(c.consumed, kx7::LimitCheck::CHECK);
    }

    static kx7::DecodedChar cutOff(unsigned char const* p, unsigned char const* end)
    {
        bool const isSurrogate = EscapeDecoder::step(p, end).found == kx7::Found::CHARACTER;
        return isSurrogate ? kx7::DecodedChar::illegal(kx7::ESCAPE_LENGTH, kx7::LimitCheck::CHECK)
                           : EscapeDecoder::cutOff(p, end);
    }
};

}  // namespace

struct KX7CharSetConverterUTF16Esc::Decoder : EscapeDecoder {};

struct KX7CharSetConverterUTF16Esc::Encoder : kx7::EncoderBase {
    static kx7::EncodedChar step(unsigned short const* p, unsigned short const* /*end*/)
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
        kx7::DecodedChar const c = Decoder::step(in, end);
        in += c.found == kx7::Found::CUT ? 1 : c.consumed;
    }
    return kx7::saturated(count);
}

unsigned int KX7CharSetConverterUTF16Esc::toUTF16Within(unsigned short* dest, kx7::ByteText const& source,
                                                        unsigned int room, ILLCHAR_OPTYPE op, bool* illegal,
                                                        int sourceLimit)
{
    return kx7::decodePublished(decoder(), source, dest, room, op, illegal, sourceLimit);
}

unsigned int KX7CharSetConverterUTF16Esc::toUTF16(unsigned short* dest, void const* source, unsigned int room,
                                                  ILLCHAR_OPTYPE op, bool* illegal, int sourceLimit)
{
    if (!dest || !source)
        return 0;
    return toUTF16Within(dest, kx7::terminatedText(source), room, op, illegal, sourceLimit);
}

unsigned int KX7CharSetConverterUTF16Esc::getNumBytes(unsigned short const* source, unsigned int unitCount)
{
    return source ? kx7::countBytes(encoder(), source, unitCount) : 0;
}

unsigned int KX7CharSetConverterUTF16Esc::fromUTF16(void* dest, unsigned short const* source, unsigned int room,
                                                    ILLCHAR_OPTYPE op, bool* illegal)
{
    if (!dest || !source)
        return 0;
    return kx7::encodePublished(encoder(), source, dest, room, op, illegal);
}

unsigned int KX7CharSetConverterUTF16Esc::getMinUnitSize() const
{
    return 1;
}

unsigned int KX7CharSetConverterUTF16Esc::getMaxUnitSize() const
{
    return 6;
}

unsigned int KX7CharSetConverterUTF16Esc::getNullCharSize() const
{
    return 1;
}
