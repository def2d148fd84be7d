// kx7text - how a converter class becomes an engine; included by the sources of the classes only (internal).
#ifndef KX7_CONVERTERS_ENGINEOF_H
#define KX7_CONVERTERS_ENGINEOF_H

#include <utility>

#include "kx7/converters/DirectUtf8.h"
#include "kx7/converters/PublishedRules.h"

namespace kx7 {

template <class Converter>
auto EngineOf<Converter>::strictDecoder(KX7CharSetConverter& converter)
{
    return static_cast<Converter&>(converter).decoder();
}

template <class Converter>
Progress EngineOf<Converter>::decode(KX7CharSetConverter& converter, unsigned char const* source,
                                     unsigned char const* sourceEnd, unsigned short* dest, unsigned short* destEnd,
                                     bool last)
{
    return decodeRange(static_cast<Converter&>(converter).decoder(), {source, sourceEnd, dest, destEnd}, last);
}

template <class Converter>
Progress EngineOf<Converter>::decodeStrict(KX7CharSetConverter& converter, unsigned char const* source,
                                           unsigned char const* sourceEnd, unsigned short* dest,
                                           unsigned short* destEnd, bool last)
{
    return decodeRange(strictDecoder(converter), {source, sourceEnd, dest, destEnd}, last);
}

template <class Converter>
ErrorRun EngineOf<Converter>::illegalRun(KX7CharSetConverter& converter, unsigned char const* source,
                                         unsigned char const* sourceEnd, bool last, size_t most)
{
    return kx7::illegalRun(strictDecoder(converter), source, sourceEnd, last, most);
}

template <class Converter>
Progress EngineOf<Converter>::encode(KX7CharSetConverter& converter, unsigned short const* source,
                                     unsigned short const* sourceEnd, unsigned char* dest, unsigned char* destEnd,
                                     bool last)
{
    return encodeRange(static_cast<Converter&>(converter).encoder(), {source, sourceEnd, dest, destEnd}, last);
}

template <class Converter>
ErrorRun EngineOf<Converter>::unmappableRun(KX7CharSetConverter& converter, unsigned short const* source,
                                            unsigned short const* sourceEnd, size_t most)
{
    return kx7::unmappableRun(static_cast<Converter&>(converter).encoder(), source, sourceEnd, most);
}

template <class Converter>
TextProgress EngineOf<Converter>::decodeText(KX7CharSetConverter& converter, ByteText const& source,
                                             unsigned short* dest, unsigned int capacity)
{
    size_t const unused = capacity + ESCAPE_LENGTH >= PIECE ? UNUSED_OF_PIECE : 0;
    return kx7::decodeText(static_cast<Converter&>(converter).decoder(),
                           {source, dest, capacity, ILLCHAR_REPLACE, nullptr, NO_LIMIT, unused});
}

template <class Converter>
TextProgress EngineOf<Converter>::encodeText(KX7CharSetConverter& converter, UnitText const& source,
                                             unsigned char* dest, unsigned int capacity, ILLCHAR_OPTYPE op, bool last)
{
    return kx7::encodeText(static_cast<Converter&>(converter).encoder(),
                           {source, dest, capacity, op, nullptr, EscapeCapacity::EXACT, last});
}

template <class Converter>
constexpr RunFromUTF8* EngineOf<Converter>::runFromUTF8()
{
    using Encoder = decltype(std::declval<Converter&>().encoder());
    if constexpr (Encoder::HAS_RUN_FROM_UTF8)
        return [](KX7CharSetConverter& converter, unsigned char const*& in, unsigned char*& out,
                  unsigned char* outEnd) { static_cast<Converter&>(converter).encoder().runFromUTF8(in, out, outEnd); };
    return nullptr;
}

template <class Converter>
unsigned int EngineOf<Converter>::toUTF16(KX7CharSetConverter& converter, unsigned short* dest, ByteText const& source,
                                          unsigned int capacity, int sourceLimit)
{
    return decodePublished(static_cast<Converter&>(converter).decoder(), source, dest, capacity, ILLCHAR_REPLACE,
                           nullptr, sourceLimit);
}

template <class Converter>
constexpr DirectConversion* EngineOf<Converter>::toUTF8()
{
    using Decoder = decltype(std::declval<Converter&>().decoder());
    if constexpr (Decoder::IS_DIRECT)
        return [](KX7CharSetConverter& converter, unsigned char const* source, unsigned char* dest, size_t capacity) {
            return shortToUTF8(static_cast<Converter&>(converter).decoder(), source, dest, capacity);
        };
    return nullptr;
}

template <class Converter>
constexpr DirectConversion* EngineOf<Converter>::fromUTF8()
{
    using Encoder = decltype(std::declval<Converter&>().encoder());
    if constexpr (Encoder::IS_DIRECT)
        return [](KX7CharSetConverter& converter, unsigned char const* source, unsigned char* dest, size_t capacity) {
            return shortFromUTF8(static_cast<Converter&>(converter).encoder(), source, dest, capacity);
        };
    return nullptr;
}

template <class Converter>
Engine const EngineOf<Converter>::ENGINE = {
    &EngineOf::decode,        &EngineOf::decodeStrict, &EngineOf::illegalRun, &EngineOf::encode,
    &EngineOf::unmappableRun, &EngineOf::decodeText,   &EngineOf::encodeText, EngineOf::runFromUTF8(),
    &EngineOf::toUTF16,       EngineOf::toUTF8(),      EngineOf::fromUTF8(),
};

}  // namespace kx7

#endif
