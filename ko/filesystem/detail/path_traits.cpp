#include <ko/filesystem/detail/path_traits.hpp>

#include <ko/filesystem/detail/encoding.hpp>
#include <ko/filesystem/detail/path_algorithms.hpp>
#include <ko/filesystem/exceptions/invalid_argument.hpp>
#include <ko/filesystem/exceptions/throw.hpp>
#include <ko/filesystem/posix/encoding.hpp>

namespace ko::filesystem::detail {

using bytes = path_traits<char, char>;
using units = path_traits<char16_t, char16_t>;
using mixed = path_traits<char, char16_t>;

std::string bytes::make_native_form(std::string const& p, bool expand_tilde) {
    return algorithm::native_form(p, expand_tilde);
}
std::string& bytes::concatenate_pathname(std::string& base, std::string const& addition,
                                         bool expand_tilde) {
    return algorithm::concatenate(base, addition, expand_tilde);
}
std::string& bytes::remove_filename(std::string& p) { return algorithm::remove_filename(p); }
std::string bytes::extract_filename(std::string const& p) {
    return std::string(algorithm::filename<char>(p));
}
bool bytes::is_absolute(std::string const& p) { return algorithm::is_absolute<char>(p); }

std::u16string units::make_native_form(std::u16string const& p, bool expand_tilde) {
    return detail::make_native_form(p, expand_tilde);
}
std::u16string& units::concatenate_pathname(std::u16string& base, std::u16string const& addition,
                                            bool expand_tilde) {
    return detail::concatenate_pathname(base, addition, expand_tilde);
}
std::u16string& units::remove_filename(std::u16string& p) { return detail::remove_filename(p); }
std::u16string& units::replace_extension(std::u16string& p, std::u16string const& ext) {
    return detail::replace_extension(p, ext);
}
bool units::is_absolute(std::u16string const& p) { return detail::is_absolute(p); }
std::u16string units::extract_root_path(std::u16string const& p) {
    return detail::extract_root_path(p);
}
std::u16string units::extract_relative_path(std::u16string const& p) {
    return detail::extract_relative_path(p);
}
std::u16string units::extract_parent_path(std::u16string const& p) {
    return detail::extract_parent_path(p);
}
std::u16string units::extract_filename(std::u16string const& p) {
    return detail::extract_filename(p);
}
std::u16string units::extract_stem(std::u16string const& p) { return detail::extract_stem(p); }
std::u16string units::extract_extension(std::u16string const& p) {
    return detail::extract_extension(p);
}
std::size_t units::get_root_path_length(std::u16string const& p) {
    return detail::get_root_path_length(p);
}
std::u16string units::extract_first_element(std::u16string const& p, std::size_t n) {
    return detail::extract_first_element(p, n);
}
void units::move_down(std::u16string const& p, std::size_t root_length, std::size_t& position,
                      std::u16string& element) {
    detail::move_down(p, root_length, position, element);
}
void units::move_up(std::u16string const& p, std::size_t root_length, std::size_t& position,
                    std::u16string& element) {
    detail::move_up(p, root_length, position, element);
}
std::u16string units::lexically_normal(std::u16string const& p) {
    return detail::lexically_normal(p);
}
std::u16string units::lexically_relative(std::u16string const& p, std::u16string const& base) {
    return detail::lexically_relative(p, base);
}

std::string mixed::to_native(std::u16string const& text) { return to_filesystem(text); }

std::u16string mixed::from_native(std::string const& path8) {
    std::u16string text = from_filesystem_strict(path8);
    if (text.empty() && !path8.empty())
        throw cloneable(InvalidArgument("Invalid UTF-8", from_filesystem(path8), {}));
    return text;
}

}  // namespace ko::filesystem::detail
