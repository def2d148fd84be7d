// kx7text tests - allocation functions that count and fail when told to. For one source file of a program.
#ifndef KX7_TESTS_SUPPORT_HEAP_H
#define KX7_TESTS_SUPPORT_HEAP_H

#include <cstddef>
#include <cstdlib>
#include <new>

namespace kx7test {

/** The heap as the operators below see it. A program that includes this has one thread. */
struct Heap {
    size_t calls = 0;  ///< allocations asked for
    size_t lastSize = 0;
    size_t liveBlocks = 0;
    size_t liveBytes = 0;
    size_t failing = 0;    ///< 1: the next allocation fails, 2: the one after it; 0: none
    bool failsOn = false;  ///< all that follow a failing one fail too
};
inline Heap heap;

/** Before each block: its size, in as many bytes as keep the block aligned. */
union Header {
    size_t size;
    std::max_align_t alignment;
};

inline void* allocate(size_t size) noexcept
{
    ++heap.calls;
    heap.lastSize = size;
    if (heap.failing == 1) {
        heap.failing = heap.failsOn ? 1 : 0;
        return nullptr;
    }
    if (heap.failing != 0)
        --heap.failing;
    auto* const header = static_cast<Header*>(malloc(sizeof(Header) + size));
    if (!header)
        abort();
    header->size = size;
    ++heap.liveBlocks;
    heap.liveBytes += size;
    return header + 1;
}

inline void* allocateOrThrow(size_t size)
{
    void* const p = allocate(size);
    if (!p)
        throw std::bad_alloc();
    return p;
}

inline void release(void* p) noexcept
{
    if (!p)
        return;
    Header* const header = static_cast<Header*>(p) - 1;
    --heap.liveBlocks;
    heap.liveBytes -= header->size;
    free(header);
}

}  // namespace kx7test

void* operator new(size_t size)
{
    return kx7test::allocateOrThrow(size);
}
void* operator new[](size_t size)
{
    return kx7test::allocateOrThrow(size);
}
void* operator new(size_t size, std::nothrow_t const&) noexcept
{
    return kx7test::allocate(size);
}
void* operator new[](size_t size, std::nothrow_t const&) noexcept
{
    return kx7test::allocate(size);
}
void operator delete(void* p) noexcept
{
    kx7test::release(p);
}
void operator delete[](void* p) noexcept
{
    kx7test::release(p);
}
void operator delete(void* p, size_t) noexcept
{
    kx7test::release(p);
}
void operator delete[](void* p, size_t) noexcept
{
    kx7test::release(p);
}
void operator delete(void* p, std::nothrow_t const&) noexcept
{
    kx7test::release(p);
}
void operator delete[](void* p, std::nothrow_t const&) noexcept
{
    kx7test::release(p);
}

#endif
