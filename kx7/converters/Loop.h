// kx7text - what the loops that decode and those that encode have in common (internal).
//
// A converter class states how one character is decoded (Decoder::decodeOne) and how one is encoded
// (Encoder::encodeOne). Everything else stands once, in DecodeLoop.h, EncodeLoop.h and PublishedRules.h: capacity,
// terminator, source limit, flag, substitutes. What a class does differently is a value that it returns or a member
// that it hides; no loop asks which class it serves.
#ifndef KX7_CONVERTERS_LOOP_H
#define KX7_CONVERTERS_LOOP_H

#include <cstddef>

#include "kx7/base/Bounds.h"
#include "kx7/base/Utf16.h"
#include "kx7/converters/Engine.h"
#include "kx7/kernels/Kernels.h"

// A call and its result cost as much as a short text.
#define KX7_INLINE __attribute__((always_inline)) inline
#define KX7_NOINLINE __attribute__((noinline))

namespace kx7 {

/** What a decoder or an encoder found. */
enum class Found : unsigned char {
    CHARACTER,  ///< a character
    ILLEGAL,    ///< malformed or unmapped; text conversions write a substitute
    STRAY,      ///< the same, but text conversions ignore it silently
    TRUNCATED,  ///< the range ends inside the character; nothing of it is consumed
    END         ///< encoding: the text ends here silently
};

/** A count that stands for "up to the terminator". */
constexpr unsigned int UNTIL_TERMINATOR = 0xFFFFFFFF;

/** Units before the first 0 unit, at most `most`. Touches no page that these do not reach. */
inline size_t unitLength(unsigned short const* text, size_t most)
{
    return kernels().unitLength(text, most);
}

}  // namespace kx7

#endif
