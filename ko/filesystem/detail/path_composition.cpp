#include <ko/filesystem/detail/path_composition.hpp>

#include <cstddef>
#include <string_view>

#include <boost/filesystem/path.hpp>

#include <ko/filesystem/detail/encoding.hpp>
#include <ko/filesystem/detail/path_algorithms.hpp>
#include <ko/filesystem/detail/path_constants.hpp>
#include <ko/filesystem/exceptions/throw.hpp>
#include <ko/filesystem/posix/encoding.hpp>

namespace ko::filesystem::detail {

namespace {

using traits = pathname_traits<char16_t>;

bool is_valid_extension(std::u16string const& ext) {
    std::size_t const leading_dots = ext.find_first_not_of(traits::DOT_CHARACTER);
    return leading_dots < 2 && ext.find(traits::PATHNAME_SEPARATOR_CHARACTER) == ext.npos;
}

}  // namespace

std::u16string make_native_form(std::u16string const& p, bool expand_tilde) {
    return algorithm::native_form(p, expand_tilde);
}

std::u16string make_generic_form(std::u16string const& p) { return p; }

std::string make_native_access_form_with_cleanup(std::u16string const& p) {
    return to_filesystem(make_native_form(p, /*expand_tilde=*/true));
}

std::u16string& concatenate_pathname(std::u16string& base, std::u16string const& addition,
                                     bool expand_tilde) {
    return algorithm::concatenate(base, addition, expand_tilde);
}

std::u16string& remove_filename(std::u16string& p) { return algorithm::remove_filename(p); }

std::u16string& replace_extension(std::u16string& p, std::u16string const& ext) {
    if (p.empty() || ext.empty() || algorithm::is_separator(p.back())) return p;
    std::u16string_view const name = algorithm::filename<char16_t>(p);
    if (algorithm::is_dot_name(name)) return p;
    if (!is_valid_extension(ext)) throw_invalid_argument("Invalid extension");

    std::size_t const dot = algorithm::last_dot<char16_t>(p);
    bool const has_extension = dot != p.npos && dot + 1 != p.size();
    std::size_t const kept = has_extension ? dot : p.size();
    bool const brings_dot = ext.front() == traits::DOT_CHARACTER;

    p.reserve(kept + 1 + ext.size());  // nothing below can fail
    if (brings_dot) return p.replace(kept, p.npos, ext);
    // The dot of an old extension stays. `ext` may be `p` itself: it is read before `p` changes.
    p.replace(has_extension ? kept + 1 : kept, p.npos, ext);
    if (!has_extension) p.insert(kept, 1, traits::DOT_CHARACTER);
    return p;
}

std::u16string lexically_normal(std::u16string const& p) {
    boost::filesystem::path const p8(to_filesystem(p));
    return make_native_form(from_filesystem_strict(p8.lexically_normal().native()),
                            /*expand_tilde=*/false);
}

std::u16string lexically_relative(std::u16string const& p, std::u16string const& base) {
    boost::filesystem::path const p8(to_filesystem(p)), base8(to_filesystem(base));
    return from_filesystem_strict(p8.lexically_relative(base8).native());
}

}  // namespace ko::filesystem::detail
