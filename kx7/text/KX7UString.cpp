// kx7text - storage and construction of the UTF-16 string.
#include "kx7/text/KX7UString.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <memory>

#include "kx7/converters/Engine.h"
#include "kx7/converters/Loop.h"
#include "kx7/text/Lengths.h"

unsigned int const KX7UString::INLINE_CAPACITY;
unsigned int const KX7UString::npos;

KX7UString::Space* KX7UString::SetupSpace()
{
    space = &m_space;
    space->heapOwned = 0;
    space->buffer = space->inlineBuffer;
    space->length = 0;
    space->capacity = INLINE_CAPACITY;
    space->narrowCache = nullptr;
    space->narrowCacheLength = 0;
    space->narrowCacheCharSet = static_cast<KX7CharSet>(-1);
    space->inlineBuffer[0] = 0;
    return space;
}

KX7UString::Space* KX7UString::SetupSpace(unsigned int n)
{
    SetupSpace();
    AssureSpace(n);
    return space;
}

void KX7UString::initForAlloc()
{
    space = SetupSpace();
}

void KX7UString::AssureSpace(unsigned int n)
{
    if (space->capacity >= n)
        return;
    auto* const fresh = new unsigned short[size_t{kx7::checkedLength(n)} + 1];
    if (space->heapOwned)
        delete[] space->buffer;
    fresh[0] = 0;
    space->heapOwned = 1;
    space->buffer = fresh;
    space->length = 0;
    space->capacity = n;
}

void KX7UString::release()
{
    if (space->heapOwned)
        delete[] space->buffer;
    delete[] space->narrowCache;
}

/** Moves the text of `o` here; `o` is left fit for destruction only. */
void KX7UString::takeOver(KX7UString& o)
{
    release();
    SetupSpace();
    if (o.space->heapOwned) {
        space->heapOwned = 1;
        space->buffer = o.space->buffer;
        space->capacity = o.space->capacity;
        o.space->heapOwned = 0;
    }
    else {
        append(o.space->buffer, o.space->length);
    }
    space->length = o.space->length;
}

void KX7UString::setLength(unsigned int n)
{
    space->buffer[n] = 0;
    space->length = n;
}

/** Adds units for which there is capacity. */
void KX7UString::append(unsigned short const* units, unsigned int n)
{
    if (n != 0)
        memcpy(space->buffer + space->length, units, size_t{n} * sizeof *units);
    setLength(space->length + n);
}

/**
 * Adds decoded text for which there is capacity: `n` bytes, or up to the terminator for UNTIL_TERMINATOR, as `capacity`
 * units at most.
 */
void KX7UString::appendBytes(char const* s, unsigned int n, KX7CharSetConverter& converter, unsigned int capacity,
                             int sourceLimit)
{
    unsigned short* const end = space->buffer + space->length;
    space->length += n == kx7::UNTIL_TERMINATOR
                         ? converter.toUTF16(end, s, capacity, ILLCHAR_REPLACE, nullptr, sourceLimit)
                         : kx7::decodeCounted(converter, end, s, n, capacity, sourceLimit);
}

/** Fills a string that is still empty. */
void KX7UString::store(unsigned short const* units, unsigned int n)
{
    AssureSpace(n);
    append(units, n);
}

/** Fills a string that is still empty. */
void KX7UString::storeBytes(char const* s, unsigned int n, KX7CharSet cs, int sourceLimit)
{
    KX7CharSetConverter& converter = kx7::converterOf(cs);
    unsigned int const units = converter.getNumUnits(s, n);
    if (units == 0)
        return;
    AssureSpace(units);
    appendBytes(s, n, converter, units, sourceLimit);
}

KX7UString::KX7UString()
{
    SetupSpace();
}

// The others delegate to the first, so that the destructor runs when they throw.

KX7UString::KX7UString(char c, KX7CharSet cs) : KX7UString()
{
    if (c != 0)
        storeBytes(&c, 1, cs, -1);
}

