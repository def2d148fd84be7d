// kx7text - UTF-32 in host byte order, with direct paths from and to UTF-8.
#include "kx7/converters/KX7CharSetConverterUTF32.h"

#include "kx7/converters/EngineOf.h"
#include "kx7/converters/Wide.h"

namespace {

constexpr unsigned int BYTES = sizeof(unsigned int);

/** Smallest code point that a UTF-8 sequence may carry, by its length; anything smaller is an overlong form. */
constexpr unsigned int s_minChar[8] = {0, 0, 0x80, 0x800, 0x10000, 0x200000, 0x4000000, 0};

/** Refuses surrogates and what lies beyond U+10FFFF. */
struct StrictDecoder : kx7::DecoderBase {
    static kx7::DecodedChar decodeOne(unsigned char const* p, unsigned char const* end)
    {
        if (static_cast<size_t>(end - p) < BYTES)
            return kx7::DecodedChar::truncated();
        unsigned int const codePoint = kx7::loadWide<unsigned int>(p);
        if (codePoint > kx7::LAST_CODE_POINT || kx7::isSurrogate(codePoint))
            return kx7::DecodedChar::illegal(BYTES, kx7::LimitCheck::CHECK);
        return kx7::DecodedChar::of(codePoint, BYTES);
    }
};

/** Length of the UTF-8 sequence that a byte from 0xC0 begins; 0 for 0xFE and 0xFF. */
constexpr unsigned int sequenceLength(unsigned char lead)
{
    return lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF8 ? 4 : lead < 0xFC ? 5 : lead < 0xFE ? 6 : 0;
}

/** Writes `c` in the classic form of up to six bytes. */
unsigned char* appendUTF8(unsigned char* out, unsigned int c)
{
    unsigned int length = 1;
    if (c >= 0x80)
        while (++length < 6 && c >= s_minChar[length + 1]) {
        }
    if (length == 1) {
        *out++ = static_cast<unsigned char>(c);
        return out;
    }
    unsigned int shift = 6 * (length - 1);
    *out++ = static_cast<unsigned char>((0xFF00U >> length & 0xFF) | c >> shift);
    while (shift != 0) {
        shift -= 6;
        *out++ = static_cast<unsigned char>(0x80 | (c >> shift & 0x3F));
    }
    return out;
}

}  // namespace

/** Characters in a block of the runs below, which the compiler makes vectors of where none of them needs a pair. */
constexpr ptrdiff_t BLOCK = 32;

struct KX7CharSetConverterUTF32::Decoder : kx7::DecoderBase {
    static constexpr bool REPORTS = false;

    /** A source limit counts code points; 0 converts nothing. */
    static kx7::SourceLimit limitOf(int sourceLimit)
    {
        return {sourceLimit == 0, kx7::positiveLimit(sourceLimit, BYTES)};
    }

    static size_t textLength(unsigned char const* text, size_t most)
    {
        return kx7::wideLength<unsigned int>(text, most);
    }
    static size_t firstLength(unsigned char const* text, size_t most) { return textLength(text, most); }

    static size_t fewestBytes(size_t units) { return (units + 1) / 2 * BYTES; }

    static void convertFast(unsigned char const*& in, unsigned char const* end, unsigned short*& out,
                            unsigned short* outEnd)
    {
        while (end - in >= ptrdiff_t{BLOCK * BYTES} && outEnd - out >= 2 * BLOCK) {
            unsigned int block[BLOCK];
            memcpy(block, in, sizeof block);
            in += sizeof block;
            unsigned int all = 0;
            for (unsigned int const codePoint : block)
                all |= codePoint;
            if (all <= 0xFFFF) {
                for (ptrdiff_t i = 0; i != BLOCK; ++i)
                    out[i] = static_cast<unsigned short>(block[i]);
                out += BLOCK;
            }
            else {
                for (unsigned int const codePoint : block)
                    out = kx7::appendUTF16(out, charOf(codePoint));
            }
        }
        for (; end - in >= ptrdiff_t{BYTES} && outEnd - out >= 2; in += BYTES)
            out = kx7::appendUTF16(out, charOf(kx7::loadWide<unsigned int>(in)));
    }

