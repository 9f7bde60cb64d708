#include "AllocationCount.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> count{0};

void* counted(std::size_t size) {
    ++count;
    return std::malloc(size > 0 ? size : 1);
}

void* countedOrThrow(std::size_t size) {
    if (void* memory = counted(size)) return memory;
    throw std::bad_alloc();
}

}

long allocationCount() { return count; }

// The program's own, so that each call is seen; a file of their own keeps them from being inlined. Every form is here,
// because a checker that brings its own wants them in pairs.
void* operator new(std::size_t size) { return countedOrThrow(size); }
void* operator new[](std::size_t size) { return countedOrThrow(size); }
void* operator new(std::size_t size, std::nothrow_t const&) noexcept { return counted(size); }
void* operator new[](std::size_t size, std::nothrow_t const&) noexcept { return counted(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::nothrow_t const&) noexcept { std::free(memory); }
void operator delete[](void* memory, std::nothrow_t const&) noexcept { std::free(memory); }
