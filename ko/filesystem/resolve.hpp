#pragma once

#include <string>

#include <ko/filesystem/config.hpp>
#include <ko/filesystem/current_path.hpp>
#include <ko/filesystem/path.hpp>

namespace ko::filesystem {

/// `p` behind `base`, or behind the working directory when `base` is empty; `p` itself when it is
/// absolute, whatever `base` is. Nothing is looked up, "." and ".." stay. Empty for an empty `p`,
/// and when the working directory's name is not UTF-8.
///
/// Throws
///   InvalidArgument   `base` is not absolute ("Invalid Base Path"); path(): empty
///   what `get_current_path` throws
///
/// absolute(u"b", u"/a");  // "/a/b"
KO_FILESYSTEM_API upath absolute(upath const& p, upath const& base = upath());
/// The same for texts, each brought into native form first: leading ~ expanded, // collapsed.
KO_FILESYSTEM_API std::u16string absolute(std::u16string const& p, std::u16string const& base = {});

/// The path of what is at `absolute(p, base)` without links, "." and ".." (realpath). A leading
/// tilde is expanded in any case. Empty for an empty `p`, and when the real path is not UTF-8.
///
/// Throws
///   PathNotFound   nothing is there, or `p` or `base` has no UTF-8 form; path(): empty
///   InvalidArgument   as `absolute`
///   the class of the error number for every other failure; path(): the absolute path
KO_FILESYSTEM_API upath canonical(upath const& p, upath const& base = upath());
/// The same for texts, each brought into native form first.
KO_FILESYSTEM_API std::u16string canonical(std::u16string const& p,
                                           std::u16string const& base = {});

/// The canonical path of the leading elements of `p` that exist, with the others behind it; "." and
/// ".." among these are resolved as text then, but a "." at the very end stays. A relative `p`
/// whose first element is missing stays relative. An element is joined as text is joined to a
/// `upath`, so that one which begins with a tilde is expanded. Empty for an empty `p`, and when a
/// path on the way is not UTF-8.
///
/// Throws
///   InvalidArgument   an element expands to an absolute path ("Absolute path not permitted");
///                     path(): empty
///   what `exists` and `canonical` throw for the existing part
KO_FILESYSTEM_API upath weakly_canonical(upath const& p);
/// The same for text, brought into native form first.
KO_FILESYSTEM_API std::u16string weakly_canonical(std::u16string const& p);

/// How to reach `p` from `base`, by the text of their weakly canonical paths. Empty when there is
/// no such way: when only one of them is absolute, or `base` leads up through "..".
///
/// Tildes are expanded at each step, and by the path object that is returned: the relative path of
/// "./~root" is the text "~root", which as a `upath` is that user's home. Take the overload for texts
/// and put "./" before what begins with a tilde.
///
/// Throws what `weakly_canonical` throws; without a `base` also what `get_current_path` throws, such as
/// PathNotFound for a working directory that is gone.
///
/// relative(u"/a/b/c", u"/a");  // "b/c"
KO_FILESYSTEM_API upath relative(upath const& p, upath const& base = upath(get_current_path()));
/// The same for texts, each brought into native form first.
KO_FILESYSTEM_API std::u16string relative(std::u16string const& p,
                                          std::u16string const& base = get_current_path());

}  // namespace ko::filesystem
