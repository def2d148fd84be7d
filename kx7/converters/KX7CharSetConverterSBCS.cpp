// kx7text - single-byte character sets: a table of 256 units one way, a sparse table of bytes the other.
#include "kx7/converters/KX7CharSetConverterSBCS.h"

#include <new>

#include "kx7/base/LoadLock.h"
#include "kx7/converters/EngineOf.h"
#include "kx7/kernels/Kernels.h"
#include "kx7/kernels/ShortText.h"
#include "kx7/kernels/SingleByte.h"

namespace {

kx7::SingleByteTables const& emptyTables()
{
    static kx7::SingleByteTables const empty;
    return empty;
}

}  // namespace

struct KX7CharSetConverterSBCS::Decoder : kx7::DecoderBase {
    /** A source limit of 0 converts nothing. */
    static kx7::SourceLimit limitOf(int sourceLimit) { return {sourceLimit == 0, kx7::positiveLimit(sourceLimit)}; }

    explicit Decoder(kx7::SingleByteTables const& tables) : m_tables(tables) {}

    void convertFast(unsigned char const*& in, unsigned char const* end, unsigned short*& out,
                     unsigned short* outEnd) const
    {
        if (m_tables.isLatin1)
            kx7::copyShort<kx7::Identity::LATIN1>(in, end, out, outEnd);
        else
            kx7::copyShort(m_tables.byteIdentity, in, end, out, outEnd);
        do {
            if (end - in >= kx7::SHORT_KERNEL_MINIMUM)
                kx7::kernels().decodeSingleByte(m_tables, in, end, out, outEnd);
            for (int i = 0; i < kx7::BETWEEN_KERNELS && in != end && out != outEnd; ++i) {
                unsigned short const unit = m_tables.toUnicode[*in];
                if (unit == 0 && *in != 0)
                    return;
                *out++ = unit;
                ++in;
            }
        } while (in != end && out != outEnd);
    }

    kx7::DecodedChar decodeOne(unsigned char const* p, unsigned char const* /*end*/) const
    {
        unsigned int const unit = m_tables.toUnicode[*p];
        if (unit == 0 && *p != 0)
            return kx7::DecodedChar::illegal(1, kx7::LimitCheck::CHECK);
        return kx7::DecodedChar::one(unit, 1);
    }

    static constexpr bool IS_DIRECT = true;
    kx7::Identity identity() const { return m_tables.byteIdentity; }
    kx7::DecodedChar look(unsigned char const* p, unsigned char const* end) const { return decodeOne(p, end); }

private:
    kx7::SingleByteTables const& m_tables;
};

struct KX7CharSetConverterSBCS::Encoder : kx7::EncoderBase {
    static constexpr unsigned int MOST_BYTES = 1;
    /** Kept on purpose: this direction leaves the caller's flag as it is. */
    static constexpr bool REPORTS = false;
    static constexpr bool IS_ONE_BYTE_A_UNIT = true;

    explicit Encoder(kx7::SingleByteTables const& tables) : m_tables(tables) {}

    void convertFast(unsigned short const*& in, unsigned short const* end, unsigned char*& out,
                     unsigned char* outEnd) const
    {
        if (m_tables.isLatin1)
            kx7::copyShort<kx7::Identity::LATIN1>(in, end, out, outEnd);
        else
            kx7::copyShort(m_tables.unitIdentity, in, end, out, outEnd);
        do {
            if (end - in >= kx7::SHORT_KERNEL_MINIMUM)
                kx7::kernels().encodeSingleByte(m_tables, in, end, out, outEnd);
            for (int i = 0; i < kx7::BETWEEN_KERNELS && in != end && out != outEnd; ++i) {
                unsigned char const byte = m_tables.get(*in);
                if (byte == 0 && *in != 0)
                    return;
                *out++ = byte;
                ++in;
            }
        } while (in != end && out != outEnd);
    }

    static constexpr bool HAS_RUN_FROM_UTF8 = true;
    void runFromUTF8(unsigned char const*& in, unsigned char*& out, unsigned char* outEnd) const
    {
        // The kernels find the end of the text by what has no byte; a caller's list may give U+0000 one.
        if (m_tables.get(0) == 0)
            kx7::kernels().singleByteFromUTF8(m_tables, in, out, outEnd);
    }

