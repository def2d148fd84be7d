// kx7text - the UTF-16 string.
//
//     KX7UString name("Stra\xDF" "e", KX7CS_WCP1252);   // 6 code units
#ifndef KX7_TEXT_KX7USTRING_H
#define KX7_TEXT_KX7USTRING_H

#include "kx7/Export.h"
#include "kx7/charset/KX7CharSet.h"

class KX7CharSetConverter;

/** A byte text of up to 255 bytes behind its length; no terminator. */
struct KX7PascalString {
    unsigned char length;  ///< bytes of text
    char text[255];
};

/** A UTF-16 text of up to 65,535 code units behind its length; no terminator. */
struct KX7BSTR {
    unsigned short length;  ///< code units of text
    unsigned short text[65535];
};

/**
 * A mutable string of UTF-16 code units, always ended by a 0 unit that does not count. Units are stored as they come:
 * no normalisation, no check of surrogates; zeros within the text are allowed. All lengths and indices are in code
 * units.
 *
 * Texts of up to 257 units live inside the object, longer ones on the heap, in exactly the size asked for. Byte text
 * without a character set is in KX7CS_OS_DEFAULT. What cannot be decoded becomes U+FFFD.
 *
 * A text longer than 4,294,967,294 units throws std::length_error "exceed maximum string length"; allocation failure
 * throws std::bad_alloc and leaves the string as it was. One string is used by one thread at a time.
 */
class KX7_API KX7UString {
public:
    /** Units that fit without the heap. */
    static unsigned int const INLINE_CAPACITY = 257;

    /** Not found; to the end. */
    static unsigned int const npos = 0xFFFFFFFF;

    /** The storage of a string, embedded in it. */
    struct Space {
        unsigned int heapOwned;  ///< 1: `buffer` is on the heap and belongs to the string; 0: it is `inlineBuffer`
        unsigned short* buffer;  ///< the code units and a 0 unit
        unsigned int length;     ///< code units before the terminator
        unsigned int capacity;   ///< code units that `buffer` can hold, the terminator not counted
        char* narrowCache;       ///< the text in another character set, or null
        unsigned int narrowCacheLength;
        KX7CharSet narrowCacheCharSet;
        unsigned short inlineBuffer[INLINE_CAPACITY + 1];
    };

    KX7UString();

    /** The character of one byte of `cs`; empty for the zero byte and for a byte that is only part of a character. */
    KX7UString(char c, KX7CharSet cs = KX7CS_OS_DEFAULT);

    /** `count` times the byte `c`, decoded as a whole; empty when either is 0. */
    KX7UString(char c, unsigned int count, KX7CharSet cs = KX7CS_OS_DEFAULT);

    /** One code unit; empty for 0. */
    KX7UString(unsigned short u);

    /** `count` times the unit `u`; empty when either is 0. */
    KX7UString(unsigned short u, unsigned int count);

    /**
     * Zero-terminated byte text; empty for null. The room is what the converter counts, which for UTF-8 takes a
     * four-byte sequence for one unit: text with supplementary characters is cut, and KX7CS_UTF16 gives nothing.
     */
    KX7UString(char const* s, KX7CharSet cs = KX7CS_OS_DEFAULT);

    /** The same for `n` bytes, or up to a zero byte before; nothing behind them is read. */
    KX7UString(char const* s, unsigned int n, KX7CharSet cs = KX7CS_OS_DEFAULT);

    /** The decimal text of `i`. */
    KX7UString(int i);

    /** Zero-terminated UTF-16; empty for null. */
    KX7UString(unsigned short const* s);

    /** `n` code units, or up to a 0 unit before; room for `n` is kept either way. Empty for null. */
    KX7UString(unsigned short const* s, unsigned int n);

    /** The code units from `begin` up to `end`, zeros included. */
    KX7UString(unsigned short const* begin, unsigned short const* end);

    KX7UString(KX7PascalString const& p, KX7CharSet cs = KX7CS_OS_DEFAULT);

    /** Empty for null. */
    KX7UString(KX7PascalString const* p, KX7CharSet cs = KX7CS_OS_DEFAULT);

    KX7UString(KX7BSTR const& b);

    /** Empty for null. */
    KX7UString(KX7BSTR const* b);

    KX7UString(KX7UString const& o);

    /** The part of `o` of `n` units at `pos`; both are cut down to what is there. */
    KX7UString(KX7UString const& o, unsigned int pos, unsigned int n);

    virtual ~KX7UString();

    /** Replaces the text by that of `o`. The string is then inline, or on the heap with exactly the capacity needed. */
    KX7UString& assign(KX7UString const& o);
    KX7UString& operator=(KX7UString const& o) { return assign(o); }

    /** Exchanges the texts, by copying: the storage of both ends as after assign(). */
    void swap(KX7UString& o);

    /** Length in code units. */
    unsigned int length() const { return space->length; }

    /** Code units that fit without another allocation. */
    unsigned int capacity() const { return space->capacity; }

    /** The text, ended by a 0 unit; valid until the string changes. */
    unsigned short const* data() const { return space->buffer; }

    bool empty() const { return space->length == 0; }

    /** Compares up to `n` units, or up to a 0 unit in either text, by unit value: -1, 0 or 1. */
    int compare(KX7UString const& o, unsigned int n = npos) const;

    /**
     * Compares two zero-terminated texts by the values of their units, at most `n` of them: -1, 0 or 1. A null pointer
     * comes before everything but another one.
     */
    int canonicalCompare(unsigned short const* a, unsigned short const* b, unsigned int n) const;

    bool operator<(KX7UString const& o) const { return compare(o) < 0; }

    /** Resets the header to the empty inline state and returns it. Frees nothing: for raw storage only. */
    Space* SetupSpace();

    /** SetupSpace() and room for `n` units. */
    Space* SetupSpace(unsigned int n);

    /** Makes a string of memory that no constructor has seen. */
    void initForAlloc();

    /** Makes room for `n` units. Where the capacity is too small the text is discarded, not carried over. */
    void AssureSpace(unsigned int n);

    /** The same as AssureSpace. */
    void assureSize(unsigned int n) { AssureSpace(n); }

private:
    void decodeTerminated(char const* s, KX7CharSet cs);
    void decodeCounted(char const* s, unsigned int n, KX7CharSet cs, int sourceLimit);
    void store(unsigned short const* units, unsigned int n);
    void takeOver(KX7UString& o);
    void release();

    Space* space;
    Space m_space;
};

#endif
