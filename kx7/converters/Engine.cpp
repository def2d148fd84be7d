// kx7text - engines by converter, and bytes given with a count.
#include "kx7/converters/Engine.h"

#include <cstring>
#include <memory>
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
#include "kx7/converters/KX7CharSetConverterWebDoubleByte.h"
#include "kx7/converters/Wide.h"

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
extern template struct EngineOf<KX7CharSetConverterWebDoubleByte>;

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
                       KX7CharSetConverterUTF16Esc, KX7CharSetConverterWebDoubleByte>(typeid(converter));
}

namespace {

/** As countedLength, of text whose terminator is a 0 value of type T. */
template <class T>
size_t countedWideLength(unsigned char const* text, size_t count)
{
    size_t const length = wideLength<T>(text, count);
    return count - length >= sizeof(T) ? length : count;  // bytes of a truncated value count
}

}  // namespace

size_t countedLength(KX7CharSetConverter const& converter, char const* source, unsigned int byteCount)
{
    auto const* const text = reinterpret_cast<unsigned char const*>(source);
    size_t const count = reachable(text, byteCount);
    switch (converter.getNullCharSize()) {
        case sizeof(unsigned short): return countedWideLength<unsigned short>(text, count);
        case sizeof(unsigned int): return countedWideLength<unsigned int>(text, count);
        default: return strnlen(source, count);
    }
}

unsigned int decodeCounted(KX7CharSetConverter& converter, unsigned short* dest, char const* source,
                           unsigned int byteCount, unsigned int capacity, int sourceLimit)
{
    auto const* const bytes = reinterpret_cast<unsigned char const*>(source);
    if (Engine const* const engine = engineOf(converter))
        return engine->toUTF16(converter, dest, {bytes, endOf(bytes, byteCount)}, capacity, sourceLimit);

    // Zeros after them for a code of four bytes that the count truncates, and for a terminator.
    size_t const zeros = 3 + 4;
    size_t const length = countedLength(converter, source, byteCount);
    std::unique_ptr<unsigned char[]> const copy(new unsigned char[length + zeros]());
    memcpy(copy.get(), bytes, length);
    return converter.toUTF16(dest, copy.get(), capacity, ILLCHAR_REPLACE, nullptr, sourceLimit);
}

}  // namespace kx7
