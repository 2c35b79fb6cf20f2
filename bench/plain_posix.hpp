#pragma once

#include <cstddef>
#include <string>

/// The system calls of the larger operations and nothing else, for comparison. A failure terminates
/// the program.
namespace ko_bench::plain {

/// One iconv call and the reset, into a buffer on the stack: the least that a conversion can cost.
/// Returns the number of bytes.
std::size_t encode(std::u16string const& text);
std::size_t decode(std::string const& text);

/// Makes the directory `path`, whose length is below 1024, and those above it.
void make_directories(std::string const& path);

/// Copies a regular file by the system's single call for it.
void copy_file(char const* from, char const* to, int flags);

/// Copies the directory `from` with the directories and files in it to `to`, which must not exist.
void copy_tree(std::string& from, std::string& to);

/// The sum of the lengths of all paths below the directory `dir`, plus one for each directory.
std::size_t list_tree(std::string& dir);

/// The sum of the sizes of all files below the directory `dir`, with a status of each entry.
std::size_t sizes_in_tree(std::string& dir);

/// Removes the directory `dir`; checks before each removal in it that it still is a directory and
/// not a link.
void remove_tree(std::string& dir);

}  // namespace ko_bench::plain
