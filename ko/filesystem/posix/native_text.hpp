#pragma once

#include <string>

#include <ko/filesystem/path.hpp>
#include <ko/filesystem/posix/encoding.hpp>

namespace ko::filesystem::detail {

/// The first step of both overloads of an operation: a path's text as it stands, or the native form
/// of a text, which is copied only where it isn't native yet. Lives no longer than its argument.
class native_text {
public:
    explicit native_text(upath const& p) noexcept : is_native_(true), text_(p.native()) {}
    explicit native_text(std::u16string const& p);
    native_text(native_text const&) = delete;
    native_text& operator=(native_text const&) = delete;

    operator std::u16string const&() const noexcept { return text_; }
    bool empty() const noexcept { return text_.empty(); }

private:
    bool const is_native_;
    std::u16string const made_;
    std::u16string const& text_;
};

/// Throws InvalidArgument "Empty Path not permitted" when `native` is empty.
void reject_empty_path(std::u16string const& native);

/// Throws InvalidArgument (as for EINVAL) when `path8` holds a zero byte: the system calls would
/// take what stands before it for the path, and so reach another file; path(): `path8`
void reject_zero(std::string const& path8);

/// A path in UTF-8, as the system calls take it: through here every operation hands over its paths.
/// Empty when the text can't be converted, which the calls report as ENOENT.
class system_path {
public:
    /// Throws as `reject_zero`.
    explicit system_path(std::u16string const& native);
    system_path(system_path const&) = delete;
    system_path& operator=(system_path const&) = delete;

    char const* c_str() const noexcept { return text_; }
    std::string string() const { return text_; }
    bool empty() const noexcept { return *text_ == '\0'; }

private:
    // What needs no conversion lies here: short-lived memory costs more than the rest of the work.
    char short_[posix::detail::fast_path_limit + 1];
    std::string converted_;
    char const* text_ = short_;
};

}  // namespace ko::filesystem::detail
