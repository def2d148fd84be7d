// kx7text benchmarks - the converters that are compared.
#include "bench/Peers.h"
#include "kx7/charset/KX7CharSet.h"

#include <iconv.h>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "kx7/converters/KX7CharSetConverter.h"

namespace kx7bench {

char* destination()
{
    alignas(4096) static char buffer[DESTINATION_SIZE];
    return buffer;
}

size_t Sample::sourceSize(Operation operation) const
{
    switch (operation) {
        case Operation::ENCODE:
        case Operation::NUM_BYTES: return units.size() * sizeof(char16_t);
        case Operation::FROM_UTF8: return utf8.size();
        default: return byteCount;
    }
}

void const* Sample::source(Operation operation) const
{
    switch (operation) {
        case Operation::ENCODE:
        case Operation::NUM_BYTES: return units.data();
        case Operation::FROM_UTF8: return utf8.data();
        default: return bytes.data();
    }
}

namespace {

constexpr int32_t CAPACITY = DESTINATION_SIZE - 64;

[[noreturn]] void fail(char const* name)
{
    fprintf(stderr, "kx7_bench: no converter %s\n", name);
    exit(3);
}

char16_t* unitDestination()
{
    return reinterpret_cast<char16_t*>(destination());
}

size_t storeCount(size_t count)
{
    memcpy(destination(), &count, sizeof count);
    return sizeof count;
}

/** Binds the operations of a concrete peer into contenders, so that nothing stands between the loop and the call. */
template <class Concrete>
class PeerOf : public Peer {
public:
    Contender contender(Operation operation, Sample const& s) override
    {
        auto* const peer = static_cast<Concrete*>(this);
        switch (operation) {
            case Operation::DECODE: return named([peer, &s] { return 2 * peer->toUTF16(s.bytes.data(), s.byteCount); });
            case Operation::ENCODE:
                return named([peer, &s] { return peer->fromUTF16(s.units.c_str(), s.units.size()); });
            case Operation::TO_UTF8: return named([peer, &s] { return peer->toUTF8(s.bytes.data(), s.byteCount); });
            case Operation::FROM_UTF8:
                return named([peer, &s] { return peer->fromUTF8(s.utf8.c_str(), s.utf8.size()); });
            case Operation::NUM_UNITS: return named([peer, &s] { return storeCount(peer->numUnits(s)); });
            case Operation::NUM_BYTES: return named([peer, &s] { return storeCount(peer->numBytes(s)); });
        }
        abort();
    }
    Contender lookUp() override
    {
        auto* const peer = static_cast<Concrete*>(this);
        return named([peer] { return peer->find(); });
    }
    std::string encode(std::u16string const& text) override
    {
        return {destination(), static_cast<Concrete*>(this)->fromUTF16(text.c_str(), text.size())};
    }
    std::u16string decode(std::string const& bytes) override
    {
        std::string const terminated = bytes + std::string(4, '\0');
        return {unitDestination(), static_cast<Concrete*>(this)->toUTF16(terminated.data(), bytes.size())};
    }

private:
    template <class Call>
    Contender named(Call call)
    {
        return kx7bench::contender(Concrete::NAME, call);
    }
};

class Kx7 final : public PeerOf<Kx7> {
public:
    static constexpr char const* NAME = "kx7";

    explicit Kx7(CharSet const& set)
        : m_set(set.charSet), m_needsLimit(set.charSet == KX7CS_UTF16),
          m_converter(*KX7CharSetConverter::getConverter(set.charSet))
    {
    }

