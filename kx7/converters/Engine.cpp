// kx7text - engines by converter, and the conversions that are built from two of them.
#include "kx7/converters/Engine.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <typeinfo>

#include "kx7/converters/KX7CharSetConverterDBCS.h"
#include "kx7/converters/KX7CharSetConverterDBCSEx.h"
#include "kx7/converters/KX7CharSetConverterEUC_CN_KR.h"
#include "kx7/converters/KX7CharSetConverterEUC_JP.h"
#include "kx7/converters/KX7CharSetConverterGB18030.h"
#include "kx7/converters/KX7CharSetConverterSBCS.h"
#include "kx7/converters/KX7CharSetConverterUTF16.h"
#include "kx7/converters/KX7CharSetConverterUTF16Esc.h"
#include "kx7/converters/KX7CharSetConverterUTF32.h"
#include "kx7/converters/KX7CharSetConverterUTF8.h"
#include "kx7/converters/Walk.h"

namespace kx7 {

extern template struct EngineOf<KX7CharSetConverterUTF8>;
extern template struct EngineOf<KX7CharSetConverterSBCS>;
extern template struct EngineOf<KX7CharSetConverterDBCS>;
extern template struct EngineOf<KX7CharSetConverterUTF16>;
extern template struct EngineOf<KX7CharSetConverterEUC_JP>;
extern template struct EngineOf<KX7CharSetConverterEUC_CN_KR>;
extern template struct EngineOf<KX7CharSetConverterGB18030>;
extern template struct EngineOf<KX7CharSetConverterDBCSEx>;
extern template struct EngineOf<KX7CharSetConverterUTF32>;
extern template struct EngineOf<KX7CharSetConverterUTF16Esc>;

namespace {

/** The engine among those of the classes named, by the exact type; null for a class that a caller derived. */
template <class... Converters>
Engine const* engineAmong(std::type_info const& type)
{
    // A derived class may have changed any operation. Compared by address, which spares comparing names; where two
    // copies of a type exist the converter counts as foreign and still works.
    Engine const* engine = nullptr;
    (void)((&type == &typeid(Converters) ? (engine = &EngineOf<Converters>::ENGINE, true) : false) || ...);
    return engine;
}

}  // namespace

Engine const* engineOf(KX7CharSetConverter const& converter)
{
    return engineAmong<KX7CharSetConverterUTF8, KX7CharSetConverterSBCS, KX7CharSetConverterDBCS,
                       KX7CharSetConverterUTF16, KX7CharSetConverterEUC_JP, KX7CharSetConverterEUC_CN_KR,
                       KX7CharSetConverterGB18030, KX7CharSetConverterDBCSEx, KX7CharSetConverterUTF32,
                       KX7CharSetConverterUTF16Esc>(typeid(converter));
}

unsigned int decodeCounted(KX7CharSetConverter& converter, unsigned short* dest, char const* source,
                           unsigned int byteCount, unsigned int room, int sourceLimit)
{
    auto const* const bytes = reinterpret_cast<unsigned char const*>(source);
    if (Engine const* const engine = engineOf(converter))
        return engine->toUTF16(converter, dest, {bytes, bytes + byteCount}, room, sourceLimit);

    // Zeros behind them for a code of four bytes that the count cuts off, and for a terminator.
    size_t const zeros = 3 + 4;
    std::unique_ptr<unsigned char[]> const copy(new unsigned char[size_t{byteCount} + zeros]());
    memcpy(copy.get(), bytes, byteCount);
    return converter.toUTF16(dest, copy.get(), room, ILLCHAR_REPLACE, nullptr, sourceLimit);
}

namespace {

/** What unescape() leaves. */
struct Unescaped {
    size_t units;    ///< units now at the front, the pending ones included
    size_t pending;  ///< of these, the last ones, which may be the beginning of an escape
};

/** The unit that the escape at `text` names, or -1: "U+" and four upper-case digits. `length` units can be read. */
int unitOfEscape(unsigned short const* text, size_t length)
{
    if (length < ESCAPE_LENGTH || text[0] != 'U' || text[1] != '+')
        return -1;
    int value = 0;
    for (size_t i = 2; i < ESCAPE_LENGTH; ++i) {
        int const digit = hexValue(text[i]);
        if (digit < 0)
            return -1;
        value = value * 16 + digit;
    }
    return value;
}

/** Units before the first "U", at most `length`. */
size_t firstU(unsigned short const* text, size_t length)
{
    constexpr size_t BLOCK = 64;
    size_t n = 0;
    for (; length - n >= BLOCK; n += BLOCK) {
        unsigned short found = 0;
        for (size_t i = 0; i < BLOCK; ++i)
            found = static_cast<unsigned short>(found | (text[n + i] == 'U'));
        if (found != 0)
            break;
    }
    while (n != length && text[n] != 'U')
        ++n;
    return n;
}

/** Replaces escapes by the units they name, in place. With `more` the last five units may go on behind them. */
Unescaped unescape(unsigned short* text, size_t length, bool more)
{
    size_t in = 0;
    size_t out = 0;
    for (;;) {
        size_t const plain = firstU(text + in, length - in);
        if (in != out)
            std::copy(text + in, text + in + plain, text + out);
        in += plain;
        out += plain;
        if (in == length || (more && length - in < ESCAPE_LENGTH))
            break;
        int const unit = unitOfEscape(text + in, length - in);
        text[out++] = unit < 0 ? text[in] : static_cast<unsigned short>(unit);
        in += unit < 0 ? 1 : ESCAPE_LENGTH;
    }
    size_t const pending = length - in;
    std::copy(text + in, text + length, text + out);
    return {out + pending, pending};
}

/** One pass through a buffer for the whole text, for converters that know no pieces. */
unsigned int convertWhole(KX7CharSetConverter& from, char const* source, KX7CharSetConverter& to, void* dest,
                          unsigned int room, Transit transit)
{
    size_t const most = strlen(source);
    std::unique_ptr<unsigned short[]> const text(new (std::nothrow) unsigned short[most + 1]);
    if (!text)
        return 0;
    size_t units = from.toUTF16(text.get(), source, static_cast<unsigned int>(most), ILLCHAR_REPLACE, nullptr, -1);
    if (units == 0)
        return 0;
    if (transit.unescape) {
        units = unescape(text.get(), units, false).units;
        text[units] = 0;
    }
    return to.fromUTF16(dest, text.get(), room, transit.op, nullptr);
}

/**
 * False: a conversion without the piece between could write over bytes of the text that a piece would have read.
 * Escapes and codes of four bytes can make results longer than the text, and vectors write as much as a block beyond
 * them.
 */
bool areApart(unsigned char const* source, unsigned char const* dest, size_t room)
{
    constexpr size_t BLOCK = 64;
    return !meet(source, 3 * PIECE, dest, std::min(room, SIZE_MAX - BLOCK) + BLOCK - 1);
}

}  // namespace

unsigned int convertThroughUTF16(KX7CharSetConverter& from, char const* source, KX7CharSetConverter& to, void* dest,
                                 unsigned int room, Transit transit)
{
    Engine const* const fromEngine = engineOf(from);
    Engine const* const toEngine = engineOf(to);
    if (!fromEngine || !toEngine)
        return convertWhole(from, source, to, dest, room, transit);

    // Wide text ends at its terminator or after as many units as it has bytes before its first zero byte. In a byte
    // encoding no character has more units than bytes, so there that second bound is never reached.
    size_t unitsLeft = from.getNullCharSize() == 1 ? SIZE_MAX : strlen(source);

    unsigned short piece[PIECE];
    auto const* in = reinterpret_cast<unsigned char const*>(source);
    auto* const begin = static_cast<unsigned char*>(dest);
    unsigned char* out = begin;
    unsigned char* const outEnd = endOf(begin, room);
    size_t held = 0;  // units at the front of the piece that must be seen together with what follows
    bool more = true;
    bool empty = true;
    bool const isFromUTF8 =
        fromEngine == &EngineOf<KX7CharSetConverterUTF8>::ENGINE && !transit.unescape && areApart(in, begin, room);
    while (more) {
        if (isFromUTF8 && held == 0) {
            unsigned char* const outBefore = out;
            toEngine->runFromUTF8(to, in, out, outEnd);
            empty = empty && out == outBefore;
            if (*in == 0 && !empty)
                break;
        }
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
        size_t pending = 0;
        if (transit.unescape) {
            Unescaped const unescaped = unescape(piece, units, more);
            units = unescaped.units;
            pending = unescaped.pending;
        }

        UnitText const ready = {piece, piece + units - pending};
        TextProgress const encoded =
            toEngine->encodeText(to, ready, out, static_cast<unsigned int>(outEnd - out), transit.op, !more);
        out += encoded.written;
        // Ends also at a 0 unit within the text (an overlong UTF-8 form), as a pass over the whole would.
        if (encoded.consumed != units - pending && !encoded.cut)
            more = false;
        held = units - encoded.consumed;
        std::copy(piece + encoded.consumed, piece + units, piece);
    }
    memset(out, 0, to.getNullCharSize());
    return static_cast<unsigned int>(out - begin);
}

}  // namespace kx7
