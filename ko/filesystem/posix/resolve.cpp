#include <ko/filesystem/resolve.hpp>

#include <sys/stat.h>

#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdlib>
#include <string>

#include <ko/filesystem/detail/current_directory.hpp>
#include <ko/filesystem/detail/error_mapping.hpp>
#include <ko/filesystem/detail/path_algorithms.hpp>
#include <ko/filesystem/detail/path_composition.hpp>
#include <ko/filesystem/exceptions/throw.hpp>
#include <ko/filesystem/posix/encoding.hpp>
#include <ko/filesystem/posix/native_text.hpp>
#include <ko/filesystem/posix/status_reader.hpp>
#include <ko/filesystem/posix/system_path.hpp>

namespace ko::filesystem {

namespace {

using detail::native_text;

/// `p` appended to `base`, or to the result of `current` if `base` is empty; empty if that is.
template <class CharT, class Current>
std::basic_string<CharT> absolute_text(std::basic_string<CharT> const& p,
                                       std::basic_string<CharT> const& base, Current current) {
    using detail::algorithm::is_absolute;
    using detail::algorithm::joined;
    if (is_absolute<CharT>(p)) return p;
    if (base.empty()) return joined<CharT>(current(), p);
    if (!is_absolute<CharT>(base)) detail::throw_invalid_argument("Invalid Base Path");
    return joined<CharT>(base, p);
}

std::u16string absolute_impl(std::u16string const& native, std::u16string const& base) {
    return absolute_text(native, base, get_current_path);
}

std::string current_path8() {
    using bytes = detail::path_traits<char, char>;
    return bytes::make_native_form(detail::get_cwd_mt(), /*expand_tilde=*/true);
}

std::u16string real_path(char const* path8) {
    // Deliberately without the path, unlike for failures of realpath.
    if (!detail::exists_by_stat(path8)) detail::throw_errno_exception(ENOENT, {});
    char buffer[PATH_MAX];
    if (::realpath(path8, buffer) == nullptr) detail::throw_errno_exception(errno, path8);
    return detail::from_filesystem_strict(buffer);
}

/// `native`, or in `expanded` its form without the tilde that a path object has kept.
std::u16string const& without_tilde(std::u16string const& native, std::u16string& expanded) {
    if (!detail::algorithm::begins_with_tilde<char16_t>(native)) return native;
    return expanded = detail::make_native_form(native, /*expand_tilde=*/true);
}

std::u16string canonical_impl(std::u16string const& p, std::u16string const& base) {
    std::u16string expanded, expanded_base;
    std::u16string const& native = without_tilde(p, expanded);
    bool const is_absolute = detail::algorithm::is_absolute<char16_t>(native);
    detail::system_path const p8(native);
    detail::system_path const base8(is_absolute ? expanded_base
                                                : without_tilde(base, expanded_base));
    // A text without a UTF-8 form must not become the working directory.
    if (p8.empty() || (base8.empty() && !is_absolute && !base.empty()))
        detail::throw_errno_exception(ENOENT, {});
    if (is_absolute) return real_path(p8.c_str());
    return real_path(absolute_text(p8.string(), base8.string(), current_path8).c_str());
}

/// Moves `element` past the leading elements of `p` that exist and returns their path.
std::u16string existing_head(upath const& p, upath::iterator& element) {
    std::u16string head;
    head.reserve(p.native().size());
    struct stat found;
    for (; element != p.end(); ++element) {
        upath const name = *element;
        if (name.empty()) break;
        std::size_t const length = head.size();
        // Deliberately expands tildes, so that an element like "~name" may leave the path.
        detail::concatenate_pathname(head, name.native(), /*expand_tilde=*/true);
        if (!detail::exists_at(&::stat, head, found)) {
            head.resize(length);
            break;
        }
    }
    return head;
}

std::u16string weakly_canonical_impl(std::u16string const& native) {
    struct stat found;
    if (detail::exists_at(&::stat, detail::system_path(native).c_str(), found))
        return canonical_impl(native, {});
    upath const p(native, /*expand_tilde=*/false);
    upath::iterator element = p.begin();
    std::u16string const head = existing_head(p, element);
    std::u16string result = head.empty() ? head : canonical_impl(head, {});
    if (result.empty() && !head.empty()) return {};  // the tail alone would name another file
    bool has_dots = false;
    for (; element != p.end(); ++element) {
        upath const name = *element;
        has_dots = has_dots || detail::algorithm::is_dot_name<char16_t>(name.native());
        if (!name.empty())
            detail::concatenate_pathname(result, name.native(), /*expand_tilde=*/true);
    }
    if (!has_dots) return result;
    return detail::make_native_form(detail::lexically_normal(result), /*expand_tilde=*/true);
}

}  // namespace

upath absolute(upath const& p, upath const& base) {
    return p.empty() ? upath() : upath(absolute_impl(p.native(), base.native()));
}
std::u16string absolute(std::u16string const& p, std::u16string const& base) {
    native_text const native(p);
    return native.empty() ? std::u16string() : absolute_impl(native, native_text(base));
}

upath canonical(upath const& p, upath const& base) {
    return p.empty() ? upath() : upath(canonical_impl(p.native(), base.native()));
}
std::u16string canonical(std::u16string const& p, std::u16string const& base) {
    native_text const native(p);
    return native.empty() ? std::u16string() : canonical_impl(native, native_text(base));
}

upath weakly_canonical(upath const& p) {
    return p.empty() ? upath() : upath(weakly_canonical_impl(p.native()));
}
std::u16string weakly_canonical(std::u16string const& p) {
    native_text const native(p);
    return native.empty() ? std::u16string() : weakly_canonical_impl(native);
}

upath relative(upath const& p, upath const& base) {
    return upath(relative(p.native(), base.native()));
}
std::u16string relative(std::u16string const& p, std::u16string const& base) {
    std::u16string const resolved = weakly_canonical(p);
    return detail::lexically_relative(resolved, weakly_canonical(base));
}

}  // namespace ko::filesystem
