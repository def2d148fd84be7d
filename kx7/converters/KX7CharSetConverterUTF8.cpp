// kx7text - UTF-8: one to four bytes a character. Lead bytes tell the length, and only that structure is checked:
// overlong forms, encoded surrogates and values above U+10FFFF pass. The strict decoder beside it refuses them.
#include "kx7/converters/KX7CharSetConverterUTF8.h"

#include "kx7/base/Utf8.h"
#include "kx7/converters/EngineOf.h"
#include "kx7/kernels/Kernels.h"
#include "kx7/kernels/ShortText.h"

namespace {

/** What is read, as a decoder has it. */
struct DecodedResults {
    static kx7::DecodedChar character(unsigned int codePoint, unsigned int length)
    {
        return {codePoint, length, length == 4 ? 2U : 1U, kx7::Found::CHARACTER, kx7::LimitCheck::CHECK};
    }
    static kx7::DecodedChar illegal(unsigned int length)
    {
        return kx7::DecodedChar::illegal(length, kx7::LimitCheck::CHECK);
    }
    static kx7::DecodedChar stray() { return {0, 1, 0, kx7::Found::STRAY, kx7::LimitCheck::CHECK}; }
    static kx7::DecodedChar truncated() { return kx7::DecodedChar::truncated(); }
};

/** The bytes 0x01 to 0x7F (and 0) at the front of a range, one unit each. */
void copyASCII(unsigned char const*& in, unsigned char const* end, unsigned short*& out, unsigned short const* outEnd)
{
    while (in != end && out != outEnd && *in < 0x80)
        *out++ = *in++;
}

/** Well-formed UTF-8 only; what is illegal is as long as the longest part that begins a well-formed sequence. */
struct StrictDecoder : kx7::DecoderBase {
    static void convertFast(unsigned char const*& in, unsigned char const* end, unsigned short*& out,
                            unsigned short* outEnd)
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

    static kx7::DecodedChar decodeOne(unsigned char const* p, unsigned char const* end)
    {
        return kx7::readUtf8<kx7::Utf8Rules::STRICT, DecodedResults>(p, end);
    }
};

}  // namespace

struct KX7CharSetConverterUTF8::Decoder : kx7::DecoderBase {
    static constexpr bool REPORTS = false;
    static constexpr bool STOPS = false;
    /** Kept on purpose. */
    static constexpr bool REPLACES_HALF_PAIR = true;

    static void convertFast(unsigned char const*& in, unsigned char const* end, unsigned short*& out,
                            unsigned short* outEnd)
    {
        kx7::copyShort<kx7::Identity::ASCII>(in, end, out, outEnd);
        if (end - in >= kx7::SHORT_KERNEL_MINIMUM)
            kx7::kernels().decodeUTF8(in, end, out, outEnd);
        copyASCII(in, end, out, outEnd);
    }

    static kx7::DecodedChar decodeOne(unsigned char const* p, unsigned char const* end)
    {
        return kx7::readUtf8<kx7::Utf8Rules::LENIENT, DecodedResults>(p, end);
    }
};

struct KX7CharSetConverterUTF8::Encoder : kx7::EncoderBase {
    static constexpr unsigned int MOST_BYTES = 3;

    static void convertFast(unsigned short const*& in, unsigned short const* end, unsigned char*& out,
                            unsigned char* outEnd)
    {
        kx7::copyShort<kx7::Identity::ASCII>(in, end, out, outEnd);
        if (end - in >= kx7::SHORT_KERNEL_MINIMUM)
            kx7::kernels().encodeUTF8(in, end, out, outEnd);
        while (in != end && out != outEnd && *in < 0x80)
            *out++ = static_cast<unsigned char>(*in++);
    }

    static kx7::EncodedChar encodeOne(unsigned short const* p, unsigned short const* end)
    {
        unsigned int const unit = p[0];
        if (unit < 0x800 || !kx7::isHighSurrogate(unit))
            return encoded(unit, 1);
        if (p + 1 == end)
            return kx7::EncodedChar::truncated();
        if (!kx7::isLowSurrogate(p[1]))
            return kx7::EncodedChar::unmappable(1);
        return encoded(kx7::codePointOf(unit, p[1]), 2);
    }

    static kx7::EncodedChar encoded(unsigned int codePoint, unsigned int units)
    {
        kx7::Utf8Code const c = kx7::utf8CodeOf(codePoint);
        return {c.code, c.length, units, kx7::Found::CHARACTER};
    }

    static size_t countFast(unsigned short const*& in, unsigned short const* end)
    {
        return end - in >= kx7::KERNEL_MINIMUM ? kx7::kernels().countAsUTF8(in, end) : 0;
    }

    /** Kept on purpose: the unit after the high surrogate is dropped, and six bytes take five from the capacity. */
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
        unsigned int const length = kx7::UTF8_LENGTHS[*in >> 4];
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

#define KX7_CONVERTER KX7CharSetConverterUTF8
#include "kx7/converters/PublishedOperations.inc"
