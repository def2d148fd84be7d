// kx7text - converter for GB 18030.
#ifndef KX7_CONVERTERS_KX7CHARSETCONVERTERGB18030_H
#define KX7_CONVERTERS_KX7CHARSETCONVERTERGB18030_H

#include "kx7/converters/KX7CharSetConverterMBCS.h"

namespace kx7 {
struct GB18030Range;
}

/**
 * Converter for GB 18030: one byte, two bytes (GBK) or four bytes a character. What GBK lacks comes from tables of
 * ranges, the supplementary planes from arithmetic. U+20AC is written as 0x80, as GBK has it; 0xA2E3 is read as well.
 */
class KX7_API KX7CharSetConverterGB18030 : public KX7CharSetConverterMBCS {
public:
    /** @param gbkMap pairs of code and unit, ended by (0, 0). Not copied. */
    KX7CharSetConverterGB18030(unsigned short const* gbkMap, KX7CharSet charSet);
    /** A converter without a mapping list: nothing is mapped. `name` is kept, not copied. */
    KX7CharSetConverterGB18030(char const* name, KX7CharSet charSet);
    ~KX7CharSetConverterGB18030() override;

    /** Builds the tables of the base, then those of this class. */
    void load() override;

    /** Where a search for `code` in the table of ranges by GB code begins; the whole table before load(). */
    kx7::GB18030Range const* getGB2UniRange(unsigned int code) const;

    /** Where a search for the UTF-16 unit `unit` in the table of ranges by unit begins; the whole table before load().
     */
    kx7::GB18030Range const* getUni2GBRange(unsigned int unit) const;

    /** Counts two units for a supplementary character, one for any other character and for each byte that begins none.
     */
    unsigned int getNumUnits(void const* source, unsigned int byteCount) override;

    /**
     * Decodes. A malformed sequence is illegal for its first byte alone. A source limit of 0 or below is none; the
     * others count bytes and are not looked at after an illegal or unmapped sequence that is more than one byte by its
     * lead.
     */
    unsigned int toUTF16(unsigned short* dest, void const* source, unsigned int capacity, ILLCHAR_OPTYPE op,
                         bool* illegal, int sourceLimit) override;

    /** Exact for ILLCHAR_REPLACE: ends at a high surrogate without its partner. */
    unsigned int getNumBytes(unsigned short const* source, unsigned int unitCount) override;

    /** Encodes. A high surrogate without its partner ends the conversion without output and without the flag. */
    unsigned int fromUTF16(void* dest, unsigned short const* source, unsigned int capacity, ILLCHAR_OPTYPE op,
                           bool* illegal) override;

    unsigned int getMinUnitSize() const override;
    unsigned int getMaxUnitSize() const override;
    unsigned int getNullCharSize() const override;

private:
    friend struct kx7::EngineOf<KX7CharSetConverterGB18030>;
    struct Decoder;
    struct Encoder;
    KX7_LOCAL Decoder decoder();
    KX7_LOCAL Encoder encoder();
    KX7_LOCAL bool assureLoaded();

    kx7::GB18030Range const** m_pGB2UniIndex;               ///< 287 entries
    std::atomic<kx7::GB18030Range const**> m_pUni2GBIndex;  ///< 512 entries; published last
    pthread_mutex_t m_oIndexMutex;
};

#endif
