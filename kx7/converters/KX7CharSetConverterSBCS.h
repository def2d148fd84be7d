// kx7text - converter for single-byte character sets.
#ifndef KX7_CONVERTERS_KX7CHARSETCONVERTERSBCS_H
#define KX7_CONVERTERS_KX7CHARSETCONVERTERSBCS_H

#include <pthread.h>

#include <atomic>

#include "kx7/base/LookupTable.h"
#include "kx7/converters/KX7CharSetConverter.h"

namespace kx7 {
struct KernelTables;
struct SingleByteTables;
}  // namespace kx7

/**
 * Converter for a character set whose every byte is one UTF-16 code unit (Windows 125x and 874, ISO 8859 and others).
 * One object serves one character set. It is created empty and builds its two tables from a mapping list on the
 * first conversion; from then on it is read-only. All operations may be called from any thread at once.
 */
class KX7_API KX7CharSetConverterSBCS : public KX7CharSetConverter {
public:
    /**
     * @param map pairs of byte value and UTF-16 code unit, ended by (0, 0); no value twice. Not copied: it must
     *            outlive the object.
     */
    KX7CharSetConverterSBCS(unsigned short const* map, KX7CharSet charSet);

    /** A converter without a mapping list: every byte and every unit is unmapped. `name` is kept, not copied. */
    KX7CharSetConverterSBCS(char const* name, KX7CharSet charSet);

    ~KX7CharSetConverterSBCS() override;

    /** Builds the tables unless they exist. Called by every conversion; any thread may call it at any time. */
    void load();

    /** Counts bytes. */
    unsigned int getNumUnits(void const* source, unsigned int byteCount) override;

    /**
     * Decodes; sets the flag at a byte that the character set leaves undefined. A source limit of 0 converts nothing,
     * a negative one is none; the others count bytes.
     */
    unsigned int toUTF16(unsigned short* dest, void const* source, unsigned int capacity, ILLCHAR_OPTYPE op,
                         bool* illegal, int sourceLimit) override;

    /** Counts one byte a unit, mapped or not. */
    unsigned int getNumBytes(unsigned short const* source, unsigned int unitCount) override;

    /**
     * Encodes, each half of a surrogate pair on its own (and so as two substitutes). The flag is neither cleared nor
     * set: compare the result with another conversion to learn of losses, or use ILLCHAR_STOP.
     */
    unsigned int fromUTF16(void* dest, unsigned short const* source, unsigned int capacity, ILLCHAR_OPTYPE op,
                           bool* illegal) override;

    unsigned int getMinUnitSize() const override;
    unsigned int getMaxUnitSize() const override;
    unsigned int getNullCharSize() const override;

private:
    friend struct kx7::EngineOf<KX7CharSetConverterSBCS>;
    struct Decoder;
    struct Encoder;
    KX7_LOCAL Decoder decoder();
    KX7_LOCAL Encoder encoder();
    KX7_LOCAL kx7::SingleByteTables const& tables();

protected:
    char const* m_pszName;                       ///< of a converter without a list; null otherwise
    std::atomic<unsigned short*> m_pToUnicode;   ///< byte to unit, 256 entries of m_pKernelTables; published last
    LookupTable<unsigned char>* m_pFromUnicode;  ///< unit to byte; part of m_pKernelTables
    unsigned short const* m_pMap;                ///< the mapping list, or null
    pthread_mutex_t m_oLoadMutex;                ///< held while the tables are built
    kx7::KernelTables* m_pKernelTables;          ///< the memory of both tables, and what kernels look up; or null
};

#endif
