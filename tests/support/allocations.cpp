#include "support/allocations.hpp"

#include <cstddef>
#include <cstdlib>

namespace {

thread_local bool watching = false;
thread_local int allocations = 0;
thread_local int failing_allocation = 0;

}  // namespace

namespace ko::filesystem::testing {

allocation_watch::allocation_watch(int failing) noexcept {
    allocations = 0;
    failing_allocation = failing;
    watching = true;
}

allocation_watch::~allocation_watch() { watching = false; }

int allocation_watch::count() noexcept { return allocations; }

}  // namespace ko::filesystem::testing

void* operator new(std::size_t size) {
    if (watching && ++allocations == failing_allocation) throw std::bad_alloc();
    if (void* const memory = std::malloc(size == 0 ? 1 : size)) return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
