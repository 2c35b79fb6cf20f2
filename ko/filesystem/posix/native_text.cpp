#include <ko/filesystem/posix/native_text.hpp>

#include <algorithm>
#include <cerrno>

#include <ko/filesystem/detail/encoding.hpp>
#include <ko/filesystem/detail/error_mapping.hpp>
#include <ko/filesystem/detail/path_algorithms.hpp>
#include <ko/filesystem/detail/path_composition.hpp>
#include <ko/filesystem/detail/text_scan.hpp>
#include <ko/filesystem/exceptions/throw.hpp>

namespace ko::filesystem::detail {

native_text::native_text(std::u16string const& p)
    : is_native_(algorithm::is_native_form<char16_t>(p, /*expand_tilde=*/true)),
      made_(is_native_ ? std::u16string() : make_native_form(p, /*expand_tilde=*/true)),
      text_(is_native_ ? p : made_) {}

void reject_empty_path(std::u16string const& native) {
    if (native.empty()) throw_invalid_argument("Empty Path not permitted");
}

void reject_zero(std::string const& path8) {
    if (path8.find('\0') != path8.npos) throw_errno_exception(EINVAL, path8, {});
}

system_path::system_path(std::u16string const& native) {
    if (native.size() < sizeof short_ && is_ascii_without_zero<char16_t>(native)) {
        *std::copy(native.begin(), native.end(), short_) = '\0';
        return;
    }
    converted_ = to_filesystem(native);
    reject_zero(converted_);
    text_ = converted_.c_str();
}

}  // namespace ko::filesystem::detail
