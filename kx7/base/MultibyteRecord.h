// kx7text - the record of a mapping list that reaches beyond the Basic Multilingual Plane.
#ifndef KX7_BASE_MULTIBYTERECORD_H
#define KX7_BASE_MULTIBYTERECORD_H

/** One record of the mapping list of an extended multibyte converter; a record of zeros ends the list. */
struct sMBCSExTable {
    unsigned short code;      ///< lead byte * 256 + trail byte; a single byte as 0x00XX
    unsigned short reserved;  ///< zero
    unsigned int codePoint;   ///< the character
};

#endif
