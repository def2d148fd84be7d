// kx7text - the UTF-16 string: comparison, concatenation, streams.
#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdint>
#include <cxxabi.h>
#include <istream>
#include <ostream>
#include <string>

#include "kx7/converters/Loop.h"
#include "kx7/text/KX7UChar.h"
#include "kx7/text/KX7UString.h"
#include "kx7/text/Lengths.h"

namespace {

/** Units compared one by one before a kernel is asked: most texts that differ do so early. */
constexpr size_t COMPARED_PLAINLY = 16;

/** Compares as KX7UString::canonicalCompare says; `differ` (a, b) orders two units that are not the same. */
template <class Differ>
int compareUnits(unsigned short const* a, unsigned short const* b, unsigned int n, Differ differ)
{
    if (n == 0 || a == b)
        return 0;
    if (!a || !b)
        return a ? 1 : -1;
    size_t const most = n == KX7UString::npos ? SIZE_MAX : n;
    for (size_t i = 0; i != most;) {
        for (size_t const plainly = i + std::min(COMPARED_PLAINLY, most - i); i != plainly; ++i) {
            if (a[i] == b[i]) {
                if (a[i] == 0)
                    return 0;
                continue;
            }
            if (a[i] == 0 || b[i] == 0)
                return a[i] == 0 ? -1 : 1;
            int const order = differ(a[i], b[i]);
            if (order != 0)
                return order;
        }
        i += kx7::kernels().unitMatch(a + i, b + i, most - i);
    }
    return 0;
}

}  // namespace

int KX7UString::canonicalCompare(unsigned short const* a, unsigned short const* b, unsigned int n) const
{
    return compareUnits(a, b, n, [](unsigned short x, unsigned short y) { return x < y ? -1 : 1; });
}

int KX7UString::canonicalCompareNoCase(unsigned short const* a, unsigned short const* b, unsigned int n) const
{
    return compareUnits(a, b, n, [](unsigned short x, unsigned short y) {
        unsigned short const upperX = KX7UChar::toUpperCase(x);
        unsigned short const upperY = KX7UChar::toUpperCase(y);
        return upperX == upperY ? 0 : upperX < upperY ? -1 : 1;
    });
}

int KX7UString::compare(KX7UString const& o, unsigned int n) const
{
    return canonicalCompare(space->buffer, o.space->buffer, n);
}

int KX7UString::compareNoCase(KX7UString const& o, unsigned int n) const
{
    return canonicalCompareNoCase(space->buffer, o.space->buffer, n);
}

namespace kx7 {

/** Builds a string of two texts with one allocation at most. */
struct Concatenation {
    struct Units {
        unsigned short const* units;
        unsigned int capacity;  ///< units that the text takes at most

        void appendTo(KX7UString& s) const { s.append(units, capacity); }
    };

    struct Bytes {
        char const* bytes;
        unsigned int count;
        unsigned int capacity;

        void appendTo(KX7UString& s) const
        {
            if (capacity != 0)
                s.appendBytes(bytes, count, kx7::converterOf(KX7CS_OS_DEFAULT), capacity, -1);
        }
    };

    static Units of(KX7UString const& s) { return {s.data(), s.length()}; }
    static Units of(unsigned short const& u) { return {&u, u != 0 ? 1U : 0U}; }
    static Units of(unsigned short const* s) { return {s, s ? checkedLength(unitLength(s, SIZE_MAX)) : 0U}; }
    static Bytes of(char const& c)
    {
        return {&c, 1, c != 0 ? kx7::converterOf(KX7CS_OS_DEFAULT).getNumUnits(&c, 1) : 0};
    }
    static Bytes of(char const* s)
    {
        return {s, UNTIL_TERMINATOR, s ? kx7::converterOf(KX7CS_OS_DEFAULT).getNumUnits(s, UNTIL_TERMINATOR) : 0};
    }

    template <class First, class Second>
    static KX7UString make(First first, Second second)
    {
        KX7UString result;
        result.AssureSpace(checkedLength(uint64_t{first.capacity} + second.capacity));
        first.appendTo(result);
        second.appendTo(result);
        return result;
    }
};

}  // namespace kx7

using kx7::Concatenation;

KX7UString KX7UString::operator+(char c) const
{
    return Concatenation::make(Concatenation::of(*this), Concatenation::of(c));
}

KX7UString KX7UString::operator+(unsigned short u) const
{
    return Concatenation::make(Concatenation::of(*this), Concatenation::of(u));
}

KX7UString KX7UString::operator+(char const* s) const
{
    return Concatenation::make(Concatenation::of(*this), Concatenation::of(s));
}

KX7UString KX7UString::operator+(unsigned short const* s) const
{
    return Concatenation::make(Concatenation::of(*this), Concatenation::of(s));
}

KX7UString KX7UString::operator+(KX7UString const& o) const
{
    return Concatenation::make(Concatenation::of(*this), Concatenation::of(o));
}

KX7UString operator+(char c, KX7UString const& o)
{
    return Concatenation::make(Concatenation::of(c), Concatenation::of(o));
}

