#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <vector>

namespace ko::filesystem::test_support {

/// Records the system calls of this thread during its lifetime, and lets one fail. A program that
/// links system_calls.cpp defines the calls itself and so intercepts those of every library in it;
/// only dynamic ELF programs can do that.
struct call_recorder {
    call_recorder() { current = this; }
    ~call_recorder() { current = nullptr; }

    std::string failing = "none";                              ///< as in `all`
    std::size_t failing_index = static_cast<std::size_t>(-1);  ///< or its index in `all`
    int error = 0;                                             ///< for errno
    bool short_transfers = false;  ///< transfers send or copy one byte at most
    std::function<void()> during;  ///< called before each call; its own are not recorded

    /// "name path", or the name alone if the call has no path; a stream is shown by its directory's path.
    std::vector<std::string> all;

    static inline thread_local call_recorder* current = nullptr;
    static inline std::atomic<int> open_converters{0};  ///< in the whole process
};

}  // namespace ko::filesystem::test_support
