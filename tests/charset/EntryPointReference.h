// kx7text tests - what the exported functions have to do, in the simplest way: one call to one converter, or one call
// to each of two through a buffer for the whole text.
#ifndef KX7_TESTS_CHARSET_ENTRYPOINTREFERENCE_H
#define KX7_TESTS_CHARSET_ENTRYPOINTREFERENCE_H

#include <cstring>
#include <string>
#include <vector>

#include "kx7/converters/KX7CharSetConverter.h"

namespace kx7test {

/** A call's result and the destination after it. */
struct Outcome {
    unsigned int result;
    std::string dest;  ///< all bytes that the capacity covers
};

/** What destinations hold before a call. */
constexpr unsigned char FILL = 0xEE;

/** Runs `call` on a destination of `capacity` bytes in the middle of a larger one. */
template <class Call>
Outcome inLargeBuffer(size_t capacity, Call const& call)
{
    size_t const around = 64;
    std::vector<unsigned short> storage((capacity + 2 * around) / 2 + 1);
    auto* const bytes = reinterpret_cast<char*>(storage.data());
    memset(bytes, FILL, capacity + 2 * around);
    unsigned int const result = call(bytes + around);
    return {result, std::string(bytes + around, capacity)};
}

/** The UTF-16 that a zero-terminated source becomes on its way to another encoding, at most strlen units. */
inline std::vector<unsigned short> decodedWhole(KX7CharSetConverter& from, char const* source)
{
    auto const capacity = static_cast<unsigned int>(strlen(source));
    std::vector<unsigned short> units(capacity + 1);
    units.resize(from.toUTF16(units.data(), source, capacity, ILLCHAR_REPLACE, nullptr, -1));
    return units;
}

/** Byte text to byte text; `terminator` bytes are kept from the capacity, which is no smaller. */
inline Outcome referenceThroughUTF16(KX7CharSetConverter& from, char const* source, KX7CharSetConverter& to,
                                     unsigned int capacity, unsigned int terminator)
{
    return inLargeBuffer(capacity, [&](char* dest) -> unsigned int {
        if (*source == 0) {
            memset(dest, 0, terminator);
            return 0;
        }
        std::vector<unsigned short> units = decodedWhole(from, source);
        if (units.empty())
            return 0;
        units.push_back(0);
        return to.fromUTF16(dest, units.data(), capacity - terminator, ILLCHAR_REPLACE, nullptr);
    });
}

}  // namespace kx7test

#endif
