// kx7text - converter for UTF-32 in host byte order.
#ifndef KX7_CONVERTERS_KX7CHARSETCONVERTERUTF32_H
#define KX7_CONVERTERS_KX7CHARSETCONVERTERUTF32_H

#include "kx7/converters/KX7CharSetConverter.h"

/**
 * Converter for UTF-32 as bytes: code points in host byte order, no byte-order mark, ended by a 0 code point. Neither
 * sources nor destinations need be aligned. It has no state; all operations may be called from any thread at once.
 */
class KX7_API KX7CharSetConverterUTF32 : public KX7CharSetConverter {
public:
    /** A converter that serves `charSet`; nothing is registered. */
    explicit KX7CharSetConverterUTF32(KX7CharSet charSet);
    ~KX7CharSetConverterUTF32() override;

    /**
     * Decodes UTF-8 strictly: overlong forms, surrogates, U+FFFE and U+FFFF and malformed sequences become U+FFFD.
     * @param capacity code points that may be written, the closing 0 not counted
     * @param illegal cleared, never set; `op` is ignored
     * @return code points written, the closing 0 not counted
     */
    unsigned int fromUTF8(void* dest, unsigned char const* source, unsigned int capacity, ILLCHAR_OPTYPE op,
                          bool* illegal) override;

    /**
     * Encodes into UTF-8 of up to six bytes a code point; a surrogate, or a value of 0x80000000 or more, becomes U+FFFD
     * and sets the flag.
     * @param capacity bytes; looked at before each code point only, so that up to five bytes are written after it. Then
     *             no zero byte closes the text: give a buffer of `capacity` + 5 bytes and use the result as the length.
     * @return bytes written, the closing zero byte not counted
     */
    unsigned int toUTF8(unsigned char* dest, void const* source, unsigned int capacity, ILLCHAR_OPTYPE op,
                        bool* illegal) override;

    /**
     * Decodes the UTF-8 sequence at `*position` as fromUTF8 does, and moves `*position` after what it used: the whole
     * sequence, or one byte where it is malformed. Never reads after a zero byte.
     */
    static unsigned int UTF32fromUTF8(unsigned char** position);

    /** Counts whole code points: a quarter of `byteCount`, or up to a 0 code point. */
    unsigned int getNumUnits(void const* source, unsigned int byteCount) override;

    /**
     * Decodes. The source limit counts code points; 0 converts nothing, a negative one is none. Surrogate values pass
     * as units, values above U+10FFFF wrap. Nothing is illegal: the flag is cleared and never set.
     */
    unsigned int toUTF16(unsigned short* dest, void const* source, unsigned int capacity, ILLCHAR_OPTYPE op,
                         bool* illegal, int sourceLimit) override;

    /** Four a code point; a high surrogate at the end adds nothing. */
    unsigned int getNumBytes(unsigned short const* source, unsigned int unitCount) override;

    /**
     * Encodes. `capacity` and the result are bytes, four a code point. The unit after an unpaired high surrogate is
     * never lost. An escape is six code points.
     */
    unsigned int fromUTF16(void* dest, unsigned short const* source, unsigned int capacity, ILLCHAR_OPTYPE op,
                           bool* illegal) override;

    unsigned int getMinUnitSize() const override;
    unsigned int getMaxUnitSize() const override;
    unsigned int getNullCharSize() const override;

private:
    friend struct kx7::EngineOf<KX7CharSetConverterUTF32>;
    struct Decoder;
    struct Encoder;
    KX7_LOCAL Decoder decoder();
    KX7_LOCAL Encoder encoder();
};

#endif
