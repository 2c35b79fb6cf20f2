#pragma once

#include <string>

#include <ko/filesystem/config.hpp>

/// Builds path text. Pure text work except for the tilde, which looks up a home directory. A
/// function that changes its argument leaves it unchanged if it throws, and its arguments may be
/// the same object. Nothing is thrown but what is documented below, and lack of memory.
namespace ko::filesystem::detail {

/// The form in which operations use a path: a leading "~" or "~name" replaced by the home directory
/// if `expand_tilde`, every run of slashes collapsed into one, a slash at the end removed unless it
/// is the whole text. "." and ".." stay. Empty for an empty `p`; and, if a tilde is expanded, if
/// the user's own home can't be found, the home is not UTF-8, or `p` has no UTF-8 form. An unknown
/// "~name" stays.
///
/// make_native_form(u"~//a/./b/", true);  // "/home/u/a/./b"
KO_FILESYSTEM_API std::u16string make_native_form(std::u16string const& p, bool expand_tilde);

/// A copy of `p`: on POSIX the generic and the native separator are the same.
KO_FILESYSTEM_API std::u16string make_generic_form(std::u16string const& p);

/// The native form of `p`, tilde expanded, as UTF-8; empty if it can't be converted.
KO_FILESYSTEM_API std::string make_native_access_form_with_cleanup(std::u16string const& p);

/// Appends the native form of `addition` to `base`, with a slash between them unless `base` is
/// empty or ends with one. Unlike with `upath`, an empty `addition` still appends the slash.
///
/// Throws InvalidArgument "Absolute path not permitted" (no path, no arguments) if the native
/// form begins with a slash and `base` is not empty.
KO_FILESYSTEM_API std::u16string& concatenate_pathname(std::u16string& base,
                                                       std::u16string const& addition,
                                                       bool expand_tilde);

/// Removes the last element and the slash before it. "/a" becomes "/"; "/" becomes empty.
KO_FILESYSTEM_API std::u16string& remove_filename(std::u16string& p);

/// Gives the last element of `p` the extension `ext`, which may begin with its dot. `p` stays
/// unchanged if `ext` is empty (nothing is removed), and if `p` is empty, ends with a slash, or has
/// "." or ".." as its last element. A dot at the end of `p` is not an extension: "a." becomes
/// "a..md".
///
/// Throws InvalidArgument "Invalid extension" (no path, no arguments) if `ext` begins with two
/// dots, is a single dot, or contains a slash, unless `p` stays unchanged anyway.
KO_FILESYSTEM_API std::u16string& replace_extension(std::u16string& p, std::u16string const& ext);

/// The native form of `p` without "." and "..", tildes not expanded: each ".." removes the name
/// before it, whatever that leads to. If nothing remains, the result is ".". A "." at the very end
/// stays if it follows a name, and ".." stays if there is no name to remove, also below the root.
///
/// Boost.Filesystem's lexically_normal, applied to UTF-8: an unpaired surrogate becomes U+FFFD, and
/// the result is empty if that of `to_filesystem` is. Used by `weakly_canonical`.
///
/// lexically_normal(u"a/./b/../c");  // "a/c"
KO_FILESYSTEM_API std::u16string lexically_normal(std::u16string const& p);

/// `p` relative to `base`, element by element; "." and ".." count like names, so normalise both
/// paths first if they contain any. "." for equal paths. Empty if only one is absolute, or `base`
/// leads up through "..".
///
/// Boost.Filesystem's lexically_relative, applied to UTF-8 as above. Used by `relative`.
///
/// lexically_relative(u"/a/b/c", u"/a/d");  // "../b/c"
KO_FILESYSTEM_API std::u16string lexically_relative(std::u16string const& p,
                                                    std::u16string const& base);

}  // namespace ko::filesystem::detail
