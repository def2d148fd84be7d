// kx7text - converter for UTF-8.
#ifndef KX7_CONVERTERS_KX7CHARSETCONVERTERUTF8_H
#define KX7_CONVERTERS_KX7CHARSETCONVERTERUTF8_H

#include "kx7/converters/KX7CharSetConverter.h"

/**
 * Converter for UTF-8. Lenient on input by design: it never reports malformed UTF-8 and never stops on it, and it
 * takes overlong forms and encoded surrogates as they come. It has no state; all operations may be called from any
 * thread at once.
 */
class KX7_API KX7CharSetConverterUTF8 : public KX7CharSetConverter {
public:
    /** A converter that serves `charSet`; nothing is registered. */
    explicit KX7CharSetConverterUTF8(KX7CharSet charSet);
    ~KX7CharSetConverterUTF8() override;

    /** Counts sequences by their lead bytes; ends at a stray continuation byte or a sequence that is truncated. */
    unsigned int getNumUnits(void const* source, unsigned int byteCount) override;

    /**
     * Decodes. A malformed sequence becomes U+FFFD for its lead byte, a stray continuation byte nothing, whatever
     * `op` says; the flag is cleared and never set. A four-byte sequence becomes U+FFFD where only one unit of capacity
     * is left. A source limit of 0 or below is none; the others count bytes.
     */
    unsigned int toUTF16(unsigned short* dest, void const* source, unsigned int capacity, ILLCHAR_OPTYPE op,
                         bool* illegal, int sourceLimit) override;

    /** Exact for ILLCHAR_REPLACE, but that a high surrogate at the end adds nothing. */
    unsigned int getNumBytes(unsigned short const* source, unsigned int unitCount) override;

    /**
     * Encodes. Only a high surrogate without its partner is unrepresentable; a lone low surrogate gets three bytes.
     * With ILLCHAR_ESCAPE the unit after such a high surrogate is dropped, and each escape of six bytes takes five
     * from the capacity: give a buffer of `capacity` + 1 + one byte for each unpaired high surrogate.
     */
    unsigned int fromUTF16(void* dest, unsigned short const* source, unsigned int capacity, ILLCHAR_OPTYPE op,
                           bool* illegal) override;

    unsigned int getMinUnitSize() const override;
    unsigned int getMaxUnitSize() const override;
    unsigned int getNullCharSize() const override;

private:
    friend struct kx7::EngineOf<KX7CharSetConverterUTF8>;
    struct Decoder;
    struct Encoder;
    KX7_LOCAL Decoder decoder();
    KX7_LOCAL Encoder encoder();
};

#endif
