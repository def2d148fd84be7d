// kx7text - converter for UTF-16 in ASCII with escapes.
#ifndef KX7_CONVERTERS_KX7CHARSETCONVERTERUTF16ESC_H
#define KX7_CONVERTERS_KX7CHARSETCONVERTERUTF16ESC_H

#include "kx7/converters/KX7CharSetConverter.h"

/**
 * Converter for UTF-16 as ASCII: a code unit below 0x80 is its byte, any other the six characters "U+20AC" of its
 * value, surrogates one by one. Text that holds such six characters itself is read back as the unit. It has no state;
 * all operations may be called from any thread at once.
 */
class KX7_API KX7CharSetConverterUTF16Esc : public KX7CharSetConverter {
public:
    /** A converter that serves `charSet`; nothing is registered. */
    explicit KX7CharSetConverterUTF16Esc(KX7CharSet charSet);
    ~KX7CharSetConverterUTF16Esc() override;

    /** Counts escapes and single bytes. */
    unsigned int getNumUnits(void const* source, unsigned int byteCount) override;

    /**
     * Decodes. A byte from 0x80 widens to 0xFF80 and up. A source limit of 0 or below is none; the others count bytes.
     * Nothing is illegal: `op` is ignored, the flag cleared and never set.
     */
    unsigned int toUTF16(unsigned short* dest, void const* source, unsigned int capacity, ILLCHAR_OPTYPE op,
                         bool* illegal, int sourceLimit) override;

    unsigned int getNumBytes(unsigned short const* source, unsigned int unitCount) override;

    /** Encodes. Nothing is illegal; the flag is cleared and never set. */
    unsigned int fromUTF16(void* dest, unsigned short const* source, unsigned int capacity, ILLCHAR_OPTYPE op,
                           bool* illegal) override;

    unsigned int getMinUnitSize() const override;
    unsigned int getMaxUnitSize() const override;
    unsigned int getNullCharSize() const override;

private:
    friend struct kx7::EngineOf<KX7CharSetConverterUTF16Esc>;
    struct Decoder;
    struct Encoder;
    KX7_LOCAL Decoder decoder();
    KX7_LOCAL Encoder encoder();
};

#endif
