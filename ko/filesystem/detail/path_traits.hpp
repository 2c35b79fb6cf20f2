#pragma once

#include <cstddef>
#include <string>

#include <ko/filesystem/config.hpp>
#include <ko/filesystem/detail/path_composition.hpp>
#include <ko/filesystem/detail/path_constants.hpp>
#include <ko/filesystem/detail/path_cursor.hpp>
#include <ko/filesystem/detail/path_decomposition.hpp>
#include <ko/filesystem/detail/path_expansion.hpp>

namespace ko::filesystem::detail {

/// The text algorithms of a path class: `System` is the character type of the file system's text,
/// `Internal` that of the stored text. Every member does the same as the free function of its name.
template <class System, class Internal>
struct path_traits;

/// On bytes, for UTF-8 text.
template <>
struct KO_FILESYSTEM_API path_traits<char, char> {
    static std::string make_native_form(std::string const& p, bool expand_tilde);
    static std::string& concatenate_pathname(std::string& base, std::string const& addition,
                                             bool expand_tilde);
    static std::string& remove_filename(std::string& p);
    static std::string extract_filename(std::string const& p);
    static bool is_absolute(std::string const& p);
};

/// On UTF-16 text.
template <>
struct KO_FILESYSTEM_API path_traits<char16_t, char16_t> {
    static std::u16string make_native_form(std::u16string const& p, bool expand_tilde);
    static std::u16string& concatenate_pathname(std::u16string& base,
                                                std::u16string const& addition, bool expand_tilde);
    static std::u16string& remove_filename(std::u16string& p);
    static std::u16string& replace_extension(std::u16string& p, std::u16string const& ext);
    static bool is_absolute(std::u16string const& p);
    static std::u16string extract_root_path(std::u16string const& p);
    static std::u16string extract_relative_path(std::u16string const& p);
    static std::u16string extract_parent_path(std::u16string const& p);
    static std::u16string extract_filename(std::u16string const& p);
    static std::u16string extract_stem(std::u16string const& p);
    static std::u16string extract_extension(std::u16string const& p);
    static std::size_t get_root_path_length(std::u16string const& p);
    static std::u16string extract_first_element(std::u16string const& p, std::size_t n);
    static void move_down(std::u16string const& p, std::size_t root_length, std::size_t& position,
                          std::u16string& element);
    static void move_up(std::u16string const& p, std::size_t root_length, std::size_t& position,
                        std::u16string& element);
    static std::u16string lexically_normal(std::u16string const& p);
    static std::u16string lexically_relative(std::u16string const& p, std::u16string const& base);
};

/// On UTF-16 text for a UTF-8 file system: the traits of `upath`.
template <>
struct KO_FILESYSTEM_API path_traits<char, char16_t> : path_traits<char16_t, char16_t> {
    /// The same as `detail::to_filesystem`.
    static std::string to_native(std::u16string const& text);
    /// The UTF-16 text of `path8`.
    /// Throws InvalidArgument "Invalid UTF-8" if it has none; path(): `path8` with U+FFFD for each
    /// bad byte.
    static std::u16string from_native(std::string const& path8);
};

}  // namespace ko::filesystem::detail
