#include <ko/filesystem/posix/native_text.hpp>

#include <ko/filesystem/detail/path_algorithms.hpp>
#include <ko/filesystem/detail/path_composition.hpp>
#include <ko/filesystem/exceptions/throw.hpp>

namespace ko::filesystem::detail {

native_text::native_text(std::u16string const& p)
    : is_native_(algorithm::is_native_form<char16_t>(p, /*expand_tilde=*/true)),
      made_(is_native_ ? std::u16string() : make_native_form(p, /*expand_tilde=*/true)),
      text_(is_native_ ? p : made_) {}

void reject_empty_path(std::u16string const& native) {
    if (native.empty()) throw_invalid_argument("Empty Path not permitted");
}

}  // namespace ko::filesystem::detail
