// kx7text - converter for EUC-KR and EUC-CN.
#ifndef KX7_CONVERTERS_KX7CHARSETCONVERTEREUC_CN_KR_H
#define KX7_CONVERTERS_KX7CHARSETCONVERTEREUC_CN_KR_H

#include "kx7/converters/KX7CharSetConverterMBCS.h"

/**
 * Converter for EUC-KR (KS X 1001) and EUC-CN (GB 2312): ASCII up to 0x7E, and two bytes from 0xA1 to 0xFE each that
 * are the row and cell of a 94-by-94 set. Every character is one UTF-16 code unit.
 */
class KX7_API KX7CharSetConverterEUC_CN_KR : public KX7CharSetConverterMBCS {
public:
    /** @param map pairs of row and cell (0x2121 to 0x7E7E) and unit, ended by (0, 0). Not copied. */
    KX7CharSetConverterEUC_CN_KR(unsigned short const* map, KX7CharSet charSet);
    /** A converter without a mapping list: nothing is mapped. `name` is kept, not copied. */
    KX7CharSetConverterEUC_CN_KR(char const* name, KX7CharSet charSet);
    ~KX7CharSetConverterEUC_CN_KR() override;

    /** Builds the tables of the base, then what decoding kernels look up. */
    void load() override;

    /** Counts a pair of bytes in range, mapped or not, or any other byte as one unit. */
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
    friend struct kx7::EngineOf<KX7CharSetConverterEUC_CN_KR>;
    struct Decoder;
    struct Encoder;
    KX7_LOCAL Decoder decoder();
    KX7_LOCAL Encoder encoder();
};

#endif
