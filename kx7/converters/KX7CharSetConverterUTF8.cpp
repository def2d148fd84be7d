// kx7text - UTF-8: one to four bytes a character. Lead bytes tell the length, and only that structure is checked:
// overlong forms, encoded surrogates and values above U+10FFFF pass. The strict decoder beside it refuses them.
#include "kx7/converters/KX7CharSetConverterUTF8.h"

#include "kx7/converters/EngineOf.h"
#include "kx7/kernels/Kernels.h"
#include "kx7/kernels/ShortText.h"

namespace {

/**
 * Length of the sequence that a byte begins, by its high four bits; 0: it cannot begin one. 0xF8 to 0xFF count as
 * leads of four: kept on purpose.
 */
constexpr unsigned int oUTF8Bits[16] = {1, 1, 1, 1, 1, 1, 1, 1, 0, 0, 0, 0, 2, 2, 3, 4};

constexpr bool isContinuation(unsigned char byte)
{
    return (byte & 0xC0) == 0x80;
}

/** The bytes 0x01 to 0x7F (and 0) at the front of a range, one unit each. */
void copyASCII(unsigned char const*& in, unsigned char const* end, unsigned short*& out, unsigned short const* outEnd)
{
    while (in != end && out != outEnd && *in < 0x80)
        *out++ = *in++;
}

/** Well-formed UTF-8 only; what is illegal is as long as the longest part that begins a well-formed sequence. */
struct StrictDecoder : kx7::DecoderBase {
    static void run(unsigned char const*& in, unsigned char const* end, unsigned short*& out, unsigned short* outEnd)
    {
        // Pieces that are well-formed are what the lenient kernel takes.
        kx7::Kernels const& kernels = kx7::kernels();
        while (end - in >= kx7::KERNEL_MINIMUM) {
            auto const most =
                std::min({static_cast<size_t>(end - in), kx7::PIECE, 3 * static_cast<size_t>(outEnd - out)});
            unsigned char const* const wellFormed = in + kernels.wellFormedUTF8(in, in + most);
            unsigned char const* const begin = in;
            kernels.decodeUTF8(in, wellFormed, out, outEnd);
            if (in == begin)
                break;
        }
        copyASCII(in, end, out, outEnd);
    }

    static kx7::DecodedChar step(unsigned char const* p, unsigned char const* end)
    {
        unsigned int const lead = p[0];
        if (lead < 0x80)
            return kx7::DecodedChar::one(lead, 1);
        if (lead < 0xC2 || lead > 0xF4)
            return kx7::DecodedChar::illegal(1, kx7::LimitCheck::CHECK);
        // The second byte is narrower where a wider one would make an overlong form, a surrogate or too large a value.
        unsigned int low = 0x80;
        unsigned int high = 0xBF;
        switch (lead) {
            case 0xE0: low = 0xA0; break;
            case 0xED: high = 0x9F; break;
            case 0xF0: low = 0x90; break;
            case 0xF4: high = 0x8F; break;
            default: break;
        }
        unsigned int const length = oUTF8Bits[lead >> 4];
        unsigned int value = lead & (0x7FU >> length);
        for (unsigned int i = 1; i < length; ++i) {
            if (p + i == end)
                return kx7::DecodedChar::cut();
            if (p[i] < low || p[i] > high)
                return kx7::DecodedChar::illegal(i, kx7::LimitCheck::CHECK);
            value = value << 6 | (p[i] & 0x3FU);
            low = 0x80;
            high = 0xBF;
        }
        return {value, length, length == 4 ? 2U : 1U, kx7::Found::CHARACTER, kx7::LimitCheck::CHECK};
    }
};

}  // namespace

struct KX7CharSetConverterUTF8::Decoder : kx7::DecoderBase {
    static void run(unsigned char const*& in, unsigned char const* end, unsigned short*& out, unsigned short* outEnd)
    {
        kx7::copyShort<kx7::Same::ASCII>(in, end, out, outEnd);
        if (end - in >= kx7::SHORT_KERNEL_MINIMUM)
            kx7::kernels().decodeUTF8(in, end, out, outEnd);
        copyASCII(in, end, out, outEnd);
    }

