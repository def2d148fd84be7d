// kx7text - converter for UTF-16 in host byte order.
#ifndef KX7_CONVERTERS_KX7CHARSETCONVERTERUTF16_H
#define KX7_CONVERTERS_KX7CHARSETCONVERTERUTF16_H

#include "kx7/converters/KX7CharSetConverter.h"

/**
 * Converter for UTF-16 as bytes: code units in host byte order, no byte-order mark, ended by a 0 unit. Units are copied
 * as they are. Sources need not be aligned. It has no state; all operations may be called from any thread at once.
 */
class KX7_API KX7CharSetConverterUTF16 : public KX7CharSetConverter {
public:
    /** A converter that serves `charSet`; nothing is registered. */
    explicit KX7CharSetConverterUTF16(KX7CharSet charSet);
    ~KX7CharSetConverterUTF16() override;

    /** Counts whole units: half of `byteCount`, or up to a 0 unit. */
    unsigned int getNumUnits(void const* source, unsigned int byteCount) override;

    /**
     * Copies units. The source limit counts units, and 0 or below (so also the -1 of callers without a bound) copies
     * nothing. Nothing is illegal: `op` is ignored, the flag cleared and never set.
     */
    unsigned int toUTF16(unsigned short* dest, void const* source, unsigned int capacity, ILLCHAR_OPTYPE op,
                         bool* illegal, int sourceLimit) override;

    unsigned int getNumBytes(unsigned short const* source, unsigned int unitCount) override;

    /** Copies units while two bytes of capacity are left. Nothing is illegal; the flag is cleared and never set. */
    unsigned int fromUTF16(void* dest, unsigned short const* source, unsigned int capacity, ILLCHAR_OPTYPE op,
                           bool* illegal) override;

    unsigned int getMinUnitSize() const override;
    unsigned int getMaxUnitSize() const override;
    unsigned int getNullCharSize() const override;

private:
    friend struct kx7::EngineOf<KX7CharSetConverterUTF16>;
    struct Decoder;
    struct Encoder;
    KX7_LOCAL Decoder decoder();
    KX7_LOCAL Encoder encoder();
};

#endif
