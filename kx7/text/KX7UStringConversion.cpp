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

// Bytes behind the cached text, for the widest terminator and more.
constexpr size_t CACHE_MARGIN = 8;

/** What the converter of `cs` counts for `n` units, also where that is more than its 32 bits hold. */
uint64_t encodedLength(KX7CharSet cs, unsigned short const* units, unsigned int n)
{
    KX7CharSetConverter& converter = kx7::converterOf(cs);
    unsigned int const part = 0xFFFFFFFF / 8;  // at most six bytes a unit
    uint64_t bytes = 0;
    unsigned int counted = 0;
    do {
        // Counted from the beginning each time: only the converter knows where its count ends before the text does.
        counted += std::min(n - counted, part);
        bytes += converter.getNumBytes(units, counted) - static_cast<unsigned int>(bytes);
    } while (counted != n);
    return bytes;
}

/** A number of bytes that can be allocated with the cache's margin; throws where it cannot. */
unsigned int checkedBytes(uint64_t bytes)
{
    if (bytes > kx7::MAX_STRING_LENGTH || bytes > PTRDIFF_MAX - CACHE_MARGIN)
        throw std::length_error("exceed maximum string length");
    return static_cast<unsigned int>(bytes);
}

}  // namespace

unsigned int KX7UString::length(KX7CharSet cs) const
{
    if (empty())
        return 0;
    return checkedBytes(encodedLength(cs, space->buffer, space->length));
}

unsigned int KX7UString::numChars() const
{
    bool const counted = space->narrowCache && space->narrowCacheCharSet == KX7CS_UTF32;
    uint64_t const bytes =
        counted ? space->narrowCacheLength : encodedLength(KX7CS_UTF32, space->buffer, space->length);
    return static_cast<unsigned int>(bytes / 4);
}

char const* KX7UString::c_str(KX7CharSet cs)
{
    static char const nothing[WIDEST_TERMINATOR] = {};
    if (empty())
        return nothing;
    if (space->narrowCache && space->narrowCacheCharSet == cs)
        return space->narrowCache;
    unsigned int const room = length(cs);
    char* const text = new char[room + CACHE_MARGIN];
    dropCache();
    space->narrowCache = text;
    space->narrowCacheLength = kx7::converterOf(cs).fromUTF16(text, space->buffer, room, ILLCHAR_REPLACE, nullptr);
    space->narrowCacheCharSet = cs;
    return text;
}

/** Releases the cache. Its character set stays behind: only the null pointer marks it as empty. */
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
