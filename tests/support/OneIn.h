// kx7text tests - takes a part of what nested loops go through, where taking all would take too long.
#ifndef KX7_TESTS_SUPPORT_ONEIN_H
#define KX7_TESTS_SUPPORT_ONEIN_H

#include <random>

namespace kx7test {

/**
 * Whether to try a combination of the values of nested loops, asked once for each: always, but of sanitized code, which
 * is many times slower, one time in `count`, by fixed random numbers. The other builds compare every result; what a
 * sanitizer sees depends on the value of each loop, and hardly on their combination.
 */
class OneIn {
public:
    explicit OneIn([[maybe_unused]] unsigned int count)
#ifdef KX7_SANITIZED
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