KX7UString operator+(unsigned short u, KX7UString const& o)
{
    return Concatenation::make(Concatenation::of(u), Concatenation::of(o));
}

KX7UString operator+(char const* s, KX7UString const& o)
{
    return Concatenation::make(Concatenation::of(s), Concatenation::of(o));
}

KX7UString operator+(unsigned short const* s, KX7UString const& o)
{
    return Concatenation::make(Concatenation::of(s), Concatenation::of(o));
}

std::ostream& operator<<(std::ostream& os, KX7UString const& s)
{
    KX7UString copy(s);  // so that the cache of `s` stays as it is
    return os << copy.c_str(KX7CS_OS_DEFAULT);
}

namespace {

bool isSpace(char c)
{
    return isspace(static_cast<unsigned char>(c)) != 0;
}

/** The bytes of a stream one by one, for the readers below. */
class ByteReader {
public:
    explicit ByteReader(std::istream& is) : m_is(is), m_limit(UINT64_C(0xFFFFFFFE)), m_state(std::ios_base::goodbit)
    {
        // As the standard's readers do. The tied stream keeps the state of its failure.
        if (is.good() && is.tie())
            guarded([&is] { return is.tie()->flush().good() ? 0 : EOF; });
        if (is.width() > 0 && static_cast<uint64_t>(is.width()) < m_limit)
            m_limit = static_cast<uint64_t>(is.width());
    }

    /** What next() gives where the stream's buffer threw: an end without eofbit. No char, signed or not, has it. */
    static constexpr int BROKEN = INT_MIN;

    /** Neither end. */
    static bool isByte(int byte) { return byte != EOF && byte != BROKEN; }

    /** The next byte, left in the stream; EOF at its end. */
    int next()
    {
        return guarded([this] { return m_is.rdbuf() ? m_is.rdbuf()->sgetc() : EOF; });
    }

    /** Consumes the byte that next() gave; false, with eofbit at an end, where the buffer fails to. */
    bool skip()
    {
        int const byte = guarded([this] { return m_is.rdbuf()->sbumpc(); });
        if (byte == EOF)
            setEnd();
        return isByte(byte);
    }

    /** The next byte, left in the stream; false at the end, with eofbit. 0xFF counts as the end: kept on purpose. */
    bool peek(char& c)
    {
        int const byte = next();
        if (byte == BROKEN)
            return false;
        c = static_cast<char>(byte);
        if (c != static_cast<char>(EOF))
            return true;
        setEnd();
        return false;
    }

    void setEnd() { m_state |= std::ios_base::eofbit; }

    /** Consumes the byte `c` that peek() gave and stores it; false where the buffer fails to consume it. */
    bool take(char c)
    {
        m_bytes += c;
        if (skip())
            return true;
        m_bytes.pop_back();
        return false;
    }

    bool hasCapacity() const { return m_bytes.size() + 1 < m_limit; }

    /** Gives the bytes to `s`, and what happened to the stream. */
    void finish(KX7UString& s)
    {
        if (m_bytes.empty())
            m_state |= std::ios_base::failbit;
        else
            assignTo(s);
        m_is.clear(m_state | m_is.rdstate());
    }

private:
    template <class Read>
    static int guarded(Read read)
    {
        try {
            return read();
        }
#ifdef __GLIBCXX__
        catch (abi::__forced_unwind&) {
            throw;  // the thread is being cancelled
        }
#endif
        catch (...) {
            return BROKEN;
        }
    }

    void assignTo(KX7UString& s)
    {
        try {
            s.assign(KX7UString(m_bytes.data(), static_cast<unsigned int>(m_bytes.size()), KX7CS_OS_DEFAULT));
        }
        catch (...) {
            m_is.clear(m_state | m_is.rdstate());
            throw;
        }
    }

    std::istream& m_is;
    uint64_t m_limit;
    std::ios_base::iostate m_state;
    std::string m_bytes;
};

}  // namespace

std::istream& operator>>(std::istream& is, KX7UString& s)
{
    ByteReader reader(is);
    s.erase();
    int first = reader.next();
    while (ByteReader::isByte(first) && isSpace(static_cast<char>(first)))
        first = reader.skip() ? reader.next() : ByteReader::BROKEN;
    if (first == EOF) {
        reader.setEnd();  // without a word the width stays
    }
    else if (first != ByteReader::BROKEN) {
        is.width(0);
        char c;
        while (reader.hasCapacity() && reader.peek(c) && !isSpace(c) && reader.take(c)) {
        }
    }
    reader.finish(s);
    return is;
}

std::istream& getline(std::istream& is, KX7UString& s, char delim)
{
    ByteReader reader(is);
    s.erase();
    is.width(0);
    char c;
    while (reader.hasCapacity() && reader.peek(c)) {
        if (c == delim) {
            reader.skip();
            break;
        }
        if (!reader.take(c))
            break;
    }
    reader.finish(s);
    return is;
}

std::istream& getline(std::istream& is, KX7UString& s)
{
    return getline(is, s, '\r');
}
