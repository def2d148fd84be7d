// kx7text tests - memory between two unreadable pages.
#ifndef KX7_TESTS_SUPPORT_GUARDED_H
#define KX7_TESTS_SUPPORT_GUARDED_H

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace kx7test {

/**
 * `count` values of T whose end is the end of a readable page; a touch after them faults. So does one before the page
 * in which they begin.
 */
template <class T>
class Guarded {
public:
    explicit Guarded(size_t count)
    {
        auto const page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        size_t const bytes = count * sizeof(T);
        m_size = (bytes + page - 1) / page * page + 2 * page;
        m_map = static_cast<char*>(mmap(nullptr, m_size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        if (m_map == MAP_FAILED || mprotect(m_map, page, PROT_NONE) != 0 ||
            mprotect(m_map + m_size - page, page, PROT_NONE) != 0)
            abort();
        m_data = reinterpret_cast<T*>(m_map + m_size - page - bytes);
    }
    template <class U>
    Guarded(U const* values, size_t count) : Guarded(count)
    {
        static_assert(sizeof(U) == sizeof(T), "a copy changes no sizes");
        if (count != 0)
            memcpy(m_data, values, count * sizeof(T));
    }
    ~Guarded() { munmap(m_map, m_size); }
    Guarded(Guarded const&) = delete;
    Guarded& operator=(Guarded const&) = delete;

    T* data() { return m_data; }
    T const* data() const { return m_data; }
    T& operator[](size_t i) { return m_data[i]; }

private:
    char* m_map;
    size_t m_size;
    T* m_data;
};

}  // namespace kx7test

#endif
