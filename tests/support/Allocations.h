// kx7text tests - watches allocations of arrays and lets some of those fail that may return null.
#ifndef KX7_TESTS_SUPPORT_ALLOCATIONS_H
#define KX7_TESTS_SUPPORT_ALLOCATIONS_H

#include <climits>
#include <cstddef>

namespace kx7test {

/** Counts what this thread allocates; the program's allocation functions (TableAllocationTest.cpp) report to it. */
struct Allocations {
    /** Allocations by new (std::nothrow), of arrays and of single objects, while one of these lives. */
    class Watch {
    public:
        Watch();
        ~Watch();
        Watch(Watch const&) = delete;
        Watch& operator=(Watch const&) = delete;

        /** The allocations from here on that have these numbers fail, counted from 1. */
        void fail(unsigned int first, unsigned int last);

        unsigned int made() const;   ///< allocations that were asked for
        unsigned int freed() const;  ///< blocks given back
    };

    /** Bytes of the last array asked for. */
    static size_t lastArraySize();
};

}  // namespace kx7test

#endif
