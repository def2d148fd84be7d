// kx7text - an ordered list of strings, made by splitting one and joined again by combining.
#ifndef KX7_TEXT_KX7USTRINGLIST_H
#define KX7_TEXT_KX7USTRINGLIST_H

#include <vector>

#include "kx7/base/Export.h"
#include "kx7/text/KX7UString.h"

/**
 * A list of KX7UString values in order. A wrong index throws std::out_of_range "invalid string list index given",
 * growth beyond max_size() std::length_error "exceed maximum string list length"; whenever an exception is thrown the
 * list is as it was. One list is used by one thread at a time.
 */
class KX7_API KX7UStringList {
public:
    /** They stay valid until the list changes. */
    ///@{
    typedef std::vector<KX7UString>::iterator iterator;
    typedef std::vector<KX7UString>::const_iterator const_iterator;
    typedef std::vector<KX7UString>::reverse_iterator reverse_iterator;
    typedef std::vector<KX7UString>::const_reverse_iterator const_reverse_iterator;
    ///@}

    /** The empty list. */
    KX7UStringList();

    /** A list of the one string, empty or not. */
    KX7UStringList(KX7UString const& s);

    /**
     * The parts of `s` between separators. Empty parts count, but for one after the last separator: "a;" gives one
     * element, ";a" two, the empty string none. A separator of 0 gives the whole string as the one element.
     *
     * Each element takes the memory of a KX7UString, 576 bytes in 64-bit code, however short it is: a million
     * separators take 576 MB. Where others choose the text, go from separator to separator with find() and mid(), which
     * hold one part at a time.
     */
    KX7UStringList(KX7UString const& s, unsigned short sep);

    /** The same with a separator string; an empty one gives the whole string as the one element. */
    KX7UStringList(KX7UString const& s, KX7UString const& sep);

    /** A list of the same strings. */
    KX7UStringList(KX7UStringList const& o);
    virtual ~KX7UStringList();

    /** The number of elements. */
    unsigned int size() const { return static_cast<unsigned int>(m_strings.size()); }

    /** The largest number of elements. */
    unsigned int max_size() const;

    /** Removes all elements. */
    void clear();

    /** The element at `i`. */
    KX7UString const& at(unsigned int i) const;

    /** The element at `i`, unchecked. */
    KX7UString const& operator[](unsigned int i) const { return m_strings[i]; }

    /** Over the elements, forwards and backwards. */
    ///@{
    iterator begin() { return m_strings.begin(); }
    iterator end() { return m_strings.end(); }
    const_iterator begin() const { return m_strings.begin(); }
    const_iterator end() const { return m_strings.end(); }
    reverse_iterator rbegin() { return m_strings.rbegin(); }
    reverse_iterator rend() { return m_strings.rend(); }
    const_reverse_iterator rbegin() const { return m_strings.rbegin(); }
    const_reverse_iterator rend() const { return m_strings.rend(); }
    ///@}

    /** Makes the string, which may be one of the elements, the only element. */
    KX7UStringList& operator=(KX7UString const& s);
    /** Makes this list hold the strings of `o`. */
    KX7UStringList& operator=(KX7UStringList const& o);

    /** Adds the string after the others. */
    KX7UStringList& append(KX7UString const& s);

    /** Adds the elements of `o`. A list is never appended to itself: nothing happens then. */
    KX7UStringList& append(KX7UStringList const& o);

    /** Inserts before the element at `i`, or at the end for size(). */
    KX7UStringList& insert(unsigned int i, KX7UString const& s);

    /** The same with the elements of `o`. A list is never inserted into itself: nothing happens then. */
    KX7UStringList& insert(unsigned int i, KX7UStringList const& o);

    /** Removes the element at `i`. */
    KX7UStringList& erase(unsigned int i);

    /** The elements with `separator` between each two. */
    KX7UString combine(KX7UString const& separator) const;

private:
    template <class Separator>
    KX7_LOCAL void split(KX7UString const& s, Separator const& sep, unsigned int sepLength);
    KX7_LOCAL void checkGrowth(unsigned int added) const;

    std::vector<KX7UString> m_strings;
};

template <class Unit>
typename kx7::IfChar16<Unit, KX7UStringList>::type KX7UString::split(Unit sep) const
{
    return split(static_cast<unsigned short>(sep));
}

#endif
