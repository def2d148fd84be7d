// kx7text - single-byte character sets: a table of 256 units one way, a sparse table of bytes the other.
#include "kx7/converters/KX7CharSetConverterSBCS.h"

#include <memory>

#include "kx7/converters/EngineOf.h"
#include "kx7/converters/LoadLock.h"
#include "kx7/converters/LookupTables.h"
#include "kx7/kernels/Kernels.h"

struct KX7CharSetConverterSBCS::Decoder : kx7::DecoderBase {
    explicit Decoder(unsigned short const* toUnicode) : m_toUnicode(toUnicode) {}

    void run(unsigned char const*& in, unsigned char const* end, unsigned short*& out, unsigned short* outEnd) const
    {
        if (end - in >= kx7::KERNEL_MINIMUM)
            kx7::kernels().decodeSingleByte(m_toUnicode, in, end, out, outEnd);
        while (in != end && out != outEnd) {
            unsigned short const unit = m_toUnicode[*in];
            if (unit == 0)
                break;
            *out++ = unit;
            ++in;
        }
    }

    kx7::DecodedChar step(unsigned char const* p, unsigned char const* /*end*/) const
    {
        unsigned int const unit = m_toUnicode[*p];
        if (unit == 0 && *p != 0)
            return kx7::DecodedChar::illegal(1, kx7::LimitCheck::CHECK);
        return kx7::DecodedChar::one(unit, 1);
    }

private:
    unsigned short const* m_toUnicode;
};

struct KX7CharSetConverterSBCS::Encoder : kx7::EncoderBase {
    explicit Encoder(LookupTable<unsigned char> const& fromUnicode) : m_fromUnicode(fromUnicode) {}

    void run(unsigned short const*& in, unsigned short const* end, unsigned char*& out, unsigned char* outEnd) const
    {
        if (end - in >= kx7::KERNEL_MINIMUM)
            kx7::kernels().encodeSingleByte(m_fromUnicode, in, end, out, outEnd);
        while (in != end && out != outEnd) {
            unsigned char const byte = m_fromUnicode.get(*in);
            if (byte == 0)
                break;
            *out++ = byte;
            ++in;
        }
    }

    kx7::EncodedChar step(unsigned short const* p, unsigned short const* /*end*/) const
    {
        unsigned int const byte = m_fromUnicode.get(*p);
        if (byte == 0 && *p != 0)
            return kx7::EncodedChar::unmappable(1);
        return {byte, 1, 1, kx7::Found::CHARACTER};
    }

private:
    LookupTable<unsigned char> const& m_fromUnicode;
};

template struct kx7::EngineOf<KX7CharSetConverterSBCS>;

KX7CharSetConverterSBCS::KX7CharSetConverterSBCS(unsigned short const* map, KX7CharSet charSet)
    : KX7CharSetConverter(charSet), m_pszName(nullptr), m_pToUnicode(nullptr), m_pFromUnicode(nullptr), m_pMap(map)
{
    pthread_mutex_init(&m_oLoadMutex, nullptr);
}

KX7CharSetConverterSBCS::KX7CharSetConverterSBCS(char const* name, KX7CharSet charSet)
    : KX7CharSetConverter(charSet), m_pszName(name), m_pToUnicode(nullptr), m_pFromUnicode(nullptr), m_pMap(nullptr)
{
    pthread_mutex_init(&m_oLoadMutex, nullptr);
}

KX7CharSetConverterSBCS::~KX7CharSetConverterSBCS()
{
    delete[] m_pToUnicode.load(std::memory_order_relaxed);
    delete m_pFromUnicode;
    pthread_mutex_destroy(&m_oLoadMutex);
}

void KX7CharSetConverterSBCS::load()
{
    kx7::LoadLock const lock(m_oLoadMutex);
    if (loaded() || !m_pMap)
        return;
    // Without memory the converter stays unloaded, its codes unmapped, and the next conversion tries again.
    std::unique_ptr<unsigned short[]> toUnicode(new (std::nothrow) unsigned short[256]());
    std::unique_ptr<LookupTable<unsigned char>> fromUnicode(new (std::nothrow) LookupTable<unsigned char>);
    if (!toUnicode || !fromUnicode)
        return;
    for (unsigned short const* pair = m_pMap; pair[0] != 0 || pair[1] != 0; pair += 2) {
        auto const byte = static_cast<unsigned char>(pair[0]);
        toUnicode[byte] = pair[1];
        fromUnicode->put(pair[1], byte);
    }
    m_pFromUnicode = fromUnicode.release();
    m_pToUnicode.store(toUnicode.release(), std::memory_order_release);
}

bool KX7CharSetConverterSBCS::loaded()
{
    return m_pToUnicode.load(std::memory_order_acquire) != nullptr;
}

KX7CharSetConverterSBCS::Decoder KX7CharSetConverterSBCS::decoder()
{
    if (!loaded())
        load();
    unsigned short const* const toUnicode = m_pToUnicode.load(std::memory_order_acquire);
    return Decoder(toUnicode ? toUnicode : LookupTable<unsigned short>::m_gNullTable);
}

KX7CharSetConverterSBCS::Encoder KX7CharSetConverterSBCS::encoder()
{
    if (!loaded())
        load();
    return Encoder(kx7::tableOrEmpty(loaded() ? m_pFromUnicode : nullptr));
}

unsigned int KX7CharSetConverterSBCS::getNumUnits(void const* source, unsigned int byteCount)
{
    if (!source)
        return 0;
    return static_cast<unsigned int>(kx7::terminatedLength(source, byteCount));
}

unsigned int KX7CharSetConverterSBCS::toUTF16Within(unsigned short* dest, kx7::ByteText const& source,
                                                    unsigned int room, ILLCHAR_OPTYPE op, bool* illegal,
                                                    int sourceLimit)
{
    if (illegal)
        *illegal = false;
    unsigned int const roomAtLimit = sourceLimit == 0 ? 0 : room;
    return kx7::decodeTerminated(decoder(), source, dest, roomAtLimit, op, illegal, kx7::positiveLimit(sourceLimit));
}

unsigned int KX7CharSetConverterSBCS::toUTF16(unsigned short* dest, void const* source, unsigned int room,
                                              ILLCHAR_OPTYPE op, bool* illegal, int sourceLimit)
{
    if (!dest || !source)
        return 0;
    return toUTF16Within(dest, kx7::terminatedText(source), room, op, illegal, sourceLimit);
}

unsigned int KX7CharSetConverterSBCS::getNumBytes(unsigned short const* source, unsigned int unitCount)
{
    if (!source)
        return 0;
    return static_cast<unsigned int>(kx7::unitLength(source, unitCount));
}

unsigned int KX7CharSetConverterSBCS::fromUTF16(void* dest, unsigned short const* source, unsigned int room,
                                                ILLCHAR_OPTYPE op, bool* /*illegal*/)
{
    if (!dest || !source)
        return 0;
    // Kept on purpose: this direction leaves the caller's flag as it is.
    return kx7::encodeTerminated(encoder(), source, dest, room, op, nullptr);
}

unsigned int KX7CharSetConverterSBCS::getMinUnitSize() const
{
    return 1;
}

unsigned int KX7CharSetConverterSBCS::getMaxUnitSize() const
{
    return 1;
}

unsigned int KX7CharSetConverterSBCS::getNullCharSize() const
{
    return 1;
}
