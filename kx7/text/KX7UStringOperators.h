// kx7text - the operators of the UTF-16 string that are no members, and its readers.
//
//     KX7UString name(u"Stra\u00DF");
//     name += u"e";
#ifndef KX7_TEXT_KX7USTRINGOPERATORS_H
#define KX7_TEXT_KX7USTRINGOPERATORS_H

#include <iosfwd>

#include "kx7/text/KX7UStringClass.h"

/** As KX7UString::compare. Byte text is in KX7CS_OS_DEFAULT; a null pointer is the empty text. */
///@{
inline bool operator==(char const* s, KX7UString const& o)
{
    return KX7UString(s).compare(o) == 0;
}
inline bool operator!=(char const* s, KX7UString const& o)
{
    return KX7UString(s).compare(o) != 0;
}
inline bool operator<(char const* s, KX7UString const& o)
{
    return KX7UString(s).compare(o) < 0;
}
inline bool operator>(char const* s, KX7UString const& o)
{
    return KX7UString(s).compare(o) > 0;
}
inline bool operator<=(char const* s, KX7UString const& o)
{
    return KX7UString(s).compare(o) <= 0;
}
inline bool operator>=(char const* s, KX7UString const& o)
{
    return KX7UString(s).compare(o) >= 0;
}
inline bool operator==(unsigned short const* s, KX7UString const& o)
{
    return KX7UString(s).compare(o) == 0;
}
inline bool operator!=(unsigned short const* s, KX7UString const& o)
{
    return KX7UString(s).compare(o) != 0;
}
inline bool operator<(unsigned short const* s, KX7UString const& o)
{
    return KX7UString(s).compare(o) < 0;
}
inline bool operator>(unsigned short const* s, KX7UString const& o)
{
    return KX7UString(s).compare(o) > 0;
}
inline bool operator<=(unsigned short const* s, KX7UString const& o)
{
    return KX7UString(s).compare(o) <= 0;
}
inline bool operator>=(unsigned short const* s, KX7UString const& o)
{
    return KX7UString(s).compare(o) >= 0;
}
///@}

/** Both texts in a new string. Byte text is in KX7CS_OS_DEFAULT; a null pointer is the empty text. */
///@{
KX7_API KX7UString operator+(char c, KX7UString const& o);
KX7_API KX7UString operator+(unsigned short u, KX7UString const& o);
KX7_API KX7UString operator+(char const* s, KX7UString const& o);
KX7_API KX7UString operator+(unsigned short const* s, KX7UString const& o);
///@}

// The operators below have come later than programs of their users. They are templates, and convert one operand, so
// that an operator of the program's own goes first wherever it can be called.

namespace kx7 {

/** A text of char16_t, as an operand. */
class Char16Text {
public:
    /** The zero-terminated text at `s`; nothing that converts to such a pointer is taken. */
    template <class Unit, class = typename IfChar16<Unit>::type>
    Char16Text(Unit const* s) : m_units(codeUnits(s))
    {
    }

    /** The code units. */
    unsigned short const* units() const { return m_units; }

private:
    unsigned short const* m_units;
};

/** What can be added to a string, as an operand; it refers to a KX7UString that is given. */
class Appended {
public:
    /** The text of what the constructor of KX7UString for the same argument makes. */
    ///@{
    Appended(KX7UString const& s) : m_text(&s) {}
    Appended(char c) : m_text(&m_own), m_own(c) {}
    Appended(unsigned short u) : m_text(&m_own), m_own(u) {}
    Appended(char const* s) : m_text(&m_own), m_own(s) {}
    Appended(unsigned short const* s) : m_text(&m_own), m_own(s) {}
    template <class Unit, class = typename IfChar16<Unit>::type>
    Appended(Unit const* s) : m_text(&m_own), m_own(s)
    {
    }
    ///@}

    /** One code unit; nothing for 0. */
    template <class Unit, class Only = typename IfChar16<Unit>::type, class = Only>
    Appended(Unit u) : m_text(&m_own), m_own(static_cast<unsigned short>(u))
    {
    }

    Appended(Appended const&) = delete;
    Appended& operator=(Appended const&) = delete;

    /** What is added. */
    KX7UString const& text() const { return *m_text; }

private:
    KX7UString const* m_text;
    KX7UString m_own;
};

}  // namespace kx7

/** Adds to the end of `s`: a string, text or one character, as operator+ takes them. */
template <class Later = void>
KX7UString& operator+=(KX7UString& s, kx7::Appended const& added)
{
    return s.replace(s.length(), 0, added.text(), 0);
}

/** The same as of unsigned short const*. */
///@{
template <class Later = void>
KX7UString operator+(KX7UString const& a, kx7::Char16Text b)
{
    return a + b.units();
}
template <class Later = void>
KX7UString operator+(kx7::Char16Text a, KX7UString const& b)
{
    return a.units() + b;
}
template <class Later = void>
bool operator==(KX7UString const& a, kx7::Char16Text b)
{
    return a == b.units();
}
template <class Later = void>
bool operator==(kx7::Char16Text a, KX7UString const& b)
{
    return a.units() == b;
}
template <class Later = void>
bool operator!=(KX7UString const& a, kx7::Char16Text b)
{
    return a != b.units();
}
template <class Later = void>
bool operator!=(kx7::Char16Text a, KX7UString const& b)
{
    return a.units() != b;
}
template <class Later = void>
bool operator<(KX7UString const& a, kx7::Char16Text b)
{
    return a < b.units();
}
template <class Later = void>
bool operator<(kx7::Char16Text a, KX7UString const& b)
{
    return a.units() < b;
}
template <class Later = void>
bool operator>(KX7UString const& a, kx7::Char16Text b)
{
    return a > b.units();
}
template <class Later = void>
bool operator>(kx7::Char16Text a, KX7UString const& b)
{
    return a.units() > b;
}
template <class Later = void>
bool operator<=(KX7UString const& a, kx7::Char16Text b)
{
    return a <= b.units();
}
template <class Later = void>
bool operator<=(kx7::Char16Text a, KX7UString const& b)
{
    return a.units() <= b;
}
template <class Later = void>
bool operator>=(KX7UString const& a, kx7::Char16Text b)
{
    return a >= b.units();
}
template <class Later = void>
bool operator>=(kx7::Char16Text a, KX7UString const& b)
{
    return a.units() >= b;
}
///@}

/** Writes the text in KX7CS_OS_DEFAULT as a byte string, with the stream's width and fill. */
KX7_API std::ostream& operator<<(std::ostream& os, KX7UString const& s);

// The readers below flush the stream that is tied to a good one first; a failure of that stays with the tied stream.
// What the stream's buffer throws ends the input without eofbit. Either way the bytes consumed before make the text.

/**
 * Reads a word in KX7CS_OS_DEFAULT: skips white space, then takes bytes up to white space, the end of the input, a byte
 * 0xFF (which counts as the end) or one byte less than the stream's width. Sets failbit where there is none.
 */
KX7_API std::istream& operator>>(std::istream& is, KX7UString& s);

/**
 * Reads a line in KX7CS_OS_DEFAULT up to `delim`, which is consumed and not stored, the end of the input, a byte 0xFF
 * (which counts as the end) or one byte less than the stream's width. An empty line reads as a failure: failbit is set
 * though its delimiter is consumed.
 */
KX7_API std::istream& getline(std::istream& is, KX7UString& s, char delim);

/** The same; a line ends at a carriage return, not at a line feed. */
KX7_API std::istream& getline(std::istream& is, KX7UString& s);

#endif