    size_t toUTF16(char const* bytes, size_t size)
    {
        return m_converter.toUTF16(reinterpret_cast<unsigned short*>(destination()), bytes, CAPACITY / 2,
                                   ILLCHAR_REPLACE, nullptr, m_needsLimit ? static_cast<int>(size / 2) : -1);
    }
    size_t fromUTF16(char16_t const* text, size_t)
    {
        return m_converter.fromUTF16(destination(), reinterpret_cast<unsigned short const*>(text), CAPACITY,
                                     ILLCHAR_REPLACE, nullptr);
    }
    // UTF-32 has operations of its own for these two; the two-step ones end at the first zero byte.
    size_t toUTF8(char const* bytes, size_t)
    {
        if (m_set == KX7CS_UTF32)
            return m_converter.toUTF8(reinterpret_cast<unsigned char*>(destination()), bytes, CAPACITY, ILLCHAR_REPLACE,
                                      nullptr);
        return LocalToUTF8(reinterpret_cast<unsigned char*>(destination()), bytes, CAPACITY, m_set);
    }
    size_t fromUTF8(char const* utf8, size_t)
    {
        if (m_set == KX7CS_UTF32)
            return 4 * size_t{m_converter.fromUTF8(destination(), reinterpret_cast<unsigned char const*>(utf8),
                                                   CAPACITY / 4, ILLCHAR_REPLACE, nullptr)};
        return UTF8ToLocal(destination(), reinterpret_cast<unsigned char const*>(utf8), CAPACITY, m_set);
    }
    size_t numUnits(Sample const& s)
    {
        // In UTF-8 and UTF-32 the library counts a character that becomes two units once.
        size_t const units = m_converter.getNumUnits(s.bytes.data(), UNTIL_TERMINATOR);
        return m_set == KX7CS_UTF8 || m_set == KX7CS_UTF32 ? units + s.pairs : units;
    }
    size_t numBytes(Sample const& s)
    {
        return m_converter.getNumBytes(reinterpret_cast<unsigned short const*>(s.units.c_str()), UNTIL_TERMINATOR);
    }
    size_t find()
    {
        benchmark::DoNotOptimize(m_set);
        benchmark::DoNotOptimize(KX7CharSetConverter::getConverter(m_set));
        return 0;
    }

private:
    static constexpr unsigned int UNTIL_TERMINATOR = 0xFFFFFFFF;

    KX7CharSet m_set;
    bool m_needsLimit;
    KX7CharSetConverter& m_converter;
};

/** ICU by its fastest function for each work. */
class Icu final : public PeerOf<Icu> {
public:
    static constexpr char const* NAME = "icu";

    explicit Icu(CharSet const& set)
        : m_name(set.icu), m_set(set.charSet), m_converter(open(set.icu)), m_utf8(open("UTF-8"))
    {
    }
    ~Icu() override
    {
        ucnv_close(m_converter);
        ucnv_close(m_utf8);
    }

    size_t toUTF16(char const* bytes, size_t size) { return units(unitDestination(), CAPACITY / 2, bytes, size); }
    size_t fromUTF16(char16_t const* text, size_t count) { return bytes(destination(), CAPACITY, text, count); }
    size_t toUTF8(char const* bytes, size_t size) { return through(m_utf8, m_converter, bytes, size); }
    size_t fromUTF8(char const* utf8, size_t size) { return through(m_converter, m_utf8, utf8, size); }
    size_t numUnits(Sample const& s) { return units(nullptr, 0, s.bytes.data(), s.byteCount); }
    size_t numBytes(Sample const& s) { return bytes(nullptr, 0, s.units.c_str(), s.units.size()); }
    size_t find()
    {
        ucnv_close(open(m_name));
        return 0;
    }

private:
    static UConverter* open(char const* name)
    {
        UErrorCode error = U_ZERO_ERROR;
        UConverter* const converter = ucnv_open(name, &error);
        if (U_FAILURE(error))
            fail(name);
        return converter;
    }
    size_t units(char16_t* dest, int32_t capacity, char const* source, size_t size)
    {
        UErrorCode error = U_ZERO_ERROR;
        auto length = static_cast<int32_t>(size);
        if (m_set == KX7CS_UTF8)
            u_strFromUTF8(dest, capacity, &length, source, length, &error);
        else if (m_set == KX7CS_UTF32)
            u_strFromUTF32(dest, capacity, &length, reinterpret_cast<UChar32 const*>(source), length / 4, &error);
        else
            length = ucnv_toUChars(m_converter, dest, capacity, source, length, &error);
        return static_cast<size_t>(length);
    }
    size_t bytes(char* dest, int32_t capacity, char16_t const* text, size_t count)
    {
        UErrorCode error = U_ZERO_ERROR;
        auto length = static_cast<int32_t>(count);
        if (m_set == KX7CS_UTF8) {
            u_strToUTF8(dest, capacity, &length, text, length, &error);
        }
        else if (m_set == KX7CS_UTF32) {
            u_strToUTF32(reinterpret_cast<UChar32*>(dest), capacity / 4, &length, text, length, &error);
            length *= 4;
        }
        else {
            length = ucnv_fromUChars(m_converter, dest, capacity, text, length, &error);
        }
        return static_cast<size_t>(length);
    }
    static size_t through(UConverter* to, UConverter* from, char const* source, size_t size)
    {
        UErrorCode error = U_ZERO_ERROR;
        char* out = destination();
        UChar pivot[1024];
        UChar* pivotSource = pivot;
        UChar* pivotTarget = pivot;
        ucnv_convertEx(to, from, &out, out + CAPACITY, &source, source + size, pivot, &pivotSource, &pivotTarget,
                       pivot + 1024, true, true, &error);
        return static_cast<size_t>(out - destination());
    }

