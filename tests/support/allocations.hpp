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

    int count() const noexcept;
    /// Of the last one on this thread.
    static int last_count() noexcept;
};

template <class Action>
int count_allocations(Action action) {
    allocation_watch const watch;
    action();
    return watch.count();
}

/// Runs `action` with its first, second, ... allocation failing, and `check` after each failure,
/// until it comes through without one. Gives the number of failures.
template <class Action, class Check>
int fail_each_allocation(Action action, Check check) {
    for (int failing = 1;; ++failing) {
        try {
            allocation_watch const watch(failing);
            action();
            if (watch.count() < failing) return failing - 1;
        } catch (std::bad_alloc const&) {
            check();
        }
    }
}

}  // namespace ko::filesystem::testing
