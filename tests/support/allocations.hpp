#pragma once

#include <new>

namespace ko::filesystem::testing {

/// Counts the calling thread's allocations through operator new while it lives, and makes the one
/// numbered `failing` (from 1; 0 for none) throw std::bad_alloc.
class allocation_watch {
public:
    explicit allocation_watch(int failing = 0) noexcept;
    allocation_watch(allocation_watch const&) = delete;
    allocation_watch& operator=(allocation_watch const&) = delete;
    ~allocation_watch();

    /// Of this thread's last one.
    static int count() noexcept;
};

}  // namespace ko::filesystem::testing
