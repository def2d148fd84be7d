// kx7text - engines by converter, and the conversions that are built from two of them.
#include "kx7/converters/Engine.h"

#include <cstring>
#include <memory>
#include <new>
#include <typeinfo>

#include "kx7/converters/KX7CharSetConverterSBCS.h"
#include "kx7/converters/KX7CharSetConverterUTF8.h"
#include "kx7/converters/Walk.h"

namespace kx7 {

extern template struct EngineOf<KX7CharSetConverterUTF8>;
extern template struct EngineOf<KX7CharSetConverterSBCS>;

Engine const* engineOf(KX7CharSetConverter const& converter)
{
    // By exact type: a class derived from one of these may have changed any operation. Compared by address, which
    // spares comparing names; where two copies of a type exist the converter counts as foreign and still works.
    std::type_info const* const type = &typeid(converter);
    if (type == &typeid(KX7CharSetConverterUTF8))
        return &EngineOf<KX7CharSetConverterUTF8>::ENGINE;
    if (type == &typeid(KX7CharSetConverterSBCS))
        return &EngineOf<KX7CharSetConverterSBCS>::ENGINE;
    return nullptr;
}

unsigned int decodeCounted(KX7CharSetConverter& converter, unsigned short* dest, char const* source,
                           unsigned int byteCount, unsigned int room, int sourceLimit)
{
    auto const* const bytes = reinterpret_cast<unsigned char const*>(source);
    if (Engine const* const engine = engineOf(converter))
        return engine->toUTF16(converter, dest, {bytes, bytes + byteCount}, room, sourceLimit);

    size_t const widestTerminator = 4;
    std::unique_ptr<unsigned char[]> const copy(new unsigned char[size_t{byteCount} + widestTerminator]());
    memcpy(copy.get(), bytes, byteCount);
    return converter.toUTF16(dest, copy.get(), room, ILLCHAR_REPLACE, nullptr, sourceLimit);
}

namespace {

/** One pass through a buffer for the whole text, for converters that know no pieces. */
unsigned int convertWhole(KX7CharSetConverter& from, char const* source, KX7CharSetConverter& to, void* dest,
                          unsigned int room)
{
    size_t const units = strlen(source);
    std::unique_ptr<unsigned short[]> const text(new (std::nothrow) unsigned short[units + 1]);
    if (!text)
        return 0;
    if (from.toUTF16(text.get(), source, static_cast<unsigned int>(units), ILLCHAR_REPLACE, nullptr, -1) == 0)
        return 0;
    return to.fromUTF16(dest, text.get(), room, ILLCHAR_REPLACE, nullptr);
}

}  // namespace

unsigned int convertThroughUTF16(KX7CharSetConverter& from, char const* source, KX7CharSetConverter& to, void* dest,
                                 unsigned int room)
{
    Engine const* const fromEngine = engineOf(from);
    Engine const* const toEngine = engineOf(to);
    if (!fromEngine || !toEngine)
        return convertWhole(from, source, to, dest, room);

    // Wide text ends at its terminator or after as many units as it has bytes before its first zero byte. In a byte
    // encoding no character has more units than bytes, so there that second bound is never reached.
    size_t unitsLeft = from.getNullCharSize() == 1 ? SIZE_MAX : strlen(source);

    unsigned short piece[PIECE];
    auto const* in = reinterpret_cast<unsigned char const*>(source);
    auto* const begin = static_cast<unsigned char*>(dest);
    unsigned char* out = begin;
    unsigned char* const outEnd = endOf(begin, room);
    size_t held = 0;  // 1: piece[0] is a high surrogate whose partner may come
    bool more = true;
    bool empty = true;
    while (more) {
        size_t const want = std::min(PIECE - held, unitsLeft);
        TextProgress const decoded =
            fromEngine->decodeText(from, {in, nullptr}, piece + held, static_cast<unsigned int>(want));
        in += decoded.consumed;
        unitsLeft -= decoded.written;
        more = decoded.full && decoded.written != 0 && unitsLeft != 0;

        size_t units = held + decoded.written;
        if (units == 0 && empty)
            return 0;
        empty = false;
        held = more && isHighSurrogate(piece[units - 1]) ? 1 : 0;
        units -= held;

        TextProgress const encoded =
            toEngine->encodeText(to, {piece, piece + units}, out, static_cast<unsigned int>(outEnd - out));
        out += encoded.written;
        // Ends also at a 0 unit within the text (an overlong UTF-8 form), as a pass over the whole would.
        if (encoded.consumed != units)
            more = false;
        if (held)
            piece[0] = piece[units];
    }
    memset(out, 0, to.getNullCharSize());
    return static_cast<unsigned int>(out - begin);
}

}  // namespace kx7
