// kx7text - character-set identifiers and the exported conversion functions, for C++ and C.
//
//     unsigned char utf8[64];
//     LocalToUTF8(utf8, "caf\xE9", sizeof utf8, KX7CS_WCP1252);   // 5: 63 61 66 C3 A9
//
// All functions may be called from any thread at once. None throws; they report through their result alone. None
// allocates, but that a character set builds its tables on first use, and that the conversions from bytes to bytes
// (LocalToUTF8, UTF8ToLocal and the two of paths) take memory for a converter that a caller has registered, and for a
// long text that they write over. In these four, source and destination may overlap in any way; the result is that of
// separate buffers. Texts beyond about 1,700 bytes are copied then; without memory for that nothing is written, and the
// result is 0. In the others they must not overlap. Text is zero-terminated; null pointers are allowed and yield 0.
// Destination sizes are full capacities, space for the terminator included: bytes for byte text, code units for UTF-16.
#ifndef KX7_CHARSET_KX7CHARSET_H
#define KX7_CHARSET_KX7CHARSET_H

#include "kx7/base/CharSet.h"
#include "kx7/base/Export.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Converts byte text of `cs` into UTF-8; what `cs` does not map becomes U+FFFD. `dst` and `src` may overlap.
 * @param dstBytes capacity of `dst` in bytes, the closing zero byte included; a negative value counts as unlimited
 * @return bytes written, the closing zero not counted. 0 for a null pointer or a capacity of 0, when the source
 * converts to nothing, and when there is no memory to copy a source that would be written over; `dst` is untouched
 * then. An empty source stores the zero byte and returns 0. Output that does not fit ends after the last whole
 * character.
 */
KX7_API unsigned int LocalToUTF8(unsigned char* dst, char const* src, int dstBytes, KX7CharSet cs);

/**
 * Converts UTF-8 into byte text of `cs`; what `cs` cannot represent becomes "?". `dst` and `src` may overlap.
 * @param dstBytes capacity of `dst` in bytes, the terminator of GetNullCharSize(cs) bytes included; a negative value
 *                 counts as unlimited
 * @return bytes written, terminator not counted. 0 for a null pointer or a capacity below the terminator's size, when
 *         the source converts to nothing, and when there is no memory to copy a source that would be written over;
 *         `dst` is untouched then. An empty source stores the terminator alone.
 */
KX7_API unsigned int UTF8ToLocal(char* dst, unsigned char const* src, int dstBytes, KX7CharSet cs);

/**
 * Converts byte text of `cs` into UTF-16. `dst` and `src` must not overlap.
 * @param dstUnits capacity of `dst` in code units, the closing 0 unit included
 * @return units written, the closing 0 not counted; 0 for a null pointer or a capacity below 1
 * With KX7CS_UTF16 nothing is converted: that converter needs a source limit, which this function does not give.
 */
KX7_API unsigned int LocalToUTF16(unsigned short* dst, char const* src, int dstUnits, KX7CharSet cs);

/**
 * Converts UTF-16 into byte text of `cs`; what `cs` cannot represent becomes "?". `dst` and `src` must not overlap.
 * @param dstBytes capacity of `dst` in bytes, the terminator of GetNullCharSize(cs) bytes included; a negative value
 *                 counts as unlimited
 * @return bytes written, terminator not counted; 0 for a null pointer or a capacity below the terminator's size
 */
KX7_API unsigned int UTF16ToLocal(char* dst, unsigned short const* src, int dstBytes, KX7CharSet cs);

/**
 * Converts UTF-8 into UTF-16. Malformed sequences become U+FFFD, stray continuation bytes vanish. `dst` and `src` must
 * not overlap.
 * @param dstUnits capacity of `dst` in code units, the closing 0 unit included
 * @return units written, the closing 0 not counted; 0 for a null pointer or a capacity of 0
 */
KX7_API unsigned int UTF8ToUTF16(unsigned short* dst, unsigned char const* src, unsigned int dstUnits);

/**
 * Converts UTF-16 into UTF-8; an unpaired high surrogate becomes "?". `dst` and `src` must not overlap.
 * @param dstBytes capacity of `dst` in bytes, the closing zero byte included
 * @return bytes written, the closing zero not counted; 0 for a null pointer or a capacity of 0
 */
KX7_API unsigned int UTF16ToUTF8(unsigned char* dst, unsigned short const* src, unsigned int dstBytes);

/**
 * Converts a file name of the operating system (in KX7CS_OS_DEFAULT) into UTF-8. Each "U+" with four upper-case
 * hexadecimal digits becomes the code unit that it names, also where it was literally part of the name. `dst` and `src`
 * may overlap.
 * @param dstBytes capacity of `dst` in bytes, the closing zero byte included
 * @return as LocalToUTF8
 */
KX7_API unsigned int LocalPathToUTF8(unsigned char* dst, char const* src, int dstBytes);

/**
 * Converts UTF-8 into a file name of the operating system (in KX7CS_OS_DEFAULT). A code unit that cannot be represented
 * is written as "U+" and four upper-case hexadecimal digits, which LocalPathToUTF8 reads back. `dst` and `src` may
 * overlap.
 * @param dstBytes capacity of `dst` in bytes, the terminator included; a name that does not fit ends before the first
 *                 character that does not fit
 * @return as UTF8ToLocal
 */
KX7_API unsigned int UTF8ToLocalPath(char* dst, unsigned char const* src, int dstBytes);

/**
 * Counts what the converter of `cs` counts in `src`, terminator excluded: the UTF-16 code units that it becomes, but
 * that UTF-8 counts sequences (a four-byte one once, although it becomes two units) and ends at a stray continuation
 * byte, and that EUC-JP ends at a character that the end of the text truncates. 0xFFFFFFFF where there are more.
 */
KX7_API unsigned int GetNumUnits(char const* src, KX7CharSet cs);

/**
 * Bytes that UTF16ToLocal writes for the whole of `src` in `cs`, terminator excluded; a high surrogate at the end is
 * not counted in UTF-8, UTF-32 and Shift_JIS-2004, though a substitute is written for it. 0xFFFFFFFF where there are
 * more.
 */
KX7_API unsigned int GetNumBytes(unsigned short const* src, KX7CharSet cs);

/** Smallest number of bytes of one character of `cs`. */
KX7_API unsigned int GetMinUnitSize(KX7CharSet cs);

/** Largest number of bytes that one UTF-16 code unit becomes in `cs`. */
KX7_API unsigned int GetMaxUnitSize(KX7CharSet cs);

/** Size in bytes of the terminator of text in `cs`: 1, 2 or 4. */
KX7_API unsigned int GetNullCharSize(KX7CharSet cs);

/** Number of code units before the first 0 unit; 0 for null, 0xFFFFFFFF where there are more. */
KX7_API unsigned int KX7CharSetWStrlen(unsigned short const* s);

/**
 * 1 when both texts hold the same code units (or both pointers are null), else 0. No normalisation, no case folding.
 */
KX7_API int KX7CharSetWStrEqual(unsigned short const* a, unsigned short const* b);

/**
 * The name of a character set: "KX7CS_UTF8" for KX7CS_UTF8; "KX7CS_OS_DEFAULT" for a value without a name. The text
 * belongs to the library and stays valid until it is unloaded.
 */
KX7_API char const* KX7CharSetToString(KX7CharSet cs);

/**
 * The character set of a name, which must be exactly one that KX7CharSetToString gives; KX7CS_OS_DEFAULT for any other,
 * for the empty text and for null.
 */
KX7_API KX7CharSet KX7CharSetFromString(char const* name);

#ifdef __cplusplus
}  // extern "C"
#endif

#endif
