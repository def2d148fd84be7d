// kx7text tests - malloc, calloc and free that keep account of the heap (Heap.h).
#include <cerrno>
#include <cstddef>
#include <new>

#include "tests/support/Heap.h"

using kx7test::heap;

extern "C" {
void* __libc_malloc(size_t);
void* __libc_calloc(size_t, size_t);
void __libc_free(void*);

void* malloc(size_t size) noexcept
{
    bool const fails = heap.fails(size, false);
    void* const memory = fails ? nullptr : __libc_malloc(size);
    if (fails)
        errno = ENOMEM;
    heap.liveBlocks += memory ? 1 : 0;
    return memory;
}
void* calloc(size_t count, size_t size) noexcept
{
    bool const fails = heap.fails(count * size, false);
    void* const memory = fails ? nullptr : __libc_calloc(count, size);
    if (fails)
        errno = ENOMEM;
    heap.liveBlocks += memory ? 1 : 0;
    return memory;
}
void free(void* memory) noexcept
{
    heap.freed += memory ? 1 : 0;
    heap.liveBlocks -= memory ? 1 : 0;
    __libc_free(memory);
}
}

// Pages of tables, and nothing else, are arrays of 256 values.
void* operator new[](size_t size, std::nothrow_t const&) noexcept
{
    heap.lastArraySize = size;
    void* const memory = malloc(size);
    if (!memory && (size == 256 || size == 512 || size == 1024))
        ++heap.failedPages;
    return memory;
}
void operator delete[](void* memory) noexcept
{
    free(memory);
}
void operator delete[](void* memory, size_t) noexcept
{
    free(memory);
}
