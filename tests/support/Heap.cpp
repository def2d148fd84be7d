// kx7text tests - operators new and delete that keep account of the heap (Heap.h).
#include "tests/support/Heap.h"

#include <malloc.h>

#include <cstdlib>
#include <new>

namespace {

using kx7test::heap;

void* allocate(size_t size, bool isNothrow)
{
    void* const memory = heap.fails(size, isNothrow) ? nullptr : malloc(size != 0 ? size : 1);
    if (memory) {
        ++heap.liveBlocks;
        heap.liveBytes += malloc_usable_size(memory);
    }
    return memory;
}

void* allocateOrThrow(size_t size)
{
    void* const memory = allocate(size, false);
    if (!memory)
        throw std::bad_alloc();
    return memory;
}

void release(void* memory)
{
    if (!memory)
        return;
    ++heap.freed;
    --heap.liveBlocks;
    heap.liveBytes -= malloc_usable_size(memory);
    free(memory);
}

}  // namespace

void* operator new(size_t size)
{
    return allocateOrThrow(size);
}
void* operator new[](size_t size)
{
    heap.lastArraySize = size;
    return allocateOrThrow(size);
}
void* operator new(size_t size, std::nothrow_t const&) noexcept
{
    return allocate(size, true);
}
void* operator new[](size_t size, std::nothrow_t const&) noexcept
{
    heap.lastArraySize = size;
    return allocate(size, true);
}
void operator delete(void* memory) noexcept
{
    release(memory);
}
void operator delete[](void* memory) noexcept
{
    release(memory);
}
void operator delete(void* memory, size_t) noexcept
{
    release(memory);
}
void operator delete[](void* memory, size_t) noexcept
{
    release(memory);
}
void operator delete(void* memory, std::nothrow_t const&) noexcept
{
    release(memory);
}
void operator delete[](void* memory, std::nothrow_t const&) noexcept
{
    release(memory);
}
