// Internal: not installed.
#pragma once

#include <string>

#include <ko/filesystem/posix/encoding.hpp>

namespace ko::filesystem::detail {

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