    static kx7::DecodedChar decodeOne(unsigned char const* p, unsigned char const* end)
    {
        if (static_cast<size_t>(end - p) < BYTES)
            return kx7::DecodedChar::truncated();
        return charOf(kx7::loadWide<unsigned int>(p));
    }

    static kx7::DecodedChar charOf(unsigned int codePoint)
    {
        return {codePoint, BYTES, codePoint > 0xFFFF ? 2U : 1U, kx7::Found::CHARACTER, kx7::LimitCheck::CHECK};
    }
};

struct KX7CharSetConverterUTF32::Encoder : kx7::EncoderBase {
    static constexpr unsigned int MOST_BYTES = 4;

    static constexpr unsigned int CODE_SIZE = BYTES;

    static void convertFast(unsigned short const*& in, unsigned short const* end, unsigned char*& out,
                            unsigned char* outEnd)
    {
        while (end - in >= BLOCK && outEnd - out >= ptrdiff_t{BLOCK * BYTES}) {
            if (hasSurrogate(in)) {
                unsigned short const* const blockEnd = in + BLOCK;
                while (in < blockEnd)
                    if (!runOne(in, end, out))
                        return;
                continue;
            }
            unsigned int block[BLOCK];
            for (ptrdiff_t i = 0; i != BLOCK; ++i)
                block[i] = in[i];
            memcpy(out, block, sizeof block);
            in += BLOCK;
            out += sizeof block;
        }
        while (in != end && outEnd - out >= ptrdiff_t{BYTES} && runOne(in, end, out)) {
        }
    }

    static bool hasSurrogate(unsigned short const* block)
    {
        unsigned short found = 0;
        for (ptrdiff_t i = 0; i != BLOCK; ++i)
            found = static_cast<unsigned short>(found | ((block[i] & 0xF800) == 0xD800 ? 0xFFFF : 0));
        return found != 0;
    }

    /** Converts the character at `in` if it is one; there is capacity for it. */
    static bool runOne(unsigned short const*& in, unsigned short const* end, unsigned char*& out)
    {
        kx7::EncodedChar const c = encodeOne(in, end);
        if (c.found != kx7::Found::CHARACTER)
            return false;
        write(out, c);
        in += c.consumed;
        return true;
    }

    /** All but a high surrogate at the end, which may be truncated: whatever is not a pair is one code a unit. */
    static size_t countFast(unsigned short const*& in, unsigned short const* end)
    {
        // A counter as wide as a unit, and one comparison for both units, so that the compiler makes vectors of the
        // loop; a run of this length cannot overflow the counter.
        auto units = std::min(end - in, ptrdiff_t{0xFFFF});
        if (units != 0 && kx7::isHighSurrogate(in[units - 1]))
            --units;
        unsigned short pairs = 0;
        for (ptrdiff_t i = 1; i < units; ++i) {
            int const differences = (in[i - 1] ^ 0xD800) | (in[i] ^ 0xDC00);
            pairs = static_cast<unsigned short>(pairs + ((differences & 0xFC00) == 0 ? 1 : 0));
        }
        in += units;
        return BYTES * (static_cast<size_t>(units) - pairs);
    }

    static kx7::EncodedChar encodeOne(unsigned short const* p, unsigned short const* end)
    {
        if (!kx7::isHighSurrogate(p[0]))
            return {p[0], BYTES, 1, kx7::Found::CHARACTER};
        if (p + 1 == end)
            return kx7::EncodedChar::truncated();
        if (!kx7::isLowSurrogate(p[1]))
            return kx7::EncodedChar::unmappable(1);
        return {kx7::codePointOf(p[0], p[1]), BYTES, 2, kx7::Found::CHARACTER};
    }

    static void write(unsigned char*& out, kx7::EncodedChar const& c) { kx7::storeWide(out, c.code); }

    static void replace(unsigned char*& out) { kx7::storeWide(out, static_cast<unsigned int>('?')); }