    static kx7::DecodedChar step(unsigned char const* p, unsigned char const* end)
    {
        unsigned int const length = oUTF8Bits[p[0] >> 4];
        if (length == 1)
            return kx7::DecodedChar::one(p[0], 1);
        if (length == 0)
            return {0, 1, 0, kx7::Found::STRAY, kx7::LimitCheck::CHECK};
        // Kept on purpose: four bits of a four-byte lead count, one more than the standard form has.
        unsigned int value = p[0] & (length == 2 ? 0x1FU : 0x0FU);
        for (unsigned int i = 1; i < length; ++i) {
            if (p + i == end)
                return kx7::DecodedChar::cut();
            if (!isContinuation(p[i]))
                return kx7::DecodedChar::illegal(1, kx7::LimitCheck::CHECK);
            value = value << 6 | (p[i] & 0x3FU);
        }
        return {value, length, length == 4 ? 2U : 1U, kx7::Found::CHARACTER, kx7::LimitCheck::CHECK};
    }
};

struct KX7CharSetConverterUTF8::Encoder : kx7::EncoderBase {
    static void run(unsigned short const*& in, unsigned short const* end, unsigned char*& out, unsigned char* outEnd)
    {
        kx7::copyShort<kx7::Same::ASCII>(in, end, out, outEnd);
        if (end - in >= kx7::SHORT_KERNEL_MINIMUM)
            kx7::kernels().encodeUTF8(in, end, out, outEnd);
        while (in != end && out != outEnd && *in < 0x80)
            *out++ = static_cast<unsigned char>(*in++);
    }

    static kx7::EncodedChar step(unsigned short const* p, unsigned short const* end)
    {
        unsigned int const unit = p[0];
        if (unit < 0x80)
            return {unit, 1, 1, kx7::Found::CHARACTER};
        if (unit < 0x800)
            return {0xC080 | (unit & 0x7C0) << 2 | (unit & 0x3F), 2, 1, kx7::Found::CHARACTER};
        if (!kx7::isHighSurrogate(unit))
            return {0xE08080 | (unit & 0xF000) << 4 | (unit & 0xFC0) << 2 | (unit & 0x3F), 3, 1, kx7::Found::CHARACTER};
        if (p + 1 == end)
            return kx7::EncodedChar::cut();
        if (!kx7::isLowSurrogate(p[1]))
            return kx7::EncodedChar::unmappable(1);
        unsigned int const c = kx7::codePointOf(unit, p[1]);
        return {0xF0808080 | (c & 0x1C0000) << 6 | (c & 0x3F000) << 4 | (c & 0xFC0) << 2 | (c & 0x3F), 4, 2,
                kx7::Found::CHARACTER};
    }

    static size_t countRun(unsigned short const*& in, unsigned short const* end)
    {
        return end - in >= kx7::KERNEL_MINIMUM ? kx7::kernels().countAsUTF8(in, end) : 0;
    }

    /** Kept on purpose: the unit behind the high surrogate is dropped, and six bytes take five from the room. */
    static bool escape(unsigned short const*& in, unsigned short const* end, unsigned int consumed, unsigned char*& out,
                       unsigned char*& outEnd)
    {
        if (!EncoderBase::escape(in, end, consumed, out, outEnd))
            return false;
        if (in != end)
            ++in;
        outEnd = kx7::endOf(outEnd, 1);
        return true;
    }
};

namespace kx7 {
template <>
constexpr Encoding EngineOf<KX7CharSetConverterUTF8>::encoding()
{
    return {Boundary::BEFORE_LEAD_BYTE, true};
}

template <>
auto EngineOf<KX7CharSetConverterUTF8>::strictDecoder(KX7CharSetConverter& /*converter*/)
{
    return StrictDecoder();
}

template struct EngineOf<KX7CharSetConverterUTF8>;
}  // namespace kx7

