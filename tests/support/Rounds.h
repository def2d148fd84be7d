// kx7text tests - how long a random test runs, and with which numbers.
#ifndef KX7_TESTS_SUPPORT_ROUNDS_H
#define KX7_TESTS_SUPPORT_ROUNDS_H

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <random>

namespace kx7test {

/**
 * The rounds of a random test: a fixed number of them with the same numbers in every run. Where KX7_RANDOM_SECONDS is
 * set they go on for that time, with numbers of their own in every run; KX7_RANDOM_SEED repeats one.
 */
class Rounds {
public:
    Rounds(unsigned int count, unsigned int seed) : m_left(count), m_seed(seed)
    {
        if (char const* const seconds = getenv("KX7_RANDOM_SECONDS")) {
            m_isTimed = true;
            m_until = Clock::now() + std::chrono::seconds(strtoul(seconds, nullptr, 10));
            char const* const given = getenv("KX7_RANDOM_SEED");
            m_seed = given ? static_cast<unsigned int>(strtoul(given, nullptr, 10)) : std::random_device()();
            std::cout << "KX7_RANDOM_SEED=" << m_seed << std::endl;
        }
        m_random.seed(m_seed);
    }
    ~Rounds()
    {
        if (m_isTimed)
            std::cout << m_done << " rounds" << std::endl;
    }
    Rounds(Rounds const&) = delete;
    Rounds& operator=(Rounds const&) = delete;

    /** Begins a round; false: there are no more. */
    bool next()
    {
        if (m_isTimed ? Clock::now() >= m_until : m_left == 0)
            return false;
        m_left -= m_isTimed ? 0 : 1;
        ++m_done;
        return true;
    }

    std::mt19937& random() { return m_random; }

    /** A number below `bound`. */
    unsigned int below(size_t bound) { return static_cast<unsigned int>(m_random() % bound); }

private:
    using Clock = std::chrono::steady_clock;

    std::mt19937 m_random;
    unsigned int m_left;
    unsigned int m_seed;
    bool m_isTimed = false;
    Clock::time_point m_until;
    unsigned long long m_done = 0;
};

}  // namespace kx7test

#endif
