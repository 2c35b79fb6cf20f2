#pragma once

#include <cstdlib>
#include <new>

namespace ko::filesystem::test_support {

/// Counts the calling thread's allocations by operator new during its lifetime, and makes number
/// `failing` (from 1; 0 for none) throw std::bad_alloc.
class allocation_watch {
public:
    explicit allocation_watch(int failing = 0) noexcept {
        allocations = 0, failing_allocation = failing, watching = true;
    }
    ~allocation_watch() { watching = false; }

    static inline thread_local int allocations = 0;  ///< of this thread's current or last watch
    static inline thread_local int failing_allocation = 0;
    static inline thread_local bool watching = false;
};

}  // namespace ko::filesystem::test_support

// Included by one file of a program only, since it defines these.
[[gnu::noinline]] void* operator new(std::size_t size) {
    using watch = ko::filesystem::test_support::allocation_watch;
    if (watch::watching && ++watch::allocations == watch::failing_allocation)
        throw std::bad_alloc();
    if (void* const memory = std::malloc(size == 0 ? 1 : size)) return memory;
    throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
