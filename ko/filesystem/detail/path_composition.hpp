#pragma once

#include <string>

#include <ko/filesystem/config.hpp>

/// Builds path text. Pure text work but for the tilde, which asks for a home directory.
/// A function that changes its argument leaves it as it was when it throws, and its arguments may
/// be one and the same object. Besides lack of memory only what is said below is thrown.
namespace ko::filesystem::detail {

/// The form in which every operation takes a path: a leading "~" or "~name" replaced by the home
/// directory when `expand_tilde`, every run of slashes made one, a slash at the end dropped unless
/// it is all there is. "." and ".." stay. Empty for an empty `p`; and, when a tilde is expanded, if
/// the own home can't be found, the home that is meant is not UTF-8, or `p` has no UTF-8 form. An
/// unknown "~name" stays.
///
/// make_native_form(u"~//a/./b/", true);  // "/home/u/a/./b"
KO_FILESYSTEM_API std::u16string make_native_form(std::u16string const& p, bool expand_tilde);

/// A copy of `p`: on POSIX the generic and the native separator are the same.
KO_FILESYSTEM_API std::u16string make_generic_form(std::u16string const& p);

/// The native form of `p`, tilde expanded, as UTF-8; empty when it can't be converted.
KO_FILESYSTEM_API std::string make_native_access_form_with_cleanup(std::u16string const& p);

/// Appends the native form of `addition` to `base`, with a slash between them unless `base` is
/// empty or ends with one. So an empty `addition` still adds the slash, unlike joining with
/// `upath`.
///
/// Throws InvalidArgument "Absolute path not permitted" (no path, no arguments) when the native
/// form begins with a slash and `base` is not empty.
KO_FILESYSTEM_API std::u16string& concatenate_pathname(std::u16string& base,
                                                       std::u16string const& addition,
                                                       bool expand_tilde);

/// Removes the last element and the slash before it. "/a" becomes "/"; "/" becomes empty.
KO_FILESYSTEM_API std::u16string& remove_filename(std::u16string& p);

/// Gives the last element of `p` the extension `ext`, which may begin with its dot. An empty `ext`
/// removes nothing: `p` stays as it is then, and when it is empty, ends with a slash, or its last
/// element is "." or "..". A dot at the end of `p` is not an extension: "a." becomes "a..md".
///
/// Throws InvalidArgument "Invalid extension" (no path, no arguments) when `ext` begins with two
/// dots, is a dot alone, or holds a slash; not where `p` stays as it is anyway.
KO_FILESYSTEM_API std::u16string& replace_extension(std::u16string& p, std::u16string const& ext);

/// The native form of `p` without "." and "..", a tilde being a name: each ".." takes the name
/// before it away, whatever that leads to. What is left of nothing is ".". A "." at the very end
/// stays behind a name, and ".." stays where there is no name to take away, also below the root.
///
/// Boost.Filesystem's lexically_normal, by way of UTF-8: an unpaired surrogate becomes U+FFFD, and
/// the result is empty where `to_filesystem` gives nothing. `weakly_canonical` uses it.
///
/// lexically_normal(u"a/./b/../c");  // "a/c"
KO_FILESYSTEM_API std::u16string lexically_normal(std::u16string const& p);

/// How to reach `p` from `base`, element by element; "." and ".." in them count as names are
/// counted, so that both are made normal first where they hold any. "." for equal ones. Empty when
/// only one is absolute, or `base` leads up through "..".
///
/// Boost.Filesystem's lexically_relative, by way of UTF-8 as above. `relative` uses it.
///
/// lexically_relative(u"/a/b/c", u"/a/d");  // "../b/c"
KO_FILESYSTEM_API std::u16string lexically_relative(std::u16string const& p,
                                                    std::u16string const& base);

}  // namespace ko::filesystem::detail
