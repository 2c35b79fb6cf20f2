#include <ko/filesystem/posix/native_text.hpp>

#include <optional>

#include <ko/filesystem/detail/path_algorithms.hpp>
#include <ko/filesystem/detail/path_composition.hpp>
#include <ko/filesystem/exceptions/throw.hpp>

namespace ko::filesystem::detail {

native_text::native_text(std::u16string const& p)
    : made_(algorithm::is_native_form<char16_t>(p, /*expand_tilde=*/true)
                ? std::nullopt
                : std::optional(make_native_form(p, /*expand_tilde=*/true))),
      text_(made_ ? *made_ : p) {}

void reject_empty_path(std::u16string const& native) {
    if (native.empty()) throw_invalid_argument("Empty Path not permitted");
}

}  // namespace ko::filesystem::detail
