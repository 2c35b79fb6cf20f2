// Internal: not installed.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <type_traits>

namespace ko::filesystem::detail {

/// The error number of a system call that has just returned `result`; 0 if that is 0. EIO for a
/// failure that leaves errno at 0.
inline int errno_of(int result) noexcept {
    if (result == 0) return 0;
    return errno != 0 ? errno : EIO;
}

/// Repeats `call` while it is interrupted by a signal. `call` returns -1 or null on failure.
template <class Call>
auto uninterrupted(Call call) noexcept {
    for (;;) {
        auto const result = call();
        bool failed = false;
        if constexpr (std::is_pointer_v<decltype(result)>)
            failed = result == nullptr;
        else
            failed = result == -1;
        if (!failed || errno != EINTR) return result;
    }
}

/// Owns an open descriptor. Negative values, such as AT_FDCWD, are not closed.
class file_descriptor {
public:
    explicit file_descriptor(int value) noexcept : value_(value) {}
    file_descriptor(file_descriptor const&) = delete;
    file_descriptor& operator=(file_descriptor const&) = delete;
    ~file_descriptor() { reset(-1); }

    int get() const noexcept { return value_; }
    void reset(int value) noexcept {
        if (value_ >= 0) ::close(value_);
        value_ = value;
    }

private:
    int value_;
};

}  // namespace ko::filesystem::detail
