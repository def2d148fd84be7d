// kx7text tests - memory at both ends of the address space, and the capacities that reach beyond it.
#ifndef KX7_TESTS_SUPPORT_ADDRESSSPACE_H
#define KX7_TESTS_SUPPORT_ADDRESSSPACE_H

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>

#ifndef MAP_FIXED_NOREPLACE
#define MAP_FIXED_NOREPLACE 0x100000
#endif

namespace kx7test {

/** Capacities, counts and, as `int`, source limits at which 32 bits of sizes or addresses are used up. */
constexpr unsigned int EDGES[] = {0x7FFFFFFF, 0x80000000, 0xFFFFFFFB, 0xFFFFFFFC, 0xFFFFFFFD, 0xFFFFFFFE, 0xFFFFFFFF};

/** One in four times an edge, else `value`. */
inline unsigned int edgeOr(std::mt19937& random, size_t value)
{
    auto const draw = static_cast<unsigned int>(random());
    return draw % 4 == 0 ? EDGES[draw / 4 % (sizeof EDGES / sizeof *EDGES)] : static_cast<unsigned int>(value);
}

/** Where memory lies. */
enum class Place : unsigned char { ANYWHERE, LOW, HIGH };
constexpr Place PLACES[] = {Place::ANYWHERE, Place::LOW, Place::HIGH};

inline char const* nameOf(Place place)
{
    return place == Place::LOW ? "low" : place == Place::HIGH ? "high" : "anywhere";
}

/**
 * Memory of some pages before an unreadable one: anywhere, at the lowest addresses that this process may map, or at the
 * highest. Two objects at the same end lie side by side.
 */
class PlacedMemory {
public:
    PlacedMemory(Place place, size_t bytes)
        : m_page(static_cast<size_t>(sysconf(_SC_PAGESIZE))), m_size((bytes + m_page - 1) / m_page * m_page + m_page)
    {
        m_map = place == Place::ANYWHERE ? nullptr : search(place);
        if (!m_map)  // or this machine's addresses end elsewhere
            m_map = static_cast<char*>(map(nullptr, 0));
        if (!m_map || mprotect(m_map + m_size - m_page, m_page, PROT_NONE) != 0)
            abort();
    }
    ~PlacedMemory() { munmap(m_map, m_size); }
    PlacedMemory(PlacedMemory const&) = delete;
    PlacedMemory& operator=(PlacedMemory const&) = delete;

    /** Where `bytes` bytes begin that end at the unreadable page. */
    char* endingHere(size_t bytes)
    {
        if (bytes > m_size - m_page)
            abort();
        return m_map + m_size - m_page - bytes;
    }

    /** A copy of `text` and `zeros` zeros, ending at the unreadable page. Valid until the next call. */
    template <class Char>
    void const* hold(std::basic_string<Char> const& text, size_t zeros)
    {
        size_t const bytes = text.size() * sizeof(Char);
        char* const begin = endingHere(bytes + zeros * sizeof(Char));
        if (bytes != 0)
            memcpy(begin, text.data(), bytes);
        memset(begin + bytes, 0, zeros * sizeof(Char));
        return begin;
    }

    /** Garbage to be written over, ending at the unreadable page. Valid until the next call. */
    void* arm(size_t bytes)
    {
        char* const begin = endingHere(bytes);
        memset(begin, 0xA5, bytes);
        return begin;
    }

private:
    void* map(void* address, int flags) const
    {
        void* const found = mmap(address, m_size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | flags, -1, 0);
        return found == MAP_FAILED ? nullptr : found;
    }

    bool mapAt(uintptr_t address) const
    {
        void* const wanted = reinterpret_cast<void*>(address);
        void* const found = map(wanted, MAP_FIXED_NOREPLACE);
        if (found && found != wanted)
            munmap(found, m_size);
        return found && found == wanted;
    }

    char* search(Place place) const
    {
        constexpr int TRIES = 1 << 16;
        // One end of what a process of this word size may have; machines differ, and the stack may lie there.
        uintptr_t address = m_page;
        if (place == Place::HIGH)
            address = (sizeof(void*) == 4 ? UINTPTR_MAX : UINTPTR_MAX >> 17) / m_page * m_page - m_size;
        for (int i = 0; i < TRIES; ++i) {
            if (mapAt(address))
                return reinterpret_cast<char*>(address);
            address = place == Place::LOW ? address + m_page : address - m_page;
        }
        return nullptr;
    }

    size_t m_page;
    size_t m_size;
    char* m_map;
};

}  // namespace kx7test

#endif
