#pragma once

#include <string>

#include <ko/filesystem/config.hpp>
#include <ko/filesystem/current_path.hpp>
#include <ko/filesystem/path.hpp>

namespace ko::filesystem {

/// `p` appended to `base`, or to the working directory if `base` is empty; `p` itself if it is
/// absolute, whatever `base` is. Accesses no file; "." and ".." stay. Empty for an empty `p`, and
/// if the path of the working directory is not UTF-8.
///
/// Throws
///   InvalidArgument   `base` is not absolute ("Invalid Base Path"); path(): empty
///   what `get_current_path` throws
///
/// absolute(u"b", u"/a");  // "/a/b"
KO_FILESYSTEM_API upath absolute(upath const& p, upath const& base = upath());
/// The same for texts, each converted to native form first: leading ~ expanded, // collapsed.
KO_FILESYSTEM_API std::u16string absolute(std::u16string const& p, std::u16string const& base = {});

/// The path `absolute(p, base)` without links, "." and ".." (realpath). A leading tilde is always
/// expanded. Empty for an empty `p`, and if the result is not UTF-8. An absolute `p` ignores `base`,
/// whatever it holds.
///
/// Throws
///   PathNotFound   the path does not exist, or `p` or `base` has no UTF-8 form; path(): empty
///   InvalidArgument   like `absolute`
///   the class of the error number for every other failure; path(): the absolute path
KO_FILESYSTEM_API upath canonical(upath const& p, upath const& base = upath());
/// The same for texts, each converted to native form first.
KO_FILESYSTEM_API std::u16string canonical(std::u16string const& p,
                                           std::u16string const& base = {});

/// The canonical path of the leading elements of `p` that exist, followed by the others; "." and
/// ".." in these are then resolved lexically, but a "." at the very end stays. A relative `p` whose
/// first element is missing stays relative. Elements are joined like text to a `upath`, so that one
/// which begins with a tilde is expanded. Empty for an empty `p`, and if an intermediate path is
/// not UTF-8.
///
/// Throws
///   InvalidArgument   an element expands to an absolute path ("Absolute path not permitted");
///                     path(): empty
///   what `exists` and `canonical` throw for the existing part
KO_FILESYSTEM_API upath weakly_canonical(upath const& p);
/// The same for text, converted to native form first.
KO_FILESYSTEM_API std::u16string weakly_canonical(std::u16string const& p);

/// `p` relative to `base`, from the text of their weakly canonical paths. Empty if there is no such
/// path: if only one of them is absolute, or `base` leads up through "..".
///
/// Tildes are expanded at each step, and by the returned path object: the relative path of
/// "./~root" is the text "~root", which as a `upath` is that user's home. Use the overload for
/// texts and prefix a result that begins with a tilde with "./".
///
/// Throws what `weakly_canonical` throws; without a `base` also what `get_current_path` throws,
/// such as PathNotFound for a working directory that has been removed.
///
/// relative(u"/a/b/c", u"/a");  // "b/c"
KO_FILESYSTEM_API upath relative(upath const& p, upath const& base = upath(get_current_path()));
/// The same for texts, each converted to native form first.
KO_FILESYSTEM_API std::u16string relative(std::u16string const& p,
                                          std::u16string const& base = get_current_path());

}  // namespace ko::filesystem
