#pragma once

#include <string>

#include <ko/filesystem/config.hpp>

namespace ko::filesystem {

/// The characters and names used by the path algorithms, and the conversions that differ between
/// UTF-8 (`char`) and UTF-16 (`char16_t`) text. There are no drive letters and no root names: the
/// separator is the slash, the one root is "/".
template <class CharT>
struct pathname_traits;

template <>
struct KO_FILESYSTEM_API pathname_traits<char> {
    static constexpr char PATHNAME_SEPARATOR_CHARACTER = '/';
    static constexpr char GENERIC_PATHNAME_SEPARATOR_CHARACTER = '/';
    static constexpr char DOT_CHARACTER = '.';
    static constexpr char TILDE_CHARACTER = '~';
    static constexpr char PATH_SEPARATOR_CHAR = ':';  ///< between the paths of a list

    static constexpr char const* PATHNAME_SEPARATOR = "/";
    static constexpr char const* ROOT_PATHNAME = "/";
    static constexpr char const* CURRENT_DIRECTORY = ".";
    static constexpr char const* PARENT_DIRECTORY = "..";
    static constexpr char const* PATH_SEPARATOR = ":";  ///< between the paths of a list

    /// `p` with a leading "~" or "~name" replaced by that user's home directory.
    ///
    /// The user's own home is the environment variable HOME, read by every call; if it is unset or
    /// empty, the home directory of the real user id in the user database. "~" and "~/" become the
    /// home alone. If the own home can't be found, the result is empty whatever follows the tilde;
    /// an unknown "~name" stays unchanged.
    static std::string replace_tilde_with_home_dir(std::string const& p);
};

template <>
struct KO_FILESYSTEM_API pathname_traits<char16_t> {
    static constexpr char16_t PATHNAME_SEPARATOR_CHARACTER = u'/';
    static constexpr char16_t GENERIC_PATHNAME_SEPARATOR_CHARACTER = u'/';
    static constexpr char16_t DOT_CHARACTER = u'.';
    static constexpr char16_t TILDE_CHARACTER = u'~';
    static constexpr char16_t PATH_SEPARATOR_CHAR = u':';  ///< between the paths of a list

    static constexpr char16_t const* PATHNAME_SEPARATOR = u"/";
    static constexpr char16_t const* ROOT_PATHNAME = u"/";
    static constexpr char16_t const* CURRENT_DIRECTORY = u".";
    static constexpr char16_t const* PARENT_DIRECTORY = u"..";
    static constexpr char16_t const* PATH_SEPARATOR = u":";  ///< between the paths of a list

    /// The same as for UTF-8 text, to which `p` is converted and back, with or without a tilde.
    /// Empty if either conversion fails: for a `p` that ends with an unpaired high surrogate, and
    /// for a home directory that isn't UTF-8.
    static std::u16string replace_tilde_with_home_dir(std::u16string const& p);

    /// The same as `detail::to_filesystem`.
    static std::string to_filesystem(std::u16string const& s);
    /// The same as `detail::from_filesystem`.
    static std::u16string from_filesystem(std::string const& s);
};

/// The constants of UTF-16 path text, for callers that build paths themselves.
namespace upath_constant {

inline constexpr char16_t const* GENERIC_PATHNAME_SEPARATOR = u"/";
inline constexpr char16_t const* PATHNAME_SEPARATOR = u"/";
inline constexpr char16_t const* PATH_SEPARATOR = u":";  ///< between the paths of a list
inline constexpr char16_t const* FILE_EXTENSION_SEPARATOR = u".";
inline constexpr char16_t const* CURRENT_DIRECTORY = u".";
inline constexpr char16_t const* PARENT_DIRECTORY = u"..";
inline constexpr char16_t const* WILD_CARD = u"*";

}  // namespace upath_constant

}  // namespace ko::filesystem
