// kx7text - declares the byte-type tables: which bytes lead and which trail in the double-byte encodings (internal).
#ifndef KX7_TABLES_BYTETYPETABLES_H
#define KX7_TABLES_BYTETYPETABLES_H

/*
 * 256 types, indexed by the byte. Lead and trail bytes overlap, hence two bits and not two ranges. The low
 * six bits class the byte as a character of its own (0x01 letter, 0x02 punctuation, 0x04 digit, 0x08 space,
 * 0x10 lower case, 0x20 upper case); no converter looks at them.
 *
 * Kept on purpose: the tables of 936, 950 and Big5 accept no trail byte from 0x80 to 0xA0, although the lists
 * of 936 and 950 map codes that end so.
 */

namespace kx7 {

constexpr unsigned char LEAD_BYTE = 0x40;
constexpr unsigned char TRAIL_BYTE = 0x80;

}  // namespace kx7

extern unsigned char const oCP932Type[256];  // also Shift-JIS and Shift_JIS-2004
extern unsigned char const oCP936Type[256];
extern unsigned char const oCP949Type[256];
extern unsigned char const oCP950Type[256];
extern unsigned char const oBig5Type[256];
extern unsigned char const oWebEucJpType[256];

#endif