    char const* m_name;
    KX7CharSet m_set;
    UConverter* m_converter;
    UConverter* m_utf8;
};

class Iconv final : public PeerOf<Iconv> {
public:
    static constexpr char const* NAME = "iconv";

    explicit Iconv(CharSet const& set)
        : m_name(set.iconv), m_decode(open("UTF-16LE", set.iconv)), m_encode(open(set.iconv, "UTF-16LE")),
          m_toUTF8(open("UTF-8", set.iconv)), m_fromUTF8(open(set.iconv, "UTF-8"))
    {
    }
    ~Iconv() override
    {
        iconv_close(m_decode);
        iconv_close(m_encode);
        iconv_close(m_toUTF8);
        iconv_close(m_fromUTF8);
    }

    size_t toUTF16(char const* bytes, size_t size) { return convert(m_decode, bytes, size) / 2; }
    size_t fromUTF16(char16_t const* text, size_t units)
    {
        return convert(m_encode, reinterpret_cast<char const*>(text), units * 2);
    }
    size_t toUTF8(char const* bytes, size_t size) { return convert(m_toUTF8, bytes, size); }
    size_t fromUTF8(char const* utf8, size_t size) { return convert(m_fromUTF8, utf8, size); }

    // It cannot count without converting.
    size_t numUnits(Sample const&) { return 0; }
    size_t numBytes(Sample const&) { return 0; }

    size_t find()
    {
        iconv_close(open("UTF-16LE", m_name));
        return 0;
    }

private:
    static iconv_t open(char const* to, char const* from)
    {
        iconv_t const converter = iconv_open(to, from);
        if (converter == reinterpret_cast<iconv_t>(-1))
            fail(from);
        return converter;
    }
    static size_t convert(iconv_t converter, char const* source, size_t size)
    {
        char* in = const_cast<char*>(source);
        char* out = destination();
        size_t capacity = CAPACITY;
        iconv(converter, nullptr, nullptr, nullptr, nullptr);
        iconv(converter, &in, &size, &out, &capacity);
        iconv(converter, nullptr, nullptr, &out, &capacity);  // what it holds back for a combining character
        return static_cast<size_t>(out - destination());
    }

    char const* m_name;
    iconv_t m_decode;
    iconv_t m_encode;
    iconv_t m_toUTF8;
    iconv_t m_fromUTF8;
};

}  // namespace

std::unique_ptr<Peer> openPeer(char const* peer, CharSet const& charSet)
{
    if (strcmp(peer, "kx7") == 0)
        return std::make_unique<Kx7>(charSet);
    if (strcmp(peer, "icu") == 0 && charSet.icu)
        return std::make_unique<Icu>(charSet);
    if (strcmp(peer, "iconv") == 0 && charSet.iconv)
        return std::make_unique<Iconv>(charSet);
    return nullptr;
}

}  // namespace kx7bench