KX7CharSetConverterUTF8::KX7CharSetConverterUTF8(KX7CharSet charSet) : KX7CharSetConverter(charSet)
{
}

KX7CharSetConverterUTF8::~KX7CharSetConverterUTF8() = default;

inline KX7CharSetConverterUTF8::Decoder KX7CharSetConverterUTF8::decoder()
{
    return {};
}

inline KX7CharSetConverterUTF8::Encoder KX7CharSetConverterUTF8::encoder()
{
    return {};
}

unsigned int KX7CharSetConverterUTF8::getNumUnits(void const* source, unsigned int byteCount)
{
    if (!source || byteCount == 0)
        return 0;
    auto const* in = static_cast<unsigned char const*>(source);
    bool const terminated = byteCount == kx7::UNTIL_TERMINATOR;
    size_t left = terminated ? strlen(static_cast<char const*>(source)) : byteCount;
    unsigned char const* known = terminated ? in + left : in;  // no zero byte before it, so that it may be read
    size_t count = 0;
    while (left != 0 && *in != 0) {
        if (known - in < kx7::KERNEL_MINIMUM && left >= static_cast<size_t>(kx7::KERNEL_MINIMUM) && !terminated)
            known = in + strnlen(reinterpret_cast<char const*>(in), std::min(left, kx7::PIECE));
        if (known - in >= kx7::KERNEL_MINIMUM) {
            unsigned char const* const begin = in;
            count += kx7::kernels().countUTF8(in, known);
            left -= static_cast<size_t>(in - begin);
            if (in != begin)
                continue;
        }
        unsigned int const length = oUTF8Bits[*in >> 4];
        if (length == 0 || length > left)
            break;
        ++count;
        // Kept on purpose: a sequence that the zero byte truncates counts where the count goes on. It is the last one.
        if (std::find(in + 1, in + length, 0) != in + length)
            break;
        in += length;
        left -= length;
    }
    return kx7::saturated(count);
}

inline unsigned int KX7CharSetConverterUTF8::toUTF16Within(unsigned short* dest, kx7::ByteText const& source,
                                                           unsigned int room, ILLCHAR_OPTYPE, bool* illegal,
                                                           int sourceLimit)
{
    if (illegal)
        *illegal = false;
    kx7::TextProgress const text =
        kx7::decodeText(decoder(), source, dest, room, ILLCHAR_REPLACE, nullptr, kx7::positiveLimit(sourceLimit));
    size_t units = text.written;
    // Kept on purpose: a pair that finds room for one unit only is replaced, not left out.
    if (text.full && units != room)
        dest[units++] = kx7::REPLACEMENT_CHAR;
    dest[units] = 0;
    return static_cast<unsigned int>(units);
}

unsigned int KX7CharSetConverterUTF8::toUTF16(unsigned short* dest, void const* source, unsigned int room,
                                              ILLCHAR_OPTYPE op, bool* illegal, int sourceLimit)
{
    if (!dest || !source)
        return 0;
    return toUTF16Within(dest, kx7::terminatedText(source), room, op, illegal, sourceLimit);
}

unsigned int KX7CharSetConverterUTF8::getNumBytes(unsigned short const* source, unsigned int unitCount)
{
    if (!source)
        return 0;
    return kx7::countBytes(encoder(), source, unitCount);
}

unsigned int KX7CharSetConverterUTF8::fromUTF16(void* dest, unsigned short const* source, unsigned int room,
                                                ILLCHAR_OPTYPE op, bool* illegal)
{
    if (!dest || !source)
        return 0;
    return kx7::encodePublished(encoder(), source, dest, room, op, illegal);
}

unsigned int KX7CharSetConverterUTF8::getMinUnitSize() const
{
    return 1;
}

unsigned int KX7CharSetConverterUTF8::getMaxUnitSize() const
{
    return 3;
}

unsigned int KX7CharSetConverterUTF8::getNullCharSize() const
{
    return 1;
}
