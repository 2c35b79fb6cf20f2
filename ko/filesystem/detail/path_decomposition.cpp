#include <ko/filesystem/detail/path_decomposition.hpp>

#include <string_view>

#include <ko/filesystem/detail/path_algorithms.hpp>
#include <ko/filesystem/detail/path_constants.hpp>

namespace ko::filesystem::detail {

namespace {

using traits = pathname_traits<char16_t>;
using view = std::u16string_view;

}  // namespace

std::size_t get_root_path_length(std::u16string const& p) { return is_absolute(p) ? 1 : 0; }

bool is_absolute(std::u16string const& p) { return algorithm::is_absolute<char16_t>(p); }

std::u16string extract_root_path(std::u16string const& p) {
    return is_absolute(p) ? traits::ROOT_PATHNAME : std::u16string();
}

std::u16string extract_root_name(std::u16string const&) { return {}; }

std::u16string extract_root_directory(std::u16string const& p) { return extract_root_path(p); }

std::u16string extract_relative_path(std::u16string const& p) {
    return p.substr(get_root_path_length(p));
}

std::u16string extract_parent_path(std::u16string const& p) {
    return std::u16string(algorithm::parent_path<char16_t>(p));
}

std::u16string extract_filename(std::u16string const& p) {
    return std::u16string(algorithm::filename<char16_t>(p));
}

std::u16string extract_stem(std::u16string const& p) {
    return std::u16string(algorithm::split_name(algorithm::filename<char16_t>(p)).stem);
}

std::u16string extract_extension(std::u16string const& p) {
    std::size_t const dot = algorithm::last_dot<char16_t>(p);
    return dot == p.npos ? std::u16string() : p.substr(dot + 1);
}

pathname_elements extract_pathname_elements(std::u16string const& p) {
    view const name = algorithm::filename<char16_t>(p);
    auto const [stem, extension] = algorithm::split_name_keeping_trailing_dot(name);
    return {extract_parent_path(p), std::u16string(name), std::u16string(stem),
            std::u16string(extension)};
}

std::u16string extract_first_element(std::u16string const& p, std::size_t n) {
    return p.substr(0, n != 0 ? n : p.find(traits::PATHNAME_SEPARATOR_CHARACTER));
}

}  // namespace ko::filesystem::detail
