// kx7text - converter for double-byte encodings of the WHATWG Encoding Standard (internal).
#ifndef KX7_CONVERTERS_KX7CHARSETCONVERTERWEBDOUBLEBYTE_H
#define KX7_CONVERTERS_KX7CHARSETCONVERTERWEBDOUBLEBYTE_H

#include "kx7/converters/KX7CharSetConverterMBCS.h"

/**
 * Converter for encodings of one or two bytes a character, by the standard's rules: EUC-JP, EUC-KR, Shift_JIS. Every
 * character is one UTF-16 code unit. A sequence without a character is illegal; if its last byte is ASCII, what
 * precedes that is, and the byte is read afresh.
 */
class KX7CharSetConverterWebDoubleByte : public KX7CharSetConverterMBCS {
public:
    /**
     * @param map as of KX7CharSetConverterMBCS: what is mapped both ways
     * @param decodedOnly in the same form, what is mapped from code to unit alone; may be null
     * @param encodedOnly in the same form, what is mapped from unit to code alone; may be null
     * @param threeBytes in the same form, pairs of the two bytes after 0x8F and unit, decoded only; null: the set has
     * no codes of three bytes, and 0x8F is as any byte
     * @param typeTable 256 bytes, of ByteTypeTables.h: which bytes lead. Those that end a mapped pair have to be marked
     * as trail bytes, no other byte need be. Not copied, nor are the lists.
     */
    KX7CharSetConverterWebDoubleByte(unsigned short const* map, unsigned short const* decodedOnly,
                                     unsigned short const* encodedOnly, unsigned short const* threeBytes,
                                     unsigned char const* typeTable, KX7CharSet charSet);
    ~KX7CharSetConverterWebDoubleByte() override;

    /** Builds the tables of the base, then what decoding kernels look up. */
    void load() override;

    /** Counts what toUTF16 writes, with one unit for what is illegal. */
    unsigned int getNumUnits(void const* source, unsigned int byteCount) override;

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
    friend struct kx7::EngineOf<KX7CharSetConverterWebDoubleByte>;
    struct Decoder;
    struct Encoder;
    Decoder decoder();
    Encoder encoder();

    unsigned short const* m_decodedOnly;
    unsigned short const* m_encodedOnly;
    unsigned short const* m_threeBytes;
    unsigned char const* m_types;
    LookupTable<unsigned short>* m_afterShift = nullptr;  ///< of m_threeBytes
};

#endif
