// kx7text - one Unicode character, and the classes and case of UTF-16 code units.
#ifndef KX7_TEXT_KX7UCHAR_H
#define KX7_TEXT_KX7UCHAR_H

#include "kx7/base/Export.h"
#include "kx7/text/KX7UCharTable.h"

/**
 * A Unicode character by its UTF-32 value, and static services on single UTF-16 code units: a set of class bits, and
 * the simple case mappings, of Unicode 15.0. Any thread may call them at any time.
 *
 * Class bits: 0x0001 white space, 0x0002 digit, 0x0004 letter, 0x0008 combining mark, 0x0010 punctuation, 0x0020
 * right-to-left, 0x0040 upper case, 0x0080 lower case, 0x0100 title case, 0x0200 modifier letter, 0x0400 East Asian,
 * 0x0800 symbol, 0x1000 surrogate or supplementary character, 0x4000 half-width form, 0x8000 full-width form. 0 is no
 * character: unassigned, a control or format character.
 */
class KX7_API KX7UChar {
public:
    static unsigned int const UTF16_MAX = 65535;    ///< the largest value of one code unit
    static unsigned int const UTF32_MAX = 1114111;  ///< the largest code point

    /** The character of that value, which is not checked. */
    explicit KX7UChar(unsigned int value = 0) : m_value(value) {}

    /** The character of a surrogate pair; 0 for two units that are none. */
    KX7UChar(unsigned short high, unsigned short low)
        : m_value((high & 0xFC00) == 0xD800 && (low & 0xFC00) == 0xDC00 ? high * 1024U + low - 0x35FDC00U : 0)
    {
    }

    /** The same character. */
    KX7UChar(KX7UChar const&) = default;

    /** Makes this the same character. */
    KX7UChar& operator=(KX7UChar const&) = default;

    /** The value, as it was given. */
    unsigned int value() const { return m_value; }

    /** The class bits; 0x1000 for a supplementary character. A value above U+10FFFF is taken modulo 0x10000. */
    unsigned short getCharClass() const { return isSupplementary() ? 0x1000 : getCharClass(lowUnit()); }

    /** Tests of one class bit; never true for a supplementary character. */
    ///@{
    bool isWhiteSpace() const { return hasClass(0x0001); }
    bool isDigit() const { return hasClass(0x0002); }
    bool isLetter() const { return hasClass(0x0004); }
    bool isPunctuation() const { return hasClass(0x0010); }
    ///@}

    /** Has class 0, and is no supplementary character. */
    bool isNonChar() const { return !isSupplementary() && getCharClass(lowUnit()) == 0; }

    /** The class bits of a code unit. */
    static unsigned short getCharClass(unsigned short c);

    /** The simple upper-case mapping within the Basic Multilingual Plane; `c` itself where there is none. */
    static unsigned short toUpperCase(unsigned short c)
    {
        if (c < 0x7F)
            return c >= 'a' && c <= 'z' ? static_cast<unsigned short>(c - 0x20) : c;
        unsigned short const mapped = m_gUpperCaseTable.getValue(c);
        return mapped != 0 ? mapped : c;
    }

    /** The simple lower-case mapping within the Basic Multilingual Plane; `c` itself where there is none. */
    static unsigned short toLowerCase(unsigned short c)
    {
        if (c < 0x7F)
            return c >= 'A' && c <= 'Z' ? static_cast<unsigned short>(c + 0x20) : c;
        unsigned short const mapped = m_gLowerCaseTable.getValue(c);
        return mapped != 0 ? mapped : c;
    }

    /** What the static services read, by code unit. */
    ///@{
    static KX7UCharTable m_gUpperCaseTable;
    static KX7UCharTable m_gLowerCaseTable;
    static KX7UCharTable m_gCharClassTable;
    ///@}

private:
    bool isSupplementary() const { return m_value > UTF16_MAX && m_value <= UTF32_MAX; }
    unsigned short lowUnit() const { return static_cast<unsigned short>(m_value & 0xFFFF); }
    bool hasClass(unsigned int bit) const { return !isSupplementary() && (getCharClass(lowUnit()) & bit) != 0; }

    unsigned int m_value;
};

#endif
