// kx7text - the UTF-16 string: editing and search.
#include <algorithm>
#include <cstring>
#include <memory>

#include "kx7/converters/Engine.h"
#include "kx7/kernels/Kernels.h"
#include "kx7/text/KX7UChar.h"
#include "kx7/text/KX7UString.h"
#include "kx7/text/KX7UStringList.h"
#include "kx7/text/Lengths.h"

namespace {

constexpr unsigned short WHITE_SPACE = 0x0001;

bool isTrimmed(unsigned short unit, KX7UString::TrimTarget target)
{
    if (target == KX7UString::TRIM_SPACE)
        return unit == ' ';
    unsigned short const charClass = KX7UChar::getCharClass(unit);
    return (charClass & WHITE_SPACE) != 0 || (target == KX7UString::TRIM_WHITESPACE_OR_NONCHAR && charClass == 0);
}

}  // namespace

KX7UString& KX7UString::erase()
{
    if (!empty())
        setLength(0);
    dropCache();
    return *this;
}

KX7UString& KX7UString::erase(unsigned int pos, unsigned int n)
{
    if (empty())
        return *this;
    if (pos == 0 && (n == space->length || n == npos))
        return erase();
    return replace(pos, n, KX7UString(), 0, 0);
}

KX7UString& KX7UString::trim(TrimCmd cmd, TrimTarget target)
{
    if (cmd & TRIM_FRONT) {
        unsigned int blanks = 0;
        while (blanks < space->length && isTrimmed(space->buffer[blanks], target))
            ++blanks;
        if (blanks != 0) {
            unsigned int const rest = space->length - blanks;
            memmove(space->buffer, space->buffer + blanks, size_t{rest} * sizeof *space->buffer);
            setLength(rest);
        }
    }
    if (cmd & TRIM_END) {
        unsigned int rest = space->length;
        while (rest != 0 && isTrimmed(space->buffer[rest - 1], target))
            --rest;
        setLength(rest);
    }
    dropCache();
    return *this;
}

KX7UString& KX7UString::resize(unsigned int n, unsigned short u)
{
    if (n == space->length)
        return *this;
    kx7::checkedLength(n);
    if (n == 0)
        return erase();
    AssureSpace(n);
    if (n > space->length)
        std::fill(space->buffer + space->length, space->buffer + n, u);
    setLength(n);
    dropCache();
    return *this;
}

KX7UString& KX7UString::resize(unsigned int n, char c, KX7CharSet cs)
{
    if (n == space->length)
        return *this;
    kx7::checkedLength(n);
    if (n == 0)
        return erase();
    // Before the text is given up: an allocation that fails leaves the string as it was.
    unsigned int const kept = n > space->capacity ? 0 : space->length;
    unsigned int const added = n > kept ? n - kept : 0;
    std::unique_ptr<char[]> const bytes(new char[added]);
    memset(bytes.get(), c, added);
    AssureSpace(n);
    if (added != 0) {
        // Where the byte is not one unit the rest is zeros, not what the memory held.
        std::fill(space->buffer + kept, space->buffer + n, static_cast<unsigned short>(0));
        kx7::decodeCounted(kx7::converterOf(cs), space->buffer + kept, bytes.get(), added, added, -1);
    }
    setLength(n);
    dropCache();
    return *this;
}

KX7UString KX7UString::left(unsigned int n) const
{
    if (n > space->length)
        kx7::throwInvalidStringIndex();
    return KX7UString(*this, 0, n);
}

KX7UString KX7UString::mid(unsigned int pos, unsigned int n) const
{
    unsigned int const count = n == npos ? space->length - pos : n;
    // Kept on purpose: the sum wraps.
    if (pos + count > space->length)
        kx7::throwInvalidStringIndex();
    return KX7UString(*this, pos, count);
}

namespace {

/** The case of 26 letters of ASCII from `first` on exchanged, in loops that the compiler makes vectors of. */
void exchangeCase(unsigned short* text, size_t count, unsigned short first)
{
    for (size_t i = 0; i != count; ++i) {
        bool const isLetter = static_cast<unsigned short>(text[i] - first) < 26;
        text[i] = static_cast<unsigned short>(text[i] ^ (isLetter ? 0x20 : 0));
    }
}

bool isASCII(unsigned short const* text, size_t count)
{
    unsigned int all = 0;
    for (size_t i = 0; i != count; ++i)
        all |= text[i];
    return all < 0x80;
}

/** `map` of every unit, which exchanges the case of ASCII letters from `first` on. */
template <class Map>
void mapCase(unsigned short* text, size_t count, unsigned short first, Map map)
{
    constexpr size_t BLOCK = 32;
    for (; count >= BLOCK; text += BLOCK, count -= BLOCK) {
        if (isASCII(text, BLOCK))
            exchangeCase(text, BLOCK, first);
        else
            std::transform(text, text + BLOCK, text, map);
    }
    std::transform(text, text + count, text, map);
}

}  // namespace

