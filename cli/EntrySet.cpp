// kx7text - kx7conv: a set of very many names of files.
#include "EntrySet.h"

#include <algorithm>
#include <cstring>
#include <ctime>
#include <new>
#include <sys/random.h>

namespace kx7conv {

namespace {

constexpr size_t MOST_RECENT = 8 * 1024;

/** SipHash-2-4 (Aumasson and Bernstein, 2012): 64 bits by a key of 128. */
class SipHash {
public:
    explicit SipHash(uint64_t const (&key)[2])
        : m_a(key[0] ^ 0x736F6D6570736575U), m_b(key[1] ^ 0x646F72616E646F6DU), m_c(key[0] ^ 0x6C7967656E657261U),
          m_d(key[1] ^ 0x7465646279746573U)
    {
    }

    void add(uint64_t word)
    {
        m_d ^= word;
        mix(2);
        m_a ^= word;
    }

    uint64_t result()
    {
        m_c ^= 0xFF;
        mix(4);
        return m_a ^ m_b ^ m_c ^ m_d;
    }

private:
    static uint64_t rotated(uint64_t word, unsigned int bits) { return word << bits | word >> (64 - bits); }

    void mix(int rounds)
    {
        while (rounds-- != 0) {
            m_a += m_b;
            m_b = rotated(m_b, 13) ^ m_a;
            m_a = rotated(m_a, 32);
            m_c += m_d;
            m_d = rotated(m_d, 16) ^ m_c;
            m_a += m_d;
            m_d = rotated(m_d, 21) ^ m_a;
            m_c += m_b;
            m_b = rotated(m_b, 17) ^ m_c;
            m_c = rotated(m_c, 32);
        }
    }

    uint64_t m_a;
    uint64_t m_b;
    uint64_t m_c;
    uint64_t m_d;
};

}  // namespace

EntrySet::EntrySet()
{
    if (getrandom(m_key, sizeof m_key, 0) != static_cast<ssize_t>(sizeof m_key))
        m_key[0] = static_cast<uint64_t>(time(nullptr));
}

bool EntrySet::insert(FileId const& folder, std::string const& name)
{
    uint64_t const value = hash(folder, name);
    if (contains(value))
        return false;
    if (m_recent.size() == MOST_RECENT)
        merge();
    m_recent.insert(std::lower_bound(m_recent.begin(), m_recent.end(), value), value);
    return true;
}

bool EntrySet::contains(FileId const& folder, std::string const& name) const
{
    return contains(hash(folder, name));
}

bool EntrySet::contains(uint64_t value) const
{
    return std::binary_search(m_recent.begin(), m_recent.end(), value) ||
           std::binary_search(m_sorted.get(), m_sorted.get() + m_size, value);
}

uint64_t EntrySet::hash(FileId const& folder, std::string const& name) const
{
    SipHash hash(m_key);
    hash.add(folder.device);
    hash.add(folder.inode);
    hash.add(name.size());
    for (size_t i = 0; i < name.size(); i += sizeof(uint64_t)) {
        uint64_t word = 0;
        memcpy(&word, name.data() + i, std::min(sizeof word, name.size() - i));
        hash.add(word);
    }
    return hash.result();
}

/** Moves the recent ones to the others, from the largest down, so that no other memory is needed. */
void EntrySet::merge()
{
    size_t const size = m_size + m_recent.size();
    auto* const grown = static_cast<uint64_t*>(realloc(m_sorted.get(), size * sizeof(uint64_t)));
    if (!grown)
        throw std::bad_alloc();
    static_cast<void>(m_sorted.release());
    m_sorted.reset(grown);
    for (size_t at = size; !m_recent.empty();) {
        if (m_size != 0 && grown[m_size - 1] > m_recent.back()) {
            grown[--at] = grown[--m_size];
        }
        else {
            grown[--at] = m_recent.back();
            m_recent.pop_back();
        }
    }
    m_size = size;
}

}  // namespace kx7conv
