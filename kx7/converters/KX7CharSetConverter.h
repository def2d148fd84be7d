// kx7text - the interface of all converters.
#ifndef KX7_CONVERTERS_KX7CHARSETCONVERTER_H
#define KX7_CONVERTERS_KX7CHARSETCONVERTER_H

#include "kx7/base/CharSet.h"
#include "kx7/base/Export.h"

namespace kx7 {
struct ByteText;
template <class Converter>
struct EngineOf;
}  // namespace kx7

/** What a conversion does with illegal input and with characters that the target cannot represent. */
enum ILLCHAR_OPTYPE : int32_t {
    /** End before the first such character: the output is what was converted so far, terminated. */
    ILLCHAR_STOP = 0,
    /** Write a substitute and go on: "?" in byte and UTF-32 output, U+FFFD in UTF-16. Any value not named acts so. */
    ILLCHAR_REPLACE = 1,
    /** In byte and UTF-32 output write the code unit as the six characters "U+20AC"; in UTF-16 as ILLCHAR_REPLACE. */
    ILLCHAR_ESCAPE = 2
};

/**
 * Turns text of one character set into UTF-16 and UTF-16 into that character set.
 *
 * Converters are static objects of the library (kx7/charset/Converters.h); getConverter finds them by character set.
 * Every operation may be called from any thread at once. Nothing throws; nothing allocates, but that a table-driven
 * converter builds its tables on first use. A null destination or source yields 0 and writes nothing, not even a
 * terminator; it is not a size query. Nothing is written after the terminator, whatever the capacity is. Source and
 * destination must not overlap.
 */
class KX7_API KX7CharSetConverter {
public:
    /** @param charSet kept in m_eCharSet; nothing is registered */
    explicit KX7CharSetConverter(KX7CharSet charSet) : m_eCharSet(charSet) {}
    virtual ~KX7CharSetConverter();

    KX7CharSetConverter(KX7CharSetConverter const&) = delete;
    KX7CharSetConverter& operator=(KX7CharSetConverter const&) = delete;

    /**
     * The converter of `charSet`: never null, owned by the library. KX7CS_OS_DEFAULT stands for the character set
     * detected at load; a character set without a converter gets the UTF-8 converter.
     */
    static KX7CharSetConverter* getConverter(KX7CharSet charSet);

    /**
     * Counts the UTF-16 code units that `source` becomes; the class says where it counts otherwise.
     * @param byteCount bytes to read at most, none after a terminator; 0xFFFFFFFF: up to the terminator
     * @return the count, 0 for a null source, 0xFFFFFFFF where there are more
     */
    virtual unsigned int getNumUnits(void const* source, unsigned int byteCount) = 0;

    /**
     * Decodes into UTF-16 until the source's terminator, a full destination or the source limit.
     * @param dest        receives the units and a 0 unit after them: space for `capacity` + 1 units
     * @param source      text ended by the encoding's terminator
     * @param capacity        units that may be written, the closing 0 not counted
     * @param op          what to do with illegal input
     * @param illegal     may be null; cleared on entry and set at the first illegal or unmapped character by the
     *                    converters that report
     * @param sourceLimit bounds the source consumed; -1 where there is no bound. The class says what it counts and
     *                    what 0 means. A character that the limit cuts is converted whole.
     * @return units written, the closing 0 not counted
     */
    virtual unsigned int toUTF16(unsigned short* dest, void const* source, unsigned int capacity, ILLCHAR_OPTYPE op,
                                 bool* illegal, int sourceLimit) = 0;

    /**
     * Counts the bytes that fromUTF16 writes for `source` with ILLCHAR_REPLACE, terminator excluded; the class says
     * where a high surrogate at the end is not counted.
     * @param unitCount units to read at most, none after a 0 unit; 0xFFFFFFFF: up to the 0 unit
     * @return the count, 0 for a null source, 0xFFFFFFFF where there are more
     */
    virtual unsigned int getNumBytes(unsigned short const* source, unsigned int unitCount) = 0;

    /**
     * Encodes UTF-16 until its 0 unit or a full destination. A character never straddles the end of the capacity.
     * @param dest    receives the bytes and a terminator of getNullCharSize() bytes after them
     * @param source  code units ended by a 0 unit
     * @param capacity    bytes that may be written, the terminator not counted
     * @param op      what to do with characters that cannot be represented
     * @param illegal may be null; cleared on entry and set at the first such character by the converters that report
     * @return bytes written, the terminator not counted
     */
    virtual unsigned int fromUTF16(void* dest, unsigned short const* source, unsigned int capacity, ILLCHAR_OPTYPE op,
                                   bool* illegal) = 0;

    /** Converts UTF-8 directly; only UTF-32 does. This version writes nothing and returns 0. */
    virtual unsigned int fromUTF8(void* dest, unsigned char const* source, unsigned int capacity, ILLCHAR_OPTYPE op,
                                  bool* illegal);

    /** Converts to UTF-8 directly; only UTF-32 does. This version writes nothing and returns 0. */
    virtual unsigned int toUTF8(unsigned char* dest, void const* source, unsigned int capacity, ILLCHAR_OPTYPE op,
                                bool* illegal);

    /** Smallest number of bytes of one character. */
    virtual unsigned int getMinUnitSize() const = 0;

    /** Largest number of bytes that one UTF-16 code unit becomes. */
    virtual unsigned int getMaxUnitSize() const = 0;

    /** Size in bytes of the encoding's terminator. */
    virtual unsigned int getNullCharSize() const = 0;

protected:
    KX7CharSet m_eCharSet;  ///< the character set that this converter serves
};

#endif
