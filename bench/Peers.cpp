// kx7text benchmarks - the converters that are compared.
#include "bench/Peers.h"

#include <iconv.h>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "kx7/converters/KX7CharSetConverter.h"

namespace kx7bench {

namespace {

[[noreturn]] void fail(char const* name)
{
    fprintf(stderr, "kx7_bench: no converter %s\n", name);
    exit(3);
}

class Kx7 : public Peer {
public:
    explicit Kx7(CharSet const& set) : m_set(set.charSet), m_converter(*KX7CharSetConverter::getConverter(set.charSet))
    {
    }

    size_t decode(char const* bytes, size_t, char16_t* dest, size_t room) override
    {
        return m_converter.toUTF16(reinterpret_cast<unsigned short*>(dest), bytes, static_cast<unsigned int>(room - 1),
                                   ILLCHAR_REPLACE, nullptr, -1);
    }
    size_t encode(char16_t const* text, size_t, char* dest, size_t room) override
    {
        return m_converter.fromUTF16(dest, reinterpret_cast<unsigned short const*>(text),
                                     static_cast<unsigned int>(room - 4), ILLCHAR_REPLACE, nullptr);
    }
    size_t toUTF8(char const* bytes, size_t, char* dest, size_t room) override
    {
        return LocalToUTF8(reinterpret_cast<unsigned char*>(dest), bytes, static_cast<int>(room), m_set);
    }
    size_t fromUTF8(char const* utf8, size_t, char* dest, size_t room) override
    {
        return UTF8ToLocal(dest, reinterpret_cast<unsigned char const*>(utf8), static_cast<int>(room), m_set);
    }

private:
    KX7CharSet m_set;
    KX7CharSetConverter& m_converter;
};

class Icu : public Peer {
public:
    explicit Icu(CharSet const& set)
        : m_isUTF8(set.charSet == KX7CS_UTF8), m_converter(open(set.icu)), m_utf8(open("UTF-8"))
    {
    }
    ~Icu() override
    {
        ucnv_close(m_converter);
        ucnv_close(m_utf8);
    }

    size_t decode(char const* bytes, size_t size, char16_t* dest, size_t room) override
    {
        UErrorCode error = U_ZERO_ERROR;
        if (m_isUTF8) {
            int32_t length = 0;
            u_strFromUTF8(dest, static_cast<int32_t>(room), &length, bytes, static_cast<int32_t>(size), &error);
            return static_cast<size_t>(length);
        }
        return static_cast<size_t>(
            ucnv_toUChars(m_converter, dest, static_cast<int32_t>(room), bytes, static_cast<int32_t>(size), &error));
    }
    size_t encode(char16_t const* text, size_t units, char* dest, size_t room) override
    {
        UErrorCode error = U_ZERO_ERROR;
        if (m_isUTF8) {
            int32_t length = 0;
            u_strToUTF8(dest, static_cast<int32_t>(room), &length, text, static_cast<int32_t>(units), &error);
            return static_cast<size_t>(length);
        }
        return static_cast<size_t>(
            ucnv_fromUChars(m_converter, dest, static_cast<int32_t>(room), text, static_cast<int32_t>(units), &error));
    }
    size_t toUTF8(char const* bytes, size_t size, char* dest, size_t room) override
    {
        return through(m_utf8, m_converter, bytes, size, dest, room);
    }
    size_t fromUTF8(char const* utf8, size_t size, char* dest, size_t room) override
    {
        return through(m_converter, m_utf8, utf8, size, dest, room);
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
    static size_t through(UConverter* to, UConverter* from, char const* source, size_t size, char* dest, size_t room)
    {
        UErrorCode error = U_ZERO_ERROR;
        char* out = dest;
        UChar pivot[1024];
        UChar* pivotSource = pivot;
        UChar* pivotTarget = pivot;
        ucnv_convertEx(to, from, &out, dest + room, &source, source + size, pivot, &pivotSource, &pivotTarget,
                       pivot + 1024, true, true, &error);
        return static_cast<size_t>(out - dest);
    }

    bool m_isUTF8;
    UConverter* m_converter;
    UConverter* m_utf8;
};

class Iconv : public Peer {
public:
    explicit Iconv(CharSet const& set)
        : m_decode(open("UTF-16LE", set.iconv)), m_encode(open(set.iconv, "UTF-16LE")),
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

    size_t decode(char const* bytes, size_t size, char16_t* dest, size_t room) override
    {
        return run(m_decode, bytes, size, reinterpret_cast<char*>(dest), room * 2) / 2;
    }
    size_t encode(char16_t const* text, size_t units, char* dest, size_t room) override
    {
        return run(m_encode, reinterpret_cast<char const*>(text), units * 2, dest, room);
    }
    size_t toUTF8(char const* bytes, size_t size, char* dest, size_t room) override
    {
        return run(m_toUTF8, bytes, size, dest, room);
    }
    size_t fromUTF8(char const* utf8, size_t size, char* dest, size_t room) override
    {
        return run(m_fromUTF8, utf8, size, dest, room);
    }

private:
    static iconv_t open(char const* to, char const* from)
    {
        iconv_t const converter = iconv_open(to, from);
        if (converter == reinterpret_cast<iconv_t>(-1))
            fail(from);
        return converter;
    }
    static size_t run(iconv_t converter, char const* source, size_t size, char* dest, size_t room)
    {
        char* in = const_cast<char*>(source);
        char* out = dest;
        iconv(converter, nullptr, nullptr, nullptr, nullptr);
        iconv(converter, &in, &size, &out, &room);
        iconv(converter, nullptr, nullptr, &out, &room);  // what it holds back for a combining character
        return static_cast<size_t>(out - dest);
    }

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
