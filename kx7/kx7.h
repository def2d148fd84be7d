// kx7text - everything that the library offers.
#ifndef KX7_KX7_H
#define KX7_KX7_H

/**
 * @mainpage
 *
 * Converts text between 41 character sets and UTF-16, and handles UTF-16 strings.
 *
 * - KX7CharSet.h: the character sets and the conversion functions, callable from any language
 * - KX7CharSetConverter: one character set as an object, with the choice of what happens to illegal input;
 *   Converters.h has the objects, CharSetConverterManager finds them
 * - KX7UString, KX7UStringList, KX7UChar: UTF-16 text, lists of it, classes and case of characters
 */

#include "kx7/charset/CharSetConverterManager.h"
#include "kx7/charset/Converters.h"
#include "kx7/charset/KX7CharSet.h"
#include "kx7/text/KX7UChar.h"
#include "kx7/text/KX7UCharTable.h"
#include "kx7/text/KX7UString.h"
#include "kx7/text/KX7UStringList.h"
#include "kx7/text/KX7UStringStd.h"
#if __cplusplus >= 201703L
#include "kx7/convert.h"
#endif

#endif
