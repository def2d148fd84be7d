// kx7text - declares the stored mapping lists, and says how they are laid out (internal).
#ifndef KX7_TABLES_MAPPINGLISTS_H
#define KX7_TABLES_MAPPINGLISTS_H

#include "kx7/base/MultibyteRecord.h"

/*
 * A mapping list holds one published character set as pairs: the code in that set, then its UTF-16 unit.
 * Lists are the stored form only: a converter walks its list once, on its first conversion, and builds lookup
 * tables.
 *
 * Layout: a flat array of 16-bit values, code and unit in turn, ended by the pair 0, 0.
 *  - Code: a single byte as 0x00XX, two bytes as lead byte * 256 + trail byte. The 94-by-94 sets (KS X 1001,
 *    GB 2312, JIS X 0208, JIS X 0212) have row and cell, 0x2121 to 0x7E7E: the EUC bytes without their high
 *    bits.
 *  - Unit: a character of the Basic Multilingual Plane, never a surrogate.
 *  - oSJIS0213_2004map reaches beyond that plane and has records of sMBCSExTable, ended by a record of zeros.
 *
 * Invariants of every list:
 *  - no code and no unit occurs twice, so that the order of loading does not matter;
 *  - neither code 0 nor unit 0 occurs: 0 ends a list, ends a text, and means "not mapped" in the lookup
 *    tables;
 *  - a code that the character set leaves undefined has no pair;
 *  - order: ascending by unit, but by code in the 94-by-94 sets and JIS X 0201; oSHIFTJISmap is two runs,
 *    each ascending by unit.
 *
 * Size: 4 bytes a pair, 8 bytes a record; under 600 KiB for all lists, of which a process reads only those
 * that it uses. An array over all codes would need no loading in one direction, but costs 128 KiB a set and
 * still leaves the other direction to build. Ranges or differences would take less space but need a decoder.
 * Pairs can be read by eye, and what two versions of a list differ in is a difference of lines.
 *
 * The arrays are generated, one file a list: see README.md beside this header.
 */

static_assert(sizeof(unsigned short) == 2, "the lists hold 16-bit values");

// Single-byte sets.
extern unsigned short const oCP1250map[];
extern unsigned short const oCP1251map[];
extern unsigned short const oCP1252map[];
extern unsigned short const oCP1253map[];
extern unsigned short const oCP1254map[];
extern unsigned short const oCP1255map[];
extern unsigned short const oCP1256map[];
extern unsigned short const oCP1257map[];
extern unsigned short const oCP1258map[];
extern unsigned short const oCP874map[];
extern unsigned short const o8859_1map[];
extern unsigned short const o8859_2map[];
extern unsigned short const o8859_3map[];
extern unsigned short const o8859_4map[];
extern unsigned short const o8859_5map[];
extern unsigned short const o8859_6map[];
extern unsigned short const o8859_7map[];
extern unsigned short const o8859_8map[];
extern unsigned short const o8859_9map[];
extern unsigned short const o8859_10map[];
extern unsigned short const o8859_11map[];
extern unsigned short const o8859_13map[];
extern unsigned short const o8859_14map[];
extern unsigned short const o8859_15map[];
extern unsigned short const o8859_16map[];
extern unsigned short const oKOI8Rmap[];

// Multibyte sets.
extern unsigned short const oCP932map[];
extern unsigned short const oCP936map[];
extern unsigned short const oCP949map[];
extern unsigned short const oCP950map[];
extern unsigned short const oBIG5map[];
extern unsigned short const oSHIFTJISmap[];
extern sMBCSExTable const oSJIS0213_2004map[];

/** GBK has the pairs of code page 936: the same array under a second name. */
inline constexpr unsigned short const* oGBKmap = oCP936map;

// Sets in row and cell, and JIS X 0201.
extern unsigned short const oKSX1001map[];
extern unsigned short const oGB2312map[];
extern unsigned short const oJIS0208map[];
extern unsigned short const oJIS0201map[];
extern unsigned short const oJIS0212map[];  // kept empty: EUC-JP has no mapped three-byte sequence

#endif
