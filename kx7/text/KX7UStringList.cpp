// kx7text - an ordered list of strings.
#include "kx7/text/KX7UStringList.h"

#include <algorithm>
#include <stdexcept>

#include "kx7/text/Lengths.h"

namespace {

/** Units of a text whose parts are counted before they are made, and the most parts that are expected after that. */
constexpr unsigned int COUNTED = 1U << 15;

[[noreturn]] void throwInvalidListIndex()
{
    throw std::out_of_range("invalid string list index given");
}

}  // namespace

KX7UStringList::KX7UStringList() = default;

KX7UStringList::KX7UStringList(KX7UString const& s) : m_strings(1, s)
{
}

KX7UStringList::KX7UStringList(KX7UString const& s, unsigned short sep)
{
    split(s, sep, sep != 0 ? 1 : 0);
}

KX7UStringList::KX7UStringList(KX7UString const& s, KX7UString const& sep)
{
    split(s, sep, sep.length());
}

KX7UStringList::KX7UStringList(KX7UStringList const& o) = default;

KX7UStringList::~KX7UStringList() = default;

template <class Separator>
void KX7UStringList::split(KX7UString const& s, Separator const& sep, unsigned int sepLength)
{
    if (sepLength == 0) {
        append(s);
        return;
    }
    // A list that grows copies its elements. How many there will be follows from the beginning of the text.
    KX7UString const front(s, 0, COUNTED);
    size_t parts = 1;
    for (unsigned int at = 0; (at = front.find(sep, at)) != KX7UString::npos; at += sepLength)
        ++parts;
    m_strings.reserve(std::min(parts * (s.length() / COUNTED + 1), size_t{COUNTED}));
    unsigned int start = 0;
    for (unsigned int found; (found = s.find(sep, start)) != KX7UString::npos; start = found + sepLength) {
        checkGrowth(1);
        m_strings.emplace_back(s, start, found - start);
    }
    if (start < s.length()) {
        checkGrowth(1);
        m_strings.emplace_back(s, start, s.length() - start);
    }
}

unsigned int KX7UStringList::max_size() const
{
    return static_cast<unsigned int>(0xFFFFFFFF / sizeof(KX7UString));
}

void KX7UStringList::checkGrowth(unsigned int added) const
{
    if (max_size() - size() < added)
        throw std::length_error("exceed maximum string list length");
}

void KX7UStringList::clear()
{
    m_strings.clear();
}

KX7UString const& KX7UStringList::at(unsigned int i) const
{
    if (i >= size())
        throwInvalidListIndex();
    return m_strings[i];
}

KX7UStringList& KX7UStringList::operator=(KX7UString const& s)
{
    // A copy first: the string may be an element.
    std::vector<KX7UString>(1, s).swap(m_strings);
    return *this;
}

KX7UStringList& KX7UStringList::operator=(KX7UStringList const& o)
{
    if (this != &o)
        std::vector<KX7UString>(o.m_strings).swap(m_strings);
    return *this;
}

KX7UStringList& KX7UStringList::append(KX7UString const& s)
{
    checkGrowth(1);
    m_strings.push_back(s);
    return *this;
}

KX7UStringList& KX7UStringList::append(KX7UStringList const& o)
{
    return insert(size(), o);
}

KX7UStringList& KX7UStringList::insert(unsigned int i, KX7UString const& s)
{
    checkGrowth(1);
    if (i > size())
        throwInvalidListIndex();
    KX7UString copy(s);  // the string may be an element, and the elements move
    m_strings.emplace_back();
    for (unsigned int to = size() - 1; to != i; --to)
        m_strings[to].takeOver(m_strings[to - 1]);
    m_strings[i].takeOver(copy);
    return *this;
}

KX7UStringList& KX7UStringList::insert(unsigned int i, KX7UStringList const& o)
{
    if (this == &o)
        return *this;
    checkGrowth(o.size());
    if (o.size() == 0)
        return *this;
    if (i > size())
        throwInvalidListIndex();
    std::vector<KX7UString> added(o.m_strings);
    unsigned int const oldSize = size();
    m_strings.resize(oldSize + added.size());
    for (unsigned int from = oldSize; from != i; --from)
        m_strings[from - 1 + added.size()].takeOver(m_strings[from - 1]);
    for (unsigned int k = 0; k != added.size(); ++k)
        m_strings[i + k].takeOver(added[k]);
    return *this;
}

KX7UStringList& KX7UStringList::erase(unsigned int i)
{
    if (i >= size())
        throwInvalidListIndex();
    for (; i + 1 != size(); ++i)
        m_strings[i].takeOver(m_strings[i + 1]);
    m_strings.pop_back();
    return *this;
}

KX7UString KX7UStringList::combine(KX7UString const& separator) const
{
    uint64_t total = m_strings.empty() ? 0 : uint64_t{separator.length()} * (m_strings.size() - 1);
    for (KX7UString const& s : m_strings)
        total += s.length();
    KX7UString result;
    result.AssureSpace(kx7::checkedLength(total));
    for (KX7UString const& s : m_strings) {
        if (&s != &m_strings.front())
            result.append(separator.data(), separator.length());
        result.append(s.data(), s.length());
    }
    return result;
}
