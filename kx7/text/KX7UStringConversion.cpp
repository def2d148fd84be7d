// kx7text - the UTF-16 string: other character sets, other containers, element access, assignment.
#include <algorithm>
#include <cstring>

#include "kx7/converters/Engine.h"
#include "kx7/converters/Loop.h"
#include "kx7/text/KX7UString.h"
#include "kx7/text/Lengths.h"

namespace {

constexpr unsigned int WIDEST_TERMINATOR = 4;
constexpr unsigned int PASCAL_CAPACITY = 255;

// Bytes after the cached text, for the widest terminator and more.
constexpr size_t CACHE_MARGIN = 8;

/** Characters of at least one unit, as the UTF-32 converter counts them, also where 32 bits do not hold their bytes. */
unsigned int countCharacters(unsigned short const* units, unsigned int length)
{
    size_t const n = kx7::unitLength(units, length);
    size_t pairs = 0;
    for (size_t i = 0; i + 1 < n; ++i)
        pairs += kx7::isHighSurrogate(units[i]) && kx7::isLowSurrogate(units[i + 1]);
    bool const endsInHighSurrogate = kx7::isHighSurrogate(units[n - 1]);
    return static_cast<unsigned int>(n - pairs - endsInHighSurrogate);
}

/** The count of a converter for which 32 bits were not enough. */
constexpr unsigned int TOO_MANY_BYTES = 0xFFFFFFFF;

}  // namespace

unsigned int KX7UString::length(KX7CharSet cs) const
{
    if (empty())
        return 0;
    size_t const bytes = kx7::converterOf(cs).getNumBytes(space->buffer, space->length);
    if (bytes == TOO_MANY_BYTES || bytes > PTRDIFF_MAX - CACHE_MARGIN)
        throw std::length_error("exceed maximum string length");
    return static_cast<unsigned int>(bytes);
}

unsigned int KX7UString::numChars() const
{
    bool const counted = space->narrowCache && space->narrowCacheCharSet == KX7CS_UTF32;
    unsigned int const bytes =
        counted ? space->narrowCacheLength : kx7::converterOf(KX7CS_UTF32).getNumBytes(space->buffer, space->length);
    return bytes == TOO_MANY_BYTES ? countCharacters(space->buffer, space->length) : bytes / 4;
}

char const* KX7UString::c_str(KX7CharSet cs)
{
    static char const nothing[WIDEST_TERMINATOR] = {};
    if (empty())
        return nothing;
    if (space->narrowCache && space->narrowCacheCharSet == cs)
        return space->narrowCache;
    unsigned int const capacity = length(cs);
    char* const text = new char[capacity + CACHE_MARGIN];
    dropCache();
    space->narrowCache = text;
    space->narrowCacheLength = kx7::converterOf(cs).fromUTF16(text, space->buffer, capacity, ILLCHAR_REPLACE, nullptr);
    space->narrowCacheCharSet = cs;
    return text;
}

/** Releases the cache. Its character set stays after: only the null pointer marks it as empty. */
void KX7UString::dropCache()
{
    delete[] space->narrowCache;
    space->narrowCache = nullptr;
}

unsigned int KX7UString::copy(char* dst, unsigned int size, KX7CharSet cs) const
{
    if (!dst || size == 0 || empty())
        return 0;
    return kx7::converterOf(cs).fromUTF16(dst, space->buffer, size, ILLCHAR_REPLACE, nullptr);
}

unsigned int KX7UString::copy(unsigned short* dst, unsigned int size) const
{
    if (!dst || size == 0 || empty())
        return 0;
    unsigned int const count = std::min(size, space->length);
    memcpy(dst, space->buffer, size_t{count} * sizeof *dst);
    return count;
}

unsigned int KX7UString::copy(KX7PascalString* p, KX7CharSet cs) const
{
    if (!p)
        return 0;
    char text[PASCAL_CAPACITY + WIDEST_TERMINATOR];
    auto const count = static_cast<unsigned char>(copy(text, PASCAL_CAPACITY, cs));
    memcpy(p->text, text, count);
    p->length = count;
    return count;
}

unsigned int KX7UString::copy(KX7BSTR* b, unsigned int size) const
{
    if (!b)
        return 0;
    unsigned int const count = space->length <= size ? space->length : size % 0x10000;
    b->length = static_cast<unsigned short>(count);
    // A caller's own structure may be longer than the declared one, so the copy is not bound by that.
    if (b->length != 0)
        memcpy(reinterpret_cast<char*>(b) + sizeof b->length, space->buffer, size_t{count} * sizeof *space->buffer);
    return count;
}

unsigned short& KX7UString::at(unsigned int i)
{
    if (i >= space->length)
        kx7::throwInvalidStringIndex();
    return space->buffer[i];
}

unsigned short const& KX7UString::at(unsigned int i) const
{
    if (i >= space->length)
        kx7::throwInvalidStringIndex();
    return space->buffer[i];
}

unsigned int& KX7UString::at_utf32(unsigned int i)
{
    c_str(KX7CS_UTF32);
    unsigned int const count = space->narrowCache ? space->narrowCacheLength / 4 : 0;
    if (i >= count)
        kx7::throwInvalidStringIndex();
    return reinterpret_cast<unsigned int*>(space->narrowCache)[i];
}

KX7UString& KX7UString::operator=(KX7PascalString const* p)
{
    if (!p || p->length == 0)
        return erase();
    KX7CharSetConverter& converter = kx7::converterOf(KX7CS_OS_DEFAULT);
    unsigned int const units = converter.getNumUnits(p->text, p->length);
    if (units == 0)
        return erase();
    AssureSpace(units);
    setLength(0);
    appendBytes(p->text, p->length, converter, units, p->length);
    dropCache();
    return *this;
}

KX7UString& KX7UString::operator=(KX7BSTR const& b)
{
    if (b.length == 0)
        return erase();
    AssureSpace(b.length);
    space->length = 0;
    append(b.text, b.length);
    dropCache();
    return *this;
}

KX7UString& KX7UString::operator=(unsigned short const* s)
{
    unsigned int const n = s ? kx7::checkedLength(kx7::unitLength(s, SIZE_MAX)) : 0;
    if (n == 0)
        return erase();
    AssureSpace(n);
    // The source may be part of this text; it then fits and has not moved.
    memmove(space->buffer, s, size_t{n} * sizeof *s);
    setLength(n);
    dropCache();
    return *this;
}

KX7UString& KX7UString::operator=(char const* s)
{
    if (!s)
        return erase();
    KX7CharSetConverter& converter = kx7::converterOf(KX7CS_OS_DEFAULT);
    unsigned int const units = converter.getNumUnits(s, kx7::UNTIL_TERMINATOR);
    if (units == 0)
        return erase();
    AssureSpace(units);
    setLength(0);
    appendBytes(s, kx7::UNTIL_TERMINATOR, converter, units, -1);
    dropCache();  // last: the source may be the cache
    return *this;
}

KX7UString& KX7UString::operator=(unsigned short u)
{
    if (u == 0)
        return erase();
    space->length = 0;
    append(&u, 1);
    dropCache();
    return *this;
}

KX7UString& KX7UString::operator=(char c)
{
    if (c == 0)
        return erase();
    KX7CharSetConverter& converter = kx7::converterOf(KX7CS_OS_DEFAULT);
    unsigned int const units = converter.getNumUnits(&c, 1);
    if (units == 0)
        return erase();
    setLength(0);
    appendBytes(&c, 1, converter, units, -1);
    return *this;
}
