// kx7text tests - the I/O queue of the Encoding Standard, in immediate mode.
#ifndef KX7_TESTS_MODEL_WEB_WEBQUEUE_H
#define KX7_TESTS_MODEL_WEB_WEBQUEUE_H

#include <cstddef>
#include <deque>
#include <initializer_list>

namespace kx7test {

/** What a handler is given as its item after the last one. */
constexpr int END_OF_QUEUE = -1;

/** Bytes or code points that a handler reads and may restore. */
class WebQueue {
public:
    template <class Items>
    explicit WebQueue(Items const& items) : m_size(items.size())
    {
        for (auto const item : items)
            m_items.push_back(static_cast<int>(sizeof(item) == 1 ? static_cast<unsigned char>(item) : item));
    }

    int read()
    {
        if (m_items.empty())
            return END_OF_QUEUE;
        int const item = m_items.front();
        m_items.pop_front();
        return item;
    }

    void restore(std::initializer_list<int> items) { m_items.insert(m_items.begin(), items); }

    /** Number of the next item: restored ones count again. */
    size_t offset() const { return m_size - m_items.size(); }

private:
    std::deque<int> m_items;
    size_t m_size;
};

}  // namespace kx7test

#endif
