// kx7text - declares the stored character properties: case mapping and character classes (internal).
#ifndef KX7_TABLES_CHARPROPERTIES_H
#define KX7_TABLES_CHARPROPERTIES_H

namespace kx7 {

/** A run of UTF-16 units with one value, or with values that grow by one a unit: the table says which. */
struct CharRange {
    unsigned short first;
    unsigned short last;   ///< inclusive
    unsigned short value;  ///< of `first`
};

static_assert(sizeof(CharRange) == 6, "a record is 6 bytes without padding");

}  // namespace kx7

/*
 * Each table ascends by `first`, has no overlapping runs and ends with a record of zeros; no run reaches
 * U+FFFF, so that a 16-bit loop over a run ends. A unit in no run has the value 0: no other case, no class.
 */
extern kx7::CharRange const toUpperTable[];  // simple upper case; the values grow
extern kx7::CharRange const toLowerTable[];  // simple lower case; the values grow

/*
 * The class bits of KX7UChar; one value a run. Left out are the large blocks of one class that
 * KX7UChar::getCharClass() answers by rule, and surrogates.
 */
extern kx7::CharRange const classTable[];

#endif
