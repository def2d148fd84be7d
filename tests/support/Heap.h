// kx7text tests - watches what a thread asks of the heap, and lets chosen allocations fail.
//
// A program that includes this is linked with Heap.cpp, which brings operators new and delete, or with MallocHeap.cpp,
// which brings malloc and calloc too. No sanitizer lets a program bring the latter.
#ifndef KX7_TESTS_SUPPORT_HEAP_H
#define KX7_TESTS_SUPPORT_HEAP_H

#include <cstddef>
#include <cstdint>

namespace kx7test {

/** The heap of one thread, as the functions of Heap.cpp and MallocHeap.cpp keep account of it. */
struct Heap {
    bool isWatched = false;
    bool countsNothrowOnly = false;
    size_t made = 0;
    size_t freed = 0;
    size_t failed = 0;
    size_t failedPages = 0;
    size_t lastSize = 0;
    size_t lastArraySize = 0;
    size_t firstFailing = SIZE_MAX;
    size_t lastFailing = 0;
    size_t liveBlocks = 0;
    size_t liveBytes = 0;

    /** Counts an allocation. Whether it is one of those that are to fail. */
    bool fails(size_t size, bool isNothrow)
    {
        if (!isWatched || (countsNothrowOnly && !isNothrow))
            return false;
        ++made;
        lastSize = size;
        bool const isChosen = made >= firstFailing && made <= lastFailing;
        failed += isChosen;
        return isChosen;
    }
};
inline thread_local Heap heap;

/** What this thread asks of the heap while one of these lives. There is one at a time in a thread. */
class HeapWatch {
public:
    enum Counted { ALL, NOTHROW };

    /** @param counted NOTHROW: allocations by new (std::nothrow) alone are counted, and fail */
    explicit HeapWatch(Counted counted = ALL) : m_liveBlocks(heap.liveBlocks), m_liveBytes(heap.liveBytes)
    {
        Heap fresh;
        fresh.isWatched = true;
        fresh.countsNothrowOnly = counted == NOTHROW;
        fresh.liveBlocks = heap.liveBlocks;
        fresh.liveBytes = heap.liveBytes;
        heap = fresh;
    }
    ~HeapWatch() { heap.isWatched = false; }
    HeapWatch(HeapWatch const&) = delete;
    HeapWatch& operator=(HeapWatch const&) = delete;

    /** The allocations from here on that have these numbers fail, counted from 1. */
    void fail(size_t first, size_t last)
    {
        heap.firstFailing = heap.made + first;
        heap.lastFailing = last == SIZE_MAX ? SIZE_MAX : heap.made + last;
    }
    /** The same for one allocation, or for it and all that follow. */
    void failAt(size_t number, bool andAfter = false) { fail(number, andAfter ? SIZE_MAX : number); }

    void stopFailing() { heap.firstFailing = SIZE_MAX; }

    size_t made() const { return heap.made; }                ///< allocations that were asked for
    size_t freed() const { return heap.freed; }              ///< blocks given back
    bool hasFailed() const { return heap.failed != 0; }      ///< an allocation was one of those to fail
    size_t failedPages() const { return heap.failedPages; }  ///< arrays of 256 values that failed: pages of tables
    size_t lastSize() const { return heap.lastSize; }        ///< bytes of the last allocation
    ptrdiff_t blocks() const { return static_cast<ptrdiff_t>(heap.liveBlocks - m_liveBlocks); }  ///< left allocated
    ptrdiff_t bytes() const { return static_cast<ptrdiff_t>(heap.liveBytes - m_liveBytes); }     ///< of these blocks

    /** Bytes of the last array asked for, watched or not. */
    static size_t lastArraySize() { return heap.lastArraySize; }

private:
    size_t m_liveBlocks;
    size_t m_liveBytes;
};

}  // namespace kx7test

#endif
