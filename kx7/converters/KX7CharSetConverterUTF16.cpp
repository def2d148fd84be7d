// kx7text - UTF-16 in host byte order: units are copied as they are.
#include "kx7/converters/KX7CharSetConverterUTF16.h"

#include "kx7/converters/EngineOf.h"
#include "kx7/converters/Wide.h"

namespace {

constexpr unsigned int UNIT_SIZE = sizeof(unsigned short);

/** Refuses surrogates without their partners. */
struct StrictDecoder : kx7::DecoderBase {
    static kx7::DecodedChar decodeOne(unsigned char const* p, unsigned char const* end)
    {
        auto const available = static_cast<size_t>(end - p);
        if (available < UNIT_SIZE)
            return kx7::DecodedChar::truncated();
        unsigned int const unit = kx7::loadWide<unsigned short>(p);
        if (!kx7::isSurrogate(unit))
            return kx7::DecodedChar::one(unit, UNIT_SIZE);
        if (kx7::isHighSurrogate(unit)) {
            if (available < 2 * UNIT_SIZE)
                return kx7::DecodedChar::truncated();
            unsigned int const low = kx7::loadWide<unsigned short>(p + UNIT_SIZE);
            if (kx7::isLowSurrogate(low))
                return kx7::DecodedChar::of(kx7::codePointOf(unit, low), 2 * UNIT_SIZE);
        }
        return kx7::DecodedChar::illegal(UNIT_SIZE, kx7::LimitCheck::CHECK);
    }
};

}  // namespace

struct KX7CharSetConverterUTF16::Decoder : kx7::DecoderBase {
    static constexpr bool REPORTS = false;

    /** Kept on purpose: a source limit that is not positive, -1 for "no bound" included, converts nothing. */
    static kx7::SourceLimit limitOf(int sourceLimit)
    {
        return {sourceLimit <= 0, kx7::positiveLimit(sourceLimit, UNIT_SIZE)};
    }

    static size_t textLength(unsigned char const* text, size_t most)
    {
        return kx7::wideLength<unsigned short>(text, most);
    }
    static size_t firstLength(unsigned char const* text, size_t most) { return textLength(text, most); }

    static size_t fewestBytes(size_t units) { return units * UNIT_SIZE; }

    static void convertFast(unsigned char const*& in, unsigned char const* end, unsigned short*& out,
                            unsigned short* outEnd)
    {
        size_t const units = std::min(static_cast<size_t>(end - in) / UNIT_SIZE, static_cast<size_t>(outEnd - out));
        if (units == 0)
            return;  // where there is nothing to copy a pointer may be null
        memmove(out, in, units * UNIT_SIZE);
        in += units * UNIT_SIZE;
        out += units;
    }

    static kx7::DecodedChar decodeOne(unsigned char const* p, unsigned char const* end)
    {
        if (static_cast<size_t>(end - p) < UNIT_SIZE)
            return kx7::DecodedChar::truncated();
        return kx7::DecodedChar::one(kx7::loadWide<unsigned short>(p), UNIT_SIZE);
    }
};

struct KX7CharSetConverterUTF16::Encoder : kx7::EncoderBase {
    static constexpr unsigned int MOST_BYTES = 2;

    static constexpr unsigned int CODE_SIZE = UNIT_SIZE;

    static void convertFast(unsigned short const*& in, unsigned short const* end, unsigned char*& out,
                            unsigned char* outEnd)
    {
        size_t const units = std::min(static_cast<size_t>(end - in), static_cast<size_t>(outEnd - out) / UNIT_SIZE);
        if (units == 0)
            return;  // as above
        memmove(out, in, units * UNIT_SIZE);
        in += units;
        out += units * UNIT_SIZE;
    }

    static size_t countFast(unsigned short const*& in, unsigned short const* end)
    {
        auto const units = static_cast<size_t>(end - in);
        in = end;
        return units * UNIT_SIZE;
    }

    static kx7::EncodedChar encodeOne(unsigned short const* p, unsigned short const* /*end*/)
    {
        return {p[0], UNIT_SIZE, 1, kx7::Found::CHARACTER};
    }

    static void write(unsigned char*& out, kx7::EncodedChar const& c)
    {
        kx7::storeWide(out, static_cast<unsigned short>(c.code));
    }
};

namespace kx7 {
template <>
auto EngineOf<KX7CharSetConverterUTF16>::strictDecoder(KX7CharSetConverter& /*converter*/)
{
    return StrictDecoder();
}

/** Kept on purpose: without a source limit this converter decodes nothing. */
template <>
TextProgress EngineOf<KX7CharSetConverterUTF16>::decodeText(KX7CharSetConverter&, ByteText const&, unsigned short*,
                                                            unsigned int)
{
    return {0, 0, false, false};
}

template struct EngineOf<KX7CharSetConverterUTF16>;
}  // namespace kx7

KX7CharSetConverterUTF16::KX7CharSetConverterUTF16(KX7CharSet charSet) : KX7CharSetConverter(charSet)
{
}

KX7CharSetConverterUTF16::~KX7CharSetConverterUTF16() = default;

KX7CharSetConverterUTF16::Decoder KX7CharSetConverterUTF16::decoder()
{
    return {};
}

KX7CharSetConverterUTF16::Encoder KX7CharSetConverterUTF16::encoder()
{
    return {};
}

unsigned int KX7CharSetConverterUTF16::getNumUnits(void const* source, unsigned int byteCount)
{
    return source ? kx7::countWide<unsigned short>(source, byteCount) : 0;
}

#define KX7_CONVERTER KX7CharSetConverterUTF16
#include "kx7/converters/PublishedOperations.inc"