KX7UString& KX7UString::toUpper(bool asciiOnly)
{
    if (asciiOnly)
        exchangeCase(space->buffer, space->length, 'a');
    else
        mapCase(space->buffer, space->length, 'a', [](unsigned short unit) { return KX7UChar::toUpperCase(unit); });
    return *this;
}

KX7UString& KX7UString::toLower(bool asciiOnly)
{
    if (asciiOnly)
        exchangeCase(space->buffer, space->length, 'A');
    else
        mapCase(space->buffer, space->length, 'A', [](unsigned short unit) { return KX7UChar::toLowerCase(unit); });
    return *this;
}

unsigned int KX7UString::find(unsigned short c, unsigned int pos) const
{
    if (pos >= space->length || c == 0)
        return npos;
    size_t const found = pos + kx7::kernels().unitFind(space->buffer + pos, space->length - pos, c);
    return found == space->length ? npos : static_cast<unsigned int>(found);
}

unsigned int KX7UString::rfind(unsigned short c, unsigned int pos) const
{
    // Kept on purpose: an answer without a search.
    if (pos >= space->length || c == 0)
        return space->length - 1;
    for (unsigned int i = pos + 1; i != 0; --i)
        if (space->buffer[i - 1] == c)
            return i - 1;
    return npos;
}

/** `s`, which is not longer than what follows, stands at `pos`. Zeros in both end the comparison. */
bool KX7UString::standsAt(unsigned int pos, KX7UString const& s) const
{
    unsigned short const* const here = space->buffer + pos;
    unsigned short const* const there = s.space->buffer;
    return here[0] == there[0] && canonicalCompare(here + 1, there + 1, s.space->length - 1) == 0;
}

unsigned int KX7UString::find(KX7UString const& s, unsigned int pos) const
{
    if (pos >= space->length || s.empty())
        return npos;
    if (&s == this)
        return pos == 0 ? 0 : npos;
    if (s.space->length > space->length)
        return npos;
    unsigned int const last = space->length - s.space->length;
    for (size_t i = pos; i <= last; ++i) {
        i += kx7::kernels().unitFind(space->buffer + i, last + size_t{1} - i, s.space->buffer[0]);
        if (i <= last && standsAt(static_cast<unsigned int>(i), s))
            return static_cast<unsigned int>(i);
    }
    return npos;
}

unsigned int KX7UString::rfind(KX7UString const& s, unsigned int pos) const
{
    if (empty() || s.empty())
        return npos;
    if (&s == this)
        return 0;
    if (s.space->length > space->length)
        return npos;
    for (unsigned int i = std::min(pos, space->length - s.space->length) + 1; i != 0; --i)
        if (standsAt(i - 1, s))
            return i - 1;
    return npos;
}

KX7UString& KX7UString::replace(unsigned int pos, unsigned int n, KX7UString const& s, unsigned int spos,
                                unsigned int sn)
{
    if (pos > space->length || spos > s.space->length)
        kx7::throwInvalidStringIndex();
    unsigned int const removed = std::min(n, space->length - pos);
    unsigned int const added = std::min(sn, s.space->length - spos);
    unsigned int const newLength = kx7::checkedLength(uint64_t{space->length} - removed + added);
    if (newLength == 0)
        return erase();
    unsigned short const* const tail = space->buffer + pos + removed;
    unsigned int const tailLength = space->length - pos - removed;
    if (newLength > space->capacity) {
        KX7UString result;
        result.AssureSpace(newLength);
        result.append(space->buffer, pos);
        result.append(s.space->buffer + spos, added);
        result.append(tail, tailLength);
        takeOver(result);
    }
    else {
        // A part of this text would move while it is copied.
        KX7UString const own(s, &s == this ? spos : 0, &s == this ? added : 0);
        unsigned short const* const units = &s == this ? own.space->buffer : s.space->buffer + spos;
        memmove(space->buffer + pos + added, tail, size_t{tailLength} * sizeof *tail);
        memcpy(space->buffer + pos, units, size_t{added} * sizeof *units);
        setLength(newLength);
        dropCache();
    }
    return *this;
}

KX7UString& KX7UString::replace(unsigned short const* first, unsigned short const* last, KX7UString const& s)
{
    // As numbers: the pointers may be any.
    auto const begin = reinterpret_cast<uintptr_t>(space->buffer);
    auto const end = reinterpret_cast<uintptr_t>(space->buffer + space->length);
    auto const isInside = [=](unsigned short const* p) {
        return reinterpret_cast<uintptr_t>(p) >= begin && reinterpret_cast<uintptr_t>(p) <= end;
    };
    if (!isInside(first) || !isInside(last))
        kx7::throwInvalidStringIndex();
    return replace(static_cast<unsigned int>(first - space->buffer), static_cast<unsigned int>(last - first), s, 0,
                   s.space->length);
}

KX7UStringList KX7UString::split(unsigned short sep) const
{
    return KX7UStringList(*this, sep);
}

KX7UStringList KX7UString::split(KX7UString const& sep) const
{
    return KX7UStringList(*this, sep);
}

KX7UStringList KX7UString::split(char sep, KX7CharSet cs) const
{
    return KX7UStringList(*this, KX7UString(sep, cs));
}
