// kx7text - converter for EUC-JP.
#ifndef KX7_CONVERTERS_KX7CHARSETCONVERTEREUC_JP_H
#define KX7_CONVERTERS_KX7CHARSETCONVERTEREUC_JP_H

#include "kx7/converters/KX7CharSetConverterMBCS.h"

/**
 * Converter for EUC-JP: ASCII up to 0x7E, JIS X 0208 in two bytes, half-width katakana after 0x8E and JIS X 0212 in
 * three bytes after 0x8F. The library's own object has an empty JIS X 0212 list, so its three-byte sequences are
 * unmapped; U+00A5 and U+203E travel as 0x80 0xDC and 0x80 0xFE.
 */
class KX7_API KX7CharSetConverterEUC_JP : public KX7CharSetConverterMBCS {
public:
    /** @param map0208, map0201, map0212 pairs of code and unit, ended by (0, 0). Not copied. */
    KX7CharSetConverterEUC_JP(unsigned short const* map0208, unsigned short const* map0201,
                              unsigned short const* map0212, KX7CharSet charSet);
    /** A converter without a mapping list: nothing is mapped. The names are kept, not copied. */
    KX7CharSetConverterEUC_JP(char const* name0208, char const* name0201, char const* name0212, KX7CharSet charSet);
    ~KX7CharSetConverterEUC_JP() override;

    /** Builds the tables of the base, then those of this class. */
    void load() override;

    static constexpr char m_cSS2 = static_cast<char>(0x8E);  ///< single shift 2: a half-width katakana follows
    static constexpr char m_cSS3 = static_cast<char>(0x8F);  ///< single shift 3: two bytes of JIS X 0212 follow

    /** Counts a unit a character; ends, without counting it, at a character that `byteCount` truncates. */
    unsigned int getNumUnits(void const* source, unsigned int byteCount) override;

    /**
     * Decodes. The second byte of a pair is not checked, only its low seven bits count. What is unmapped is illegal for
     * its first byte alone. A source limit of 0 or below is none; the others count bytes.
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
    friend struct kx7::EngineOf<KX7CharSetConverterEUC_JP>;
    struct Decoder;
    struct StrictDecoder;
    struct Encoder;
    KX7_LOCAL Decoder decoder();
    KX7_LOCAL Encoder encoder();
    KX7_LOCAL void loadBase();
    KX7_LOCAL bool assureLoaded();

protected:
    char const* m_pszName0201;                                   ///< of a converter without lists; null otherwise
    char const* m_pszName0212;                                   ///< of a converter without lists; null otherwise
    std::atomic<LookupTable<unsigned short>*> m_pToUnicode0212;  ///< published last, after the tables of the base
    LookupTable<unsigned short>* m_pFromUnicode0212;             ///< unit to code
    unsigned short const* m_pMap0201;                            ///< the list of JIS X 0201, or null
    unsigned short const* m_pMap0212;                            ///< the list of JIS X 0212, or null
    pthread_mutex_t m_oLoadMutex0212;                            ///< held while the tables of this class are built
};

#endif