KX7UString::KX7UString(char c, unsigned int count, KX7CharSet cs) : KX7UString()
{
    if (c == 0 || count == 0)
        return;
    std::unique_ptr<char[]> const bytes(new char[kx7::checkedLength(count)]);
    memset(bytes.get(), c, count);
    storeBytes(bytes.get(), count, cs, -1);
}

KX7UString::KX7UString(unsigned short u) : KX7UString()
{
    if (u != 0)
        store(&u, 1);
}

KX7UString::KX7UString(unsigned short u, unsigned int count) : KX7UString()
{
    if (u == 0 || count == 0)
        return;
    AssureSpace(count);
    std::fill_n(space->buffer, count, u);
    setLength(count);
}

KX7UString::KX7UString(char const* s, KX7CharSet cs) : KX7UString()
{
    if (s)
        storeBytes(s, kx7::UNTIL_TERMINATOR, cs, -1);
}

KX7UString::KX7UString(char const* s, unsigned int n, KX7CharSet cs) : KX7UString()
{
    if (!s)
        return;
    // To a converter that count means "up to the terminator", and it would read on where there is none. As a count it
    // is more than a string can hold.
    if (n == kx7::UNTIL_TERMINATOR && kx7::countedLength(kx7::converterOf(cs), s, n) == n)
        kx7::checkedLength(n);
    storeBytes(s, n, cs, -1);
}

KX7UString::KX7UString(int i) : KX7UString()
{
    char text[16];
    int const n = snprintf(text, sizeof text, "%d", i);
    std::copy(text, text + n, space->buffer);
    setLength(static_cast<unsigned int>(n));
}

KX7UString::KX7UString(unsigned short const* s) : KX7UString()
{
    if (s)
        store(s, kx7::checkedLength(kx7::unitLength(s, SIZE_MAX)));
}

KX7UString::KX7UString(unsigned short const* s, unsigned int n) : KX7UString()
{
    if (!s || n == 0)
        return;
    AssureSpace(n);
    store(s, static_cast<unsigned int>(kx7::unitLength(s, n)));
}

KX7UString::KX7UString(unsigned short const* begin, unsigned short const* end) : KX7UString()
{
    store(begin, kx7::checkedLength(static_cast<size_t>(end - begin)));
}

KX7UString::KX7UString(KX7PascalString const& p, KX7CharSet cs) : KX7UString()
{
    if (p.length != 0)
        storeBytes(p.text, p.length, cs, p.length);
}

KX7UString::KX7UString(KX7PascalString const* p, KX7CharSet cs) : KX7UString()
{
    if (p && p->length != 0)
        storeBytes(p->text, p->length, cs, p->length);
}

KX7UString::KX7UString(KX7BSTR const& b) : KX7UString()
{
    store(b.text, b.length);
}

KX7UString::KX7UString(KX7BSTR const* b) : KX7UString()
{
    if (b)
        store(b->text, b->length);
}

KX7UString::KX7UString(KX7UString const& o) : KX7UString()
{
    store(o.space->buffer, o.space->length);
}

KX7UString::KX7UString(KX7UString const& o, unsigned int pos, unsigned int n) : KX7UString()
{
    unsigned int const start = std::min(pos, o.space->length);
    store(o.space->buffer + start, std::min(n, o.space->length - start));
}

KX7UString::~KX7UString()
{
    release();
}

KX7UString& KX7UString::assign(KX7UString const& o)
{
    if (this != &o) {
        KX7UString copy(o);
        takeOver(copy);
    }
    return *this;
}

void KX7UString::swap(KX7UString& o)
{
    if (this == &o)
        return;
    // Both copies first: whichever allocation fails, no text is lost.
    KX7UString mine(*this);
    KX7UString theirs(o);
    o.takeOver(mine);
    takeOver(theirs);
}