    kx7::EncodedChar encodeOne(unsigned short const* p, unsigned short const* /*end*/) const
    {
        unsigned int const byte = m_tables.get(*p);
        if (byte == 0 && *p != 0)
            return kx7::EncodedChar::unmappable(1);
        return {byte, 1, 1, kx7::Found::CHARACTER};
    }

    static constexpr bool IS_DIRECT = true;
    static constexpr bool IS_SINGLE = true;
    /** Latin text is ASCII for the most part, of which many characters are copied at once. */
    std::ptrdiff_t mostDirect() const
    {
        constexpr unsigned int AFTER_LATIN = 0x180;
        std::ptrdiff_t const most = kx7::kernels().mostDirectToSingleByte;
        return m_tables.windows[1].first < AFTER_LATIN ? 2 * most : most;
    }
    kx7::Identity identity() const { return m_tables.unitIdentity; }
    unsigned int codeOf(unsigned short unit) const { return m_tables.get(unit); }

private:
    kx7::SingleByteTables const& m_tables;
};

namespace kx7 {
template <>
constexpr Encoding EngineOf<KX7CharSetConverterSBCS>::encoding()
{
    return {Boundary::ANYWHERE, true};
}

template struct EngineOf<KX7CharSetConverterSBCS>;
}  // namespace kx7

KX7CharSetConverterSBCS::KX7CharSetConverterSBCS(unsigned short const* map, KX7CharSet charSet)
    : KX7CharSetConverter(charSet), m_pszName(nullptr), m_pToUnicode(nullptr), m_pFromUnicode(nullptr), m_pMap(map),
      m_pKernelTables(nullptr)
{
    pthread_mutex_init(&m_oLoadMutex, nullptr);
}

KX7CharSetConverterSBCS::KX7CharSetConverterSBCS(char const* name, KX7CharSet charSet)
    : KX7CharSetConverter(charSet), m_pszName(name), m_pToUnicode(nullptr), m_pFromUnicode(nullptr), m_pMap(nullptr),
      m_pKernelTables(nullptr)
{
    pthread_mutex_init(&m_oLoadMutex, nullptr);
}

KX7CharSetConverterSBCS::~KX7CharSetConverterSBCS()
{
    delete static_cast<kx7::SingleByteTables*>(m_pKernelTables);
    pthread_mutex_destroy(&m_oLoadMutex);
}

void KX7CharSetConverterSBCS::load()
{
    kx7::LoadLock const lock(m_oLoadMutex);
    if (m_pKernelTables || !m_pMap)
        return;
    // Without memory the converter stays unloaded, its codes unmapped, and the next conversion tries again.
    auto* const tables = new (std::nothrow) kx7::SingleByteTables(m_pMap);
    if (!tables)
        return;
    m_pKernelTables = tables;
    m_pFromUnicode = tables;
    m_pToUnicode.store(tables->toUnicode, std::memory_order_release);
}

inline kx7::SingleByteTables const& KX7CharSetConverterSBCS::tables()
{
    bool isLoaded = m_pToUnicode.load(std::memory_order_acquire) != nullptr;
    if (!isLoaded) {
        load();
        isLoaded = m_pToUnicode.load(std::memory_order_acquire) != nullptr;
    }
    return isLoaded ? *static_cast<kx7::SingleByteTables const*>(m_pKernelTables) : emptyTables();
}

inline KX7CharSetConverterSBCS::Decoder KX7CharSetConverterSBCS::decoder()
{
    return Decoder(tables());
}

inline KX7CharSetConverterSBCS::Encoder KX7CharSetConverterSBCS::encoder()
{
    return Encoder(tables());
}

unsigned int KX7CharSetConverterSBCS::getNumUnits(void const* source, unsigned int byteCount)
{
    if (!source)
        return 0;
    return kx7::saturated(kx7::terminatedLength(source, byteCount));
}

#define KX7_CONVERTER KX7CharSetConverterSBCS
#include "kx7/converters/PublishedOperations.inc"
