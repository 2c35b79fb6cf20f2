// Internal: not installed.
#pragma once

#include <dirent.h>
#include <iconv.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <type_traits>

namespace ko::filesystem::posix::detail {

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

struct close_dir {
    void operator()(DIR* stream) const noexcept { ::closedir(stream); }
};
using dir_stream = std::unique_ptr<DIR, close_dir>;

struct free_text {
    void operator()(char* text) const noexcept { std::free(text); }
};
/// A text allocated by the C library.
using malloc_text = std::unique_ptr<char, free_text>;

/// Returns a converter to its initial state at the end of a conversion, however that ends.
class converter_reset {
public:
    explicit converter_reset(iconv_t converter) noexcept : converter_(converter) {}
    converter_reset(converter_reset const&) = delete;
    converter_reset& operator=(converter_reset const&) = delete;
    ~converter_reset() { ::iconv(converter_, nullptr, nullptr, nullptr, nullptr); }

private:
    iconv_t converter_;
};

}  // namespace ko::filesystem::posix::detail
