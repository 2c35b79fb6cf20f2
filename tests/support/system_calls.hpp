#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace ko::filesystem::test_support {

/// The system calls that this thread makes while it lives, and the one that fails. A program that
/// links system_calls.cpp defines the calls itself and so stands between every library in it and the
/// C library; only dynamic ELF programs can do that.
struct call_recorder {
    call_recorder() { current = this; }
    ~call_recorder() { current = nullptr; }

    std::string failing = "none";                              ///< as in `all`
    std::size_t failing_index = static_cast<std::size_t>(-1);  ///< or which of all
    int error = 0;                                             ///< what errno is then
    bool short_transfers = false;                              ///< a byte at most is sent or copied
    std::function<void()> during;                              ///< runs while a call is made

    /// "name path", the name alone where there is no path; a directory's stream goes by its path.
    std::vector<std::string> all;

    static inline thread_local call_recorder* current = nullptr;
    static inline std::atomic<int> open_converters{0};  ///< in the whole process
};

}  // namespace ko::filesystem::test_support
