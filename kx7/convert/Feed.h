// kx7text - what one call of a stream reads and where it writes (internal).
#ifndef KX7_CONVERT_FEED_H
#define KX7_CONVERT_FEED_H

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace kx7 {

/** Elements that are looked at together; more than any character takes: two escapes of UTF-16 are twelve bytes. */
constexpr size_t WINDOW = 16;

/**
 * The buffer of a Feed: a local variable of the caller, not a member. Engines get its address, and a Feed whose address
 * nobody has can stay in registers, which short texts notice.
 */
template <class T>
using Window = T[WINDOW];

/** The text that a call has to convert: first what the stream kept, in a window with what follows it, then the rest. */
template <class T>
class Feed {
public:
    /** What can be converted in one go. */
    struct Range {
        T const* begin;
        T const* end;
        bool last;        ///< the text ends with it
        bool reachesEnd;  ///< what the call was given ends with it
    };

    Feed(T const* source, size_t size, bool last, T* held, unsigned char& heldCount, Window<T>& window)
        : m_begin(source), m_in(source), m_end(source + size), m_last(last), m_held(held), m_heldCount(heldCount),
          m_window(window)
    {
    }

    Range range()
    {
        if (m_heldCount == 0)
            return {m_in, m_end, m_last, true};
        size_t const rest = static_cast<size_t>(m_end - m_in);
        size_t const seen = std::min(WINDOW - m_heldCount, rest);
        T* const following = std::copy_n(m_held, m_heldCount, m_window);
        std::copy_n(m_in, seen, following);
        return {m_window, following + seen, m_last && seen == rest, seen == rest};
    }

    /** Consumes the first `count` elements of the range, which stay where they are. */
    void advance(size_t count)
    {
        if (count >= m_heldCount) {
            m_in += count - m_heldCount;
            m_heldCount = 0;
        }
        else {
            std::copy(m_held + count, m_held + m_heldCount, m_held);
            m_heldCount = static_cast<unsigned char>(m_heldCount - count);
        }
    }

    /** Keeps all that is left, an incomplete character. */
    void hold()
    {
        std::copy(m_in, m_end, m_held + m_heldCount);
        m_heldCount = static_cast<unsigned char>(m_heldCount + (m_end - m_in));
        m_in = m_end;
    }

    size_t consumed() const { return static_cast<size_t>(m_in - m_begin); }

private:
    T const* m_begin;
    T const* m_in;
    T const* m_end;
    bool m_last;
    T* m_held;
    unsigned char& m_heldCount;
    Window<T>& m_window;
};

/** Where a call writes. */
template <class T>
struct Destination {
    /** An empty destination may be null, which the engines are not given. */
    Destination(void* dest, size_t size) : begin(dest ? static_cast<T*>(dest) : &nowhere), out(begin), end(begin + size)
    {
    }

    Destination(Destination const&) = delete;
    Destination& operator=(Destination const&) = delete;

    T nowhere = 0;
    T* begin;
    T* out;
    T* end;

    size_t left() const { return static_cast<size_t>(end - out); }
    size_t written() const { return static_cast<size_t>(out - begin); }
    void append(T const* from, size_t count) { out = std::copy_n(from, count, out); }

    /** How often `count` elements fit. */
    size_t fits(size_t count) const { return count == 0 ? SIZE_MAX : left() / count; }
    void appendTimes(T const* from, size_t count, size_t times)
    {
        if (count == 1)
            out = std::fill_n(out, times, *from);
        else if (count != 0)
            for (; times != 0; --times)
                append(from, count);
    }
};

}  // namespace kx7

#endif