    static bool escape(unsigned short const*& in, unsigned short const* /*end*/, unsigned int /*consumed*/,
                       unsigned char*& out, unsigned char*& outEnd)
    {
        if (static_cast<size_t>(outEnd - out) < kx7::ESCAPE_LENGTH * BYTES)
            return false;
        unsigned char text[kx7::ESCAPE_LENGTH];
        kx7::writeEscape(text, *in++);
        for (unsigned char const c : text)
            kx7::storeWide(out, static_cast<unsigned int>(c));
        return true;
    }
};

namespace kx7 {
template <>
auto EngineOf<KX7CharSetConverterUTF32>::strictDecoder(KX7CharSetConverter& /*converter*/)
{
    return StrictDecoder();
}

template struct EngineOf<KX7CharSetConverterUTF32>;
}  // namespace kx7

KX7CharSetConverterUTF32::KX7CharSetConverterUTF32(KX7CharSet charSet) : KX7CharSetConverter(charSet)
{
}

KX7CharSetConverterUTF32::~KX7CharSetConverterUTF32() = default;

KX7CharSetConverterUTF32::Decoder KX7CharSetConverterUTF32::decoder()
{
    return {};
}

KX7CharSetConverterUTF32::Encoder KX7CharSetConverterUTF32::encoder()
{
    return {};
}

unsigned int KX7CharSetConverterUTF32::UTF32fromUTF8(unsigned char** position)
{
    unsigned char const* const p = *position;
    unsigned char const lead = p[0];
    if (lead < 0xC0 || lead >= 0xFE) {
        *position += 1;
        return lead < 0x80 ? lead : kx7::REPLACEMENT_CHAR;
    }
    unsigned int const length = sequenceLength(lead);
    unsigned int value = lead & (0x7FU >> length);
    for (unsigned int i = 1; i < length; ++i) {
        if ((p[i] & 0xC0) != 0x80) {
            *position += 1;
            return kx7::REPLACEMENT_CHAR;
        }
        value = value << 6 | (p[i] & 0x3FU);
    }
    *position += length;
    if (value < s_minChar[length] || kx7::isSurrogate(value) || value == 0xFFFE || value == 0xFFFF)
        return kx7::REPLACEMENT_CHAR;
    return value;
}

unsigned int KX7CharSetConverterUTF32::fromUTF8(void* dest, unsigned char const* source, unsigned int capacity,
                                                ILLCHAR_OPTYPE, bool* illegal)
{
    if (illegal)
        *illegal = false;
    if (!dest || !source)
        return 0;
    auto* out = static_cast<unsigned char*>(dest);
    auto* in = const_cast<unsigned char*>(source);
    for (unsigned int count = 0; count < capacity; ++count) {
        unsigned int const codePoint = UTF32fromUTF8(&in);
        kx7::storeWide(out, codePoint);
        if (codePoint == 0)
            return count;
    }
    kx7::storeWide(out, 0U);
    return capacity;
}

unsigned int KX7CharSetConverterUTF32::toUTF8(unsigned char* dest, void const* source, unsigned int capacity,
                                              ILLCHAR_OPTYPE, bool* illegal)
{
    if (illegal)
        *illegal = false;
    if (!dest || !source)
        return 0;
    auto const* in = static_cast<unsigned char const*>(source);
    unsigned char* out = dest;
    // Kept on purpose: the capacity is looked at before each character only, and one that ran past it leaves no
    // terminator.
    while (static_cast<size_t>(out - dest) < capacity) {
        unsigned int c = kx7::loadWide<unsigned int>(in);
        in += BYTES;
        if (c == 0)
            break;
        if (kx7::isSurrogate(c) || c >= 0x80000000) {
            if (illegal)
                *illegal = true;
            c = kx7::REPLACEMENT_CHAR;
        }
        out = appendUTF8(out, c);
    }
    if (static_cast<size_t>(out - dest) <= capacity)
        *out = 0;
    return kx7::saturated(static_cast<size_t>(out - dest));  // the last character may take it beyond the capacity
}

unsigned int KX7CharSetConverterUTF32::getNumUnits(void const* source, unsigned int byteCount)
{
    return source ? kx7::countWide<unsigned int>(source, byteCount) : 0;
}

#define KX7_CONVERTER KX7CharSetConverterUTF32
#include "kx7/converters/PublishedOperations.inc"
