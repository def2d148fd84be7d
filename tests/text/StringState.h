// kx7text tests - a look at the header of a string without a change to it.
#ifndef KX7_TESTS_TEXT_STRINGSTATE_H
#define KX7_TESTS_TEXT_STRINGSTATE_H

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "kx7/text/KX7UString.h"

namespace kx7test {

using Units = std::vector<unsigned short>;

/** The header: the object's first field, after the pointer to its virtual functions, points at it. */
inline KX7UString::Space const& spaceOf(KX7UString const& s)
{
    KX7UString::Space const* space;
    memcpy(&space, reinterpret_cast<char const*>(&s) + sizeof(void*), sizeof space);
    return *space;
}

inline Units unitsOf(KX7UString const& s)
{
    return Units(s.data(), s.data() + s.length());
}

/** The units of an ASCII text. */
inline Units unitsOf(char const* text)
{
    return Units(text, text + strlen(text));
}

/** Checks what holds for every string, and its text. */
inline void expectString(KX7UString const& s, Units const& units, std::string const& what = "")
{
    KX7UString::Space const& space = spaceOf(s);
    EXPECT_EQ(unitsOf(s), units) << what;
    EXPECT_EQ(s.length(), space.length) << what;
    EXPECT_EQ(s.capacity(), space.capacity) << what;
    EXPECT_EQ(s.data(), space.buffer) << what;
    EXPECT_EQ(s.empty(), units.empty()) << what;
    EXPECT_EQ(space.buffer[space.length], 0) << what;
    EXPECT_LE(space.length, space.capacity) << what;
    if (space.heapOwned == 0) {
        EXPECT_EQ(space.capacity, KX7UString::INLINE_CAPACITY) << what;
        EXPECT_EQ(space.buffer, space.inlineBuffer) << what;
    }
    else {
        EXPECT_EQ(space.heapOwned, 1u) << what;
        EXPECT_GT(space.capacity, KX7UString::INLINE_CAPACITY) << what;
        EXPECT_NE(space.buffer, space.inlineBuffer) << what;
    }
    EXPECT_EQ(reinterpret_cast<char const*>(&space), reinterpret_cast<char const*>(&s) + 2 * sizeof(void*)) << what;
}

/** The same, and the state of its storage: inline for 0, else on the heap with that capacity. */
inline void expectStorage(KX7UString const& s, unsigned int heapCapacity, std::string const& what = "")
{
    KX7UString::Space const& space = spaceOf(s);
    EXPECT_EQ(space.heapOwned, heapCapacity == 0 ? 0u : 1u) << what;
    EXPECT_EQ(space.capacity, heapCapacity == 0 ? 257 : heapCapacity) << what;
    EXPECT_EQ(space.narrowCache, nullptr) << what;
    EXPECT_EQ(space.narrowCacheLength, 0u) << what;
    EXPECT_EQ(static_cast<int>(space.narrowCacheCharSet), -1) << what;
}

}  // namespace kx7test

#endif
