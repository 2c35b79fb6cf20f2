#pragma once

#include <cstddef>
#include <string>

#include <ko/filesystem/config.hpp>

/// Takes path text apart. Pure text work, defined for any input: nothing is normalised, and no file
/// is accessed. Throws for lack of memory only.
///
/// | p          | root | relative  | parent | filename | stem | extension |
/// |------------|------|-----------|--------|----------|------|-----------|
/// | "/"        | "/"  |           |        | "/"      | "/"  |           |
/// | "/a/b.txt" | "/"  | "a/b.txt" | "/a"   | "b.txt"  | "b"  | "txt"     |
/// | "a/"       |      | "a/"      | "a"    |          |      |           |
/// | ".bashrc"  |      | ".bashrc" |        | ".bashrc"|      | "bashrc"  |
/// | "a."       |      | "a."      |        | "a."     | "a"  |           |
/// | "x/.."     |      | "x/.."    | "x"    | ".."     | ".." |           |
namespace ko::filesystem::detail {

/// The result of `extract_pathname_elements`.
struct pathname_elements {
    std::u16string parent_path;
    std::u16string filename;
    std::u16string stem;
    std::u16string extension;
};

/// 1 if `p` begins with a slash, else 0.
KO_FILESYSTEM_API std::size_t get_root_path_length(std::u16string const& p);

/// Whether `p` begins with a slash.
KO_FILESYSTEM_API bool is_absolute(std::u16string const& p);

/// "/" if `p` begins with a slash, else empty.
KO_FILESYSTEM_API std::u16string extract_root_path(std::u16string const& p);

/// Always empty: POSIX paths have no root name.
KO_FILESYSTEM_API std::u16string extract_root_name(std::u16string const& p);

/// The same as `extract_root_path`.
KO_FILESYSTEM_API std::u16string extract_root_directory(std::u16string const& p);

/// `p` without its first character if that is a slash (one only: "//a" gives "/a"), else `p`.
KO_FILESYSTEM_API std::u16string extract_relative_path(std::u16string const& p);

/// The text before the last slash; "/" if that is the first character. Empty for "/" and for a
/// text without a slash.
KO_FILESYSTEM_API std::u16string extract_parent_path(std::u16string const& p);

/// The text after the last slash, or all of `p` if it has none. "/" for "/", empty for "a/".
KO_FILESYSTEM_API std::u16string extract_filename(std::u16string const& p);

/// The filename up to its last dot; all of it if it has none or is "." or "..".
KO_FILESYSTEM_API std::u16string extract_stem(std::u16string const& p);

/// The text after the last dot of the filename. Empty if there is none, and for "." and "..".
/// Deliberately unlike std::filesystem, which keeps the dot and gives dot-files no extension.
KO_FILESYSTEM_API std::u16string extract_extension(std::u16string const& p);

/// All four at once, by the same rules with one exception: a dot at the end of the filename stays
/// in the stem. "a." has the stem "a." here, and "a" by `extract_stem`.
KO_FILESYSTEM_API pathname_elements extract_pathname_elements(std::u16string const& p);

/// The first `n` units of `p`, all of it if it is shorter; if `n` is 0, the text before its first
/// slash. With `get_root_path_length(p)` as `n` this is the first element: "/" or the first name.
KO_FILESYSTEM_API std::u16string extract_first_element(std::u16string const& p, std::size_t n);

}  // namespace ko::filesystem::detail
