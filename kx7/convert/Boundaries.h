// kx7text - where bytes of a character set can be cut, and how lines show in them (C++17).
//
// For programs that read a file in blocks, convert blocks in several threads, or look for lines before they convert.
// Part of kx7/convert.h.
#ifndef KX7_CONVERT_BOUNDARIES_H
#define KX7_CONVERT_BOUNDARIES_H

#if __cplusplus < 201703L
#error "kx7/convert/Boundaries.h needs C++17"
#endif

#include <string_view>

#include "kx7/base/Export.h"
#include "kx7/charset/KX7CharSet.h"

namespace kx7 {

/**
 * The bytes before the incomplete character at the end of `bytes`; all of them where there is none.
 *
 * A text can be cut there: a stream that is given all of `bytes`, and not as the last, converts these and keeps the
 * rest, and another stream goes on after these, with the rest and the bytes that follow. Give the first stream the rest
 * too: that a sequence is malformed may show only in what follows it.
 *
 * Looks at the last character only; in a set of several bytes at the last 16 bytes, and at those before them back to a
 * space or control character. Allocates only what the first conversion of a character set does. May be called from any
 * thread at once.
 * @param bytes begin between characters; zero bytes are characters like any other
 * @return a beginning of `bytes`, which lacks 15 bytes at most; empty where `from` has no converter
 */
KX7_API std::string_view wholeCharacters(std::string_view bytes, KX7CharSet from) noexcept;

/**
 * A byte 0x0A of text in `from` is U+000A, and nothing else is, so that lines can be found, and counted, in the bytes.
 *
 * True of every set of the library but UTF-16 and UTF-32, and of a converter of one of its classes that the program
 * registered if that decodes the byte so; false where `from` has no converter. May be called from any thread at once.
 */
KX7_API bool lineFeedsAreBytes(KX7CharSet from) noexcept;

}  // namespace kx7

#endif
