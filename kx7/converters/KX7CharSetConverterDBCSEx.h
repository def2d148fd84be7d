// kx7text - converter for double-byte sets that reach beyond the Basic Multilingual Plane.
#ifndef KX7_CONVERTERS_KX7CHARSETCONVERTERDBCSEX_H
#define KX7_CONVERTERS_KX7CHARSETCONVERTERDBCSEX_H

#include "kx7/converters/KX7CharSetConverterDBCSBase.h"
#include "kx7/converters/KX7CharSetConverterMBCSEx.h"

/**
 * Converter for Shift_JIS-2004: one or two bytes a character, told apart by a byte-type table; a character is one code
 * point, in UTF-16 one unit or a surrogate pair.
 */
class KX7_API KX7CharSetConverterDBCSEx : public KX7CharSetConverterMBCSEx, private KX7CharSetConverterDBCSBase {
public:
    /** @param typeTable 256 bytes; bit 0x40 marks a lead byte, bit 0x80 a trail byte. Neither list is copied. */
    KX7CharSetConverterDBCSEx(sMBCSExTable const* map, unsigned char const* typeTable, KX7CharSet charSet);
    /** A converter without a mapping list: nothing is mapped. `name` is kept, not copied. */
    KX7CharSetConverterDBCSEx(char const* name, unsigned char const* typeTable, KX7CharSet charSet);
    ~KX7CharSetConverterDBCSEx() override;

    /** Builds the tables of the base, then what decoding kernels look up. */
    void load() override;

    /** Counts a pair that maps beyond U+FFFF as two units, any other well-formed pair or byte as one. */
    unsigned int getNumUnits(void const* source, unsigned int byteCount) override;

    /**
     * Decodes. A lead byte without a trail byte is illegal on its own; what follows it is read afresh. A source limit
     * of 0 or below is none; the others count bytes and are not looked at after such a lead byte.
     */
    unsigned int toUTF16(unsigned short* dest, void const* source, unsigned int capacity, ILLCHAR_OPTYPE op,
                         bool* illegal, int sourceLimit) override;

    /** Counts an unmapped character as one byte, a high surrogate at the end not at all: escapes need more capacity. */
    unsigned int getNumBytes(unsigned short const* source, unsigned int unitCount) override;

    /**
     * Encodes. The escape of a supplementary character is twelve bytes: "U+" and the high surrogate in four digits, the
     * literal text "U+04X" and a zero byte, which counts; what is after it is lost to whoever reads up to a zero byte.
     */
    unsigned int fromUTF16(void* dest, unsigned short const* source, unsigned int capacity, ILLCHAR_OPTYPE op,
                           bool* illegal) override;

    unsigned int getMinUnitSize() const override;
    unsigned int getMaxUnitSize() const override;
    unsigned int getNullCharSize() const override;

private:
    friend struct kx7::EngineOf<KX7CharSetConverterDBCSEx>;
    struct Decoder;
    struct Encoder;
    KX7_LOCAL Decoder decoder();
    KX7_LOCAL Encoder encoder();
};

#endif
