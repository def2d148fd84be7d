// kx7text tests - sources that end at an unreadable page, destinations between canaries.
#ifndef KX7_TESTS_SUPPORT_MEMORY_H
#define KX7_TESTS_SUPPORT_MEMORY_H

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/Guarded.h"

namespace kx7test {

/** Holds one text after another where an unreadable page begins, in the same memory. */
template <class T>
class PageEnd {
public:
    /** A copy of `text` with `zeros` zeros after it, which ends at the page. Valid until the next call. */
    template <class Char>
    T const* hold(std::basic_string<Char> const& text, size_t zeros)
    {
        static_assert(sizeof(Char) == sizeof(T), "a copy changes no sizes");
        T* const begin = endingHere(text.size() + zeros);
        if (!text.empty())
            memcpy(begin, text.data(), text.size() * sizeof(T));
        std::fill_n(begin + text.size(), zeros, T{0});
        return begin;
    }

    /** Garbage that a text may be written over, as far as the page. Valid until the next call. */
    T* arm(size_t count)
    {
        T* const begin = endingHere(count);
        std::fill_n(begin, count, static_cast<T>(0xA5A5A5A5));
        return begin;
    }

private:
    T* endingHere(size_t count)
    {
        if (!m_memory || count > m_capacity) {
            m_capacity = std::max(count, size_t{64});
            m_memory = std::make_unique<Guarded<T>>(m_capacity);
        }
        return m_memory->data() + (m_capacity - count);
    }

    std::unique_ptr<Guarded<T>> m_memory;
    size_t m_capacity = 0;
};

/** A destination with canaries before and after it. */
template <class T>
class Fenced {
public:
    /** Memory for `count` values, all of them garbage, until the next call. */
    T* arm(size_t count)
    {
        m_count = count;
        m_memory.resize(std::max(m_memory.size(), count + 2 * FENCE));
        std::fill_n(m_memory.begin(), count + 2 * FENCE, CANARY);
        return m_memory.data() + FENCE;
    }

    /** Nothing was written but into the memory given. */
    bool intact() const
    {
        auto const isCanary = [](T value) { return value == CANARY; };
        auto const after = m_memory.begin() + static_cast<ptrdiff_t>(FENCE + m_count);
        return std::all_of(m_memory.begin(), m_memory.begin() + FENCE, isCanary) &&
               std::all_of(after, after + FENCE, isCanary);
    }

    /** Nothing at all was written. */
    bool untouched() const
    {
        return std::all_of(m_memory.begin(), m_memory.begin() + static_cast<ptrdiff_t>(m_count + 2 * FENCE),
                           [](T value) { return value == CANARY; });
    }

private:
    static constexpr size_t FENCE = 16;
    static constexpr T CANARY = static_cast<T>(0xA5A5A5A5);

    std::vector<T> m_memory;
    size_t m_count = 0;
};

}  // namespace kx7test

#endif
