// kx7text - what the converters with a byte-type table hold beside their mapping.
#ifndef KX7_CONVERTERS_KX7CHARSETCONVERTERDBCSBASE_H
#define KX7_CONVERTERS_KX7CHARSETCONVERTERDBCSBASE_H

#include "kx7/base/Export.h"

/** Holds the byte-type table of a double-byte converter. */
class KX7_API KX7CharSetConverterDBCSBase {
public:
    /** @param typeTable 256 bytes; bit 0x40 marks a lead byte, bit 0x80 a trail byte. Not copied. */
    explicit KX7CharSetConverterDBCSBase(unsigned char const* typeTable) : m_pTypeTable(typeTable) {}

protected:
    unsigned char const* m_pTypeTable;  ///< 256 bytes, by byte
};

#endif
