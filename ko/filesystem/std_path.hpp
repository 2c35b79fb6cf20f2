#pragma once

#include <filesystem>

#include <ko/filesystem/path.hpp>

/// Makes `upath::to_std` and `upath::from_std` usable. In a header of its own, because `<filesystem>`
/// takes as long to compile as the rest of path.hpp.
namespace ko::filesystem::detail {

template <>
struct std_path<char> {
    using type = std::filesystem::path;
};

}  // namespace ko::filesystem::detail
