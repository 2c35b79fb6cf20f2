#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace ko::filesystem::testing {

/// The system calls that this thread makes while it lives, and the one that fails. A program that
/// links system_calls.cpp defines the calls itself and so stands between every library in it and the
/// C library; only ELF systems do that.
struct call_recorder {
    call_recorder() { current = this; }
    call_recorder(call_recorder const&) = delete;
    call_recorder& operator=(call_recorder const&) = delete;
    ~call_recorder() { current = nullptr; }

    std::string failing;                                       ///< "name path", or the name alone
    int nth = 0;                                               ///< which of them
    std::size_t failing_index = static_cast<std::size_t>(-1);  ///< or: which of all
    int error = 0;                                             ///< what errno is then
    bool short_transfers = false;                              ///< sendfile sends a byte at most

    /// "name path", the name alone where there is no path; a directory's stream goes by its path.
    std::vector<std::string> all;
    std::vector<std::string> made;  ///< without readdir, of which the number is the C library's

    static inline thread_local call_recorder* current = nullptr;
};

}  // namespace ko::filesystem::testing
