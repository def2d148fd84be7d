// kx7text - the published operations over a decoder and an encoder (internal). PublishedOperations.inc gives them to a
// class.
#ifndef KX7_CONVERTERS_PUBLISHEDRULES_H
#define KX7_CONVERTERS_PUBLISHEDRULES_H

#include <cstring>

#include "kx7/converters/DecodeLoop.h"
#include "kx7/converters/EncodeLoop.h"

namespace kx7 {

/** Bytes of text up to its zero byte, at most `byteCount` unless that is UNTIL_TERMINATOR. */
inline size_t terminatedLength(void const* source, unsigned int byteCount)
{
    auto const* const text = static_cast<char const*>(source);
    return byteCount == UNTIL_TERMINATOR ? strlen(text) : strnlen(text, reachable(text, byteCount));
}

/** The published toUTF16; `dest` holds `capacity` + 1 units. */
template <class Decoder>
KX7_INLINE unsigned int decodePublished(Decoder const& decoder, ByteText const& source, unsigned short* dest,
                                        unsigned int capacity, ILLCHAR_OPTYPE op, bool* illegal, int sourceLimit)
{
    if (illegal)
        *illegal = false;
    SourceLimit const limit = decoder.limitOf(sourceLimit);
    TextProgress const text =
        decodeText(decoder, {source, dest, limit.convertsNothing ? 0 : capacity, decoder.STOPS ? op : ILLCHAR_REPLACE,
                             decoder.REPORTS ? illegal : nullptr, limit.bytes, 0});
    size_t units = text.written;
    if (decoder.REPLACES_HALF_PAIR && text.full && units != capacity)
        dest[units++] = REPLACEMENT_CHAR;
    dest[units] = 0;
    return static_cast<unsigned int>(units);
}

/** The published fromUTF16; `dest` holds `capacity` bytes and the terminator. */
template <class Encoder>
KX7_INLINE unsigned int encodePublished(Encoder const& encoder, unsigned short const* source, void* dest,
                                        unsigned int capacity, ILLCHAR_OPTYPE op, bool* illegal)
{
    if (encoder.REPORTS && illegal)
        *illegal = false;
    auto* const out = static_cast<unsigned char*>(dest);
    unsigned int const wholeCodes = capacity / encoder.CODE_SIZE * encoder.CODE_SIZE;
    size_t const bytes =
        encodeText(encoder, {{source, nullptr}, out, wholeCodes, op, encoder.REPORTS ? illegal : nullptr}).written;
    memset(out + bytes, 0, encoder.CODE_SIZE);
    return saturated(bytes);  // escapes may take it beyond the capacity
}

}  // namespace kx7

#endif
