// kx7text - the class of the UTF-16 string; KX7UString.h has its operators, too.
//
//     KX7UString name("Stra\xDF" "e", KX7CS_WCP1252);   // 6 code units
#ifndef KX7_TEXT_KX7USTRINGCLASS_H
#define KX7_TEXT_KX7USTRINGCLASS_H

#include <iosfwd>

#include "kx7/base/CharSet.h"
#include "kx7/base/Export.h"

class KX7CharSetConverter;
class KX7UStringList;
namespace kx7 {
struct Concatenation;

/** The member `type` is `Result` for char16_t; for every other type there is none, so that overloads take no other. */
template <class Unit, class Result = void>
struct IfChar16 {
};
/** See IfChar16. */
template <class Result>
struct IfChar16<char16_t, Result> {
    typedef Result type;  ///< the type that is asked for
};

/** The same code units as the library takes them. The pointer is for the library alone: it is not to be read here. */
inline unsigned short const* codeUnits(char16_t const* s)
{
    return reinterpret_cast<unsigned short const*>(s);
}
}  // namespace kx7

/** A byte text of up to 255 bytes after its length; no terminator. */
struct KX7PascalString {
    unsigned char length;  ///< bytes of text
    char text[255];        ///< the bytes
};

/** A UTF-16 text of up to 65,535 code units after its length; no terminator. */
struct KX7BSTR {
    unsigned short length;       ///< code units of text
    unsigned short text[65535];  ///< the code units
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
        unsigned int narrowCacheLength;                    ///< bytes in `narrowCache`, terminator not counted
        KX7CharSet narrowCacheCharSet;                     ///< the character set of `narrowCache`
        unsigned short inlineBuffer[INLINE_CAPACITY + 1];  ///< for texts that need no heap
    };

    /** The empty string. */
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
     * Zero-terminated byte text; empty for null. The capacity is what the converter counts, which for UTF-8 takes a
     * four-byte sequence for one unit: text with supplementary characters is cut, and KX7CS_UTF16 gives nothing.
     */
    KX7UString(char const* s, KX7CharSet cs = KX7CS_OS_DEFAULT);

    /**
     * The same for `n` bytes, or up to a terminator within them; nothing after either is read. Where there is none in
     * 0xFFFFFFFF bytes: std::length_error.
     */
    KX7UString(char const* s, unsigned int n, KX7CharSet cs = KX7CS_OS_DEFAULT);

    /** The decimal text of `i`. */
    KX7UString(int i);

    /** Zero-terminated UTF-16; empty for null. */
    KX7UString(unsigned short const* s);

    /** `n` code units, or up to a 0 unit before; space for `n` is kept either way. Empty for null. */
    KX7UString(unsigned short const* s, unsigned int n);

    /** The code units from `begin` up to `end`, zeros included. */
    KX7UString(unsigned short const* begin, unsigned short const* end);

    /** The bytes of `p`, decoded. */
    KX7UString(KX7PascalString const& p, KX7CharSet cs = KX7CS_OS_DEFAULT);

    /** Empty for null. */
    KX7UString(KX7PascalString const* p, KX7CharSet cs = KX7CS_OS_DEFAULT);

    /** The code units of `b`, zeros included. */
    KX7UString(KX7BSTR const& b);

    /** Empty for null. */
    KX7UString(KX7BSTR const* b);

    /** A copy of the text; the cache of c_str() is not copied. */
    KX7UString(KX7UString const& o);

    /** The part of `o` of `n` units at `pos`; both are cut down to what is there. */
    KX7UString(KX7UString const& o, unsigned int pos, unsigned int n);

    /**
     * The same of char16_t: u"text", or a unit with a count. Explicit, so that u"text" alone is no KX7UString to a
     * function that takes one; a single char16_t is an int to the constructors, and gives its decimal text.
     */
    ///@{
    template <class Unit, class = typename kx7::IfChar16<Unit>::type>
    explicit KX7UString(Unit const* s) : KX7UString(kx7::codeUnits(s))
    {
    }
    template <class Unit, class = typename kx7::IfChar16<Unit>::type>
    explicit KX7UString(Unit const* s, unsigned int n) : KX7UString(kx7::codeUnits(s), n)
    {
    }
    template <class Unit, class = typename kx7::IfChar16<Unit>::type>
    explicit KX7UString(Unit const* begin, Unit const* end) : KX7UString(kx7::codeUnits(begin), kx7::codeUnits(end))
    {
    }
    template <class Unit, class = typename kx7::IfChar16<Unit>::type>
    explicit KX7UString(Unit u, unsigned int count) : KX7UString(static_cast<unsigned short>(u), count)
    {
    }
    ///@}

    virtual ~KX7UString();

    // Whole-string assignment. Byte text is in KX7CS_OS_DEFAULT; null, 0 and empty texts make the string empty.

    /** Replaces the text by that of `o`. The string is then inline, or on the heap with exactly the capacity needed. */
    KX7UString& assign(KX7UString const& o);

    /** Replaces the text by what the constructor of the same argument makes. */
    ///@{
    KX7UString& operator=(KX7UString const& o) { return assign(o); }
    KX7UString& operator=(KX7PascalString const* p);
    KX7UString& operator=(KX7BSTR const& b);
    KX7UString& operator=(unsigned short const* s);
    KX7UString& operator=(char const* s);
    KX7UString& operator=(unsigned short u);
    template <class Unit>
    typename kx7::IfChar16<Unit, KX7UString&>::type operator=(Unit const* s)
    {
        return *this = kx7::codeUnits(s);
    }
    template <class Unit>
    typename kx7::IfChar16<Unit, KX7UString&>::type operator=(Unit u)
    {
        return *this = static_cast<unsigned short>(u);
    }
    ///@}

    /**
     * Unlike the others leaves the cache of c_str() as it is, which then still answers with the old text; only where
     * the result is empty the cache goes.
     */
    KX7UString& operator=(char c);

    /** Exchanges the texts, by copying: the storage of both ends as after assign(). */
    void swap(KX7UString& o);

    /** Length in code units. */
    unsigned int length() const { return space->length; }

    /** Code units that fit without another allocation. */
    unsigned int capacity() const { return space->capacity; }

    /** The text, ended by a 0 unit; valid until the string changes. */
    unsigned short const* data() const { return space->buffer; }

    /** Has no code unit. */
    bool empty() const { return space->length == 0; }

    /** Bytes that the text needs in `cs`, terminator not counted. */
    unsigned int length(KX7CharSet cs) const;

    /** Number of Unicode characters: a surrogate pair counts once, a high surrogate at the end not at all. */
    unsigned int numChars() const;

    /**
     * The text in `cs`, zero-terminated in that set's width, owned by the string. It is kept and stays valid until
     * another set is asked for or an operation drops it: assignment (but of a char), erase, trim, resize, replace.
     * toUpper, toLower and writing through at() do not drop it, so that it is out of date after them. What `cs` cannot
     * represent becomes "?".
     */
    char const* c_str(KX7CharSet cs = KX7CS_OS_DEFAULT);

    /**
     * Converts into `dst`; the cache is not used.
     * @param size bytes for the text; `dst` must hold the set's terminator (GetNullCharSize) after them
     * @return bytes written, terminator not counted; 0 with nothing written for null, size 0 and an empty string
     */
    unsigned int copy(char* dst, unsigned int size, KX7CharSet cs = KX7CS_OS_DEFAULT) const;

    /** Copies up to `size` code units, without a terminator. Returns how many. */
    unsigned int copy(unsigned short* dst, unsigned int size) const;

    /** Writes up to 255 bytes in `cs`, cut after a whole character. Returns how many; 0 for null. */
    unsigned int copy(KX7PascalString* p, KX7CharSet cs = KX7CS_OS_DEFAULT) const;

    /**
     * Writes up to `size` code units after the length field, without a terminator.
     * @param size code units that fit after the length field; where the text is longer, taken modulo 65,536
     * @return units written; 0 for null. The length field holds that modulo 65,536.
     */
    unsigned int copy(KX7BSTR* b, unsigned int size) const;

    /** The code unit at `i`; throws std::out_of_range "invalid string index given". Writing leaves the cache alone. */
    unsigned short& at(unsigned int i);
    /** The same, to be read only. */
    unsigned short const& at(unsigned int i) const;

    /**
     * The character at index `i`, counted in characters; throws std::out_of_range "invalid string index given". A
     * reference into the cache of c_str(KX7CS_UTF32): writing through it does not change the text.
     */
    unsigned int& at_utf32(unsigned int i);

    // Editing. Positions beyond the text throw std::out_of_range "invalid string index given".

    /** What trim() cuts: bits for the front and the end. */
    enum TrimCmd {
        TRIM_FRONT = 1,  ///< at the front only
        TRIM_END = 2,    ///< at the end only
        TRIM_BOTH = 3    ///< at both ends
    };

    /** What trim() takes for blank. */
    enum TrimTarget {
        TRIM_WHITESPACE = 0,            ///< class bit 0x0001 of KX7UChar::getCharClass
        TRIM_SPACE = 1,                 ///< U+0020 only
        TRIM_WHITESPACE_OR_NONCHAR = 2  ///< white space or class 0: zeros, controls, unassigned units
    };

    /** Makes the string empty; keeps the capacity. */
    KX7UString& erase();

    /** Removes up to `n` units at `pos`. No effect on an empty string, whatever `pos` is. */
    KX7UString& erase(unsigned int pos, unsigned int n = npos);

    /** Cuts blanks off the front, the end or both. */
    KX7UString& trim(TrimCmd cmd = TRIM_BOTH, TrimTarget target = TRIM_WHITESPACE);

    /**
     * Cuts the text to `n` units or fills it up with `u`. Beyond the capacity the old text is lost: the result is then
     * `n` times `u`. Throws std::length_error "exceed maximum string length" for npos.
     */
    KX7UString& resize(unsigned int n, unsigned short u);
    /** The same with a char16_t. */
    template <class Unit>
    typename kx7::IfChar16<Unit, KX7UString&>::type resize(unsigned int n, Unit u)
    {
        return resize(n, static_cast<unsigned short>(u));
    }

    /** The same with a byte that is one character and one code unit in `cs`. */
    KX7UString& resize(unsigned int n, char c, KX7CharSet cs = KX7CS_OS_DEFAULT);

    /** The first `n` units; throws where there are fewer. */
    KX7UString left(unsigned int n) const;

    /**
     * `n` units at `pos`, with npos to the end; throws where `pos` + `n`, modulo 2^32, is beyond the end. A sum that
     * wraps passes: the part is then cut down to what is there.
     */
    KX7UString mid(unsigned int pos, unsigned int n = npos) const;

    /** Maps unit by unit (KX7UChar::toUpperCase); the length never changes. Keeps the cache of c_str(). */
    KX7UString& toUpper(bool asciiOnly = false);
    /** The same with KX7UChar::toLowerCase. */
    KX7UString& toLower(bool asciiOnly = false);

    /** First index of `c` from `pos` on, or npos; 0 is never found. */
    unsigned int find(unsigned short c, unsigned int pos = 0) const;

    /** First index of `s` from `pos` on, or npos; an empty string is never found. */
    unsigned int find(KX7UString const& s, unsigned int pos = 0) const;

    /**
     * Last index of `c` up to `pos`, or npos. Does not search when `pos` is not below the length (npos included) or `c`
     * is 0: the answer is then the length - 1, whatever stands there.
     */
    unsigned int rfind(unsigned short c, unsigned int pos) const;

    /** Last index of `s` up to `pos`, or npos; an empty string is never found. */
    unsigned int rfind(KX7UString const& s, unsigned int pos = npos) const;

    /** Replaces up to `n` units at `pos` by up to `sn` units of `s` at `spos`; `s` may be this string. */
    KX7UString& replace(unsigned int pos, unsigned int n, KX7UString const& s, unsigned int spos,
                        unsigned int sn = npos);

    /** Replaces the units from `first` to `last`, which point into data(), by `s`. */
    KX7UString& replace(unsigned short const* first, unsigned short const* last, KX7UString const& s);

    /** The parts between separators, each with the memory of a string however short; see KX7UStringList. */
    ///@{
    KX7UStringList split(unsigned short sep) const;
    KX7UStringList split(KX7UString const& sep) const;
    KX7UStringList split(char sep, KX7CharSet cs = KX7CS_OS_DEFAULT) const;
    template <class Unit>
    typename kx7::IfChar16<Unit, KX7UStringList>::type split(Unit sep) const;
    ///@}

    // Comparison, by unit value: no normalisation, no locale. All of it ends at a 0 unit within a text.

    /** Compares up to `n` units: -1, 0 or 1. */
    int compare(KX7UString const& o, unsigned int n = npos) const;

    /** The same; units that differ are compared by their upper case. */
    int compareNoCase(KX7UString const& o, unsigned int n = npos) const;

    /**
     * Compares two zero-terminated texts by the values of their units, at most `n` of them: -1, 0 or 1. A null pointer
     * comes before everything but another one.
     */
    int canonicalCompare(unsigned short const* a, unsigned short const* b, unsigned int n) const;
    /** The same; units that differ are compared by their upper case. */
    int canonicalCompareNoCase(unsigned short const* a, unsigned short const* b, unsigned int n) const;

    /** As compare(). Byte text is in KX7CS_OS_DEFAULT; a null pointer is the empty text. */
    ///@{
    bool operator==(KX7UString const& o) const { return compare(o) == 0; }
    bool operator!=(KX7UString const& o) const { return compare(o) != 0; }
    bool operator<(KX7UString const& o) const { return compare(o) < 0; }
    bool operator>(KX7UString const& o) const { return compare(o) > 0; }
    bool operator<=(KX7UString const& o) const { return compare(o) <= 0; }
    bool operator>=(KX7UString const& o) const { return compare(o) >= 0; }
    bool operator==(char const* s) const { return compare(KX7UString(s)) == 0; }
    bool operator!=(char const* s) const { return compare(KX7UString(s)) != 0; }
    bool operator<(char const* s) const { return compare(KX7UString(s)) < 0; }
    bool operator>(char const* s) const { return compare(KX7UString(s)) > 0; }
    bool operator<=(char const* s) const { return compare(KX7UString(s)) <= 0; }
    bool operator>=(char const* s) const { return compare(KX7UString(s)) >= 0; }
    bool operator==(unsigned short const* s) const { return compare(KX7UString(s)) == 0; }
    bool operator!=(unsigned short const* s) const { return compare(KX7UString(s)) != 0; }
    bool operator<(unsigned short const* s) const { return compare(KX7UString(s)) < 0; }
    bool operator>(unsigned short const* s) const { return compare(KX7UString(s)) > 0; }
    bool operator<=(unsigned short const* s) const { return compare(KX7UString(s)) <= 0; }
    bool operator>=(unsigned short const* s) const { return compare(KX7UString(s)) >= 0; }
    ///@}

    /** This text and the other after it, in a new string; byte text is in KX7CS_OS_DEFAULT. */
    ///@{
    KX7UString operator+(char c) const;
    KX7UString operator+(unsigned short u) const;
    KX7UString operator+(char const* s) const;
    KX7UString operator+(unsigned short const* s) const;
    KX7UString operator+(KX7UString const& o) const;
    template <class Unit>
    typename kx7::IfChar16<Unit, KX7UString>::type operator+(Unit u) const
    {
        return *this + static_cast<unsigned short>(u);
    }
    template <class Unit>
    friend typename kx7::IfChar16<Unit, KX7UString>::type operator+(Unit u, KX7UString const& o)
    {
        return KX7UString(static_cast<unsigned short>(u)) + o;
    }
    ///@}

    // Storage primitives.

    /** Resets the header to the empty inline state and returns it. Frees nothing: for raw storage only. */
    Space* SetupSpace();

    /** SetupSpace() and space for `n` units. */
    Space* SetupSpace(unsigned int n);

    /** Makes a string of memory that no constructor has seen. */
    void initForAlloc();

    /** Makes space for `n` units. Where the capacity is too small the text is discarded, not carried over. */
    void AssureSpace(unsigned int n);

    /** The same as AssureSpace. */
    void assureSize(unsigned int n) { AssureSpace(n); }

private:
    KX7_LOCAL void storeBytes(char const* s, unsigned int n, KX7CharSet cs, int sourceLimit);
    KX7_LOCAL void store(unsigned short const* units, unsigned int n);
    KX7_LOCAL void takeOver(KX7UString& o);
    KX7_LOCAL void release();
    KX7_LOCAL void dropCache();
    KX7_LOCAL void setLength(unsigned int n);
    KX7_LOCAL void append(unsigned short const* units, unsigned int n);
    KX7_LOCAL void appendBytes(char const* s, unsigned int n, KX7CharSetConverter& converter, unsigned int capacity,
                               int sourceLimit);
    KX7_LOCAL bool standsAt(unsigned int pos, KX7UString const& s) const;

    friend class KX7UStringList;
    friend struct kx7::Concatenation;

    Space* space;
    Space m_space;
};

#endif
