// kx7text - the exported conversion functions.
#include "kx7/charset/KX7CharSet.h"

#include <cstring>

#include "kx7/charset/CharSetConverterManager.h"
#include "kx7/charset/Served.h"
#include "kx7/converters/Loop.h"

using kx7::converterOf;
using kx7::servedBy;

namespace {

unsigned int localToUTF8(unsigned char* dst, char const* src, int dstBytes, KX7CharSet cs, kx7::Transit transit)
{
    if (!src || !dst || dstBytes == 0)
        return 0;
    if (*src == 0) {
        *dst = 0;
        return 0;
    }
    kx7::Served const local = servedBy(cs);
    unsigned int const capacity = static_cast<unsigned int>(dstBytes) - 1;
    if (local.engine && local.engine->toUTF8 && !transit.unescape) {
        auto const* const source = reinterpret_cast<unsigned char const*>(src);
        size_t const bytes = local.engine->toUTF8(*local.converter, source, dst, capacity);
        if (bytes != kx7::NOT_DIRECT) {
            dst[bytes] = 0;
            return static_cast<unsigned int>(bytes);
        }
    }
    return kx7::convertThroughUTF16(*local.converter, src, converterOf(KX7CS_UTF8), dst, capacity, transit);
}

unsigned int utf8ToLocal(char* dst, unsigned char const* src, int dstBytes, KX7CharSet cs, kx7::Transit transit)
{
    if (!src || !dst)
        return 0;
    kx7::Served const local = servedBy(cs);
    auto const capacity = static_cast<unsigned int>(dstBytes);  // kept on purpose: a negative one passes
    if (local.engine && local.engine->fromUTF8 && capacity != 0) {
        size_t const bytes =
            local.engine->fromUTF8(*local.converter, src, reinterpret_cast<unsigned char*>(dst), capacity - 1);
        if (bytes != kx7::NOT_DIRECT) {
            dst[bytes] = 0;
            return static_cast<unsigned int>(bytes);
        }
    }
    unsigned int const terminator = local.converter->getNullCharSize();
    if (terminator > capacity)
        return 0;
    if (*src == 0) {
        memset(dst, 0, terminator);
        return 0;
    }
    return kx7::convertThroughUTF16(converterOf(KX7CS_UTF8), reinterpret_cast<char const*>(src), *local.converter, dst,
                                    capacity - terminator, transit);
}

}  // namespace

unsigned int LocalToUTF8(unsigned char* dst, char const* src, int dstBytes, KX7CharSet cs)
{
    return localToUTF8(dst, src, dstBytes, cs, {false, ILLCHAR_REPLACE});
}

unsigned int LocalPathToUTF8(unsigned char* dst, char const* src, int dstBytes)
{
    return localToUTF8(dst, src, dstBytes, KX7CS_OS_DEFAULT, {true, ILLCHAR_REPLACE});
}

unsigned int UTF8ToLocal(char* dst, unsigned char const* src, int dstBytes, KX7CharSet cs)
{
    return utf8ToLocal(dst, src, dstBytes, cs, {false, ILLCHAR_REPLACE});
}

unsigned int UTF8ToLocalPath(char* dst, unsigned char const* src, int dstBytes)
{
    return utf8ToLocal(dst, src, dstBytes, KX7CS_OS_DEFAULT, {false, ILLCHAR_ESCAPE});
}

unsigned int LocalToUTF16(unsigned short* dst, char const* src, int dstUnits, KX7CharSet cs)
{
    if (!dst || !src || dstUnits < 1)
        return 0;
    return converterOf(cs).toUTF16(dst, src, static_cast<unsigned int>(dstUnits) - 1, ILLCHAR_REPLACE, nullptr, -1);
}

unsigned int UTF16ToLocal(char* dst, unsigned short const* src, int dstBytes, KX7CharSet cs)
{
    KX7CharSetConverter& local = converterOf(cs);
    unsigned int const terminator = local.getNullCharSize();
    auto const capacity = static_cast<unsigned int>(dstBytes);  // kept on purpose: a negative one passes
    if (!src || !dst || capacity < terminator)
        return 0;
    return local.fromUTF16(dst, src, capacity - terminator, ILLCHAR_REPLACE, nullptr);
}

unsigned int UTF8ToUTF16(unsigned short* dst, unsigned char const* src, unsigned int dstUnits)
{
    if (!dst || !src || dstUnits == 0)
        return 0;
    return converterOf(KX7CS_UTF8).toUTF16(dst, src, dstUnits - 1, ILLCHAR_REPLACE, nullptr, -1);
}

unsigned int UTF16ToUTF8(unsigned char* dst, unsigned short const* src, unsigned int dstBytes)
{
    if (!dst || !src || dstBytes == 0)
        return 0;
    return converterOf(KX7CS_UTF8).fromUTF16(dst, src, dstBytes - 1, ILLCHAR_REPLACE, nullptr);
}

unsigned int GetNumUnits(char const* src, KX7CharSet cs)
{
    return converterOf(cs).getNumUnits(src, kx7::UNTIL_TERMINATOR);
}

unsigned int GetNumBytes(unsigned short const* src, KX7CharSet cs)
{
    return converterOf(cs).getNumBytes(src, kx7::UNTIL_TERMINATOR);
}

unsigned int GetMinUnitSize(KX7CharSet cs)
{
    return converterOf(cs).getMinUnitSize();
}

unsigned int GetMaxUnitSize(KX7CharSet cs)
{
    return converterOf(cs).getMaxUnitSize();
}

unsigned int GetNullCharSize(KX7CharSet cs)
{
    return converterOf(cs).getNullCharSize();
}

unsigned int KX7CharSetWStrlen(unsigned short const* s)
{
    return s ? kx7::saturated(kx7::unitLength(s, SIZE_MAX)) : 0;
}

int KX7CharSetWStrEqual(unsigned short const* a, unsigned short const* b)
{
    if (!a || !b)
        return a == b ? 1 : 0;
    size_t const alike = kx7::kernels().unitMatch(a, b, SIZE_MAX);
    return a[alike] == b[alike] ? 1 : 0;
}

char const* KX7CharSetToString(KX7CharSet cs)
{
    return g_oCnvtMgr.charSetToString(cs);
}

KX7CharSet KX7CharSetFromString(char const* name)
{
    return g_oCnvtMgr.charSetFromString(name);
}
