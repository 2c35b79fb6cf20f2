// Internal: not installed.
#pragma once

#include <optional>
#include <string>

#include <ko/filesystem/path.hpp>

namespace ko::filesystem::detail {

/// The first step of both overloads of an operation: the text of a path, or the native form of a
/// text, which is copied only if it isn't native already. Must not outlive its argument.
class native_text {
public:
    explicit native_text(upath const& p) noexcept : text_(p.native()) {}
    explicit native_text(std::u16string const& p);
    native_text(native_text const&) = delete;
    native_text& operator=(native_text const&) = delete;

    operator std::u16string const&() const noexcept { return text_; }
    bool empty() const noexcept { return text_.empty(); }

private:
    std::optional<std::u16string> const made_;
    std::u16string const& text_;
};

/// Throws InvalidArgument "Empty Path not permitted" if `native` is empty.
void reject_empty_path(std::u16string const& native);

}  // namespace ko::filesystem::detail
