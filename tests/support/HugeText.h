// kx7text tests - texts beyond 4 GiB that take some megabytes of memory: the same pages again and again.
#ifndef KX7_TESTS_SUPPORT_HUGETEXT_H
#define KX7_TESTS_SUPPORT_HUGETEXT_H

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace kx7test {

/** An emulated machine takes minutes for such a text. */
#ifdef KX7_EMULATED
constexpr bool IS_EMULATED = true;
#else
constexpr bool IS_EMULATED = false;
#endif

/** `size` bytes that repeat a pattern, before an unreadable page. Not writable, or, without a pattern, to be written.
 */
class HugeText {
public:
    explicit HugeText(uint64_t size, std::string const& pattern = std::string())
    {
        auto const page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        uint64_t const whole = (size + STRIDE - 1) / STRIDE * STRIDE;
        if (IS_EMULATED || whole + page > PTRDIFF_MAX)
            return;
        int const file = memfd_create("kx7text huge text", 0);
        if (file < 0)
            return;
        m_size = static_cast<size_t>(whole) + page;
        void* const map = mmap(nullptr, m_size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        bool isThere = map != MAP_FAILED && ftruncate(file, off_t{STRIDE}) == 0;
        m_map = isThere ? static_cast<char*>(map) : nullptr;
        for (size_t at = 0; isThere && at != whole; at += STRIDE)
            isThere = mmap(m_map + at, STRIDE, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_FIXED, file, 0) != MAP_FAILED;
        close(file);
        if (!isThere)
            return;
        m_text = m_map + (whole - size);
        for (size_t i = 0; i != STRIDE && !pattern.empty(); ++i)
            m_map[(whole - size + i) % STRIDE] = pattern[i % pattern.size()];
        // The end is a page of its own, which can be written to alone.
        m_last = m_map + whole - page;
        std::string const last(m_last, page);
        isThere = mmap(m_last, page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0) == m_last;
        memcpy(m_last, last.data(), page);
        if (!isThere)
            m_text = nullptr;
    }
    ~HugeText()
    {
        if (m_map)
            munmap(m_map, m_size);
    }
    HugeText(HugeText const&) = delete;
    HugeText& operator=(HugeText const&) = delete;

    /** Null where the machine does not give so many addresses, or is too slow. */
    char* data() { return m_text; }

    /** Makes the last `count` bytes zeros. */
    HugeText& terminate(size_t count)
    {
        if (m_text)
            memset(m_map + m_size - static_cast<size_t>(sysconf(_SC_PAGESIZE)) - count, 0, count);
        return *this;
    }

private:
    /** A multiple of every page size, and of every pattern of 1, 2, 3, 4 or 6 bytes. */
    static constexpr size_t STRIDE = size_t{3} << 20;

    size_t m_size = 0;
    char* m_map = nullptr;
    char* m_last = nullptr;
    char* m_text = nullptr;
};

}  // namespace kx7test

#endif
