#pragma once

#include <cstddef>
#include <string>

/// The calls of the larger operations and nothing else, for comparison. Those of the system end the
/// program when they fail.
namespace ko_bench::plain {

/// One iconv call and the reset, into a buffer on the stack: the least that a conversion can cost.
/// Gives the number of bytes.
std::size_t encode(std::u16string const& text);
std::size_t decode(std::string const& text);

/// Makes the directory `path`, whose length is below 1024, and those above it.
void make_directories(std::string const& path);

/// Copies a regular file by the one call that the system has for it.
void copy_file(char const* from, char const* to, int flags);

/// Copies the directory `from` with the directories and files in it to `to`, which is missing.
void copy_tree(std::string& from, std::string& to);

/// The lengths of the paths of all that is below the directory `dir`, with one more for each directory.
std::size_t list_tree(std::string& dir);

/// Removes the directory `dir`, having made sure before each removal in it that it still is one and
/// no link.
void remove_tree(std::string& dir);

}  // namespace ko_bench::plain
