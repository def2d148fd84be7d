// kx7text - converter for double-byte code pages.
#ifndef KX7_CONVERTERS_KX7CHARSETCONVERTERDBCS_H
#define KX7_CONVERTERS_KX7CHARSETCONVERTERDBCS_H

#include "kx7/converters/KX7CharSetConverterDBCSBase.h"
#include "kx7/converters/KX7CharSetConverterMBCS.h"

/**
 * Converter for encodings of one or two bytes a character that a byte-type table tells apart: code pages 932, 936, 949
 * and 950, Big5, Shift_JIS. Every character is one UTF-16 code unit; surrogates are looked up one by one and never
 * mapped, so a supplementary character becomes two substitutes.
 */
class KX7_API KX7CharSetConverterDBCS : public KX7CharSetConverterMBCS, private KX7CharSetConverterDBCSBase {
public:
    /** @param typeTable 256 bytes; bit 0x40 marks a lead byte, bit 0x80 a trail byte. Neither list is copied. */
    KX7CharSetConverterDBCS(unsigned short const* map, unsigned char const* typeTable, KX7CharSet charSet);
    /** A converter without a mapping list: nothing is mapped. `name` is kept, not copied. */
    KX7CharSetConverterDBCS(char const* name, unsigned char const* typeTable, KX7CharSet charSet);
    ~KX7CharSetConverterDBCS() override;

    /** Builds the tables of the base, then what decoding kernels look up. */
    void load() override;

    /** Counts a well-formed pair, mapped or not, or any other byte as one unit. */
    unsigned int getNumUnits(void const* source, unsigned int byteCount) override;

    /**
     * Decodes. A lead byte without a trail byte is illegal on its own; what follows it is read afresh. A source limit
     * of 0 or below is none; the others count bytes and are not looked at after such a lead byte.
     */
    unsigned int toUTF16(unsigned short* dest, void const* source, unsigned int capacity, ILLCHAR_OPTYPE op,
                         bool* illegal, int sourceLimit) override;

    /** Counts an unmapped unit as one byte: escapes need more capacity. */
    unsigned int getNumBytes(unsigned short const* source, unsigned int unitCount) override;

    unsigned int fromUTF16(void* dest, unsigned short const* source, unsigned int capacity, ILLCHAR_OPTYPE op,
                           bool* illegal) override;

    unsigned int getMinUnitSize() const override;
    unsigned int getMaxUnitSize() const override;
    unsigned int getNullCharSize() const override;

private:
    friend struct kx7::EngineOf<KX7CharSetConverterDBCS>;
    struct Decoder;
    struct Encoder;
    KX7_LOCAL Decoder decoder();
    KX7_LOCAL Encoder encoder();
};

#endif
