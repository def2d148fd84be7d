// kx7text tests - takes a part of what nested loops go through, where taking all would take too long.
#ifndef KX7_TESTS_SUPPORT_ONEIN_H
#define KX7_TESTS_SUPPORT_ONEIN_H

#include <random>

namespace kx7test {

/**
 * Whether to try a combination of the values of nested loops, asked once for each: always, but with KX7_TESTS_IN_PART
 * one time in `count`, by fixed random numbers. One build, the 64-bit one with g++, compares every result; what another
 * compiler, another word size or a sanitizer shows depends on the value of each loop, and hardly on their combination.
 */
class OneIn {
public:
    explicit OneIn([[maybe_unused]] unsigned int count)
#ifdef KX7_TESTS_IN_PART
        : m_count(count)
#endif
    {
    }

    bool operator()()
    {
        return m_count == 1 || m_random() % m_count == 0;
    }

private:
    unsigned int m_count = 1;
    std::minstd_rand m_random;
};

}  // namespace kx7test

#endif
