// Internal: not installed.
#pragma once

#include <string>

#include <ko/filesystem/posix/encoding.hpp>

namespace ko::filesystem::detail {

/// Throws InvalidArgument (as for EINVAL) if `path8` contains a zero byte: system calls would take
/// the text before it as the path, and reach another file; path(): `path8`
void reject_zero(std::string const& path8);

/// A path in UTF-8 for system calls. Every operation passes its paths by this class. Empty if the
/// text can't be converted, which the calls report as ENOENT.
class system_path {
public:
    /// Throws like `reject_zero`.
    explicit system_path(std::u16string const& native);
    /// Sets `error` to EINVAL instead of throwing, and is empty then; else to 0. For queries: a text
    /// that can't be a path names nothing.
    system_path(std::u16string const& native, int& error);
    system_path(system_path const&) = delete;
    system_path& operator=(system_path const&) = delete;

    char const* c_str() const noexcept { return text_; }
    std::string string() const { return text_; }
    bool empty() const noexcept { return *text_ == '\0'; }

private:
    void convert(std::u16string const& native);

    // For text that needs no conversion: an allocation would cost more than the rest of the work.
    char short_[posix::detail::fast_path_limit + 1];
    std::string converted_;
    char const* text_ = short_;
};

}  // namespace ko::filesystem::detail
