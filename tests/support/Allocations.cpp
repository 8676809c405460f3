#include "tests/support/Allocations.h"

#include <cstdlib>
#include <new>

// The operators of the whole program, over malloc, so that sanitizers still watch the memory.

namespace {

thread_local std::size_t count = 0;

}  // namespace

std::size_t halvex::test::allocations() {
    return count;
}

void* operator new(std::size_t size) {
    ++count;
    if (void* memory = std::malloc(size)) return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
